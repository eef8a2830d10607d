#!/usr/bin/python3
"""Benchmark of vesk's two computation paths (VESK_BOOTSTRAP=reference|fast), side by side.

    python3 bench/run_bench.py [--quick] [--cases real,base,genes,classes,sets,passes]
                               [--ref-cap 300] [--over-cap reduce|skip] [--timeout 3600]
                               [--threads N] [--vesk PATH] [--md FILE]

For every case vesk runs once with VESK_BOOTSTRAP=fast and once with VESK_BOOTSTRAP=reference,
from the repository root, on the same option files; a small override file sets the pass count and
the report path. Measured per run: wall time, CPU time (user + sys of vesk, from wait4 in the small
launcher bench/rusage_exec.c) and peak memory (its ru_maxrss), and the wall time of the phases, read
off vesk's progress lines as they appear (setup: until "got N sets"; bootstrap: until "got Nrand
pvs"; report: until exit). The two reports, standard outputs and error streams must be byte-identical.

Cases: "real" is bench/data/out/real/real.opt (make it with bench/data/fetch_real.sh) with 1000
passes; the synthetic cases come from bench/data/make_synth.py (generated on first use into
bench/data/out/synth/) as a scaling series that varies one of genes, classes, sets and passes
around a base point. --quick runs small synthetic cases with few passes (add "real" to --cases to
include the real case, with few passes too).

The cap: when a case has more passes than --pilot-passes, the reference path first runs with
--pilot-passes passes (a complete run, report included); its bootstrap phase gives the cost of one
pass, and the full run is estimated as the pilot's time plus that cost for each further pass.
Above --ref-cap seconds, the reference path either runs again with as many passes as fit the cap
(--over-cap reduce, the default; the pilot itself serves when fewer than twice its passes fit) or
stays with the pilot (--over-cap skip); the fast path is then also run with that pass count, for a
like-for-like time and the identity check. Either is said in the output; an extrapolated time is
always marked "est.".

Not a test: it prints a Markdown table and exits 1 only if some pair of outputs differed or a run
failed.
"""

import argparse
import datetime
import filecmp
import os
import platform
import subprocess
import sys
import time

BENCH = os.path.dirname(os.path.abspath(__file__))
REPO = os.path.dirname(BENCH)
OUT = os.path.join(BENCH, "data", "out")
SYNTH_GEN = os.path.join(BENCH, "data", "make_synth.py")
REAL_OPT = os.path.join(OUT, "real", "real.opt")
HELPER_SRC = os.path.join(BENCH, "rusage_exec.c")
HELPER = {}

FULL = {
    "base": (10000, 5000, 200, 200),
    "genes": [5000, 10000, 20000, 50000],
    "classes": [1000, 2000, 5000, 10000, 20000],
    "sets": [50, 100, 200, 500],
    "passes": [100, 200, 500, 1000],
    "real_passes": 1000,
}
QUICK = {
    "base": (5000, 500, 50, 20),
    "genes": [5000, 10000],
    "classes": [500, 1000],
    "sets": [50, 100],
    "passes": [20, 40],
    "real_passes": 20,
}
SERIES = ("genes", "classes", "sets", "passes")


def log(msg):
    sys.stderr.write("[bench] %s\n" % msg)
    sys.stderr.flush()


def count_lines(path):
    n = 0
    with open(path, "rb") as f:
        while True:
            b = f.read(1 << 20)
            if not b:
                return n
            n += b.count(b"\n")


def read_opt_tables(opt):
    """The Tables paths of a generated option file (plain key = value lines)."""
    tables = {}
    scope = ""
    with open(opt) as f:
        for line in f:
            line = line.rstrip("\n")
            if line.startswith("["):
                scope = line[1:line.index("]")]
            elif "=" in line and not line.startswith("#") and scope == "Tables":
                k, v = line.split("=", 1)
                tables[k.strip()] = v.strip()
    return tables


