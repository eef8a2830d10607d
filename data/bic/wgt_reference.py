#!/usr/bin/env python3
"""Independent reference for the weight tables of the two-bin test graph (see README.md).

Written from the written rules of binning and weighting alone, with no use of the C++ code:
single-precision steps are emulated by rounding every intermediate result to a 32-bit float,
approximate_p is computed exactly with fractions and rounded once, log is math.log of the
float argument rounded to float. Run:  python3 wgt_reference.py > wgt_expected.txt
"""
import math
import struct
from fractions import Fraction


def f32(x):
    return struct.unpack('f', struct.pack('f', x))[0]


def logf(x):
    return f32(math.log(x))


# ---- the graph (as built by hand in tests/bic/WgtSchemeTest.cpp) ----
# condition nodes: (condition id, condition group); variable nodes: (variable id, variable group)
EXP_NODES = [(0, 0), (1, 0), (2, 0), (3, 0), (0, 1), (1, 1), (2, 1)]
VAR_NODES = [(v, 1) for v in range(6)]
N_EXP = len(EXP_NODES)
NODE_GROUP = [g for _, g in EXP_NODES] + [g for _, g in VAR_NODES]
NODE_VAR = [0] * N_EXP + [v for v, _ in VAR_NODES]
N_EXP_GROUPS, N_VAR_GROUPS = 2, 2
EDGES = [(0, 7, 1.0), (0, 8, 1.0), (0, 9, 0.5), (0, 11, 1.0), (1, 7, 1.0), (1, 10, 1.0),
         (2, 7, 1.0), (2, 8, 1.0), (2, 11, 0.8), (2, 12, 1.0), (3, 8, 0.6), (3, 10, 1.0),
         (4, 9, 1.0), (4, 10, 1.0), (5, 11, 1.0), (5, 12, 1.0), (6, 12, 0.5)]
EDGES = [(s, d, f32(w)) for s, d, w in EDGES]
N_NODES = N_EXP + len(VAR_NODES)

# data set: series of each condition and their sizes, condition weights, measurement classes
SERIES = [0, 0, 1, 0]
SERIES_SIZE = {s: SERIES.count(s) for s in SERIES}
EXP_WEIGHT = [f32(x) for x in (1.0, 0.5, 2.0, 1.5)]
# variables 0-3 are measured by both array types (class 0), 4-5 by type 0 only (class 1);
# condition 3 is on array type 1, so class 1 has no value there.
VAR_EC = [0, 0, 0, 0, 1, 1]
EC_EXPS = {0: {0, 1, 2, 3}, 1: {0, 1, 2}}
EXP_CLASS = [0, 1, -1, 1]

# degree tables, summed in edge order in single precision
var_grp_deg = [[0.0] * N_VAR_GROUPS for _ in range(N_NODES)]  # node by variable group
exp_grp_deg = [[0.0] * N_EXP_GROUPS for _ in range(N_NODES)]  # node by condition group
pair = [[0.0] * N_VAR_GROUPS for _ in range(N_EXP_GROUPS)]
for s, d, w in EDGES:
    eg, vg = NODE_GROUP[s], NODE_GROUP[d]
    exp_grp_deg[d][eg] = f32(exp_grp_deg[d][eg] + w)
    var_grp_deg[s][vg] = f32(var_grp_deg[s][vg] + w)
    pair[eg][vg] = f32(pair[eg][vg] + w)


def bins(max_bins, min_interval):
    var_nodes = list(range(N_EXP, N_NODES))
    interval = []
    for g in range(N_EXP_GROUPS):
        mx = max([0.0] + [exp_grp_deg[n][g] for n in var_nodes])
        iv = f32(mx / max_bins)
        interval.append(iv if iv >= min_interval else float(min_interval))
    lists = {}
    for n in var_nodes:
        key = tuple([int(f32(exp_grp_deg[n][g] / interval[g])) for g in range(N_EXP_GROUPS)]
                    + [NODE_GROUP[n], VAR_EC[NODE_VAR[n]]])
        lists.setdefault(key, []).append(n)
    out = []
    for key in sorted(lists):
        nodes = lists[key]
        indeg = []
        for g in range(N_EXP_GROUPS):
            s = 0.0
            for n in nodes:
                s = f32(s + exp_grp_deg[n][g])
            indeg.append(f32(s / len(nodes)))
        out.append({'nodes': nodes, 'vg': key[-2], 'ec': key[-1], 'indeg': indeg})
    return out


