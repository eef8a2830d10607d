#!/usr/bin/python3
"""Independent model of the HMM decoders and of one Baum-Welch round, for the hmm tests.

Writes (from the repository root):
  data/hmm/random_decode.txt  random models and sequences with the Viterbi score and path and the
                              forward and backward totals of the stated recursions, in float32
  data/hmm/casino_em1.txt     the casino model after one Baum-Welch round with pseudo counts, in double
  data/hmm/example_*          expected outputs of the bundled hmm_decode example, plain and trained

  /usr/bin/python3 tests/hmm/hmm_ref.py

The decoders here follow the written recursions step by step in numpy float32 scalars (logf and
expf taken from the C maths library through ctypes, so single-precision logs round as in C). The
Baum-Welch round is the textbook one in probability space, in double.
"""
import ctypes
import random
import sys

import numpy as np

F32 = np.float32
LOGZ = F32(-3.4028235e38)
VINIT = F32(-4.2535293e37)
_libm = ctypes.CDLL("libm.so.6")
_libm.logf.restype = ctypes.c_float
_libm.logf.argtypes = [ctypes.c_float]
_libm.expf.restype = ctypes.c_float
_libm.expf.argtypes = [ctypes.c_float]


def logf(x):
    return F32(_libm.logf(float(x)))


def expf(x):
    return F32(_libm.expf(float(x)))


def logp(p):
    return LOGZ if p == 0 else logf(F32(p))


def lsum(a, b):
    hi, lo = (a, b) if a > b else (b, a)
    return hi + logf(F32(1.0) + expf(lo - hi))


class Model:
    """States 0..S-1; 0 the start, S-1 the finish; edges (from, to, p) in insertion order."""

    def __init__(self, A, silent, edges, emit):
        self.A, self.silent, self.edges, self.emit = A, silent, edges, emit
        self.S = len(silent)
        self.fin = self.S - 1
        self.back = [[] for _ in range(self.S)]
        self.out = [[] for _ in range(self.S)]
        for f, t, p in edges:
            lp = logp(p)
            self.out[f].append((t, lp))
            self.back[t].append((f, lp))
        self.lemit = {k: [logp(F32(q)) for q in e] for k, e in emit.items()}


def viterbi(m, x):
    L, S = len(x), m.S
    V = [[VINIT] * S for _ in range(L + 2)]
    T = [[-1] * S for _ in range(L + 2)]
    V[0][0] = F32(0)
    for i in range(1, L + 1):
        for k in range(1, S):
            if m.silent[k]:
                continue
            best = LOGZ
            for f, lp in m.back[k]:
                c = V[i - 1][f] + lp
                assert not c > 0
                if c > best:
                    best, T[i][k] = c, f
            V[i][k] = best + m.lemit[k][x[i - 1]]
        for k in range(1, S):
            if not m.silent[k]:
                continue
            best = LOGZ
            for f, lp in m.back[k]:
                c = V[i][f] + lp
                if c > best:
                    best, T[i][k] = c, f
            V[i][k] = best
    best, st = LOGZ, -1
    for f, lp in m.back[m.fin]:
        v = lp + V[L][f]
        if v > best:
            best, st = v, f
    path, row = [st], L
    if st < 0:
        return None
    while st != 0:
        b = T[row][st]
        if b < 0 or len(path) > (L + 1) * S:
            return None  # the traceback fatal: no such case is written
        path.insert(0, b)
        if not m.silent[st]:
            row -= 1
        st = b
    return best, path


def forward(m, x):
    L, S = len(x), m.S
    F = [[LOGZ] * S for _ in range(L + 2)]
    F[0][0] = F32(0)
    for i in range(1, L + 1):
        for k in range(1, S):
            if m.silent[k]:
                continue
            acc = LOGZ
            for f, lp in m.back[k]:
                acc = lsum(acc, F[i - 1][f] + lp)
            F[i][k] = acc + m.lemit[k][x[i - 1]]
        for k in range(1, S):
            if not m.silent[k]:
                continue
            acc = LOGZ
            for f, lp in m.back[k]:
                acc = lsum(acc, F[i][f] + lp)
            F[i][k] = acc
    tot = LOGZ
    for f, lp in m.back[m.fin]:
        tot = lsum(tot, lp + F[L][f])
    return tot


