#!/usr/bin/python3
"""The four example proteomes of proteinortho (C, E, L, M) as vesk species: a variable table per
species, a tree table on ((C, E), (L, M)), protein length tables, and all-vs-all local alignment hits
scored by Biopython's PairwiseAligner (BLOSUM62, gap open -11, extend -1) written as
<a>.<b>.fixed files for every ordered pair: query, subject, score, alignment length, mismatches,
gaps, query start, query end, subject start, subject end, score again (the column a reader
thresholds). Pairs scoring below --min-score are not written.
Usage: make_ortho_real.py --proteomes <dir with C.faa ...> --out <dir>"""
import argparse
import os

from Bio import SeqIO
from Bio.Align import PairwiseAligner, substitution_matrices

SPECIES = ["C", "E", "L", "M"]

ap = argparse.ArgumentParser()
ap.add_argument("--proteomes", required=True)
ap.add_argument("--out", required=True)
ap.add_argument("--min-score", type=float, default=40.0)
args = ap.parse_args()
os.makedirs(args.out, exist_ok=True)

prots = {}
for sp in SPECIES:
    recs = []
    for r in SeqIO.parse(os.path.join(args.proteomes, sp + ".faa"), "fasta"):
        name = r.id.split(",")[0]
        recs.append((name, str(r.seq).replace("*", "").upper()))
    prots[sp] = recs
    with open(os.path.join(args.out, sp + ".tab"), "w") as f:
        for i, (name, _) in enumerate(recs):
            f.write("%d %s gene x x %s_s al_%s\n" % (i, name, name, name))
    with open(os.path.join(args.out, sp + ".len"), "w") as f:
        for i, (_, seq) in enumerate(recs):
            f.write("%d %d\n" % (i, len(seq)))

# The same species numbered from an offset of 5 per species (ids wrap around): the similarity file
# reader drops a hit between equal gene ids, and the sample lists its orthologs in the same order in
# every file, so most true pairs share ids. The hit files are by name and serve both numberings.
os.makedirs(os.path.join(args.out, "offset"), exist_ok=True)
for k, sp in enumerate(SPECIES):
    n = len(prots[sp])
    with open(os.path.join(args.out, "offset", sp + ".tab"), "w") as f:
        for i, (name, _) in enumerate(prots[sp]):
            f.write("%d %s gene x x %s_s al_%s\n" % ((i + 5 * k) % n, name, name, name))

out = os.path.abspath(args.out)
for tree, tabs in (("tree.tab", out), ("tree_offset.tab", out + "/offset")):
    with open(os.path.join(args.out, tree), "w") as f:
        for i, sp in enumerate(SPECIES):
            plen = "%s/%s.len" % (out, sp) if tabs == out else "none"
            f.write("%d %s 0 %s/%s.tab %d 0 0 0 x %s\n" % (i, sp, tabs, sp, 4 if i < 2 else 5, plen))
        f.write("4 CE 1 none 6 1 0 0 x none\n5 LM 1 none 6 2 0 0 x none\n6 root 1 none -1 3 0 0 x none\n")

if all(os.path.exists(os.path.join(args.out, "%s.%s.fixed" % (a, b))) for a in SPECIES for b in SPECIES if a != b):
    print("hit files already there; tables rewritten")
    raise SystemExit(0)

aligner = PairwiseAligner()
aligner.mode = "local"
aligner.substitution_matrix = substitution_matrices.load("BLOSUM62")
aligner.open_gap_score = -11
aligner.extend_gap_score = -1
alphabet = set(aligner.substitution_matrix.alphabet)


def clean(s):
    return "".join(c if c in alphabet else "X" for c in s)


def hit_line(qn, sn, score, aln):
    # Aligned blocks give the bounds (1-based) and the counts of the similarity columns.
    (qs, qe), (ss, se) = (aln.aligned[0][0][0], aln.aligned[0][-1][1]), (aln.aligned[1][0][0], aln.aligned[1][-1][1])
    matched = sum(b - a for a, b in aln.aligned[0])
    q, s = aln.target, aln.query
    mism = sum(1 for (a0, a1), (b0, b1) in zip(aln.aligned[0], aln.aligned[1])
               for x, y in zip(q[a0:a1], s[b0:b1]) if x != y)
    length = max(qe - qs, se - ss)
    gaps = len(aln.aligned[0]) - 1
    return qn, sn, score, length, mism, gaps, qs + 1, qe, ss + 1, se


pairs = 0
for ai, a in enumerate(SPECIES):
    for b in SPECIES[ai + 1:]:
        fab = open(os.path.join(args.out, "%s.%s.fixed" % (a, b)), "w")
        fba = open(os.path.join(args.out, "%s.%s.fixed" % (b, a)), "w")
        for qn, qseq in prots[a]:
            qc = clean(qseq)
            for sn, sseq in prots[b]:
                sc = clean(sseq)
                score = aligner.score(qc, sc)
                if score < args.min_score:
                    continue
                aln = aligner.align(qc, sc)[0]
                qn_, sn_, sco, length, mism, gaps, qs, qe, ss, se = hit_line(qn, sn, score, aln)
                fab.write("%s\t%s\t%.1f\t%d\t%d\t%d\t%d\t%d\t%d\t%d\t%.1f\n" %
                          (qn, sn, sco, length, mism, gaps, qs, qe, ss, se, sco))
                fba.write("%s\t%s\t%.1f\t%d\t%d\t%d\t%d\t%d\t%d\t%d\t%.1f\n" %
                          (sn, qn, sco, length, mism, gaps, ss, se, qs, qe, sco))
                pairs += 1
        fab.close()
        fba.close()
print("proteomes:", {sp: len(prots[sp]) for sp in SPECIES}, "hit pairs:", pairs)
