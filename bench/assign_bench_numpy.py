#!/usr/bin/python3
"""The benchmark table of assign_eval_bench and a vectorised numpy scorer over the same parent sets.

  assign_bench_numpy.py make <path> [rows] [vars]   10,000 x 20 by default, values 0..2, each
                                                    variable leaning on the one before it
  assign_bench_numpy.py score <path> [bde]          BDeu (ESS 1) and mutual information (only
                                                    BDeu with "bde") of every parent set of up to
                                                    three parents of each variable; prints sets,
                                                    CPU seconds, sets per CPU second and the sums

The scorer batches all parent sets of one size for one base variable: one bincount over the
stacked combination indices gives every count table at once, and gammaln / log run over whole
arrays. BDeu here sums over the combinations seen, as the iterator form does.
"""
import itertools
import sys
import time

import numpy as np
from scipy.special import gammaln


def make(path, rows=10000, nvars=20):
    rng = np.random.default_rng(20240611)
    data = np.empty((rows, nvars), dtype=np.int64)
    data[:, 0] = rng.integers(0, 3, rows)
    for j in range(1, nvars):
        copy = rng.random(rows) < 0.4
        data[:, j] = np.where(copy, data[:, j - 1], rng.integers(0, 3, rows))
    with open(path, "w") as out:
        out.write(" ".join("v%d" % j for j in range(nvars)) + "\n")
        np.savetxt(out, data, fmt="%d")


def score(path, with_mi=True, chunk=128):
    data = np.loadtxt(path, dtype=np.int64, skiprows=1)
    rows, nvars = data.shape
    ess = 1.0
    total_sets, bde_sum, mi_sum = 0, 0.0, 0.0
    t0 = time.process_time()
    for base in range(nvars):
        others = [j for j in range(nvars) if j != base]
        y = data[:, base]
        for k in range(4):
            q = 3 ** k
            a = ess / q
            a3 = a / 3
            sets = list(itertools.combinations(others, k))
            for s0 in range(0, len(sets), chunk):
                part = sets[s0:s0 + chunk]
                batch = np.array(part, dtype=np.int64).reshape(len(part), k)
                nb = batch.shape[0]
                idx = np.zeros((nb, rows), dtype=np.int64)
                w = 1
                for j in range(k):
                    idx += w * data[:, batch[:, j]].T
                    w *= 3
                idx = idx * 3 + y + (np.arange(nb, dtype=np.int64) * (q * 3))[:, None]
                counts = np.bincount(idx.ravel(), minlength=nb * q * 3).reshape(nb, q, 3).astype(np.float64)
                n_j = counts.sum(axis=2)
                seen = n_j > 0
                bde = (gammaln(a) - gammaln(n_j + a)) * seen + (
                    (gammaln(counts + a3) - gammaln(a3)).sum(axis=2))
                bde_sum += float(bde.sum())
                total_sets += nb
                if not with_mi:
                    continue
                p = counts / rows
                pj = n_j / rows
                py = counts.sum(axis=1) / rows
                with np.errstate(divide="ignore", invalid="ignore"):
                    terms = np.where(counts > 0, p * np.log(p / (pj[:, :, None] * py[:, None, :])), 0.0)
                mi_sum += float(terms.sum())
    cpu = time.process_time() - t0
    print("numpy %s\tsets" % ("BDeu+MInfo" if with_mi else "BDeu") + " %d\tcpu_s %.3f\tsets_per_cpu_s %d\tsum_bde %.6g\tsum_mi %.6g"
          % (total_sets, cpu, total_sets / cpu, bde_sum, mi_sum))


if __name__ == "__main__":
    if sys.argv[1] == "make":
        make(sys.argv[2], *map(int, sys.argv[3:]))
    else:
        score(sys.argv[2], with_mi=len(sys.argv) < 4 or sys.argv[3] != "bde")