def backward(m, x):
    L, S, fin = len(x), m.S, m.fin
    B = [[LOGZ] * S for _ in range(L + 2)]
    B[L + 1][fin] = F32(0)
    B[L][fin] = F32(0)
    for f, lp in m.back[fin]:
        B[L][f] = lp

    def term_sum(i, k):
        acc = LOGZ
        for t, lp in m.out[k]:
            if m.silent[t]:
                v = lp + B[i][t]
            else:
                v = lp + B[i + 1][t]
                if i < L:
                    v = v + m.lemit[t][x[i]]
            acc = lsum(acc, v)
        return acc

    for i in range(L - 1, -1, -1):
        for k in range(S - 2, 0, -1):
            s = term_sum(i, k)
            assert not s > F32(0.001)
            B[i][k] = F32(0) if s > 0 else s
    return term_sum(0, 0)


def random_case(rng):
    """Up to 8 emitting states and a few silent ones between start and finish, sparse edges. Edges
    into silent states come from lower ids only when the source is silent; an emitting source may
    point to any silent state."""
    A = rng.randint(2, 5)
    n_emit = rng.randint(1, 8)
    n_sil = rng.randint(0, 3)
    kinds = [False] * n_emit + [True] * n_sil
    rng.shuffle(kinds)
    silent = [True] + kinds + [True]
    S = len(silent)
    fin = S - 1
    edges = []
    for k in range(S - 1):
        targets = []
        for t in range(1, S):
            if silent[t] and silent[k] and t <= k:
                continue
            if t == fin and k == 0 and rng.random() < 0.5:
                continue
            if rng.random() < 0.45:
                targets.append(t)
        if not targets:
            continue
        w = [rng.random() for _ in targets]
        if rng.random() < 0.15:
            w[rng.randrange(len(w))] = 0.0  # an impossible edge
        tot = sum(w) or 1.0
        rng.shuffle(targets)
        for t, wi in zip(targets, w):
            edges.append((k, t, F32(wi / tot)))
    emit = {}
    for k in range(1, S - 1):
        if silent[k]:
            continue
        w = [rng.random() for _ in range(A)]
        if rng.random() < 0.1:
            w[rng.randrange(A)] = 0.0
        tot = sum(w)
        emit[k] = [F32(v / tot) for v in w]
    L = rng.choice([0, 0, 1, 2, 3] + list(range(50 + 1)))
    x = [rng.randrange(A) for _ in range(L)]
    return Model(A, silent, edges, emit), x


def g9(v):
    return "%.9g" % float(v)


def write_random(path, n_cases, seed):
    rng = random.Random(seed)
    out = []
    written = rejected = 0
    with np.errstate(all="ignore"):
        while written < n_cases:
            m, x = random_case(rng)
            vit = viterbi(m, x)
            if vit is None:
                rejected += 1
                continue
            fw, bw = forward(m, x), backward(m, x)
            out.append("case %d A %d S %d" % (written, m.A, m.S))
            out.append("silent " + " ".join("1" if s else "0" for s in m.silent))
            out.append("edges %d" % len(m.edges))
            out.extend("%d %d %s" % (f, t, g9(p)) for f, t, p in m.edges)
            out.append("emit %d" % len(m.emit))
            out.extend("%d %s" % (k, " ".join(g9(q) for q in e)) for k, e in sorted(m.emit.items()))
            out.append("seq %d %s" % (len(x), " ".join(map(str, x))))
            out.append("viterbi %s path %d %s" % (g9(vit[0]), len(vit[1]), " ".join(map(str, vit[1]))))
            out.append("forward %s" % g9(fw))
            out.append("backward %s" % g9(bw))
            written += 1
    with open(path, "w") as f:
        f.write("# random models and sequences, seed %d; made by tests/hmm/hmm_ref.py\n" % seed)
        f.write("\n".join(out) + "\n")
    print("%s: %d cases (%d with no valid path skipped)" % (path, written, rejected), file=sys.stderr)


CASINO = dict(start=np.array([0.5, 0.5]), T=np.array([[0.95, 0.05], [0.1, 0.9]]),
              end=np.array([1.0, 1.0]), E=np.array([[1 / 6.0] * 6, [0.1] * 5 + [0.5]]))
CLASSIC = [int(c) for c in "055545523405555012"]


def fwd_bwd(m, x):
    """Forward and backward tables of a two-state model with start and end edges, in double."""
    L = len(x)
    a = np.zeros((L, 2))
    b = np.zeros((L, 2))
    a[0] = m["start"] * m["E"][:, x[0]]
    for i in range(1, L):
        a[i] = (a[i - 1] @ m["T"]) * m["E"][:, x[i]]
    b[L - 1] = m["end"]
    for i in range(L - 2, -1, -1):
        b[i] = m["T"] @ (m["E"][:, x[i + 1]] * b[i + 1])
    return a, b, a[L - 1] @ m["end"]


