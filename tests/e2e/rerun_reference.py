#!/usr/bin/env python3
"""Reruns the independent Python model of a vesk run on the committed cases and compares its output
with the committed expected files, so that the model and the files cannot drift apart.

    rerun_reference.py <repository root>

Exit status 0 when every output matches, 1 with a diff otherwise.
"""
import difflib
import os
import subprocess
import sys
import tempfile

# (option files, expected report, expected error stream), paths from the repository root.
CASES = [
    (["data/vesk/tiny/run.opt"], "data/vesk/tiny/expected/AnnotReport", "data/vesk/tiny/expected/stderr.txt"),
    (["data/vesk/run.opt"], "data/vesk/expected/AnnotReport", "data/vesk/expected/stderr.txt"),
    (["data/vesk/run.opt", "data/vesk/layer.opt"], "data/vesk/expected/AnnotReport.layered",
     "data/vesk/expected/stderr.layered.txt"),
]
MODEL = "tests/e2e/reference/vesk_ref.py"


def differs(root, expected, got_text, label):
    with open(os.path.join(root, expected)) as f:
        want = f.read()
    if want == got_text:
        return False
    sys.stdout.writelines(difflib.unified_diff(want.splitlines(True), got_text.splitlines(True),
                                               expected, label))
    return True


def main():
    root = sys.argv[1]
    bad = 0
    with tempfile.TemporaryDirectory() as tmp:
        for n, (opts, report, stderr) in enumerate(CASES):
            rep, err = os.path.join(tmp, "report%d" % n), os.path.join(tmp, "stderr%d" % n)
            subprocess.run([sys.executable, MODEL] + opts + ["--report-out", rep, "--stderr-out", err],
                           cwd=root, check=True)
            with open(rep) as f:
                bad += differs(root, report, f.read(), "model report of " + " ".join(opts))
            with open(err) as f:
                bad += differs(root, stderr, f.read(), "model error stream of " + " ".join(opts))
        golden = subprocess.run([sys.executable, MODEL, "--random-golden"], cwd=root, check=True,
                                capture_output=True, text=True).stdout
        bad += differs(root, "data/random_golden.txt", golden, "model --random-golden")
    print("%d of %d expected files differ from the model's output" % (bad, 2 * len(CASES) + 1))
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
