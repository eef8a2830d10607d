#!/usr/bin/python3
"""Independent scores of parent sets for the assignment evaluators (numpy/scipy model).

Counts come straight from the table rows; BDeu uses scipy's gammaln, the G statistic scipy's
chi2.cdf, the consistency tail scipy's betainc. Sums are kept in 32-bit floats step by step, in the
order of rising parent combination (first parent the lowest digit), as the scores are defined.

  assign_eval_ref.py example <option file>      the example program's table, on stdout
  assign_eval_ref.py all <table> <max parents> <ess>
        every base column and every parent set of up to <max parents> other columns, in
        itertools.combinations order: base, parents, MInfo, MInfo_m, Consist, Consist_m, PConsist,
        BDe, BDe_m, PMInfo, PMInfo_m
"""
import ctypes
import itertools
import math
import sys

import numpy as np
from scipy.special import betainc, gammaln
from scipy.stats import chi2

f32 = np.float32
# Single-precision natural log of the C library, as the scores are defined with it.
_libm = ctypes.CDLL("libm.so.6")
_libm.logf.restype = ctypes.c_float
_libm.logf.argtypes = [ctypes.c_float]


def logf(x):
    return f32(_libm.logf(float(x)))
TYPES = ["MInfo", "Consist", "PConsist", "BDe", "PMInfo"]


def read_table(path):
    with open(path) as fh:
        names = fh.readline().split()
        rows = [list(map(int, line.split())) for line in fh if line.strip()]
    return names, np.array(rows, dtype=np.int64).reshape(len(rows), len(names))


def read_options(path):
    """Scopes, 'key = value' lines and '{ t n' arrays of the option files."""
    opts, scope = {}, ""
    lines = open(path).read().splitlines()
    i = 0
    while i < len(lines):
        line = lines[i].strip()
        i += 1
        if not line or line.startswith("#"):
            continue
        if line.startswith("["):
            scope = line.strip("[]")
            continue
        key, _, value = line.partition("=")
        key, value = key.strip(), value.strip()
        if value.startswith("{"):
            kind, count = value[1:].split()[:2]
            toks = []
            while len(toks) < int(count):
                toks += lines[i].split()
                i += 1
            while lines[i].strip() != "}":
                i += 1
            i += 1
            opts[scope + "::" + key] = [int(t) for t in toks] if kind == "i" else toks
        else:
            opts[scope + "::" + key] = value
    return opts


def lg(x):
    """Log-gamma of a float argument, rounded to float."""
    return f32(gammaln(float(f32(x))))


def counts_of(data, base, parents):
    """3^k x 3 counts (first parent the lowest digit) over rows with no missing value among base and
    parents, and per combination the rows whatever the base value."""
    k = len(parents)
    cnt = np.zeros((3 ** k, 3), dtype=np.int64)
    any_base = np.zeros(3 ** k, dtype=np.int64)
    for row in data:
        pv = [row[p] for p in parents]
        if min(pv, default=0) < 0:
            continue
        idx = sum(v * 3 ** j for j, v in enumerate(pv))
        any_base[idx] += 1
        if row[base] >= 0:
            cnt[idx, row[base]] += 1
    return cnt, any_base


def plogp(p):
    return f32(-p * logf(p))


def minfo_cells(cnt, margins, E):
    h = f32(0)
    for m in margins:
        p = f32(f32(m) / f32(E))
        if p != 0:
            h = f32(h - f32(p * logf(p)))
    total = 0
    for row in cnt:
        s = int(row.sum())
        if s == 0:
            continue
        total += s
        h = f32(h + plogp(f32(f32(s) / f32(E))))
        for c in row:
            if c:
                h = f32(h - plogp(f32(f32(int(c)) / f32(E))))
    return h, total


def minfo_matrix(cnt):
    N = int(cnt.sum())
    h = f32(0)
    for s in cnt.sum(axis=0):
        if s:
            p = f32(f32(int(s)) / f32(N))
            h = f32(h - f32(p * logf(p)))
    for row in cnt:
        for c in row:
            if c:
                h = f32(h - plogp(f32(f32(int(c)) / f32(N))))
        r = f32(f32(int(row.sum())) / f32(N))
        if r > 0:
            h = f32(h + plogp(r))
    return h, N


def bde_prior(ess, card, n):
    power = f32(card ** abs(n))
    a = f32(f32(ess) / power) if n >= 0 else f32(f32(ess) / f32(f32(1) / power))
    return a, f32(a / f32(card))


def bde_iter(cnt, ess, k):
    a, a3 = bde_prior(ess, 3, k)
    cell_prior = f32(lg(a) - f32(f32(3) * lg(a3)))
    score = f32(0)
    for row in cnt:
        s = int(row.sum())
        if s == 0:
            continue
        score = f32(score + cell_prior)
        score = f32(score - lg(f32(s) + a))
        for c in row:
            score = f32(score + lg(f32(int(c)) + a3))
    return score


def bde_matrix(cnt, ess, k):
    a, a3 = bde_prior(ess, 3, k)
    ga, g3 = lg(a), lg(a3)
    score = f32(0)
    for row in cnt:
        for c in row:
            score = f32(score + lg(f32(int(c)) + a3))
        t = f32(ga - f32(f32(3) * g3))
        t = f32(t - lg(f32(int(row.sum())) + a))
        score = f32(score + t)
    return score


def consist(cnt):
    s = f32(0)
    for row in cnt:
        s = f32(s + f32(int(row.max())))
    return s


