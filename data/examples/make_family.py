#!/usr/bin/python3
"""Writes the bundled inputs of examples/family_profile (run from the repository root):
family_seqs.fa (two synthetic protein families of 8 members, each a 30-residue ancestor with 15%
substitutions and one random insertion or deletion), family_pairs.fa (four pairs), family_pair_subs.tab
and family_pair_tran.tab (pair HMM start parameters: joint substitution probabilities over the 24
protein codes, 9 on the diagonal to 1 elsewhere; transition logs), and the option file family.opt
(with BLOSUM62 of data/hmm/blosum62_codes.opt inline)."""
import math
import random

AA = "ACDEFGHIKLMNPQRSTVWY"
rng = random.Random(20261123)


def mutate(s):
    s = [rng.choice(AA) if rng.random() < 0.15 else c for c in s]
    k = rng.randrange(len(s))
    if rng.random() < 0.5:
        s.insert(k, rng.choice(AA))
    else:
        del s[k]
    return "".join(s)


D = "data/examples/"
with open(D + "family_seqs.fa", "w") as f:
    for fam in "AB":
        anc = "".join(rng.choice(AA) for _ in range(30))
        for i in range(8):
            f.write(">fam%s_%d synthetic member %d\n%s\n" % (fam, i, i, mutate(anc)))
with open(D + "family_pairs.fa", "w") as f:
    for p in range(4):
        anc = "".join(rng.choice(AA) for _ in range(12 + 2 * p))
        f.write(">x%d first\n%s\n>y%d second\n%s\n" % (p, mutate(anc), p, mutate(anc)))
z = 24 * 9 + 24 * 23
with open(D + "family_pair_subs.tab", "w") as f:
    for i in range(24):
        f.write("%d\t%s\n" % (i, "\t".join("%.9g" % ((9 if i == j else 1) / z) for j in range(24))))
with open(D + "family_pair_tran.tab", "w") as f:
    for name, p in (("M-M", 0.8), ("M-G", 0.05), ("G-M", 0.5), ("G-G", 0.4), ("M-F", 0.1), ("G-F", 0.1)):
        f.write("%s\t%.9g\n" % (name, math.log(p)))
with open(D + "family.opt", "w") as f:
    f.write(open("data/hmm/blosum62_codes.opt").read())
    f.write("""[Profile]
Gap = -8
MaxIter = 4
MatchFactor = 1
EMEpsilon = 1
EMLogit = 0
Logit = 0
TargetNumOfClasses = 2
RandomCopyFactor = 0.3
CoolingFactor = 1
[Pair]
EMPasses = 2
[Random]
Seed = 17
[Tables]
Fasta = data/examples/family_seqs.fa
Pairs = data/examples/family_pairs.fa
PairSubs = data/examples/family_pair_subs.tab
PairTran = data/examples/family_pair_tran.tab
OutClasses = family_classes.tsv
OutAlign = family_align.tsv
OutModel = family_model.txt
OutTransitions = family_trans.tab
OutEmissions = family_emit.tab
OutPairs = family_pairs.tsv
OutPairSubs = family_pair_subs_out.tab
OutPairTran = family_pair_tran_out.tab
""")
