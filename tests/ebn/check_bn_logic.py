#!/usr/bin/python3
"""Runs examples/bn_logic on a bundled option file and checks its tables against a model written
here: the logic tables parsed and evaluated afresh, each local distribution's entries from the
noisy-logic formulas, and (consistency form) the posteriors by numpy enumeration of the product
of the consistency factors under the evidence.

usage: check_bn_logic.py <bn_logic binary> <option file>     (run from the repository root)
Entries must agree to 1e-5 relative (NaN written "nan"), posteriors to 1e-5."""
import itertools
import math
import os
import re
import subprocess
import sys
import tempfile

import numpy as np

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from check_bn_infer import parse_opt  # noqa: E402


def read_logic(nodes_path, attrs_path):
    nodes = {}
    for line in open(nodes_path):
        f = line.split()
        if f:
            lid, kind, a, b = int(f[0]), f[1], int(f[2]), int(f[3])
            nodes[lid] = {"kind": kind, "a": a, "b": b, "inputs": {}, "factor": 1.0, "add": 0.0,
                          "max": float(b - 1) if kind == "sum" else 3.4028235e38, "table": []}
    for line in open(attrs_path):
        f = line.rstrip("\n").split("\t")
        if len(f) < 5:
            continue
        node, name = nodes[int(f[0])], f[1]
        if name.startswith("input"):
            node["inputs"][int(name[5:] or 0)] = (int(f[2]), int(f[3]))
        elif name == "table":
            node["table"] = [int(t) for t in f[2].split(" ")]
        else:
            node[name] = float(f[2])
    return nodes


def evaluate(nodes, lid, x):
    n = nodes[lid]
    vals = [x[i] if flag else evaluate(nodes, i, x) for flag, i in (n["inputs"][k] for k in sorted(n["inputs"]))]
    if n["kind"] == "sum":
        return int(min(int(sum(vals) * n["factor"]), n["max"]))
    if n["kind"] == "max":
        return int(min(max([0] + vals) + n["add"], n["max"]))
    if n["kind"] == "min":
        return int(min(min(vals, default=2147483647) + n["add"], n["max"]))
    return n["table"][sum(v * n["b"] ** k for k, v in enumerate(vals))]


def log1m(p):
    return -p if p < 0.001 else math.log(1 - p)


