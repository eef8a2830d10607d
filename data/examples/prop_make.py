#!/usr/bin/env python3
"""Writes the inputs of examples/property_cover beside the expression tables of bicluster_search
(genes.tab, exp.expk, exp.expr) and the PSSM counts of pssm_scan (pssm_data.pssmd): a PSSM key whose
windows cover the whole promoter, forward strand only; 60-bp promoters of uniform random bases
(Python's random, seed 5) with the PSSM consensus planted at position 20 in genes 0-14 (CACGTG),
5-19 (TGACTCA) and 100-109 (AGATAA) and drawn again until no consensus occurs anywhere else; four
classes; eight candidate biclusters. Run from the repository root:
    /usr/bin/python3 data/examples/prop_make.py
"""
import random
random.seed(5)
out = "data/examples/"
GENES = 200
cons = ["CACGTG", "TGACTCA", "AGATAA"]
planted = [range(0, 15), range(5, 20), range(100, 110)]
with open(out + "prop_pssm.key", "w") as f:
    for i, c in enumerate(cons):
        f.write(f"{i} {c} -100 0 0\n")
with open(out + "prop_promoters.fa", "w") as f:
    for g in range(GENES):
        want = [g in planted[i] for i in range(3)]
        while True:
            s = [random.choice("ACGT") for _ in range(60)]
            at = 20
            for i in range(3):
                if want[i]:
                    s[at:at + len(cons[i])] = list(cons[i])
                    at += len(cons[i]) + 2
            s = "".join(s)
            if all(s.count(cons[i]) == (1 if want[i] else 0) for i in range(3)):
                break
        f.write(f">g{g:03d}\n{s}\n")
classes = [range(0, 20), range(10, 40), sorted(random.sample(range(GENES), 30)), range(100, 120)]
with open(out + "prop_cls.key", "w") as f:
    for i in range(4):
        f.write(f"{i}\tGO:{i:07d}\tclass_{i}\t0\n")
with open(out + "prop_cls.assoc", "w") as f:
    for i, members in enumerate(classes):
        for g in members:
            f.write(f"{i}\t{g}\n")
# Candidates: (conditions with their group, properties (number, group), genes). Groups: 0 and 1
# the two orientations of the conditions, 2 the PSSMs, 3 the classes.
cands = [
    ([(c, 0) for c in range(6)], list(range(20))),
    ([(c, 1) for c in range(10, 16)], list(range(40, 65))),
    ([(0, 2)], list(range(15))),
    ([(1, 2)], list(range(5, 20))),
    ([(3, 3)], list(range(100, 120))),
    ([(1, 3)], list(range(10, 40))),
    ([(c, 0) for c in range(18, 21)], sorted(random.sample(range(GENES), 15))),
    ([(c, 0) for c in range(3)], list(range(10))),
]
with open(out + "prop_cand.bick", "w") as k, open(out + "prop_cand.bicd", "w") as d:
    for i, (props, genes) in enumerate(cands):
        k.write(f"{i}\t{10.0 * i + 0.5}\n")
        for p, grp in props:
            d.write(f"{i}\t0\t{p}\t{grp}\t0\n")
        for g in genes:
            d.write(f"{i}\t1\t{g}\t0\t0\n")
