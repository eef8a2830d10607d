#!/usr/bin/python3
"""Reference values on real data for the profile and alignment tests, written into a scratch folder.

  /usr/bin/python3 tests/hmm/profile_ref.py <scratch folder>

Reads globins45.fa, globins4.hmm and Pkinase.sto there and writes:
  globins45_pair_scores.txt  i j score of every pair i < j: Biopython's PairwiseAligner, global, linear
                             gap -4, integer BLOSUM62 (letters outside the protein codes as X)
  globins4_ref.txt           i viterbi forward of each globin on globins4.hmm mapped onto the profile
                             topology (states labelled by type and position, edges written from the
                             labels), decoded by the recursions of hmm_ref.py in float32
  pkinase.fa                 the Pkinase seed domains without gaps
"""
import math
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import hmm_ref  # noqa: E402

CODES = "ABCDEFGHIKLMNPQRSTVWYZ"
HMMER = "ACDEFGHIKLMNPQRSTVWY"


def read_fasta(path):
    names, seqs = [], []
    for line in open(path):
        line = line.strip()
        if line.startswith(">"):
            names.append(line[1:].split()[0])
            seqs.append("")
        elif line:
            seqs[-1] += line
    return names, seqs


def pair_scores(seqs, out):
    from Bio.Align import PairwiseAligner, substitution_matrices
    al = PairwiseAligner(mode="global", substitution_matrix=substitution_matrices.load("BLOSUM62"),
                         open_gap_score=-4, extend_gap_score=-4)
    clean = ["".join(c if c in CODES else "X" for c in s.upper()) for s in seqs]
    with open(out, "w") as f:
        for i in range(len(clean)):
            for j in range(i + 1, len(clean)):
                f.write("%d %d %d\n" % (i, j, int(round(al.score(clean[i], clean[j])))))


def read_hmmer(path):
    """Per node k (0..L): transitions (7 -ln p, None for *), match and insert emissions (20 -ln p)."""
    lines = open(path).read().split("\n")
    k = next(i for i, l in enumerate(lines) if l.startswith("HMM "))
    rows = [l.split() for l in lines[k + 2:] if l.strip() and l.strip() != "//"]
    if rows[0][0] == "COMPO":
        rows = rows[1:]
    val = lambda w: None if w == "*" else float(w)  # noqa: E731
    nodes = [(None, [val(w) for w in rows[0]], [val(w) for w in rows[1]])]
    for r in range(2, len(rows), 3):
        match = [val(w) for w in rows[r][1:21]]
        nodes.append((match, [val(w) for w in rows[r + 1]], [val(w) for w in rows[r + 2]]))
    return nodes


def profile_model(path):
    nodes = read_hmmer(path)
    L = len(nodes) - 1
    fin = 3 * L + 2
    M = lambda t: 0 if t == 0 else (fin if t == L + 1 else 3 * t - 1)  # noqa: E731
    I = lambda t: 1 if t == 0 else 3 * t  # noqa: E731
    D = lambda t: 3 * t + 1  # noqa: E731
    prob = lambda v: 0.0 if v is None else math.exp(-v)  # noqa: E731
    edges = []
    for t in range(L + 1):
        mm, mi, md, im, ii, dm, dd = [prob(v) for v in nodes[t][2]]
        edges += [(M(t), M(t + 1), mm), (M(t), I(t), mi), (I(t), M(t + 1), im), (I(t), I(t), ii)]
        if t < L:
            edges += [(M(t), D(t + 1), md), (I(t), D(t + 1), 0.0)]
        if t > 0:
            edges += [(D(t), M(t + 1), dm), (D(t), I(t), 0.0)]
            if t < L:
                edges.append((D(t), D(t + 1), dd))
    silent = [False] * (fin + 1)
    silent[0] = silent[fin] = True
    emit = {}
    for t in range(L + 1):
        emit[I(t)] = [0.0] * 24
        for a, v in zip(HMMER, nodes[t][1]):
            emit[I(t)][CODES.index(a) + 1] = prob(v)
        if t > 0:
            silent[D(t)] = True
            emit[M(t)] = [0.0] * 24
            for a, v in zip(HMMER, nodes[t][0]):
                emit[M(t)][CODES.index(a) + 1] = prob(v)
    return hmm_ref.Model(24, silent, [(f, t, hmm_ref.F32(p)) for f, t, p in edges], emit)


def main():
    d = sys.argv[1]
    names, seqs = read_fasta(os.path.join(d, "globins45.fa"))
    pair_scores(seqs, os.path.join(d, "globins45_pair_scores.txt"))
    m = profile_model(os.path.join(d, "globins4.hmm"))
    with open(os.path.join(d, "globins4_ref.txt"), "w") as f:
        for i, s in enumerate(seqs):
            x = [CODES.index(c) + 1 for c in s]
            v = hmm_ref.viterbi(m, x)
            f.write("%d %.9g %.9g\n" % (i, v[0], hmm_ref.forward(m, x)))
    with open(os.path.join(d, "pkinase.fa"), "w") as f:
        seen = {}
        for line in open(os.path.join(d, "Pkinase.sto")):
            if line.strip() and not line.startswith(("#", "//")):
                name, ali = line.split()
                seen[name] = seen.get(name, "") + ali
        for name, ali in seen.items():
            f.write(">%s\n%s\n" % (name, "".join(c for c in ali.upper() if c.isalpha())))


if __name__ == "__main__":
    main()
