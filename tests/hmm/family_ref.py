#!/usr/bin/python3
"""Expected pair outputs of examples/family_profile on its bundled data, computed independently in
double precision (run from the repository root):

  /usr/bin/python3 tests/hmm/family_ref.py

Writes data/hmm/family_pairs_expected.tsv (integer global alignment with linear gap and the stated
tie rules; the pair HMM total after Pair::EMPasses passes of expected counts and normalisation) and
data/hmm/family_pair_tran_expected.tab (the trained transition logs).
"""
import math

NEG = float("-inf")
CODES = "ABCDEFGHIKLMNPQRSTVWYZ"


def lse(v):
    m = max(v)
    return m if m == NEG else m + math.log(sum(math.exp(a - m) for a in v))


def opt_value(text, key):
    return text.split("\n" + key + " = ")[1].split("\n")[0]


def read_fasta(path):
    recs = []
    for line in open(path):
        line = line.strip()
        if line.startswith(">"):
            recs.append([line[1:].split()[0], []])
        elif line:
            recs[-1][1] += [CODES.index(c) + 1 if c in CODES else 23 for c in line]
    return recs


def dp(x, y, mat, gap):
    n, m = len(x), len(y)
    S = [[0] * (m + 1) for _ in range(n + 1)]
    T = [[None] * (m + 1) for _ in range(n + 1)]
    for j in range(1, m + 1):
        S[0][j], T[0][j] = S[0][j - 1] + gap, 1
    for i in range(1, n + 1):
        S[i][0], T[i][0] = i * gap, 2
        for j in range(1, m + 1):
            d = S[i - 1][j - 1] + int(mat[x[i - 1]][y[j - 1]])
            l, u = S[i][j - 1] + gap, S[i - 1][j] + gap
            S[i][j], T[i][j] = (d, 0) if d >= l and d >= u else ((l, 1) if u < l else (u, 2))
    out, i, j = [], n, m
    while i or j:
        t = T[i][j]
        out.insert(0, (i - 1 if t != 1 else -1, j - 1 if t != 2 else -1))
        i, j = (i - (t != 1), j - (t != 2))
    return S[n][m], out


def pair_fb(x, y, P):
    """Forward total and expected counts of the three-state pair HMM (start in M at (0,0))."""
    n, m = len(x), len(y)
    F = {s: [[NEG] * (m + 1) for _ in range(n + 1)] for s in "MXY"}
    B = {s: [[NEG] * (m + 1) for _ in range(n + 1)] for s in "MXY"}
    F["M"][0][0] = 0.0
    for i in range(n + 1):
        for j in range(m + 1):
            if i and j:
                F["M"][i][j] = lse([F["M"][i - 1][j - 1] + P["mm"], F["X"][i - 1][j - 1] + P["gm"],
                                    F["Y"][i - 1][j - 1] + P["gm"]]) + P["subs"][x[i - 1]][y[j - 1]]
            if i:
                F["X"][i][j] = lse([F["M"][i - 1][j] + P["mg"], F["X"][i - 1][j] + P["gg"]]) + P["xg"][x[i - 1]]
            if j:
                F["Y"][i][j] = lse([F["M"][i][j - 1] + P["mg"], F["Y"][i][j - 1] + P["gg"]]) + P["yg"][y[j - 1]]
    tot = lse([F["M"][n][m] + P["mf"], F["X"][n][m] + P["gf"], F["Y"][n][m] + P["gf"]])
    for i in range(n, -1, -1):
        for j in range(m, -1, -1):
            acc = {"M": [], "X": [], "Y": []}
            if i == n and j == m:
                acc["M"].append(P["mf"]), acc["X"].append(P["gf"]), acc["Y"].append(P["gf"])
            if i < n and j < m:
                t = P["subs"][x[i]][y[j]] + B["M"][i + 1][j + 1]
                acc["M"].append(P["mm"] + t), acc["X"].append(P["gm"] + t), acc["Y"].append(P["gm"] + t)
            if i < n:
                t = P["xg"][x[i]] + B["X"][i + 1][j]
                acc["M"].append(P["mg"] + t), acc["X"].append(P["gg"] + t)
            if j < m:
                t = P["yg"][y[j]] + B["Y"][i][j + 1]
                acc["M"].append(P["mg"] + t), acc["Y"].append(P["gg"] + t)
            for s in "MXY":
                B[s][i][j] = lse(acc[s]) if acc[s] else NEG
    C = {k: [] for k in ("mm", "mg", "gg", "gm", "mf", "gf")}
    A = len(P["xg"])
    E = {"subs": [[[] for _ in range(A)] for _ in range(A)], "xg": [[] for _ in range(A)], "yg": [[] for _ in range(A)]}
    for i in range(n + 1):
        for j in range(m + 1):
            if i < n and j < m:
                t = P["subs"][x[i]][y[j]] + B["M"][i + 1][j + 1] - tot
                C["mm"].append(F["M"][i][j] + P["mm"] + t)
                C["gm"] += [F["X"][i][j] + P["gm"] + t, F["Y"][i][j] + P["gm"] + t]
            if i < n:
                t = P["xg"][x[i]] + B["X"][i + 1][j] - tot
                C["mg"].append(F["M"][i][j] + P["mg"] + t), C["gg"].append(F["X"][i][j] + P["gg"] + t)
            if j < m:
                t = P["yg"][y[j]] + B["Y"][i][j + 1] - tot
                C["mg"].append(F["M"][i][j] + P["mg"] + t), C["gg"].append(F["Y"][i][j] + P["gg"] + t)
            if i and j:
                E["subs"][x[i - 1]][y[j - 1]].append(F["M"][i][j] + B["M"][i][j] - tot)
            if i:
                E["xg"][x[i - 1]].append(F["X"][i][j] + B["X"][i][j] - tot)
            if j:
                E["yg"][y[j - 1]].append(F["Y"][i][j] + B["Y"][i][j] - tot)
    C["mf"].append(F["M"][n][m] + P["mf"] - tot)
    C["gf"] += [F["X"][n][m] + P["gf"] - tot, F["Y"][n][m] + P["gf"] - tot]
    return tot, C, E