def pconsist(cnt, margin0, E):
    sizes, good = [], 0
    for row in cnt:
        mx = int(row.max())
        if mx:
            sizes.append(int(row.sum()))
            good += mx
    errs = [1] * len(sizes)
    for _ in range(E - good):
        best, chosen = 1, -1
        for i, n in enumerate(sizes):
            q = (n - errs[i]) // errs[i]
            if q > best:
                best, chosen = q, i
        if chosen >= 0:
            errs[chosen] += 1
    p0 = float(f32(f32(margin0) / f32(E)))
    tot = 0.0
    for n, e in zip(sizes, errs):
        k = n - e + 1
        # P(at least k successes in n trials of p0), kept in single precision.
        r = float(f32(binom_tail(p0, n, k)))
        tot += -1000.0 * (n - e) if r == 0.0 else math.log(r)
    return f32(-tot)


def binom_tail(p, n, k):
    """P(at least k successes in n trials of p), the regularised incomplete beta I_p(k, n - k + 1),
    with the log of its front factor Gamma(a + b) / (Gamma(a) Gamma(b)) combined in single precision
    as the tail is defined: the exact value is scaled by the factor's rounding."""
    a, b = float(k), float(n - k + 1)
    exact = betainc(a, b, p)
    if p == 0.0 or p == 1.0:
        return exact
    g_exact = gammaln(a + b) - gammaln(a) - gammaln(b)
    g_single = float(f32(f32(f32(gammaln(a + b)) - f32(gammaln(a))) - f32(gammaln(b))))
    scale = math.exp(g_single - g_exact)
    if (a + 1.0) / (a + b + 2.0) <= p:
        return 1.0 - (1.0 - exact) * scale
    return exact * scale


def pminfo_iter(cnt, any_base, margins, E):
    h, _ = minfo_cells(cnt, margins, E)
    cells = int((any_base > 0).sum())
    if h < f32(0.0001):
        return f32(0)
    return f32(chi2.cdf(float(f32(f32(2) * f32(E)) * h), 2 * cells - 2))


def pminfo_matrix(cnt):
    h, N = minfo_matrix(cnt)
    rows = int((cnt.sum(axis=1) > 0).sum())
    if rows == 1:
        return f32(1) if (cnt.sum(axis=0) == N).any() else f32(0)
    if h < f32(0.0001):
        return f32(0)
    return f32(chi2.cdf(float(f32(f32(2) * f32(N)) * h), (rows - 1) * (cnt.shape[1] - 1)))


def scores(data, base, parents, ess):
    """All nine scores; MInfo is nan where its row total check fails."""
    E = data.shape[0]
    k = len(parents)
    cnt, any_base = counts_of(data, base, parents)
    margins = [int((data[:, base] == v).sum()) for v in range(3)]
    h, total = minfo_cells(cnt, margins, E)
    hm, _ = minfo_matrix(cnt)
    return {
        "MInfo": h if total == E else float("nan"),
        "MInfo_m": hm,
        "Consist": consist(cnt),
        "Consist_m": consist(cnt),
        "PConsist": pconsist(cnt, margins[0], E),
        "PConsist_m": "NA",
        "BDe": bde_iter(cnt, ess, k),
        "BDe_m": bde_matrix(cnt, ess, k),
        "PMInfo": pminfo_iter(cnt, any_base, margins, E),
        "PMInfo_m": pminfo_matrix(cnt),
    }


def fmt(x):
    return x if isinstance(x, str) else "%.9g" % float(x)


def walk(k, allowed, forced, choice):
    """Subsets of k ids: forced ids in place, the next position on the first or second entry when
    there are choice ids, the rest in lexicographic order of forced + choice + other allowed ids."""
    f = len(forced)
    if k < f + (1 if choice else 0):
        return
    order = list(forced) + list(choice) + [i for i in allowed if i not in forced and i not in choice]
    for c in itertools.combinations(range(len(order)), k):
        if any(c[j] != j for j in range(f)):
            continue
        if choice and c[f] > f + 1:
            continue
        yield [order[i] for i in c]


def example(path):
    opts = read_options(path)
    names, data = read_table(opts["Tables::Data"])
    base = int(opts["Eval::Base"])
    cand = opts.get("Eval::Candidates", [i for i in range(len(names)) if i != base])
    cand = sorted(set(i for i in cand if i != base))
    forced, choice = opts.get("Eval::Forced", []), opts.get("Eval::Choice", [])
    types = opts["Eval::Types"]
    ess = int(opts.get("Eval::EquivSampleSize", "0"))
    out = ["\t".join(["parents"] + [c for t in types for c in (t, t + "_m")])]
    sets = [[]]
    for k in range(1, int(opts["Eval::MaxParents"]) + 1):
        sets += list(walk(k, cand, forced, choice))
    for ps in sets:
        s = scores(data, base, ps, ess)
        line = [",".join(names[p] for p in ps) or "-"]
        for t in types:
            line += [fmt(s[t]), fmt(s[t + "_m"])]
        out.append("\t".join(line))
    print("\n".join(out))


def all_sets(path, max_parents, ess):
    names, data = read_table(path)
    cols = ["MInfo", "MInfo_m", "Consist", "Consist_m", "PConsist", "BDe", "BDe_m", "PMInfo", "PMInfo_m"]
    print("\t".join(["base", "parents"] + cols))
    for base in range(len(names)):
        others = [i for i in range(len(names)) if i != base]
        for k in range(max_parents + 1):
            for ps in itertools.combinations(others, k):
                s = scores(data, base, list(ps), ess)
                print("\t".join([names[base], ",".join(names[p] for p in ps) or "-"] + [fmt(s[c]) for c in cols]))


if __name__ == "__main__":
    if sys.argv[1] == "example":
        example(sys.argv[2])
    else:
        all_sets(sys.argv[2], int(sys.argv[3]), int(sys.argv[4]))
