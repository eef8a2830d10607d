#!/usr/bin/python3
"""Yeast cell-cycle compendium (fetch_yeast.sh first): how many reported biclusters are enriched for
one cell-cycle phase (hypergeometric upper tail, Bonferroni over biclusters x phases at 0.01),
beside scikit-learn's SpectralCoclustering with one cluster per phase.

    /usr/bin/python3 bench/bicsig/run_yeast.py <bicluster_search binary> [--runs 10]
"""
import argparse
import math
import os
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
import bic_eval  # noqa: E402
import run_bicsig_bench  # noqa: E402


def log_hyper_tail(k, n, K, N):
    """log P(X >= k) for X hypergeometric: n draws from N items of which K are marked."""
    def lc(a, b):
        return math.lgamma(a + 1) - math.lgamma(b + 1) - math.lgamma(a - b + 1)
    terms = [lc(K, i) + lc(N - K, n - i) - lc(N, n) for i in range(k, min(n, K) + 1)]
    if not terms:
        return float("-inf")
    m = max(terms)
    return m + math.log(sum(math.exp(t - m) for t in terms))


def enrichment(sets, phase, alpha=0.01):
    """(number of sets enriched for one phase after Bonferroni, best (set index, phase, log p))."""
    N = len(phase)
    phases = sorted(set(phase.values()))
    size = {p: sum(1 for v in phase.values() if v == p) for p in phases}
    tests = max(1, len(sets) * len(phases))
    enriched, best = 0, None
    for i, genes in enumerate(sets):
        hits = []
        for p in phases:
            k = sum(1 for g in genes if phase[g] == p)
            lp = log_hyper_tail(k, len(genes), size[p], N)
            if lp + math.log(tests) < math.log(alpha):
                hits.append((lp, p))
            if best is None or lp < best[2]:
                best = (i, p, lp)
        enriched += 1 if hits else 0
    return enriched, best


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("binary")
    ap.add_argument("--runs", type=int, default=10)
    a = ap.parse_args()
    table = os.path.join(HERE, "..", "data", "scratch", "bicsig", "yeast")
    if not os.path.exists(os.path.join(table, "phase.tsv")):
        print("no yeast tables: run bench/bicsig/fetch_yeast.sh first")
        return 0
    phase = {int(w[0]): w[1] for w in (l.split() for l in open(os.path.join(table, "phase.tsv")))}
    rep = run_bicsig_bench.REPORT
    for tag, runs, q, mc, mg in (("before", 0, 1, 0, 0), ("after", a.runs, rep["max_q"], rep["min_conds"],
                                                          rep["min_genes"])):
        rows, log, wall, cpu = run_bicsig_bench.run_search(os.path.abspath(a.binary), table, "yeast_" + tag, runs,
                                                           "percond", q, mc, mg)
        if rows is None:
            print("bicluster_search failed:\n" + log)
            return 1
        n, best = enrichment([r["genes"] for r in rows], phase)
        print("bicluster_search %s filter: %d biclusters, %d enriched for one phase (Bonferroni 0.01)%s (%.0f s wall)"
              % (tag, len(rows), n, "" if best is None else
                 "; best: bicluster %d, %s, log10 p %.1f" % (rows[best[0]]["id"], best[1], best[2] / math.log(10)),
                 wall))
    import numpy as np
    from sklearn.cluster import SpectralCoclustering
    genes = len(phase)
    conds = sum(1 for _ in open(os.path.join(table, "exp.expk")))
    x = np.zeros((genes, conds))
    for line in open(os.path.join(table, "exp.expr")):
        g, c, v = line.split()
        x[int(g), int(c)] = float(v)
    k = len(set(phase.values()))
    model = SpectralCoclustering(n_clusters=k, random_state=0).fit(x - x.min())
    sets = [np.nonzero(model.rows_[i])[0].tolist() for i in range(k)]
    n, best = enrichment([s for s in sets if s], phase)
    print("SpectralCoclustering (%d clusters): %d enriched for one phase (Bonferroni 0.01); best log10 p %.1f"
          % (k, n, best[2] / math.log(10)))


if __name__ == "__main__":
    sys.exit(main())