def case_sizes(opt):
    t = read_opt_tables(opt)
    sets = set()
    rows = 0
    with open(t["SetsOrfs"]) as f:
        for line in f:
            w = line.split()
            if len(w) == 2:
                sets.add(w[1])
                rows += 1
    return {
        "genes": count_lines(t["varob"]),
        "chip": count_lines(t["ChipOrfs"]),
        "classes": count_lines(t["goclskey"]),
        "memberships": count_lines(t["clsassoc"]),
        "sets": len(sets),
        "set_rows": rows,
    }


def synth_case(genes, classes, sets, seed):
    d = os.path.join(OUT, "synth", "g%d_c%d_s%d_seed%d" % (genes, classes, sets, seed))
    opt = os.path.join(d, "synth.opt")
    if not os.path.exists(os.path.join(d, "summary.txt")):
        log("generating %s" % os.path.relpath(d, REPO))
        subprocess.run([sys.executable, SYNTH_GEN, "--out", d, "--genes", str(genes), "--classes", str(classes),
                        "--sets", str(sets), "--seed", str(seed)], check=True, stdout=subprocess.DEVNULL)
    return opt


class Run:
    """One vesk run and what it measured."""

    def __init__(self):
        self.wall = self.cpu = self.user = self.sys = None
        self.rss_kb = None
        self.status = None
        self.timed_out = False
        self.t_sets = self.t_boot = None
        self.report = self.err = self.out = None
        self.passes = None

    def ok(self):
        return not self.timed_out and self.status == 0

    def phase(self, which):
        if which == "setup":
            return self.t_sets
        if which == "boot":
            return None if self.t_sets is None or self.t_boot is None else self.t_boot - self.t_sets
        if which == "report":
            return None if self.t_boot is None else self.wall - self.t_boot
        raise ValueError(which)


def run_vesk(vesk, opt, run_dir, tag, mode, passes, threads, timeout, extra=None):
    """Run vesk from the repository root on opt plus an override; returns a Run."""
    os.makedirs(run_dir, exist_ok=True)
    r = Run()
    r.passes = passes
    r.report = os.path.join(run_dir, tag + "_report.tsv")
    r.err = os.path.join(run_dir, tag + "_stderr.txt")
    r.out = os.path.join(run_dir, tag + "_stdout.txt")
    # The same override path for every run: vesk prints the option file paths on its error stream.
    override = os.path.join(run_dir, "override.opt")
    with open(override, "w") as f:
        f.write("[Tables]\nAnnotReport = %s\n\n[Vesk]\nBootstrapNum = %d\n" % (r.report, passes))
        for k, v in (extra or {}).items():
            f.write("%s = %s\n" % (k, v))
    if os.path.exists(r.report):
        os.unlink(r.report)
    env = dict(os.environ)
    env["VESK_BOOTSTRAP"] = mode
    if threads:
        env["VESK_THREADS"] = str(threads)
    else:
        env.pop("VESK_THREADS", None)
    acts = [
        (os.POSIX_SPAWN_OPEN, 0, os.devnull, os.O_RDONLY, 0),
        (os.POSIX_SPAWN_OPEN, 1, r.out, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644),
        (os.POSIX_SPAWN_OPEN, 2, r.err, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644),
    ]
    rel = [os.path.relpath(opt, REPO), os.path.relpath(override, REPO)]
    helper = HELPER.get("path")
    usage = os.path.join(run_dir, tag + "_rusage.txt")
    if os.path.exists(usage):
        os.unlink(usage)
    argv = [helper, usage, vesk] + rel if helper else [vesk] + rel
    t0 = time.monotonic()
    pid = os.posix_spawn(argv[0], argv, env, file_actions=acts, setpgroup=0)
    pos = 0
    tail = b""
    with open(r.err, "rb") as ef:
        while True:
            wpid, status, ru = os.wait4(pid, os.WNOHANG)
            now = time.monotonic()
            # Progress lines as they appear: the end of setup and the end of the bootstrap.
            while True:
                ef.seek(pos)
                chunk = ef.read(1 << 20)
                if not chunk:
                    break
                pos += len(chunk)
                lines = (tail + chunk).split(b"\n")
                tail = lines.pop()
                for line in lines:
                    if r.t_sets is None and line.startswith(b"got ") and line.endswith(b" sets"):
                        r.t_sets = now - t0
                    elif r.t_boot is None and line.startswith(b"got ") and b"rand pvs" in line:
                        r.t_boot = now - t0
            if wpid:
                break
            if timeout and now - t0 > timeout:
                os.killpg(pid, 9)  # the group of the run started here: the helper and vesk
                _, status, ru = os.wait4(pid, 0)
                r.timed_out = True
                break
            time.sleep(0.02 if now - t0 < 2 else 0.05)
    r.wall = time.monotonic() - t0
    if helper and not r.timed_out:
        try:
            with open(usage) as f:
                st, user, sys_, rss = f.read().split()
            r.status, r.user, r.sys, r.rss_kb = int(st), float(user), float(sys_), int(rss)
        except (OSError, ValueError):
            r.status = "helper failed (%s)" % os.waitstatus_to_exitcode(status)
            r.user, r.sys, r.rss_kb = ru.ru_utime, ru.ru_stime, ru.ru_maxrss
    else:
        r.user, r.sys, r.rss_kb = ru.ru_utime, ru.ru_stime, ru.ru_maxrss
        r.status = os.waitstatus_to_exitcode(status)
    r.cpu = r.user + r.sys
    return r


