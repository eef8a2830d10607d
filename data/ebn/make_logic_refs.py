#!/usr/bin/python3
"""Reference tables of noisy-logic nodes cached from random logic trees, for the ebn tests.

Each case is a child node 0 of card 2-3 with 1-4 parents (nodes 1..m, cards 2-3, in edge order)
and a binary consistency node m+1 with parents 0, 1..m. A random logic tree of sum, min, max and
table nodes over the parents is written as the two logic streams; the tree is evaluated here on
every parent configuration and the expected tables are written in float32 arithmetic:
  plain      the child's table: log(1 - noise) where the child equals the logic, else
             log(noise / (card - 1)); below noise 0.001, log(1 - noise) is taken as -noise;
  consist    the consistency node's table: at (c, x0, parents), c = 1 gets the same hit where
             x0 equals the logic and log(noise) (divisor card 2 - 1) elsewhere, c = 0 gets
             log(1 - exp(entry at c = 1));
  toconsist  the plain table turned into pairs (log(1 - exp(v)), v).
Run: /usr/bin/python3 data/ebn/make_logic_refs.py  (numpy; fixed seed) -> logic_refs.txt here.
"""
import itertools
import os
import random
import numpy as np

HERE = os.path.dirname(os.path.abspath(__file__))
f32 = np.float32


def evaluate(nodes, lid, x):
    """Value of logic node lid for parent values x (x[v] for vid v)."""
    kind, attrs, inputs = nodes[lid]
    vals = [x[i] if flag else evaluate(nodes, i, x) for flag, i in inputs]
    if kind == "sum":
        v = min(int(sum(vals) * attrs["factor"]), attrs["max"])
        return int(v)
    if kind == "max":
        return int(min(max([0] + vals) + attrs["add"], attrs["max"]))
    if kind == "min":
        return int(min(min(vals) + attrs["add"], attrs["max"]))
    # table: input k has weight card^k
    ndx = sum(v * attrs["card"] ** k for k, v in enumerate(vals))
    return attrs["table"][ndx]


def make_tree(rng, nodes, lines, attrs, parents, cards, own, depth):
    lid = len(nodes)
    nodes.append(None)
    kind = rng.choice(["sum", "min", "max", "table"])
    if kind == "table":
        ins = rng.sample(parents, rng.randint(1, min(2, len(parents))))
        card = max(cards[p] for p in ins)
        table = [rng.randint(0, own) for _ in range(card ** len(ins))]
        lines.append("%d table %d %d x" % (lid, len(ins), card))
        attrs.append((lid, "table", " ".join(map(str, table)), "0", "0"))
        attrs += [(lid, "input%d" % k, "1", str(p), "0") for k, p in enumerate(ins)]
        nodes[lid] = ("table", {"card": card, "table": table}, [(1, p) for p in ins])
    else:
        inputs = []
        for _ in range(rng.randint(1, 3)):
            if depth < 2 and rng.random() < 0.3:
                inputs.append((0, make_tree(rng, nodes, lines, attrs, parents, cards, own, depth + 1)))
            else:
                inputs.append((1, rng.choice(parents)))
        a = {}
        if kind == "sum":
            b = rng.randint(2, 4)
            lines.append("%d sum 0 %d x" % (lid, b))
            a = {"factor": 1.0, "max": b - 1}
            if rng.random() < 0.5:
                a["factor"] = rng.choice([0.5, 2.0])
                attrs.append((lid, "factor", repr(a["factor"]), "0", "0"))
        else:
            lines.append("%d %s 0 0 x" % (lid, kind))
            a = {"add": 0.0, "max": 3.4028235e38}
            if rng.random() < 0.5:
                a["add"] = rng.choice([1.0, -1.0])
                attrs.append((lid, "add", repr(a["add"]), "0", "0"))
            if rng.random() < 0.4:
                a["max"] = float(rng.randint(1, 2))
                attrs.append((lid, "max", repr(a["max"]), "0", "0"))
        # inputs given in reverse order: positions may come in any order
        for k in reversed(range(len(inputs))):
            flag, i = inputs[k]
            attrs.append((lid, "input%d" % k, str(flag), str(i), "0"))
        nodes[lid] = (kind, a, inputs)
    return lid


def log_one_minus(p):
    return f32(-p) if float(p) < 0.001 else np.log(f32(1) - f32(p))


def log_one_minus_exp(v):
    return np.log(f32(1) - np.exp(f32(v)))


def main():
    rng = random.Random(20261123)
    out = []
    for case in range(40):
        m = rng.randint(1, 4)
        cards = [rng.randint(2, 3) for _ in range(m + 1)] + [2]
        parents = list(range(1, m + 1))
        noise = f32(rng.choice([0.05, 0.2, 0.3, 0.0005]))
        nodes, lines, attrs = [], [], []
        root = make_tree(rng, nodes, lines, attrs, parents, cards, cards[0], 0)
        c = cards[0]
        hit = log_one_minus(noise)
        miss = np.log(noise / f32(c - 1))
        miss2 = np.log(noise / f32(1))
        plain, consist = [], []
        # parent configurations, first parent fastest
        for combo in itertools.product(*[range(cards[p]) for p in reversed(parents)]):
            x = dict(zip(reversed(parents), combo))
            a = evaluate(nodes, root, x)
            plain += [hit if y == a else miss for y in range(c)]
            for x0 in range(c):
                t = hit if x0 == a else miss2
                consist += [log_one_minus_exp(t), t]
        toconsist = []
        for v in plain:
            toconsist += [log_one_minus_exp(v), v]
        out.append("case %d" % case)
        out.append("cards " + " ".join(map(str, cards)))
        out.append("noise %r" % float(noise))
        out.append("root %d" % root)
        out += ["lnode " + l for l in lines]
        out += ["lattr\t%d\t%s\t%s\t%s\t%s" % r for r in attrs]
        for name, tab in (("plain", plain), ("consist", consist), ("toconsist", toconsist)):
            out.append("%s %s" % (name, " ".join("%.9g" % v for v in tab)))
        out.append("end")
    with open(os.path.join(HERE, "logic_refs.txt"), "w") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
