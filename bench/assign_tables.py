#!/usr/bin/python3
"""Tables of the assignment-evaluator tests from the data of r-cran-deal (reinis, ksl).

  assign_tables.py <deal data dir> <out dir>

Reads reinis.rda (a data frame of six two-level factors, 1841 rows) with a small reader of R's XDR
serialisation, and ksl.txt.gz. Writes white-space tables of values 0..2 with a header line:
reinis.tab (factor codes - 1) and ksl.tab (every column in three bins: a column of at most three
distinct values is coded by rank, any other is cut at its tertiles).
"""
import gzip
import os
import struct
import sys


class RReader:
    """Just enough of R's serialisation (format 2 and 3, XDR) for data frames of factors and numbers."""

    def __init__(self, raw):
        self.b, self.p, self.refs = raw, 0, []

    def int(self):
        (v,) = struct.unpack(">i", self.b[self.p:self.p + 4])
        self.p += 4
        return v

    def header(self):
        assert self.b[:2] == b"X\n", "not an XDR stream"
        self.p = 2
        version = self.int()
        self.int()
        self.int()
        if version == 3:
            n = self.int()
            self.p += n

    def item(self):
        flags = self.int()
        t, has_attr, has_tag = flags & 0xFF, flags & (1 << 9), flags & (1 << 10)
        if t == 254:  # NULL
            return None
        if t in (242, 251, 253):  # empty env, missing arg, global env
            return None
        if t == 255:  # reference
            i = flags >> 8
            return self.refs[(i if i else self.int()) - 1]
        if t == 1:  # symbol
            s = self.item()
            self.refs.append(s)
            return s
        if t == 9:  # CHARSXP
            n = self.int()
            if n == -1:
                return None
            s = self.b[self.p:self.p + n].decode("latin-1")
            self.p += n
            return s
        if t in (2, 6):  # pairlist
            attr = self.item() if has_attr else None
            tag = self.item() if has_tag else None
            car = self.item()
            cdr = self.item()
            out = [(tag, car)]
            if isinstance(cdr, list):
                out += cdr
            return out
        if t in (10, 13, 14, 16, 19, 20):
            n = self.int()
            if t in (10, 13):
                val = list(struct.unpack(">%di" % n, self.b[self.p:self.p + 4 * n]))
                self.p += 4 * n
            elif t == 14:
                val = list(struct.unpack(">%dd" % n, self.b[self.p:self.p + 8 * n]))
                self.p += 8 * n
            else:
                val = [self.item() for _ in range(n)]
            attr = dict(self.item()) if has_attr else {}
            return {"type": t, "val": val, "attr": attr}
        raise ValueError("R type %d not handled" % t)


def read_rda(path):
    raw = gzip.open(path).read()
    assert raw[:5] in (b"RDX2\n", b"RDX3\n")
    r = RReader(raw[5:])
    r.header()
    return dict(r.item())


def write(path, names, cols):
    with open(path, "w") as out:
        out.write(" ".join(names) + "\n")
        for row in zip(*cols):
            out.write(" ".join(str(v) for v in row) + "\n")


def three_bins(values):
    distinct = sorted(set(values))
    if len(distinct) <= 3:
        return [distinct.index(v) for v in values]
    s = sorted(values)
    cut1, cut2 = s[len(s) // 3], s[2 * len(s) // 3]
    return [0 if v < cut1 else (1 if v < cut2 else 2) for v in values]


def main(src, dst):
    os.makedirs(dst, exist_ok=True)
    frame = read_rda(os.path.join(src, "reinis.rda"))["reinis"]
    names = frame["attr"]["names"]["val"]
    cols = [[c - 1 for c in col["val"]] for col in frame["val"]]
    assert all(min(c) >= 0 and max(c) <= 2 for c in cols)
    write(os.path.join(dst, "reinis.tab"), names, cols)
    print("reinis: %d rows, columns %s" % (len(cols[0]), " ".join(names)))

    with gzip.open(os.path.join(src, "ksl.txt.gz"), "rt") as fh:
        knames = fh.readline().split()
        rows = [list(map(float, line.split())) for line in fh if line.strip()]
    kcols = [three_bins([r[j] for r in rows]) for j in range(len(knames))]
    write(os.path.join(dst, "ksl.tab"), knames, kcols)
    print("ksl: %d rows, columns %s" % (len(rows), " ".join(knames)))


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2])