def approximate_p(d, bin_d, E):
    if d <= 0:
        return 0.0
    prod = Fraction(1)
    for i in range(d):
        prod *= Fraction(E - bin_d - i, E - i)
    return f32(float(1 - prod))


def weights(cfg, the_bins):
    model_p, min_pu, max_patch = f32(cfg['model_p']), f32(0.01), f32(0.45)
    ratio = f32(0.9)

    def p_weight(p_u, is_edge, exp_id):
        if cfg.get('hs'):
            c = EXP_CLASS[exp_id]
            m = model_p if c in (0, -1) else f32(p_u * f32(1.5))
        else:
            m = model_p
        p = min(p_u, max_patch)
        pos = f32(logf(m) - logf(p))
        neg = f32(logf(f32(1 - m)) - logf(f32(1 - p)))
        if cfg['limit'] and -neg < f32(pos * ratio):
            neg = f32(-ratio * pos)
        if cfg['series']:
            n = SERIES_SIZE[SERIES[exp_id]]
            pos, neg = f32(pos / n), f32(neg / n)
        if cfg['expw'] and not cfg.get('hs'):
            pos, neg = f32(pos * EXP_WEIGHT[exp_id]), f32(neg * EXP_WEIGHT[exp_id])
        return pos if is_edge else neg

    cells = {}
    for b, bn in enumerate(the_bins):
        vg = bn['vg']
        for e in range(N_EXP):
            exp_id, eg = EXP_NODES[e]
            if exp_id not in EC_EXPS[bn['ec']]:
                cells[(b, e)] = (0.0, 0.0, 0.0)
                continue
            bin_d = int(bn['indeg'][eg])
            d = int(var_grp_deg[e][vg])
            E = int(pair[eg][vg])
            p_u = approximate_p(d, bin_d, E) if (E > 0 and d > 0 and bin_d > 0) else min_pu
            w1, w0 = p_weight(p_u, True, exp_id), p_weight(p_u, False, exp_id)
            cells[(b, e)] = (w1, w0, f32(w1 - w0))
    node_bin = {n: b for b, bn in enumerate(the_bins) for n in bn['nodes']}
    edges = []
    for s, d, w in EDGES:
        w1, w0, _ = cells[(node_bin[d], s)]
        edges.append((f32(f32(w * w1) + f32(f32(1 - w) * w0)), f32(f32(w * w1) - f32(w * w0))))
    varw = {}
    if cfg.get('hs'):
        outside = [e for e in range(N_EXP) if EXP_CLASS[EXP_NODES[e][0]] not in (0, -1)]
        bin_sum = []
        for b in range(len(the_bins)):
            s = 0.0
            for e in outside:
                s = f32(s + cells[(b, e)][1])
            bin_sum.append(s)
        for n in range(N_EXP, N_NODES):
            x = bin_sum[node_bin[n]]
            for i, (s, d, w) in enumerate(EDGES):
                if d == n and s in outside:
                    x = f32(x + edges[i][1])
            varw[n] = x
    return cells, edges, varw


def main():
    for name, mb, mi in (('B1', 1, 100), ('B3', 3, 1)):
        for b, bn in enumerate(bins(mb, mi)):
            print(name, 'bin', b, 'vg', bn['vg'], 'ec', bn['ec'], 'indeg',
                  ' '.join(repr(x) for x in bn['indeg']), 'nodes', ' '.join(map(str, bn['nodes'])))
    the_bins = bins(1, 100)
    configs = [
        ('plain', dict(model_p=0.7, limit=0, series=0, expw=0)),
        ('limit', dict(model_p=0.7, limit=1, series=0, expw=0)),
        ('factors', dict(model_p=0.7, limit=1, series=1, expw=1)),
        ('model05', dict(model_p=0.5, limit=0, series=0, expw=0)),
        ('hs', dict(model_p=0.7, limit=1, series=1, expw=1, hs=True)),
    ]
    for name, cfg in configs:
        cells, edges, varw = weights(cfg, the_bins)
        for (b, e), (w1, w0, c) in sorted(cells.items()):
            print(name, 'cell', b, e, repr(w1), repr(w0), repr(c))
        for i, (w, c) in enumerate(edges):
            print(name, 'edge', i, repr(w), repr(c))
        for n in sorted(varw):
            print(name, 'varw', n, repr(varw[n]))


if __name__ == '__main__':
    main()