def build_helper():
    """Compile rusage_exec.c into the output directory; None if no C compiler works."""
    exe = os.path.join(OUT, "rusage_exec")
    if os.path.exists(exe) and os.path.getmtime(exe) >= os.path.getmtime(HELPER_SRC):
        return exe
    os.makedirs(OUT, exist_ok=True)
    for cc in ("cc", "gcc", "clang"):
        try:
            subprocess.run([cc, "-O2", "-o", exe, HELPER_SRC], check=True, capture_output=True)
            return exe
        except (OSError, subprocess.CalledProcessError):
            continue
    return None


def same_outputs(a, b):
    """Names of the outputs that differ between two runs (empty: byte-identical)."""
    diff = []
    for name, pa, pb in (("report", a.report, b.report), ("stderr", a.err, b.err), ("stdout", a.out, b.out)):
        ea, eb = os.path.exists(pa), os.path.exists(pb)
        if ea != eb or (ea and not filecmp.cmp(pa, pb, shallow=False)):
            diff.append(name)
    return diff


def fmt_s(x):
    if x is None:
        return "-"
    return "%.1f" % x if x >= 10 else "%.2f" % x


def fmt_mb(kb):
    return "-" if kb is None else "%.0f" % (kb / 1024.0)


def fmt_x(a, b):
    if a is None or b is None or b <= 0:
        return "-"
    return "%.1fx" % (a / b)


