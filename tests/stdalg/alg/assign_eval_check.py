#!/usr/bin/python3
"""Runs examples/assign_eval on a bundled option file and compares its table with the expected one
made by assign_eval_ref.py: same header, same parent sets in the same order, numbers within a
relative 1e-5 (information values near 0 within 2e-6), NA where NA.

  assign_eval_check.py <assign_eval binary> <repository root> <option file stem>
"""
import os
import re
import subprocess
import sys
import tempfile


def main(exe, root, stem):
    opt_text = open(os.path.join(root, "data/examples", stem + ".opt")).read()
    with tempfile.TemporaryDirectory() as tmp:
        out = os.path.join(tmp, "scores.tsv")
        opt_text = re.sub(r"(?m)^Data = (.*)$", lambda m: "Data = " + os.path.join(root, m.group(1)), opt_text)
        opt_text = re.sub(r"(?m)^OutScores = .*$", "OutScores = " + out, opt_text)
        opt = os.path.join(tmp, "run.opt")
        open(opt, "w").write(opt_text)
        subprocess.run([exe, opt], check=True, cwd=tmp)
        got = [l.rstrip("\n").split("\t") for l in open(out)]
    want = [l.rstrip("\n").split("\t") for l in open(os.path.join(root, "data/examples", stem + "_expected.tsv"))]
    bad = 0
    if len(got) != len(want) or got[0] != want[0]:
        print("header or line count differ: %d vs %d lines" % (len(got), len(want)))
        return 1
    for g, w in zip(got[1:], want[1:]):
        if len(g) != len(w) or g[0] != w[0]:
            print("line differs: %s / %s" % (g, w))
            bad += 1
            continue
        for head, a, b in zip(want[0][1:], g[1:], w[1:]):
            if b == "NA" or a == "NA":
                ok = a == b
            else:
                floor = 2e-6 if "Info" in head else 0.0
                ok = abs(float(a) - float(b)) <= max(floor, 1e-5 * abs(float(b)))
            if not ok:
                print("%s %s: got %s want %s" % (g[0], head, a, b))
                bad += 1
    print("%d parent sets, %d mismatches" % (len(got) - 1, bad))
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