def main():
    binary, opt_path = sys.argv[1], sys.argv[2]
    text = open(opt_path).read()
    opt = parse_opt(text)
    consist = opt["Logic::Form"] == "consist"
    noise = float(opt["Logic::DefaultNoise"])
    cards = [int(l.split()[2]) for l in open(opt["Tables::Nodes"]) if l.strip()]
    n = len(cards)
    attrs = {}
    for line in open(opt["Tables::Attrs"]):
        f = line.split()
        if f:
            attrs.setdefault(int(f[0]), {})[f[1]] = f[2]
    regs = [[int(attrs[g]["regulator%d" % k]) for k in range(len(attrs[g])) if "regulator%d" % k in attrs[g]]
            for g in range(n)]
    logic_id = [int(attrs[g]["in_logic"]) for g in range(n)]
    prior = [float(attrs[g].get("uniform_prior", noise)) for g in range(n)]
    logic = read_logic(opt["Tables::LogicNodes"], opt["Tables::LogicAttrs"])

    def agree_lp(g, x, p):
        """log P(consistency = 1) of variable g at assignment x (a dict)."""
        a = evaluate(logic, logic_id[g], x)
        if kinds[g] == "consist_table":
            return log1m(p) if x[g] == a else math.log(p / (2 - 1))
        return log1m(p) if x[g] == a else math.log(p / (cards[g] - 1))

    # Expected rows of every built distribution.
    want, kinds = [], []
    for g in range(n):
        s = cards[g] ** (len(regs[g]) + 1)
        kinds.append(("consist_table" if s < 10000 else "consist_soft") if consist else
                     ("soft" if s <= 10000 else "table"))
        pars = ([g] if consist else []) + regs[g]
        pcards = [cards[q] for q in pars]
        own = 2 if consist else cards[g]
        p = prior[g]
        for ndx in range(own * int(np.prod(pcards))):
            rest, pv = ndx // own, []
            for c in pcards:
                pv.append(rest % c)
                rest //= c
            y = ndx % own
            x = dict.fromkeys(range(n), 0)
            x.update(zip(pars, pv))
            if not consist:
                a = evaluate(logic, logic_id[g], x)
                lp = (math.log(p) if y == a else float("nan")) if kinds[g] == "soft" else \
                    (log1m(p) if y == a else math.log(p / (cards[g] - 1)))
            else:
                e1 = agree_lp(g, x, p)
                if kinds[g] == "consist_table":
                    lp = e1 if y == 1 else math.log(1 - math.exp(e1))
                else:
                    agree = x[g] == evaluate(logic, logic_id[g], x)
                    q = p / (cards[g] - 1)
                    lp = (log1m(p) if y else math.log(p)) if agree else (math.log(q) if y else log1m(q))
            want.append((g + (n if consist else 0), kinds[g], ndx, ",".join(map(str, pv)), y, lp))

    with tempfile.TemporaryDirectory() as tmp:
        run_opt = os.path.join(tmp, "run.opt")
        out_local, out_post = os.path.join(tmp, "local.tsv"), os.path.join(tmp, "post.tsv")
        t = re.sub(r"(?m)^OutLocal = .*$", "OutLocal = " + out_local, text)
        open(run_opt, "w").write(re.sub(r"(?m)^OutPosteriors = .*$", "OutPosteriors = " + out_post, t))
        subprocess.run([binary, run_opt], check=True, stderr=subprocess.DEVNULL)
        rows = [l.rstrip("\n").split("\t") for l in open(out_local)]
        post_rows = [l.rstrip("\n").split("\t") for l in open(out_post)] if consist else None

    bad = []
    if rows[0] != ["rvid", "kind", "index", "parents", "value", "logp"]:
        bad.append("header %r" % rows[0])
    if len(rows) - 1 != len(want):
        bad.append("%d rows, expected %d" % (len(rows) - 1, len(want)))
    for got, w in zip(rows[1:], want):
        key = [str(w[0]), w[1], str(w[2]), w[3], str(w[4])]
        cell, lp = got[5], w[5]
        ok = got[:5] == key and (cell == "nan" if math.isnan(lp) else
                                 cell != "nan" and abs(float(cell) - lp) <= 1e-5 * max(1.0, abs(lp)))
        if not ok:
            bad.append("row %r, expected %r %.9g" % (got, key, lp))

    if consist:
        ev = list(map(int, opt["Bn::Evidence"]))
        evidence = dict(zip(ev[0::2], ev[1::2]))
        hidden = [g for g in range(n) if g not in evidence]
        mass = {(g, v): 0.0 for g in hidden for v in range(cards[g])}
        for combo in itertools.product(*[range(cards[g]) for g in hidden]):
            x = dict(evidence)
            x.update(zip(hidden, combo))
            w = math.exp(sum(agree_lp(g, x, prior[g]) for g in range(n)))
            for g in hidden:
                mass[(g, x[g])] += w
        z = sum(mass[(hidden[0], v)] for v in range(cards[hidden[0]]))
        exp_rows = [[str(g), str(v)] for g in hidden for v in range(cards[g])]
        if post_rows[0] != ["vid", "value", "exact"] or [r[:2] for r in post_rows[1:]] != exp_rows:
            bad.append("posterior table layout %r" % post_rows[:3])
        for r in post_rows[1:]:
            e = mass[(int(r[0]), int(r[1]))] / z
            if abs(float(r[2]) - e) > 1e-5:
                bad.append("posterior %r, enumeration %.9f" % (r, e))
    for b in bad[:20]:
        print(b)
    print("checked %d local rows of %s: %s" % (len(rows) - 1, opt_path, "FAIL" if bad else "ok"))
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
