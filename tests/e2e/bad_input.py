#!/usr/bin/env python3
"""The bad-input matrix: whole runs of vesk (and vesk_check) on the bundled example with one table or
option broken in one way per case.

    bad_input.py --vesk BIN --check BIN --source DIR [--no-memlimit] [-k PATTERN]

Every case must end either normally (exit 0) or by the system's own fatal: SIGABRT with a last
error line "<source>(<line>): <message>"; never another signal, a sanitizer report, a time-out or
more than 1 GiB of address space (not enforced with --no-memlimit, for sanitizer builds); a fatal
leaves no report behind. Cases with an expected outcome check it. vesk_check must give the case's
message and exit status. The case list is in tests/e2e/README.md.
"""
import argparse
import os
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile

TABLES = {"varob": "varob.tab", "ChipOrfs": "chip.txt", "GoTypeTab": "gotype.tab",
          "goclskey": "clskey.tab", "clsassoc": "clsassoc.tab", "SetsOrfs": "sets.tab"}
OPTIONS = {"Seed": 105, "BootstrapNum": 5, "MinClsSize": 3, "MaxClsSize": 30, "MinClsInter": 2,
           "MaxPvToRep": 0.2, "FilterRedPVThres": 0.01, "ReportGeneList": 1}
FATAL = re.compile(r"^[\w/.]+\([0-9]+\): ")


def garbage(text):
    rnd = random.Random(7)
    return text + bytes(rnd.randrange(256) for _ in range(300)).decode("latin-1")


def first_number(text, new):
    return re.sub(r"^-?[0-9]+", new, text, count=1, flags=re.M)


# Table mutations: name -> function of the table's text.
MUTATIONS = {
    "empty": lambda t: "",
    "crlf": lambda t: t.replace("\n", "\r\n"),
    "trailing_tabs": lambda t: t.replace("\n", "\t\t\n"),
    "non_numeric": lambda t: first_number(t, "x1") if re.search(r"^-?[0-9]", t, re.M) else "x1 " + t,
    "negative_id": lambda t: first_number(t, "-1"),
    "huge_id": lambda t: first_number(t, "2147483647"),
    "huge_id_1e8": lambda t: first_number(t, "100000000"),
    "duplicate_rows": lambda t: "".join(l + l for l in t.splitlines(True)),
    "garbage_bytes": garbage,
    "mb_line": lambda t: t + "A" * (1 << 20) + "\n",
    "no_final_newline": lambda t: t.rstrip("\n"),
}

# Expected outcomes where the definition fixes them: (table, mutation) -> "ok" or a fatal regex.
# For SetsOrfs the number leads the second column, so its numeric cases act on the set id.
EXPECT = {
    ("varob", "negative_id"): r"VarUniverse\([0-9]+\): Bad var id -1 in row 1",
    ("varob", "huge_id"): r"VarUniverse\([0-9]+\): Bad var id 2147483647 in row 1",
    ("varob", "huge_id_1e8"): r"Bad var id 100000000 in row 1",
    ("goclskey", "negative_id"): r"vesk\([0-9]+\): Bad class id -1 in key row 1",
    ("goclskey", "huge_id"): r"vesk\([0-9]+\): Bad class id 2147483647 in key row 1",
    ("goclskey", "huge_id_1e8"): r"Bad class id 100000000 in key row 1",
    ("clsassoc", "negative_id"): r"vesk\([0-9]+\): Table id mismatch",
    ("clsassoc", "huge_id"): r"vesk\([0-9]+\): Table id mismatch",
    ("SetsOrfs", "set_negative"): r"vesk\([0-9]+\): Bad set id -1 in row 1",
    ("SetsOrfs", "set_huge"): r"vesk\([0-9]+\): Bad set id 2147483647 in row 1",
    ("SetsOrfs", "set_5e8"): r"vesk\([0-9]+\): Bad set id 500000000 in row 1",
    ("varob", "missing"): r"vesk\([0-9]+\): cannot open varob table",
    ("ChipOrfs", "missing"): r"vesk\([0-9]+\): Cannot open chip orf file",
    ("GoTypeTab", "missing"): r"vesk\([0-9]+\): Cannot open go type file",
    ("SetsOrfs", "missing"): r"vesk\([0-9]+\): Cannot open sets orf file",
    ("goclskey", "missing"): "ok",
    # No genes, or no classes: the association rows then name what doesn't exist.
    ("varob", "empty"): r"ds/BitVec\([0-9]+\): Bit index [0-9]+ out of bounds \[0\.\.0\)",
    ("varob", "non_numeric"): r"ds/BitVec\([0-9]+\): Bit index [0-9]+ out of bounds \[0\.\.0\)",
    ("goclskey", "empty"): r"vesk\([0-9]+\): Table id mismatch",
    ("clsassoc", "missing"): "ok",
}
for table in TABLES:
    for m in ("crlf", "trailing_tabs", "duplicate_rows", "no_final_newline", "empty", "cut_row"):
        EXPECT.setdefault((table, m), "ok")