class Bench:
    def __init__(self, args):
        self.args = args
        self.rows = []
        self.notes = []
        self.sizes = []
        self.failed = False
        self.cache = {}
        self.pilots = {}
        self.runs = {}

    def measure(self, vesk, opt, run_dir, tag, mode, passes, extra=None):
        key = (os.path.abspath(opt), mode, passes)
        if key not in self.runs:
            self.runs[key] = self.measure_new(vesk, opt, run_dir, tag, mode, passes, extra)
        return self.runs[key]

    def measure_new(self, vesk, opt, run_dir, tag, mode, passes, extra=None):
        best = None
        for i in range(max(1, self.args.repeat)):
            r = run_vesk(vesk, opt, run_dir, tag, mode, passes, self.args.threads, self.args.timeout, extra)
            log("  %-9s %-10s passes %-5d wall %7.2f s  cpu %7.2f s  peak %6.0f MB  status %s%s"
                % (tag, mode, passes, r.wall, r.cpu, r.rss_kb / 1024.0, r.status,
                   "  TIMEOUT" if r.timed_out else ""))
            if not r.ok():
                return r
            if best is None or r.wall < best.wall:
                best = r
        return best

    def case(self, name, opt, passes):
        key = (os.path.abspath(opt), passes)
        if key in self.cache:
            return
        self.cache[key] = True
        a = self.args
        vesk = a.vesk
        run_dir = os.path.join(OUT, "runs", name.replace(" ", "_"))
        log("case %s: %s, %d passes" % (name, os.path.relpath(opt, REPO), passes))
        fast = self.measure(vesk, opt, run_dir, "fast_p%d" % passes, "fast", passes)
        row = {"case": name, "passes": str(passes), "fast": fast, "ref": None, "est": None, "same": "-"}
        self.rows.append(row)
        if not fast.ok():
            self.failed = True
            row["same"] = "fast run failed (%s)" % ("timeout" if fast.timed_out else "status %s" % fast.status)
            return
        ref_passes = passes
        pilot = None
        if a.ref_cap > 0 and passes > a.pilot_passes:
            # A short reference run first: its bootstrap phase gives the cost of a pass, the rest is
            # measured as it is (setup and the report work of the reference path).
            p0 = a.pilot_passes
            pkey = (os.path.abspath(opt), p0)
            if pkey not in self.pilots:
                self.pilots[pkey] = self.measure(vesk, opt, run_dir, "reference_p%d" % p0, "reference", p0)
            pilot = self.pilots[pkey]
            boot = pilot.phase("boot")
            if not pilot.ok():
                pilot = None
            elif boot is None or pilot.t_sets is None:
                self.notes.append("%s: the reference pilot printed no progress lines; no cap applied" % name)
            else:
                per_pass = boot / p0
                est = pilot.wall + per_pass * (passes - p0)
                log("  pilot: %.3f s a pass, full reference run est. %.0f s" % (per_pass, est))
                if est > a.ref_cap:
                    row["est"] = est
                    ref_passes = p0
                    if a.over_cap == "reduce":
                        fit = p0 + int((a.ref_cap - pilot.wall) / per_pass)
                        if fit >= 2 * p0:
                            ref_passes = fit - (fit % 10 if fit >= 100 else 0)
                    how = ("skipped: only its %d-pass pilot ran" % p0 if a.over_cap == "skip" or ref_passes == p0
                           else "run with %d passes instead" % ref_passes)
                    self.notes.append(
                        "%s: reference path estimated at %.0f s for %d passes (pilot of %d passes: %.1f s, %.3f s a "
                        "pass), over the cap of %d s; %s, beside the fast path with as many (the next row); the "
                        "speed-up at %d passes is an estimate"
                        % (name, est, passes, p0, pilot.wall, per_pass, a.ref_cap, how, passes))
        row_full = row
        if ref_passes != passes:
            fast2 = self.measure(vesk, opt, run_dir, "fast_p%d" % ref_passes, "fast", ref_passes)
            row2 = {"case": name, "passes": str(ref_passes), "fast": fast2, "ref": None, "est": None, "same": "-"}
            self.rows.append(row2)
            row["same"] = "see %d passes" % ref_passes
            row = row2
            fast = fast2
            if not fast.ok():
                self.failed = True
                row["same"] = "fast run failed"
                return
        if pilot is not None and ref_passes == pilot.passes:
            ref = pilot
        else:
            ref = self.measure(vesk, opt, run_dir, "reference_p%d" % ref_passes, "reference", ref_passes)
        row["ref"] = ref
        if not ref.ok():
            self.failed = True
            row["same"] = "reference run failed (%s)" % ("timeout" if ref.timed_out else "status %s" % ref.status)
            return
        if ref_passes != passes and ref_passes > a.pilot_passes and ref.phase("boot"):
            # More passes measured: a better estimate of the full reference run.
            per_pass = ref.phase("boot") / ref_passes
            row_full["est"] = ref.wall + per_pass * (passes - ref_passes)
            self.notes.append("%s: estimate of the %d-pass reference run refined from the %d-pass run: %.0f s "
                              "(%.3f s a pass)" % (name, passes, ref_passes, row_full["est"], per_pass))
        diff = same_outputs(ref, fast)
        if diff:
            self.failed = True
            row["same"] = "**DIFFER: %s**" % ", ".join(diff)
        else:
            row["same"] = "yes"

    def markdown(self, header):
        out = list(header)
        out.append("")
        out.append("| case | genes | chip | classes | memberships | sets | set rows |")
        out.append("|---|---:|---:|---:|---:|---:|---:|")
        for name, s in self.sizes:
            out.append("| %s | %d | %d | %d | %d | %d | %d |" % (name, s["genes"], s["chip"], s["classes"],
                                                                 s["memberships"], s["sets"], s["set_rows"]))
        out.append("")
        out.append("| case | passes | ref wall s | ref CPU s | ref peak MB | fast wall s | fast CPU s | fast peak MB "
                   "| speed-up wall | speed-up CPU | bootstrap ref / fast s | report ref / fast s | identical |")
        out.append("|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---|")
        for row in self.rows:
            f, r = row["fast"], row["ref"]
            if r is not None and r.ok():
                rw, rc, rm = fmt_s(r.wall), fmt_s(r.cpu), fmt_mb(r.rss_kb)
                sw, sc = fmt_x(r.wall, f.wall), fmt_x(r.cpu, f.cpu)
                bp = "%s / %s" % (fmt_s(r.phase("boot")), fmt_s(f.phase("boot")))
                rp = "%s / %s" % (fmt_s(r.phase("report")), fmt_s(f.phase("report")))
            elif row["est"] is not None:
                rw, rc, rm = "est. %.0f" % row["est"], "-", "-"
                sw, sc = "est. %s" % fmt_x(row["est"], f.wall), "-"
                bp = "- / %s" % fmt_s(f.phase("boot"))
                rp = "- / %s" % fmt_s(f.phase("report"))
            else:
                rw = rc = rm = sw = sc = "-"
                bp = "- / %s" % fmt_s(f.phase("boot"))
                rp = "- / %s" % fmt_s(f.phase("report"))
            out.append("| %s | %s | %s | %s | %s | %s | %s | %s | %s | %s | %s | %s | %s |" % (
                row["case"], row["passes"], rw, rc, rm, fmt_s(f.wall), fmt_s(f.cpu), fmt_mb(f.rss_kb), sw, sc, bp,
                rp, row["same"]))
        ratios = [row["ref"].cpu / row["fast"].cpu for row in self.rows
                  if row["ref"] is not None and row["ref"].ok() and row["fast"].ok() and row["fast"].cpu > 0.5]
        if ratios and all(0.85 < x < 1.15 for x in ratios):
            self.notes.append("both paths took the same CPU time in every case: this vesk may ignore VESK_BOOTSTRAP")
        if self.notes:
            out.append("")
            for n in self.notes:
                out.append("- " + n)
        return "\n".join(out) + "\n"


