#!/usr/bin/python3
"""Counts the groups of proteinortho_clustering output (po.out) that equal a planted group of
ortho_bench gen (planted.txt): usage ortho_po_check.py <dir>."""
import sys
genes = 5000
sp = ["Scer", "Spar", "Smik", "Skud", "Sbay", "Scas", "Sklu", "Calb"]
planted = dict(tuple(map(int, l.split())) for l in open(sys.argv[1] + "/planted.txt"))
exact = 0
lines = open(sys.argv[1] + "/po.out").read().split("\n")[1:]
for l in lines:
    if not l.strip():
        continue
    f = l.split("\t")[3:]
    names = [x for c in f for x in c.split(",") if x != "*"]
    groups = {((int(n.split("_")[1]) - 13 * sp.index(n.split("_")[0])) % genes) for n in names}
    if len(groups) == 1 and planted.get(next(iter(groups))) == len(names):
        exact += 1
print("proteinortho groups equal to a planted group:", exact, "of", len([l for l in lines if l.strip()]))
