#!/usr/bin/python3
"""Reference posteriors for the ebn tests, by brute-force enumeration of the full joint with numpy.

Writes, next to this script:
  asia_refs.txt     posteriors P(node = 1 | asia = xray = dysp = 1) of the Asia network
                    (Lauritzen and Spiegelhalter 1988) and of its leaky variant;
  random_nets.txt   random DAGs of 2..12 nodes of 2-3 values, Dirichlet(1) tables, random evidence,
                    and the posterior of every unobserved node.
Run: /usr/bin/python3 data/ebn/make_ebn_refs.py  (numpy; fixed seed, deterministic).
"""
import itertools
import os
import numpy as np

HERE = os.path.dirname(os.path.abspath(__file__))


def joint(cards, parents, cpts):
    """Full joint probability array over all assignments (C order over nodes 0..n-1).
    cpts[v] is a flat table: own value fastest, then the parents in order."""
    n = len(cards)
    idx = np.indices(cards).reshape(n, -1)
    p = np.ones(idx.shape[1])
    for v in range(n):
        ndx = idx[v].copy()
        f = cards[v]
        for q in parents[v]:
            ndx += idx[q] * f
            f *= cards[q]
        p *= np.asarray(cpts[v])[ndx]
    return idx, p


def posteriors(cards, parents, cpts, evidence):
    idx, p = joint(cards, parents, cpts)
    keep = np.ones(idx.shape[1], dtype=bool)
    for v, x in evidence.items():
        keep &= idx[v] == x
    p = np.where(keep, p, 0.0)
    z = p.sum()
    out = {}
    for v in range(len(cards)):
        if v in evidence:
            continue
        out[v] = [p[idx[v] == x].sum() / z for x in range(cards[v])]
    return out


# Asia: nodes in this order, value 1 = true.
ASIA_NAMES = ["asia", "tub", "smoke", "lung", "bron", "either", "xray", "dysp"]
ASIA_PARENTS = [[], [0], [], [2], [2], [1, 3], [5], [4, 5]]


def bern(p1):
    return [1.0 - p1, p1]


def asia_cpts(leak):
    either = []
    # parents (tub, lung), tub fastest among the parents.
    for lung in (0, 1):
        for tub in (0, 1):
            if leak:
                either += bern(0.95 if (tub or lung) else 0.05)
            else:
                either += bern(1.0 if (tub or lung) else 0.0)
    dysp = []
    # parents (bron, either), bron fastest.
    table = {(0, 0): 0.1, (1, 0): 0.8, (0, 1): 0.7, (1, 1): 0.9}
    for e in (0, 1):
        for b in (0, 1):
            dysp += bern(table[(b, e)])
    return [
        bern(0.01),
        bern(0.01) + bern(0.05),
        bern(0.5),
        bern(0.01) + bern(0.1),
        bern(0.3) + bern(0.6),
        either,
        bern(0.05) + bern(0.98),
        dysp,
    ]


def write_asia():
    with open(os.path.join(HERE, "asia_refs.txt"), "w") as f:
        f.write("# node P(true | asia=xray=dysp=true): exact, leaky\n")
        ev = {0: 1, 6: 1, 7: 1}
        a = posteriors([2] * 8, ASIA_PARENTS, asia_cpts(False), ev)
        b = posteriors([2] * 8, ASIA_PARENTS, asia_cpts(True), ev)
        for v in sorted(a):
            f.write("%s %d %.9f %.9f\n" % (ASIA_NAMES[v], v, a[v][1], b[v][1]))


def random_net(rng, n):
    cards = [int(rng.integers(2, 4)) for _ in range(n)]
    perm = rng.permutation(n)  # topological order, independent of the node numbers
    parents = []
    for v in range(n):
        pos = int(np.where(perm == v)[0][0])
        earlier = list(perm[:pos])
        k = int(rng.integers(0, min(3, len(earlier)) + 1))
        parents.append([int(x) for x in rng.choice(earlier, size=k, replace=False)] if k else [])
    cpts = []
    for v in range(n):
        rows = int(np.prod([cards[q] for q in parents[v]])) if parents[v] else 1
        t = rng.dirichlet(np.ones(cards[v]), size=rows).reshape(-1)
        cpts.append(list(t))
    m = int(rng.integers(0, min(3, n - 1) + 1))
    obs = rng.choice(n, size=m, replace=False)
    evidence = {int(v): int(rng.integers(0, cards[int(v)])) for v in obs}
    return cards, parents, cpts, evidence


def write_random():
    rng = np.random.default_rng(20240611)
    with open(os.path.join(HERE, "random_nets.txt"), "w") as f:
        f.write("# see make_ebn_refs.py for the format\n")
        for i in range(24):
            n = 2 + i % 11
            cards, parents, cpts, evidence = random_net(rng, n)
            post = posteriors(cards, parents, cpts, evidence)
            f.write("net %d\n" % n)
            f.write("cards %s\n" % " ".join(map(str, cards)))
            for v in range(n):
                f.write("parents %d %d%s\n" % (v, len(parents[v]), "".join(" %d" % q for q in parents[v])))
            for v in range(n):
                f.write("cpt %d %d %s\n" % (v, len(cpts[v]), " ".join("%.9g" % x for x in cpts[v])))
            f.write("evidence %d%s\n" % (len(evidence), "".join(" %d %d" % kv for kv in sorted(evidence.items()))))
            for v in sorted(post):
                f.write("post %d %s\n" % (v, " ".join("%.9g" % x for x in post[v])))
            f.write("end\n")


if __name__ == "__main__":
    write_asia()
    write_random()
