#!/usr/bin/python3
"""Benchmark of bicluster_search's report: recovery and relevance before and after the significance
filter on planted tables, scikit-learn's spectral methods beside it, calibration on noise tables and
the `auto` hash settings at 24, 100 and 300 conditions.

    /usr/bin/python3 bench/bicsig/run_bicsig_bench.py <bicluster_search binary> [--scratch DIR]
        [--runs 10] [--noise-tables 20] [--only main,weak,noise,auto,spectral]

Installs python3-sklearn with apt-get when it is missing. Tables are made by make_bic_synth.py
(fixed seeds) under the scratch directory (default bench/data/scratch/bicsig, git-ignored).
"""
import argparse
import os
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
import bic_eval  # noqa: E402

REPORT = {"max_q": 0.05, "min_conds": 5, "min_genes": 10}


def make_table(scratch, name, kind, genes, conds, seed):
    out = os.path.join(scratch, name)
    if not os.path.exists(os.path.join(out, "truth.tsv")):
        subprocess.run([sys.executable, os.path.join(HERE, "make_bic_synth.py"), "--out", out, "--kind", kind,
                        "--genes", str(genes), "--conds", str(conds), "--seed", str(seed)], check=True)
    return out


def run_search(binary, table, tag, runs, compare, max_q, min_conds, min_genes, seed=7):
    with open(os.path.join(HERE, "bench.opt.in")) as f:
        text = f.read()
    out = os.path.join(table, tag)
    for k, v in (("@DIR@", table), ("@OUT@", out), ("@SEED@", seed), ("@RUNS@", runs), ("@COMPARE@", compare),
                 ("@MAXQ@", max_q), ("@MINCONDS@", min_conds), ("@MINGENES@", min_genes)):
        text = text.replace(k, str(v))
    opt = out + ".opt"
    with open(opt, "w") as f:
        f.write(text)
    t0 = time.time()
    r0 = os.times()
    run = subprocess.run([binary, opt], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    r1 = os.times()
    wall = time.time() - t0
    cpu = (r1.children_user - r0.children_user) + (r1.children_system - r0.children_system)
    if run.returncode != 0:
        return None, run.stdout, wall, cpu
    rows = bic_eval.read_summary(out + ".summary.tsv", bic_eval.read_names(os.path.join(table, "genes.tab")),
                                 bic_eval.read_names(os.path.join(table, "exp.expk")))
    return rows, run.stdout, wall, cpu


def ours(binary, table, runs, compares, label):
    truth = bic_eval.read_truth(os.path.join(table, "truth.tsv"))
    before, _, w0, c0 = run_search(binary, table, "before", 0, compares[0], 1, 0, 0)
    fb = [(r["genes"], r["conds"]) for r in before]
    rb = bic_eval.recovery_relevance(truth, fb)
    print("%-22s before filter: %4d biclusters recovery %.3f relevance %.3f   (%.0f s wall, %.0f s cpu)"
          % (label, len(fb), rb[0], rb[1], w0, c0))
    for compare in compares:
        after, log, w1, c1 = run_search(binary, table, "after_" + compare, runs, compare, REPORT["max_q"],
                                        REPORT["min_conds"], REPORT["min_genes"])
        fa = [(r["genes"], r["conds"]) for r in after]
        ra = bic_eval.recovery_relevance(truth, fa)
        autos = " ".join(l.split(" ", 1)[1] for l in log.splitlines() if l.startswith("auto "))
        print("%-22s after  filter: %4d biclusters recovery %.3f relevance %.3f   (%.0f s wall, %.0f s cpu, "
              "%d null runs, Compare %s)" % (label, len(fa), ra[0], ra[1], w1, c1, runs, compare))
    print("%-22s %s" % ("", autos))


def spectral(table, label):
    import numpy as np
    from sklearn.cluster import SpectralBiclustering, SpectralCoclustering
    truth = bic_eval.read_truth(os.path.join(table, "truth.tsv"))
    k = len(truth)
    genes = sum(1 for _ in open(os.path.join(table, "genes.tab")))
    conds = sum(1 for _ in open(os.path.join(table, "exp.expk")))
    x = np.zeros((genes, conds))
    with open(os.path.join(table, "exp.expr")) as f:
        for line in f:
            g, c, v = line.split()
            x[int(g), int(c)] = float(v)
    res = {}
    # Co-clustering needs non-negative values: the table shifted by its minimum.
    for name, model, data in (("SpectralCoclustering", SpectralCoclustering(n_clusters=k, random_state=0),
                               x - x.min()),
                              ("SpectralBiclustering", SpectralBiclustering(n_clusters=k, random_state=0), x)):
        model.fit(data)
        found = []
        for i in range(len(model.rows_)):
            gs, cs = np.nonzero(model.rows_[i])[0].tolist(), np.nonzero(model.columns_[i])[0].tolist()
            if gs and cs:
                found.append((gs, cs))
        rec, rel = bic_eval.recovery_relevance(truth, found)
        print("%-22s %s: %4d biclusters recovery %.3f relevance %.3f" % (label, name, len(found), rec, rel))
        res[name] = (rec, rel)
    return res


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("binary")
    ap.add_argument("--scratch", default=os.path.join(HERE, "..", "data", "scratch", "bicsig"))
    ap.add_argument("--runs", type=int, default=10)
    ap.add_argument("--noise-tables", type=int, default=20)
    ap.add_argument("--compare", default="percond,score", help="Null::Compare values to run, comma list")
    ap.add_argument("--noise-runs", type=int, default=5)
    ap.add_argument("--only", default="main,weak,spectral,noise,auto")
    ap.add_argument("--min-conds", type=int, default=REPORT["min_conds"])
    a = ap.parse_args()
    REPORT["min_conds"] = a.min_conds
    parts = a.only.split(",")
    binary = os.path.abspath(a.binary)
    os.makedirs(a.scratch, exist_ok=True)
    print("load average at start: %.2f %.2f %.2f" % os.getloadavg())
    print("report: MaxQ %(max_q)g, MinConds %(min_conds)d, MinGenes %(min_genes)d" % REPORT)
    if "spectral" in parts:
        try:
            import sklearn  # noqa: F401
        except ImportError:
            subprocess.run(["apt-get", "install", "-y", "python3-sklearn"], check=True)
    for name, kind in (("main", "main"), ("weak", "weak")):
        if name not in parts:
            continue
        t = make_table(a.scratch, name, kind, 2000, 100, 1 if kind == "main" else 2)
        ours(binary, t, a.runs, a.compare.split(","), "%s 2000x100" % name)
        if "spectral" in parts:
            spectral(t, "%s 2000x100" % name)
    if "noise" in parts:
        # Every bicluster is tested here (no size filter): with MinConds 5 nothing found on noise
        # reaches a testable size, which would make the check empty.
        compare = a.compare.split(",")[0]
        reporting = 0
        for s in range(a.noise_tables):
            t = make_table(a.scratch, "noise%02d" % s, "noise", 2000, 100, 100 + s)
            rows, log, w, c = run_search(binary, t, "after_" + compare, a.noise_runs, compare, REPORT["max_q"], 0, 0)
            n = len(rows) if rows is not None else -1
            reporting += 1 if n != 0 else 0
            tested = [l.split()[0] for l in log.splitlines() if l.endswith("biclusters tested")]
            print("noise 2000x100 seed %d: %s biclusters tested, %d reported (%.0f s wall, %.0f s cpu, %d null runs)"
                  % (100 + s, tested[0] if tested else "?", n, w, c, a.noise_runs))
        print("noise tables reporting anything at MaxQ %.2f (all sizes tested, Compare %s): %d of %d"
              % (REPORT["max_q"], compare, reporting, a.noise_tables))
    if "auto" in parts:
        for conds in (24, 100, 300):
            t = make_table(a.scratch, "sized%d" % conds, "sized", 1000, conds, 50 + conds)
            ours(binary, t, a.runs, a.compare.split(",")[:1], "auto 1000x%d" % conds)
    print("load average at end: %.2f %.2f %.2f" % os.getloadavg())


if __name__ == "__main__":
    main()