# What vesk_check must say (a regex over its output) and its exit status, for the harmful cases.
CHECK = {
    # vesk_check reports the stop, then dies of the fatal that vesk meets on the empty universe.
    ("varob", "non_numeric"): (r"varob\.tab:1: varob reading stops at this row; 97 line", None),
    ("varob", "garbage_bytes"): (r"varob\.tab:96: varob reading stops at this row", 1),
    ("goclskey", "missing"): (r"class tables cannot be opened", 1),
    ("clsassoc", "non_numeric"): (r"clsassoc\.tab:1: clsassoc reading stops at this row", 1),
    ("SetsOrfs", "set_non_numeric"): (r"sets\.tab:1: SetsOrfs reading stops at this row", 1),
    ("SetsOrfs", "cut_row"): (r"sets\.tab:[0-9]+: SetsOrfs reading stops at this row; 1 line\(s\)", 1),
    ("GoTypeTab", "garbage_bytes"): (r"finding|vesk would use every row", None),
    ("varob", "huge_id"): (r"VarUniverse\([0-9]+\): Bad var id 2147483647", None),
    ("goclskey", "huge_id"): (r"vesk\([0-9]+\): Bad class id 2147483647 in key row 1", None),
    ("SetsOrfs", "set_huge"): (r"vesk\([0-9]+\): Bad set id 2147483647 in row 1", None),
    ("clsassoc", "negative_id"): (r"Class -1 size 22\nvesk\([0-9]+\): Table id mismatch", None),
    ("option", "bootstrap_negative"): (r"BootstrapNum -5 is negative", 1),
    ("option", "max_pv_zero"): (r"MaxPvToRep is at or below 0", 1),
    ("option", "report_unwritable"): (r"report path .* is not writable", 1),
    ("option", "crlf"): (r"ends in a carriage return", 1),
    ("option", "missing_file"): (r"option file cannot be opened", 1),
    ("option", "no_class_in_range"): (r"no class has a chip size within", 1),
    ("goclskey", "no_tabs"): (r"class key table has no tabs", 1),
}

# Option-file cases: name -> (text edit of the option file, expected outcome or None).
OPTION_CASES = {
    "huge_array": (lambda o: o + "[X]\nA = { i 2000000000\n1 2\n",
                   r"options\([0-9]+\): After array items, line is $"),
    "bad_array_type": (lambda o: o + "[X]\nA = { q 1\n1\n}\n", r"options\([0-9]+\): Bad array type q for name A"),
    "array_no_close": (lambda o: o + "[X]\nA = { s 1\nitem\nnot a close\nstill not\n",
                       r"After array items, line is still not"),
    "bootstrap_negative": (lambda o: o.replace("BootstrapNum = 5", "BootstrapNum = -5"), "ok"),
    "bootstrap_wraps": (lambda o: o.replace("BootstrapNum = 5", "BootstrapNum = 2147483648"), "ok"),
    "max_pv_zero": (lambda o: o.replace("MaxPvToRep = 0.2", "MaxPvToRep = 0"), "ok"),
    "max_pv_negative": (lambda o: o.replace("MaxPvToRep = 0.2", "MaxPvToRep = -1"), "ok"),
    "no_class_in_range": (lambda o: o.replace("MinClsSize = 3", "MinClsSize = 100000"), "ok"),
    "report_unwritable": (lambda o: re.sub(r"AnnotReport = .*", "AnnotReport = /nonexistent/dir/r", o), "ok"),
    "crlf": (lambda o: o.replace("\n", "\r\n"), r"vesk\([0-9]+\): cannot open varob table"),
    "missing_file": (None, "ok"),
    "garbage": (lambda o: o + garbage("") + "\n", None),
    "missing_key": (lambda o: o.replace("MinClsInter = 2\n", ""),
                    r"options\([0-9]+\): option does not exists: Vesk::MinClsInter"),
}


def limit_memory():
    resource.setrlimit(resource.RLIMIT_AS, (1 << 30, 1 << 30))