def em_pass(pairs, P):
    A = len(P["xg"])
    C = {k: [] for k in ("mm", "mg", "gg", "gm", "mf", "gf")}
    subs = [[[] for _ in range(A)] for _ in range(A)]
    xg, yg = [[] for _ in range(A)], [[] for _ in range(A)]
    for x, y in pairs:
        _, c, e = pair_fb(x, y, P)
        for k in C:
            C[k] += c[k]
        for a in range(A):
            xg[a] += e["xg"][a]
            yg[a] += e["yg"][a]
            for b in range(A):
                subs[a][b] += e["subs"][a][b]
    Q = {k: lse(v) if v else NEG for k, v in C.items()}
    # Normalisation: M-G counts both gap kinds; x and y exchangeable.
    Q["mg"] -= math.log(2)
    gt = lse([Q["gg"], Q["gm"], Q["gf"]])
    for k in ("gg", "gm", "gf"):
        Q[k] -= gt
    mt = lse([Q["mm"], Q["mg"], Q["mf"]])
    Q["mg"] -= math.log(2) + mt
    Q["mm"] -= mt
    Q["mf"] -= mt
    g = [lse(xg[a] + yg[a]) if xg[a] + yg[a] else NEG for a in range(A)]
    gtot = lse(g)
    Q["xg"] = [v - gtot for v in g]
    Q["yg"] = list(Q["xg"])
    s = [[lse(subs[a][b]) if subs[a][b] else NEG for b in range(A)] for a in range(A)]
    st = lse([v for row in s for v in row])
    s = [[v - st for v in row] for row in s]
    for a in range(A):
        for b in range(a + 1, A):
            s[a][b] = s[b][a] = lse([s[a][b], s[b][a]]) - math.log(2)
    Q["subs"] = s
    return Q


def main():
    opt = open("data/examples/family.opt").read()
    vals = [float(v) for v in opt.split("Matrix = {f 576\n")[1].split("}")[0].split()]
    mat = [vals[24 * i:24 * i + 24] for i in range(24)]
    gap = int(opt_value(opt, "Gap"))
    passes = int(opt_value(opt, "EMPasses"))
    recs = read_fasta("data/examples/family_pairs.fa")
    pairs = [(recs[2 * p][1], recs[2 * p + 1][1]) for p in range(len(recs) // 2)]
    P = {"subs": [[math.log(float(v)) for v in line.split()[1:]] for line in open("data/examples/family_pair_subs.tab")]}
    for line in open("data/examples/family_pair_tran.tab"):
        k, v = line.split()
        P[k.lower().replace("-", "")] = float(v)
    P["xg"] = [-math.log(24)] * 24
    P["yg"] = list(P["xg"])
    for _ in range(passes):
        P = em_pass(pairs, P)
    with open("data/hmm/family_pairs_expected.tsv", "w") as f:
        f.write("x\ty\tdp_score\tdp_align\tforward\n")
        for p, (x, y) in enumerate(pairs):
            score, al = dp(x, y, mat, gap)
            f.write("%s\t%s\t%d\t%s\t%.9g\n" % (recs[2 * p][0], recs[2 * p + 1][0], score,
                                                 ",".join("%d:%d" % a for a in al), pair_fb(x, y, P)[0]))
    with open("data/hmm/family_pair_tran_expected.tab", "w") as f:
        for k in ("M-M", "M-G", "G-M", "G-G", "M-F", "G-F"):
            f.write("%s\t%.9g\n" % (k, P[k.lower().replace("-", "")]))


if __name__ == "__main__":
    main()