def git_state():
    try:
        head = subprocess.run(["git", "-C", REPO, "rev-parse", "--short", "HEAD"], capture_output=True, text=True,
                              check=True).stdout.strip()
        dirty = subprocess.run(["git", "-C", REPO, "status", "--porcelain", "--untracked-files=no"],
                               capture_output=True, text=True, check=True).stdout.strip()
        return head + (" with uncommitted changes" if dirty else "")
    except (OSError, subprocess.CalledProcessError):
        return "unknown"


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--cases", help="comma list of real, base, genes, classes, sets, passes "
                                    "(default: all; with --quick all but real)")
    ap.add_argument("--quick", action="store_true", help="small synthetic cases with few passes (smoke check)")
    ap.add_argument("--base", help="base point genes,classes,sets,passes (default 10000,5000,200,200; "
                                   "quick 5000,500,50,20)")
    for s in SERIES:
        ap.add_argument("--" + s, dest="series_" + s, help="values of the %s series, comma separated" % s)
    ap.add_argument("--real-passes", type=int, help="passes of the real case (default 1000; quick 20)")
    ap.add_argument("--seed", type=int, default=1, help="seed of the synthetic generator")
    ap.add_argument("--vesk", help="vesk executable (default build-bench/tools/vesk, then build/tools/vesk)")
    ap.add_argument("--threads", type=int, default=0, help="VESK_THREADS for both runs (default: unset)")
    ap.add_argument("--timeout", type=float, default=3600, help="seconds after which a run is killed (0: never)")
    ap.add_argument("--ref-cap", type=int, default=300,
                    help="estimated seconds above which the reference path is reduced or skipped (0: no cap)")
    ap.add_argument("--over-cap", choices=("reduce", "skip"), default="reduce")
    ap.add_argument("--pilot-passes", type=int, default=10, help="passes of the reference pilot run")
    ap.add_argument("--repeat", type=int, default=1, help="runs of each measurement; the fastest is kept")
    ap.add_argument("--md", help="also write the Markdown result into this file")
    a = ap.parse_args()

    conf = dict(QUICK if a.quick else FULL)
    if a.base:
        conf["base"] = tuple(int(x) for x in a.base.split(","))
        if len(conf["base"]) != 4:
            ap.error("--base takes genes,classes,sets,passes")
    for s in SERIES:
        v = getattr(a, "series_" + s)
        if v:
            conf[s] = [int(x) for x in v.split(",")]
    if a.real_passes is not None:
        conf["real_passes"] = a.real_passes
    cases = a.cases.split(",") if a.cases else (["base"] + list(SERIES) if a.quick else ["real", "base"] + list(SERIES))
    for c in cases:
        if c not in ("real", "base") + SERIES:
            ap.error("unknown case %r" % c)

    if not a.vesk:
        for cand in ("build-bench/tools/vesk", "build/tools/vesk"):
            if os.access(os.path.join(REPO, cand), os.X_OK):
                a.vesk = os.path.join(REPO, cand)
                break
        else:
            ap.error("no vesk found; build it or pass --vesk")
    a.vesk = os.path.abspath(a.vesk)
    os.chdir(REPO)
    HELPER["path"] = build_helper()

    b = Bench(a)
    tree = git_state()
    built = datetime.datetime.fromtimestamp(os.path.getmtime(a.vesk)).strftime("%Y-%m-%d %H:%M")
    load0 = os.getloadavg()
    started = datetime.datetime.now()
    G, C, S, P = conf["base"]
    if "real" in cases:
        if os.path.exists(REAL_OPT):
            b.sizes.append(("real", case_sizes(REAL_OPT)))
            b.case("real", REAL_OPT, conf["real_passes"])
        else:
            b.notes.append("real: %s not found; run bench/data/fetch_real.sh first" % os.path.relpath(REAL_OPT, REPO))
    points = []
    if "base" in cases:
        points.append((G, C, S, P))
    for s in SERIES:
        if s in cases:
            for v in conf[s]:
                pt = {"genes": (v, C, S, P), "classes": (G, v, S, P), "sets": (G, C, v, P), "passes": (G, C, S, v)}[s]
                if pt not in points:
                    points.append(pt)
    for g, c, s, p in points:
        opt = synth_case(g, c, s, a.seed)
        name = "synth g%d c%d s%d" % (g, c, s)
        if name not in [n for n, _ in b.sizes]:
            b.sizes.append((name, case_sizes(opt)))
        b.case(name, opt, p)

    load1 = os.getloadavg()
    header = [
        "vesk bootstrap benchmark, %s, %s" % (started.strftime("%Y-%m-%d %H:%M"), "quick mode" if a.quick else "full"),
        "",
        "- vesk: %s, built %s; source tree at start: %s" % (os.path.relpath(a.vesk, REPO), built, tree),
        "- machine: %d cores, %s; load average %.2f at start, %.2f at end" % (
            os.cpu_count() or 0, platform.machine(), load0[0], load1[0]),
        "- VESK_THREADS: %s; base point genes %d, classes %d, sets %d, passes %d; synthetic seed %d" % (
            a.threads or "unset (machine's cores)", G, C, S, P, a.seed),
        "- reference cap: %s" % ("%d s (%s)" % (a.ref_cap, a.over_cap) if a.ref_cap > 0 else "none"),
        "- times in seconds; CPU = user + sys of vesk; peak = its ru_maxrss%s; phases are wall time "
        "(bootstrap: \"got N sets\" to \"got Nrand pvs\"; report: from there to exit)"
        % ("" if HELPER.get("path") else " (no C compiler for bench/rusage_exec.c: vesk started by the driver "
                                          "itself, so peaks include the driver's own peak)"),
    ]
    md = b.markdown(header)
    sys.stdout.write(md)
    if a.md:
        with open(a.md, "w") as f:
            f.write(md)
    return 1 if b.failed else 0


if __name__ == "__main__":
    sys.exit(main())