class Runner:
    def __init__(self, args):
        self.args = args
        self.failures = []
        self.count = 0

    def setup(self, work):
        src = os.path.join(self.args.source, "data", "vesk")
        paths = {}
        for key, name in TABLES.items():
            shutil.copy(os.path.join(src, name), os.path.join(work, name))
            paths[key] = os.path.join(work, name)
        paths["AnnotReport"] = os.path.join(work, "report")
        return paths

    def option_text(self, paths):
        lines = ["[Random]", "Seed = %d" % OPTIONS["Seed"], "[Tables]"]
        lines += ["%s = %s" % (k, v) for k, v in paths.items()]
        lines.append("[Vesk]")
        lines += ["%s = %s" % (k, v) for k, v in OPTIONS.items() if k != "Seed"]
        return "\n".join(lines) + "\n"

    def run(self, cmd):
        try:
            p = subprocess.run(cmd, capture_output=True, timeout=120,
                               preexec_fn=None if self.args.no_memlimit else limit_memory)
        except subprocess.TimeoutExpired:
            return None, b"", b"time-out"
        return p.returncode, p.stdout, p.stderr

    def case(self, name, key, work, paths, opt_files, expect):
        if self.args.k and not re.search(self.args.k, name):
            return
        self.count += 1
        report = paths["AnnotReport"]
        if os.path.exists(report):
            os.remove(report)
        rc, _, err = self.run([self.args.vesk] + opt_files)
        err = err.decode("latin-1")
        lines = err.rstrip("\n").split("\n")
        problems = []
        if rc is None:
            problems.append("time-out")
        elif rc == 0:
            outcome = "ok"
        elif rc == -signal.SIGABRT and FATAL.match(lines[-1] if lines else ""):
            outcome = "fatal"
            if os.path.exists(report):
                problems.append("a fatal left a report behind")
        else:
            problems.append("ended with status %s, last line %r" % (rc, lines[-1][:200] if lines else ""))
        if re.search(r"Sanitizer|runtime error:", err):
            problems.append("sanitizer report")
        if not problems and expect is not None:
            if expect == "ok" and outcome != "ok":
                problems.append("expected a normal end, got %r" % lines[-1][:200])
            elif expect != "ok" and not re.search(expect, err, re.M):
                problems.append("expected %r, error stream ends %r" % (expect, err[-300:]))
        if key in CHECK:
            want, status = CHECK[key]
            crc, cout, cerr = self.run([self.args.check] + opt_files)
            text = cout.decode("latin-1") + cerr.decode("latin-1")
            if not re.search(want, text):
                problems.append("vesk_check: expected %r in %r" % (want, text[-300:]))
            if status is not None and crc != status:
                problems.append("vesk_check exit %s, expected %s" % (crc, status))
        print("%-40s %s" % (name, "; ".join(problems) if problems else "ok"))
        if problems:
            self.failures.append(name)

    def bundled(self):
        """vesk_check on the bundled examples, run from the repository root as their option files expect:
        the tiny example is clean; the main one keeps two lines after the end of its gene table."""
        for opt, want, status in (("data/vesk/tiny/run.opt", r"vesk would use every row\n", 0),
                                  ("data/vesk/run.opt",
                                   r"^data/vesk/varob\.tab:96: varob reading stops at this row; 2 line\(s\) "
                                   r"from here are not read\n(.*note: .*\n)*1 finding\(s\)\n$", 1)):
            if self.args.k and not re.search(self.args.k, "example/" + opt):
                continue
            self.count += 1
            p = subprocess.run([self.args.check, opt], capture_output=True, cwd=self.args.source)
            out = p.stdout.decode("latin-1")
            ok = p.returncode == status and re.search(want, out, re.M | re.S)
            print("%-40s %s" % ("example/" + opt, "ok" if ok else "exit %d, output %r" % (p.returncode, out)))
            if not ok:
                self.failures.append("example/" + opt)

    def all(self):
        self.bundled()
        for table, fname in TABLES.items():
            muts = dict(MUTATIONS)
            muts["missing"] = None
            if table == "SetsOrfs":  # the set id is the second column
                for m in ("non_numeric", "negative_id", "huge_id", "huge_id_1e8"):
                    del muts[m]
                sub = lambda v: (lambda t: re.sub(r"^(\S+\s+)[0-9]+", r"\g<1>" + v, t, count=1, flags=re.M))
                muts["cut_row"] = lambda t: t.rstrip("\n") + "\nYVK001W\n"
                muts.update({"set_non_numeric": sub("x1"), "set_negative": sub("-1"),
                             "set_huge": sub("2147483647"), "set_5e8": sub("500000000")})
            if table == "goclskey":
                muts["no_tabs"] = lambda t: t.replace("\t", " ")
            for m, f in muts.items():
                with tempfile.TemporaryDirectory() as work:
                    paths = self.setup(work)
                    if f is None:
                        paths[table] = os.path.join(work, "absent")
                    else:
                        with open(paths[table], encoding="latin-1") as fh:
                            text = fh.read()
                        with open(paths[table], "w", encoding="latin-1", newline="") as fh:
                            fh.write(f(text))
                    opt = os.path.join(work, "run.opt")
                    with open(opt, "w") as fh:
                        fh.write(self.option_text(paths))
                    self.case("%s/%s" % (table, m), (table, m), work, paths, [opt], EXPECT.get((table, m)))
        for m, (edit, expect) in OPTION_CASES.items():
            with tempfile.TemporaryDirectory() as work:
                paths = self.setup(work)
                opt = os.path.join(work, "run.opt")
                with open(opt, "w", encoding="latin-1", newline="") as fh:
                    fh.write(self.option_text(paths) if edit is None else edit(self.option_text(paths)))
                files = [opt, os.path.join(work, "absent.opt")] if m == "missing_file" else [opt]
                self.case("option/%s" % m, ("option", m), work, paths, files, expect)


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--vesk", required=True)
    ap.add_argument("--check", required=True)
    ap.add_argument("--source", required=True)
    ap.add_argument("--no-memlimit", action="store_true")
    ap.add_argument("-k", help="run only the cases whose name matches this regex")
    args = ap.parse_args()
    r = Runner(args)
    r.all()
    print("%d cases, %d failed%s" % (r.count, len(r.failures), (": " + ", ".join(r.failures)) if r.failures else ""))
    return 1 if r.failures else 0


if __name__ == "__main__":
    sys.exit(main())
