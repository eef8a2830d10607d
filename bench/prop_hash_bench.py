#!/usr/bin/python3
"""The property hash search beside scikit-learn's SpectralBiclustering, on the same planted data.

    /usr/bin/python3 bench/prop_hash_bench.py [build dir] [genes conditions pssms classes modules plen]

Builds nothing: run `ninja -C build prop_hash_bench` first. Installs Debian's python3-sklearn when it
is missing (apt-get, as root). The driver bench/prop_hash_bench.cpp makes the synthetic graph (default
6,000 genes x 300 conditions, 200 PSSMs, 500 classes, 10 planted modules of 60 genes and 15
conditions, each with two PSSM sites and a class), runs the hash search with ISA growth, prints its
own times (wall and processor) and peak size, and writes the expression matrix, the planted modules
and its results into bench/data/scratch/prop_hash/. This script then fits SpectralBiclustering with
(modules + 1) x (modules + 1) clusters on the expression matrix, and scores both methods against the
planted modules the same way: sklearn's consensus_score over (genes, conditions) biclusters, and the
gene-set Jaccard recovery (mean over planted modules of the best match) and relevance (mean over found
biclusters of the best match). A result of ours counts its expression conditions (both orientations)
as its columns. Prints the load average beside the times: the machine is shared.
"""
import os, resource, subprocess, sys, time

root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
build = sys.argv[1] if len(sys.argv) > 1 else os.path.join(root, "build")
sizes = sys.argv[2:8]
scratch = os.path.join(root, "bench", "data", "scratch", "prop_hash")
os.makedirs(scratch, exist_ok=True)
exe = os.path.join(build, "bench", "prop_hash_bench")
print("load average before: %.2f %.2f %.2f" % os.getloadavg())
t = time.time()
r = subprocess.run([exe, scratch] + sizes, capture_output=True, text=True)
wall = time.time() - t
ru = resource.getrusage(resource.RUSAGE_CHILDREN)
if r.returncode != 0:
    sys.exit("prop_hash_bench failed: " + r.stderr[-2000:])
print(r.stdout.strip())
print("vesk driver: %.1f s wall, %.1f s cpu, peak %d MiB" % (wall, ru.ru_utime + ru.ru_stime, ru.ru_maxrss // 1024))

# Imported only now: a child forked from a process holding numpy would report its peak.
try:
    import sklearn  # noqa: F401
except ImportError:
    subprocess.run(["apt-get", "install", "-y", "python3-sklearn"], check=True)
import numpy as np  # noqa: E402
from sklearn.cluster import SpectralBiclustering  # noqa: E402
from sklearn.metrics import consensus_score  # noqa: E402


def read_sets(path, genes, conds):
    rows, cols = [], []
    for line in open(path).read().splitlines():
        g, c = (line.split("\t") + [""])[:2]
        rv, cv = np.zeros(genes, bool), np.zeros(conds, bool)
        rv[[int(x) for x in g.split(",") if x]] = True
        cv[[int(x) for x in c.split(",") if x]] = True
        rows.append(rv)
        cols.append(cv)
    return np.array(rows), np.array(cols)


def jaccard_scores(found_rows, true_rows):
    if len(found_rows) == 0:
        return 0.0, 0.0
    f, t = found_rows.astype(int), true_rows.astype(int)
    inter = t @ f.T
    union = t.sum(1)[:, None] + f.sum(1)[None, :] - inter
    j = np.where(union > 0, inter / np.maximum(union, 1), 0.0)
    return j.max(1).mean(), j.max(0).mean()


data = np.loadtxt(os.path.join(scratch, "expr.tsv"), dtype=np.float32)
n_genes, n_conds = data.shape
true_rows, true_cols = read_sets(os.path.join(scratch, "truth.tsv"), n_genes, n_conds)
our_rows, our_cols = read_sets(os.path.join(scratch, "ours.tsv"), n_genes, n_conds)
k = len(true_rows)
ours_cs = consensus_score((our_rows, our_cols), (true_rows, true_cols))
ours_rec, ours_rel = jaccard_scores(our_rows, true_rows)

t, c = time.time(), time.process_time()
model = SpectralBiclustering(n_clusters=(k + 1, k + 1), random_state=0)
model.fit(data)
s_wall, s_cpu = time.time() - t, time.process_time() - c
s_peak = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss // 1024
rows, cols = model.biclusters_
s_cs = consensus_score((rows, cols), (true_rows, true_cols))
s_rec, s_rel = jaccard_scores(rows, true_rows)
print("load average after: %.2f %.2f %.2f" % os.getloadavg())
print()
print("| method | time wall (s) | time cpu (s) | peak (MiB) | biclusters | consensus_score | gene recovery | gene relevance |")
print("|---|---|---|---|---|---|---|---|")
print("| vesk property hash search (isa) | %.1f | %.1f | %d | %d | %.3f | %.3f | %.3f |"
      % (wall, ru.ru_utime + ru.ru_stime, ru.ru_maxrss // 1024, len(our_rows), ours_cs, ours_rec, ours_rel))
print("| sklearn SpectralBiclustering (expression only) | %.1f | %.1f | %d (python total) | %d | %.3f | %.3f | %.3f |"
      % (s_wall, s_cpu, s_peak, len(rows), s_cs, s_rec, s_rel))
