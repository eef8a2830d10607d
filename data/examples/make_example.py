#!/usr/bin/env python3
"""Writes the small data set of examples/bicluster_search: 200 genes x 24 conditions of standard
normal noise (Python's random, seed 11) with two planted modules: genes 0-19 up by 3 in conditions
0-5, genes 40-64 down by 3 in conditions 10-15. Run from the repository root:

    python3 data/examples/make_example.py
"""
import random

random.seed(11)
GENES, CONDS = 200, 24
out = "data/examples/"
with open(out + "genes.tab", "w") as f:
    for g in range(GENES):
        f.write(f"{g}\tG{g:03d}\tg{g:03d}\n")
with open(out + "exp.expk", "w") as f:
    for c in range(CONDS):
        f.write(f"{c}\tcond{c:02d}\tx\t0\t1\t0\n")
with open(out + "exp.expr", "w") as f:
    for g in range(GENES):
        for c in range(CONDS):
            x = random.gauss(0.0, 1.0)
            if g < 20 and c < 6:
                x += 3.0
            if 40 <= g < 65 and 10 <= c < 16:
                x -= 3.0
            f.write(f"{g}\t{c}\t{x:.4f}\n")
