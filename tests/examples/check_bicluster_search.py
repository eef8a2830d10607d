#!/usr/bin/env python3
"""Runs examples/bicluster_search on its bundled data and checks the recovery that examples/README.md
states: the two planted modules (genes 0-19 x conditions 0-5, genes 40-64 x conditions 10-15) come
back as biclusters 0 and 1 with a Jaccard index of cells of 0.87 and 0.86 (two decimals), and every
table the option file names is written.

    check_bicluster_search.py <bicluster_search binary> <repository root>

The run happens in a scratch directory that sees the repository's data/ through a link, so the
relative paths of data/examples/search.opt resolve and the outputs land in the scratch directory.
"""
import os
import subprocess
import sys
import tempfile

PLANTED = [
    (set(range(0, 20)), set(range(0, 6))),
    (set(range(40, 65)), set(range(10, 16))),
]
STATED = [(0, 0.87), (1, 0.86)]  # (bicluster id, Jaccard index) per planted module
TABLES = ["bick", "bicd", "bicm", "stat", "globstat"]


def read_biclusters(path):
    """bicd rows: id, side (0 condition, 1 gene), condition or gene id, group, margin."""
    bics = {}
    with open(path) as f:
        for line in f:
            bid, side, node = (int(w) for w in line.split()[:3])
            genes, conds = bics.setdefault(bid, (set(), set()))
            (conds if side == 0 else genes).add(node)
    return bics


def jaccard(a, b):
    cells_a = {(g, c) for g in a[0] for c in a[1]}
    cells_b = {(g, c) for g in b[0] for c in b[1]}
    return len(cells_a & cells_b) / len(cells_a | cells_b)


def main():
    binary, root = sys.argv[1], sys.argv[2]
    failures = []
    with tempfile.TemporaryDirectory() as tmp:
        os.symlink(os.path.join(root, "data"), os.path.join(tmp, "data"))
        run = subprocess.run([binary, "data/examples/search.opt"], cwd=tmp, stdout=subprocess.PIPE,
                             stderr=subprocess.DEVNULL, text=True)
        if run.returncode != 0:
            print("bicluster_search exited with %d" % run.returncode)
            return 1
        for ext in TABLES:
            path = os.path.join(tmp, "bicluster_search." + ext)
            if not os.path.exists(path) or os.path.getsize(path) == 0:
                failures.append("no bicluster_search.%s written" % ext)
        bics = read_biclusters(os.path.join(tmp, "bicluster_search.bicd"))
    for module, (bid, stated) in zip(PLANTED, STATED):
        if bid not in bics:
            failures.append("bicluster %d is missing" % bid)
            continue
        j = jaccard(bics[bid], module)
        best = max(bics, key=lambda b: jaccard(bics[b], module))
        print("planted module genes %d-%d x conditions %d-%d: bicluster %d, Jaccard %.4f (best match %d)"
              % (min(module[0]), max(module[0]), min(module[1]), max(module[1]), bid, j, best))
        if round(j, 2) != stated or best != bid:
            failures.append("bicluster %d recovers the module with Jaccard %.4f, the README states %.2f"
                            % (bid, j, stated))
    for f in failures:
        print("FAIL: " + f)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