def bw_round(m, seqs):
    """One Baum-Welch round with pseudo counts: 1/out-degree per edge and 1/6 per symbol, one per
    state in each denominator. Returns the new model and the total log likelihood of the old one."""
    A0 = np.zeros(2)
    Akl = np.zeros((2, 2))
    Aend = np.zeros(2)
    Ek = np.zeros((2, 6))
    ll = 0.0
    for x in seqs:
        a, b, P = fwd_bwd(m, x)
        ll += np.log(P)
        A0 += m["start"] * m["E"][:, x[0]] * b[0] / P
        for i in range(len(x) - 1):
            Akl += np.outer(a[i], m["E"][:, x[i + 1]] * b[i + 1]) * m["T"] / P
        Aend += a[-1] * m["end"] / P
        g = a * b / P
        for i in range(len(x)):
            Ek[:, x[i]] += g[i]
    tot = Akl.sum(axis=1) + Aend
    new = dict(start=(A0 + 0.5) / (A0.sum() + 1),
               T=(Akl + 1 / 3.0) / (tot[:, None] + 1),
               end=(Aend + 1 / 3.0) / (tot + 1),
               E=(Ek + 1 / 6.0) / (Ek.sum(axis=1)[:, None] + 1))
    return new, ll


def viterbi2(m, x):
    """Best path score and states (1 fair, 2 loaded) in double."""
    with np.errstate(divide="ignore"):
        lT, lE = np.log(m["T"]), np.log(m["E"])
        v = np.log(m["start"]) + lE[:, x[0]]
    back = []
    for c in x[1:]:
        s = v[:, None] + lT
        back.append(s.argmax(axis=0))
        v = s.max(axis=0) + lE[:, c]
    v = v + np.log(m["end"])
    st = int(v.argmax())
    path = [st]
    for bk in reversed(back):
        st = int(bk[st])
        path.insert(0, st)
    return v.max(), [0] + [p + 1 for p in path]


def model_lines(m):
    lines = ["0 %d %.12g" % (l + 1, m["start"][l]) for l in range(2)]
    for k in range(2):
        lines += ["%d %d %.12g" % (k + 1, l + 1, m["T"][k, l]) for l in range(2)]
        lines.append("%d 3 %.12g" % (k + 1, m["end"][k]))
    for k in range(2):
        lines.append("%d %s" % (k + 1, " ".join("%.12g" % m["E"][k, s] for s in range(6))))
    return lines


def casino_em1(path):
    """One round on the classic rolls."""
    new, ll = bw_round(CASINO, [CLASSIC])
    lines = ["# casino after one round: from to p, then state p_0..p_5; made by tests/hmm/hmm_ref.py",
             "loglik %.12g" % ll] + model_lines(new)
    with open(path, "w") as f:
        f.write("\n".join(lines) + "\n")


def casino_example(prefix):
    """Expected outputs of the bundled hmm_decode example, in its own formats: the plain run's
    decoding table, and for a run trained with a huge stop bound (two rounds, the least local_opt
    runs) the EM LL line (the total log likelihood of the model after the first round), the trained
    tables and the trained model's decoding table without backward."""
    seqs = [("classic", CLASSIC), ("second", [0, 1, 2, 3, 4, 5])]
    head = "name\tlength\tviterbi\tforward\tbackward\tpath\n"

    def decode(m, backward):
        rows = head
        for name, x in seqs:
            v, p = viterbi2(m, x)
            f = np.log(fwd_bwd(m, x)[2])
            rows += "%s\t%d\t%.12g\t%.12g\t%s\t%s\n" % (name, len(x), v, f, "%.12g" % f if backward else "NA",
                                                      ",".join(map(str, p)))
        return rows

    m1, _ = bw_round(CASINO, [x for _, x in seqs])
    m2, ll1 = bw_round(m1, [x for _, x in seqs])
    lines = [l.split(" ") for l in model_lines(m2)]
    files = {
        "decode.tsv": decode(CASINO, True),
        "train_stdout.txt": "EM LL %.12g\n" % ll1,
        "train_trans.tab": "".join("\t".join(l) + "\n" for l in lines[:8]),
        "train_emit.tab": "".join("\t".join(l) + "\n" for l in lines[8:]),
        "train_decode.tsv": decode(m2, False),
    }
    for name, text in files.items():
        with open(prefix + name, "w") as f:
            f.write(text)


if __name__ == "__main__":
    write_random("data/hmm/random_decode.txt", 300, 20261123)
    casino_em1("data/hmm/casino_em1.txt")
    casino_example("data/hmm/example_")
