#!/usr/bin/python3
"""Synthetic expression tables with planted modules for the bicluster_search benchmark.

    python3 bench/bicsig/make_bic_synth.py --out DIR --kind main|weak|noise|sized
                                           [--genes 2000] [--conds 100] [--seed 1]

Standard library only; the same arguments give the same files under the same Python.

Noise is standard normal per cell. Modules (genes x conditions) are added to it:
  main  six modules: different sizes, two overlapping, one nested in another, up and down shifts of
        2-3 sd, one multiplicative (gene factor times condition factor); 2% of cells missing
  weak  the same six modules with shifts of 1-1.5 sd (the multiplicative one scaled alike)
  noise no module at all
  sized two modules scaled to the number of conditions (a fifth and a sixth of them)
A missing cell is left out of exp.expr (the reader then holds 0 for it).

Writes genes.tab, exp.expk, exp.expr and truth.tsv (module, direction, comma list of gene ids,
comma list of condition ids) into --out.
"""
import argparse
import os
import random


def modules_main(rng, G, C, lo, hi):
    """(genes, conds, kind, amplitude) with kind 'up', 'down' or 'mult'."""
    mods = []
    # Module sizes as fractions of the table; positions random but some deliberately overlap.
    genes = list(range(G))
    conds = list(range(C))
    rng.shuffle(genes)
    rng.shuffle(conds)
    def take(lst, start, n):
        return sorted(lst[start:start + n])
    g = lambda f: max(10, int(round(G * f)))
    c = lambda f: max(4, int(round(C * f)))
    # 1: large, up
    m1 = (take(genes, 0, g(0.05)), take(conds, 0, c(0.10)), "up")
    # 2: overlaps module 1 in genes and conditions, down
    m2 = (take(genes, g(0.03), g(0.04)), take(conds, c(0.06), c(0.12)), "down")
    # 3: wide in conditions, few genes, up
    m3 = (take(genes, 400 * G // 2000, g(0.02)), take(conds, c(0.30), c(0.20)), "up")
    # 4: nested in module 5 (subset of its genes and conditions) but stronger; 5: down
    m5 = (take(genes, 600 * G // 2000, g(0.06)), take(conds, c(0.55), c(0.12)), "down")
    m4 = (sorted(m5[0][: len(m5[0]) // 2]), sorted(m5[1][: len(m5[1]) // 2]), "down")
    # 6: multiplicative
    m6 = (take(genes, 900 * G // 2000, g(0.04)), take(conds, c(0.75), c(0.10)), "mult")
    for gs, cs, kind in (m1, m2, m3, m4, m5, m6):
        mods.append((gs, cs, kind, rng.uniform(lo, hi)))
    return mods


def modules_sized(rng, G, C):
    genes = list(range(G))
    conds = list(range(C))
    rng.shuffle(genes)
    rng.shuffle(conds)
    a = (sorted(genes[:60]), sorted(conds[: max(4, C // 5)]), "up", 2.5)
    b = (sorted(genes[60:140]), sorted(conds[C // 2: C // 2 + max(4, C // 6)]), "down", 2.5)
    return [a, b]


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--out", required=True)
    ap.add_argument("--kind", default="main", choices=["main", "weak", "noise", "sized"])
    ap.add_argument("--genes", type=int, default=2000)
    ap.add_argument("--conds", type=int, default=100)
    ap.add_argument("--seed", type=int, default=1)
    ap.add_argument("--missing", type=float, default=None)
    a = ap.parse_args()
    rng = random.Random(a.seed)
    G, C = a.genes, a.conds
    if a.kind == "main":
        mods = modules_main(rng, G, C, 2.0, 3.0)
    elif a.kind == "weak":
        mods = modules_main(rng, G, C, 1.0, 1.5)
    elif a.kind == "sized":
        mods = modules_sized(rng, G, C)
    else:
        mods = []
    missing = a.missing if a.missing is not None else (0.02 if a.kind in ("main", "weak") else 0.0)
    x = [[rng.gauss(0.0, 1.0) for _ in range(C)] for _ in range(G)]
    for gs, cs, kind, amp in mods:
        if kind == "mult":
            gf = {g: rng.uniform(0.7, 1.3) for g in gs}
            cf = {c: rng.uniform(0.7, 1.3) for c in cs}
            for g in gs:
                for c in cs:
                    x[g][c] += amp * gf[g] * cf[c]
        else:
            s = amp if kind == "up" else -amp
            for g in gs:
                for c in cs:
                    x[g][c] += s
    os.makedirs(a.out, exist_ok=True)
    with open(os.path.join(a.out, "genes.tab"), "w") as f:
        for g in range(G):
            f.write(f"{g}\tG{g:05d}\tg{g:05d}\n")
    with open(os.path.join(a.out, "exp.expk"), "w") as f:
        for c in range(C):
            f.write(f"{c}\tc{c:03d}\tx\t0\t1\t0\n")
    with open(os.path.join(a.out, "exp.expr"), "w") as f:
        for g in range(G):
            for c in range(C):
                if missing > 0 and rng.random() < missing:
                    continue
                f.write(f"{g}\t{c}\t{x[g][c]:.4f}\n")
    with open(os.path.join(a.out, "truth.tsv"), "w") as f:
        for i, (gs, cs, kind, amp) in enumerate(mods):
            f.write(f"{i}\t{kind}\t{','.join(map(str, gs))}\t{','.join(map(str, cs))}\n")


if __name__ == "__main__":
    main()
