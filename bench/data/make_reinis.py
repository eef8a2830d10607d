#!/usr/bin/python3
"""The reinis data set (deal package, R data file) as a plain table, counted tables on a fixed DAG,
and exact posteriors by numpy enumeration for the ebn tests.

usage: make_reinis.py <reinis.rda> <out dir>

Writes <out>/reinis.tsv (header of the six factor names, then one line per row, each factor's
level index from 0) and <out>/reinis_nets.txt (the format of data/ebn/random_nets.txt): the DAG
below, each table counted from the rows with one added to every cell and normalised per parent
configuration, and one network block per evidence set with every unobserved node's posterior.
The R data file is read by a small reader of R's XDR serialisation, written here (no R needed).
"""
import gzip
import os
import struct
import sys

import numpy as np


class RReader:
    """Just enough of R's XDR serialisation for a data frame of factors."""

    def __init__(self, data):
        self.d, self.p, self.refs = data, 0, []

    def int(self):
        (v,) = struct.unpack(">i", self.d[self.p : self.p + 4])
        self.p += 4
        return v

    def item(self):
        flags = self.int()
        t, has_attr, has_tag = flags & 0xFF, flags & (1 << 9), flags & (1 << 10)
        if t in (254, 242, 253, 252, 251, 250):  # NULL and the special environments
            return None
        if t == 255:  # reference to an earlier symbol or environment
            idx = flags >> 8 or self.int()
            return self.refs[idx - 1]
        if t == 1:  # symbol
            s = ("sym", self.item())
            self.refs.append(s)
            return s
        if t == 2:  # pairlist: [(tag, value)]
            out = []
            while True:
                attr = self.item() if has_attr else None
                tag = self.item() if has_tag else None
                out.append((tag[1] if tag else None, self.item()))
                nxt = self.int()
                self.p -= 4
                if nxt & 0xFF != 2:
                    self.item()  # the terminating NULL
                    return out
                flags = self.int()
                has_attr, has_tag = flags & (1 << 9), flags & (1 << 10)
        if t == 9:  # CHARSXP
            n = self.int()
            if n == -1:
                return None
            s = self.d[self.p : self.p + n].decode("latin-1")
            self.p += n
            return s
        if t in (10, 13):  # logical, integer
            n = self.int()
            v = list(struct.unpack(">%di" % n, self.d[self.p : self.p + 4 * n]))
            self.p += 4 * n
        elif t == 14:  # double
            n = self.int()
            v = list(struct.unpack(">%dd" % n, self.d[self.p : self.p + 8 * n]))
            self.p += 8 * n
        elif t in (16, 19):  # character vector, list
            n = self.int()
            v = [self.item() for _ in range(n)]
        else:
            raise ValueError("R type %d not handled" % t)
        attrs = dict(self.item()) if has_attr else {}
        return {"type": t, "v": v, "attrs": attrs}


def read_rda(path):
    data = gzip.open(path).read()
    assert data[:5] == b"RDX2\n" and data[5:7] == b"X\n", "not an XDR R data file"
    r = RReader(data[7:])
    r.int(), r.int(), r.int()  # format version, R version, oldest R version
    return dict(r.item())


# The DAG over the six factors: mental work -> physical work -> smoking -> lipoprotein ratio, and
# smoking, lipoprotein ratio and family history -> systolic blood pressure.
PARENTS = {"smoke": ["phys"], "mental": [], "phys": ["mental"], "systol": ["smoke", "protein", "family"],
           "protein": ["smoke"], "family": []}
EVIDENCE = [{}, {"systol": 1}, {"smoke": 0, "family": 1}, {"systol": 0, "protein": 1},
            {"mental": 1, "systol": 1, "family": 0}]


def main():
    rda, out = sys.argv[1], sys.argv[2]
    os.makedirs(out, exist_ok=True)
    frame = read_rda(rda)["reinis"]
    names = frame["attrs"]["names"]["v"]
    cols = [np.array(c["v"]) - 1 for c in frame["v"]]
    levels = [c["attrs"]["levels"]["v"] for c in frame["v"]]
    n = len(cols[0])
    with open(os.path.join(out, "reinis.tsv"), "w") as f:
        f.write("\t".join(names) + "\n")
        for i in range(n):
            f.write("\t".join(str(int(c[i])) for c in cols) + "\n")
    print("reinis: %d rows, columns %s, levels %s" % (n, names, levels))

    idx = {name: k for k, name in enumerate(names)}
    cards = [len(l) for l in levels]
    parents = [[idx[p] for p in PARENTS[name]] for name in names]
    data = np.stack(cols)
    cpts = []
    for v in range(len(names)):
        shape = [cards[v]] + [cards[p] for p in parents[v]]
        counts = np.ones(shape)
        for row in data.T:
            counts[tuple([row[v]] + [row[p] for p in parents[v]])] += 1
        probs = counts / counts.sum(axis=0, keepdims=True)
        cpts.append(probs.reshape(-1, order="F"))  # own value fastest, then the parents in order
    sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../data/ebn"))
    from make_ebn_refs import posteriors

    with open(os.path.join(out, "reinis_nets.txt"), "w") as f:
        f.write("# reinis counted tables; see bench/data/make_reinis.py\n")
        for ev_named in EVIDENCE:
            ev = {idx[k]: x for k, x in ev_named.items()}
            post = posteriors(cards, parents, cpts, ev)
            f.write("net %d\ncards %s\n" % (len(names), " ".join(map(str, cards))))
            for v in range(len(names)):
                f.write("parents %d %d%s\n" % (v, len(parents[v]), "".join(" %d" % q for q in parents[v])))
            for v in range(len(names)):
                f.write("cpt %d %d %s\n" % (v, len(cpts[v]), " ".join("%.9g" % x for x in cpts[v])))
            f.write("evidence %d%s\n" % (len(ev), "".join(" %d %d" % kv for kv in sorted(ev.items()))))
            for v in sorted(post):
                f.write("post %d %s\n" % (v, " ".join("%.9g" % x for x in post[v])))
            f.write("end\n")


if __name__ == "__main__":
    main()
