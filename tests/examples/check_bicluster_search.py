#!/usr/bin/env python3
"""Runs examples/bicluster_search on its bundled data and checks what examples/README.md states.

- The two planted modules (genes 0-19 x conditions 0-5, genes 40-64 x conditions 10-15) are the two
  reported biclusters: genes 40-64 as bicluster 0 (Jaccard index of cells 0.86, two decimals), genes
  0-19 as bicluster 1 (0.87); every table the option file names is written.
- The summary: its header; ids 0.. in file order; rows sorted by q, then score descending; q within
  Report::MaxQ and sizes within MinConds and MinGenes; gene and condition counts equal to the lengths
  of the name lists; the same biclusters (by names, through the gene table and the expression key)
  and scores as bick and bicd; one heatmap per row, with one cell per gene and condition.
- The same seed with Null::Threads 1 gives the summary byte for byte.
- With MaxHashDegree 2 (no gene hashable) the run exits non-zero, says so with the degree quantiles
  and writes no summary.

    check_bicluster_search.py <bicluster_search binary> <repository root>

The runs happen in a scratch directory that sees the repository's data/ through a link, so the
relative paths of data/examples/search.opt resolve and the outputs land in the scratch directory.
"""
import os
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET

PLANTED = [
    (set(range(40, 65)), set(range(10, 16))),
    (set(range(0, 20)), set(range(0, 6))),
]
STATED = [(0, 0.86), (1, 0.87)]  # (bicluster id, Jaccard index) per planted module
TABLES = ["bick", "bicd", "bicm", "summary.tsv", "stat", "globstat"]
HEADER = "id\tscore\tp\tq\tgenes\tconditions\tgene_names\tcondition_names"


def read_biclusters(path):
    """bicd rows: id, side (0 condition, 1 gene), condition or gene id, group, margin."""
    bics = {}
    with open(path) as f:
        for line in f:
            bid, side, node = (int(w) for w in line.split()[:3])
            genes, conds = bics.setdefault(bid, (set(), set()))
            (conds if side == 0 else genes).add(node)
    return bics


def read_keys(path):
    """scope::name -> text of the scalar keys of an option file."""
    keys, scope = {}, ""
    with open(path) as f:
        for line in f:
            line = line.strip()
            m = re.match(r"^\[(.*)\]$", line)
            if m:
                scope = m.group(1)
            elif "=" in line:
                k, v = line.split("=", 1)
                keys[scope + "::" + k.strip()] = v.strip()
    return keys


def names(path):
    with open(path) as f:
        return {int(w[0]): w[1] for w in (line.split() for line in f)}


def jaccard(a, b):
    cells_a = {(g, c) for g in a[0] for c in a[1]}
    cells_b = {(g, c) for g in b[0] for c in b[1]}
    return len(cells_a & cells_b) / len(cells_a | cells_b)


def run(binary, tmp, opt):
    return subprocess.run([binary, opt], cwd=tmp, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)


def with_keys(src, dst, changes):
    with open(src) as f:
        text = f.read()
    for old, new in changes:
        assert old in text, old
        text = text.replace(old, new)
    with open(dst, "w") as f:
        f.write(text)


