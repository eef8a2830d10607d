#!/usr/bin/python3
"""Runs examples/bn_infer on a bundled option file and checks its posterior table against a
brute-force enumeration of the joint written here in plain Python (standard library only).

usage: check_bn_infer.py <bn_infer binary> <option file> <gibbs tolerance or 'off'>
Run from the repository root. The option file's tables are read as given; the output goes to a
temporary directory. Exact must agree to 1e-4 (single-precision logs), modes to 1e-3, gibbs to the
given tolerance (the plain Asia's Gibbs column is not checked: its deterministic OR traps the
sampler)."""
import itertools
import math
import os
import re
import subprocess
import sys
import tempfile


def parse_opt(text):
    """scope::name -> scalar string or list of item strings."""
    out, scope, lines, i = {}, "", text.split("\n"), 0
    while i < len(lines):
        line = lines[i].strip()
        i += 1
        if not line or line.startswith("#"):
            continue
        m = re.match(r"\[(.*)\]$", line)
        if m:
            scope = m.group(1)
            continue
        name, val = [s.strip() for s in line.split("=", 1)]
        if val.startswith("{"):
            items = []
            while lines[i].strip() != "}":
                items += lines[i].split()
                i += 1
            i += 1
            out[scope + "::" + name] = items
        else:
            out[scope + "::" + name] = val
    return out


def main():
    binary, opt_path, gibbs_tol = sys.argv[1], sys.argv[2], sys.argv[3]
    text = open(opt_path).read()
    opt = parse_opt(text)
    nodes = [tuple(map(int, l.split()))[1:] for l in open(opt["Tables::Nodes"]) if l.strip()]
    vids = [v for v, _ in nodes]
    card = dict(nodes)
    parents = {v: [] for v in vids}
    for l in open(opt["Tables::Edges"]):
        if l.strip():
            a, b = map(int, l.split())
            parents[b].append(a)
    cpt = {}
    for l in open(opt["Tables::Cpts"]):
        f = l.split()
        if f:
            cpt[int(f[0])] = [float(x) for x in f[1:]]
    ev_items = list(map(int, opt["Bn::Evidence"]))
    evidence = dict(zip(ev_items[0::2], ev_items[1::2]))
    engines = opt["Bn::Engines"]

    # Brute force: every assignment consistent with the evidence.
    hidden = sorted(v for v in vids if v not in evidence)
    mass = {(v, x): 0.0 for v in hidden for x in range(card[v])}
    total = 0.0
    for combo in itertools.product(*[range(card[v]) for v in hidden]):
        a = dict(evidence)
        a.update(zip(hidden, combo))
        p = 1.0
        for v in vids:
            ndx, stride = a[v], card[v]
            for q in parents[v]:
                ndx += a[q] * stride
                stride *= card[q]
            p *= cpt[v][ndx]
        total += p
        for v in hidden:
            mass[(v, a[v])] += p

    with tempfile.TemporaryDirectory() as tmp:
        out_path = os.path.join(tmp, "post.tsv")
        run_opt = os.path.join(tmp, "run.opt")
        with open(run_opt, "w") as f:
            f.write(re.sub(r"(?m)^OutPosteriors = .*$", "OutPosteriors = " + out_path, text))
        subprocess.run([binary, run_opt], check=True, stderr=subprocess.DEVNULL)
        rows = [l.rstrip("\n").split("\t") for l in open(out_path)]

    bad = []
    if rows[0] != ["vid", "value"] + engines:
        bad.append("header %r" % rows[0])
    want_keys = [(v, x) for v in hidden for x in range(card[v])]
    got_keys = [(int(r[0]), int(r[1])) for r in rows[1:]]
    if got_keys != want_keys:
        bad.append("rows %r, expected %r" % (got_keys, want_keys))
    tol = {"exact": 1e-4, "modes": 1e-3, "gibbs": None if gibbs_tol == "off" else float(gibbs_tol)}
    for r in rows[1:]:
        key = (int(r[0]), int(r[1]))
        exact = mass[key] / total
        for name, cell in zip(engines, r[2:]):
            if "%.9g" % float(cell) != cell:
                bad.append("cell %s not in 9 significant digits" % cell)
            t = tol[name]
            if t is not None and abs(float(cell) - exact) > t:
                bad.append("%s %r: %s, enumeration %.9f" % (name, key, cell, exact))
    for b in bad:
        print(b)
    print("checked %d rows of %s: %s" % (len(rows) - 1, opt_path, "FAIL" if bad else "ok"))
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
