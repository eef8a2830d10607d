#!/usr/bin/env python3
"""Expected states of the ranked observer in PBicChangeObsTest.cpp, from scipy's hypergeom.logpmf
(s = 0 below the expected overlap), after each add: bins, threshold cut, gain and derivatives.
    /usr/bin/python3 data/bic/ranked_obs_model.py
"""
from scipy.stats import hypergeom

OUT = 3.4028235e+38
VALUES = [0.5, 0.1, 0.1, 0.3, 0.3, 0.3, 0.9, 2.0, OUT, 0.7, 0.2, 5.0]
BINS, FIRST_MIN, MIN_LOG_PV, MIN_GENES = 4, 3, 1.0, 2
ADDS = [3, 4, 5, 1, 8, 0, 10, 2]


def cut_bins(values, bins, first_min):
    ranked = sorted((v, i) for i, v in enumerate(values) if v < 3.4028235e+37)
    var_bin = [-1] * len(values)
    sizes = []
    pos = 0
    for b in range(bins):
        if pos >= len(ranked):
            sizes.append(0)
            continue
        size = (len(ranked) - pos) // (bins - b)
        if b == 0:
            size = max(size, min(first_min, len(ranked)))
        end = pos + size
        while pos < end < len(ranked) and ranked[end][0] == ranked[end - 1][0]:
            end += 1
        for _, i in ranked[pos:end]:
            var_bin[i] = b
        sizes.append(end - pos)
        pos = end
    return var_bin, sizes


def neg_log_hg(U, all_, n, k):
    if all_ * n / U > k:
        return 0.0
    return -hypergeom.logpmf(k, U, all_, n)


for first_min in (0, 12):
    print("FirstBinMinSize", first_min, "bins", cut_bins(VALUES, BINS, first_min))
var_bin, sizes = cut_bins(VALUES, BINS, FIRST_MIN)
print("var_bin", var_bin)
print("sizes", sizes)
U = len(VALUES)
inside = []
thresh = (-100, 0)  # (bin, all)
score_in = score_out = 0.0
for v in ADDS:
    inside.append(v)
    n = len(inside)
    if n < MIN_GENES:
        print("add", v, "n", n, "no update")
        continue
    best = None
    all_ = in_ = 0
    for b in range(BINS):
        all_ += sizes[b]
        in_ += sum(1 for x in inside if var_bin[x] == b)
        if in_ <= 0:
            continue
        s = neg_log_hg(U, all_, n, in_)
        if s > MIN_LOG_PV and (best is None or s > best[0]):
            best = (s, b, all_)
    if best:
        thresh = (best[1], best[2])
    tin = sum(1 for x in inside if 0 <= var_bin[x] <= thresh[0])
    gain = 0.0
    if tin:
        g = neg_log_hg(U, thresh[1], n, tin)
        if thresh[1] != tin:
            score_in = neg_log_hg(U, thresh[1], n + 1, tin + 1) - g
            score_out = neg_log_hg(U, thresh[1], n + 1, tin) - g
        gain = g - MIN_LOG_PV
    print("add %d n %d thresh_bin %d all %d in %d gain %r score_in %r score_out %r"
          % (v, n, thresh[0], thresh[1], tin, gain, score_in, score_out))