def check_summary(tmp, keys, root, failures):
    gene_name = names(os.path.join(root, "data/examples/genes.tab"))
    cond_name = names(os.path.join(root, "data/examples/exp.expk"))
    with open(os.path.join(tmp, "bicluster_search.summary.tsv")) as f:
        lines = f.read().splitlines()
    if not lines or lines[0] != HEADER:
        failures.append("summary header is %r" % (lines[:1],))
        return
    rows = [l.split("\t") for l in lines[1:]]
    bics = read_biclusters(os.path.join(tmp, "bicluster_search.bicd"))
    with open(os.path.join(tmp, "bicluster_search.bick")) as f:
        bick = {int(w[0]): float(w[1]) for w in (l.split() for l in f)}
    if sorted(bics) != list(range(len(rows))) or sorted(bick) != list(range(len(rows))):
        failures.append("bick/bicd ids %s/%s differ from the summary's %d rows" % (sorted(bick), sorted(bics), len(rows)))
        return
    prev = None
    for i, r in enumerate(rows):
        bid, score, p, q, ng, nc = int(r[0]), float(r[1]), float(r[2]), float(r[3]), int(r[4]), int(r[5])
        genes, conds = r[6].split(","), r[7].split(",")
        if bid != i:
            failures.append("summary row %d has id %d" % (i, bid))
        if prev is not None and (q < prev[0] or (q == prev[0] and score > prev[1])):
            failures.append("summary row %d is out of order" % i)
        prev = (q, score)
        if not (0 < p <= 1 and p <= q or q == 1) or q > float(keys["Report::MaxQ"]):
            failures.append("row %d: p %g, q %g outside the report's range" % (i, p, q))
        if nc < int(keys["Report::MinConds"]) or ng < int(keys["Report::MinGenes"]):
            failures.append("row %d: %d genes x %d conditions is below the minimum size" % (i, ng, nc))
        if ng != len(genes) or nc != len(conds):
            failures.append("row %d: counts %d, %d differ from the lists" % (i, ng, nc))
        if sorted(genes) != sorted(gene_name[g] for g in bics[bid][0]) or \
                sorted(conds) != sorted(cond_name[c] for c in bics[bid][1]):
            failures.append("row %d: names differ from bicd" % i)
        if abs(bick[bid] - score) > 1e-3 * max(1.0, abs(score)):
            failures.append("row %d: score %g, bick %g" % (i, score, bick[bid]))
        svg = os.path.join(tmp, keys["Report::HeatmapDir"], "bicluster_%d.svg" % bid)
        try:
            rects = [e for e in ET.parse(svg).getroot().iter() if e.tag.endswith("rect")]
            if len(rects) != ng * len(cond_name) + 21:  # the cells and the 21 steps of the scale
                failures.append("heatmap %d has %d cells, not %d" % (bid, len(rects), ng * len(cond_name) + 21))
        except (OSError, ET.ParseError) as e:
            failures.append("heatmap %d: %s" % (bid, e))
    return rows


def main():
    binary, root = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    opt_path = os.path.join(root, "data/examples/search.opt")
    keys = read_keys(opt_path)
    failures = []
    with tempfile.TemporaryDirectory() as tmp:
        os.symlink(os.path.join(root, "data"), os.path.join(tmp, "data"))
        r = run(binary, tmp, "data/examples/search.opt")
        if r.returncode != 0:
            print("bicluster_search exited with %d" % r.returncode)
            return 1
        for ext in TABLES:
            path = os.path.join(tmp, "bicluster_search." + ext)
            if not os.path.exists(path) or os.path.getsize(path) == 0:
                failures.append("no bicluster_search.%s written" % ext)
        check_summary(tmp, keys, root, failures)
        bics = read_biclusters(os.path.join(tmp, "bicluster_search.bicd"))
        with open(os.path.join(tmp, "bicluster_search.summary.tsv")) as f:
            summary = f.read()

        with_keys(opt_path, os.path.join(tmp, "one.opt"), [("Threads = 2", "Threads = 1")])
        r = run(binary, tmp, "one.opt")
        with open(os.path.join(tmp, "bicluster_search.summary.tsv")) as f:
            if r.returncode != 0 or f.read() != summary:
                failures.append("the summary with one thread differs from the one with two")

        os.remove(os.path.join(tmp, "bicluster_search.summary.tsv"))
        with_keys(opt_path, os.path.join(tmp, "zero.opt"), [("MaxHashDegree = 24", "MaxHashDegree = 2")])
        r = run(binary, tmp, "zero.opt")
        if r.returncode == 0 or not re.search(r"Only 0 of 400 gene nodes have a degree in \[MinHashDegree 3, "
                                              r"MaxHashDegree 2\].*\nGene node degrees: min \d+, 10% \d+", r.stderr):
            failures.append("no-hash run: exit %d, message %r" % (r.returncode, r.stderr[-300:]))
        if os.path.exists(os.path.join(tmp, "bicluster_search.summary.tsv")):
            failures.append("no-hash run wrote a summary")

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
    if len(bics) != len(PLANTED):
        failures.append("%d biclusters reported, the README states %d" % (len(bics), len(PLANTED)))
    for f in failures:
        print("FAIL: " + f)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
