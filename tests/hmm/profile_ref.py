#!/usr/bin/python3
"""Reference values on real data for the profile and alignment tests, written into a scratch folder.

  /usr/bin/python3 tests/hmm/profile_ref.py <scratch folder>

Reads globins45.fa, globins4.hmm and Pkinase.sto there and writes:
  globins45_pair_scores.txt  i j score of every pair i < j: Biopython's PairwiseAligner, global, linear
                             gap -4, integer BLOSUM62 (letters outside the protein codes as X)
  globins4_profile.txt       the length, then globins4.hmm as the arguments of set_transition_p and
                             set_emission (HMMER's -ln p as p; I->D and D->I 0)
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
    """The hmm_ref model with ids from the labels (Start 0, I0 1, M_t 3t-1, I_t 3t, D_t 3t+1, Fin 3L+2)
    and the same parameters as lines "T from_pos from_type to_pos to_type p" and "E pos type code p"
    (types M 2, I 3, D 4; Start is M at 0, Fin is M at L+1)."""
    nodes = read_hmmer(path)
    L = len(nodes) - 1
    fin = 3 * L + 2
    ids = {2: lambda t: 0 if t == 0 else (fin if t == L + 1 else 3 * t - 1),
           3: lambda t: 1 if t == 0 else 3 * t, 4: lambda t: 3 * t + 1}
    prob = lambda v: 0.0 if v is None else math.exp(-v)  # noqa: E731
    tr = []
    for t in range(L + 1):
        mm, mi, md, im, ii, dm, dd = [prob(v) for v in nodes[t][2]]
        tr += [(t, 2, t + 1, 2, mm), (t, 2, t, 3, mi), (t, 3, t + 1, 2, im), (t, 3, t, 3, ii)]
        if t < L:
            tr += [(t, 2, t + 1, 4, md), (t, 3, t + 1, 4, 0.0)]
        if t > 0:
            tr += [(t, 4, t + 1, 2, dm), (t, 4, t, 3, 0.0)]
            if t < L:
                tr.append((t, 4, t + 1, 4, dd))
    em = []
    for t in range(L + 1):
        for typ, vals in ((3, nodes[t][1]), (2, nodes[t][0])):
            if vals is not None:
                em += [(t, typ, CODES.index(a) + 1, prob(v)) for a, v in zip(HMMER, vals)]
    silent = [False] * (fin + 1)
    silent[0] = silent[fin] = True
    for t in range(1, L + 1):
        silent[ids[4](t)] = True
    emit = {}
    for t, typ, c, p in em:
        emit.setdefault(ids[typ](t), [0.0] * 24)[c] = p
    edges = [(ids[ft](fp), ids[tt](tp), hmm_ref.F32(p)) for fp, ft, tp, tt, p in tr]
    lines = ["T %d %d %d %d %.9g" % e for e in tr] + ["E %d %d %d %.9g" % e for e in em]
    return hmm_ref.Model(24, silent, edges, emit), lines


def main():
    d = sys.argv[1]
    names, seqs = read_fasta(os.path.join(d, "globins45.fa"))
    pair_scores(seqs, os.path.join(d, "globins45_pair_scores.txt"))
    m, lines = profile_model(os.path.join(d, "globins4.hmm"))
    with open(os.path.join(d, "globins4_profile.txt"), "w") as f:
        f.write("%d\n%s\n" % (len(read_hmmer(os.path.join(d, "globins4.hmm"))) - 1, "\n".join(lines)))
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
