#!/usr/bin/env python3
"""Expected relation node costs of the property bicluster tests (PropBiclustTest.cpp), from scipy:
cost = max(0, h(3a) - h(M)) with h(N) = hypergeom.logpmf(d, N, a, b), or 0 when d < a b / N.
    /usr/bin/python3 data/bic/prop_node_cost.py
"""
from scipy.stats import hypergeom

M = 40
for a, b, d in [(8, 6, 5), (9, 6, 5), (8, 6, 2), (8, 6, 1)]:
    h = lambda N: 0.0 if d < a * b / N else hypergeom.logpmf(d, N, a, b)
    print(a, b, d, repr(max(0.0, h(3 * a) - h(M))))
