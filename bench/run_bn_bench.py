#!/usr/bin/python3
"""Gibbs sampling on the leaky Asia network (asia = xray = dysp = true): vesk's BNInferGibbs
(bench/bn_gibbs_bench.cpp) beside JAGS, in the same run, against exact posteriors.

usage: bench/run_bn_bench.py [--build build] [--repeats 30000] [--steps 50] [--sweeps 200000]
                             [--seed 1]
Run from the repository root after `ninja -C build bn_gibbs_bench`. Installs Debian's jags with
apt-get if it is missing. Prints a Markdown table: per node P(true) by exact enumeration, vesk and
JAGS, then the wall and CPU seconds (CPU from getrusage of the child) and the largest error of each.
"""
import argparse
import os
import resource
import shutil
import subprocess
import sys
import tempfile
import time

NODES = ["tub", "smoke", "lung", "bron", "either"]


def timed(cmd, cwd=None):
    r0 = resource.getrusage(resource.RUSAGE_CHILDREN)
    t0 = time.monotonic()
    res = subprocess.run(cmd, cwd=cwd, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    wall = time.monotonic() - t0
    r1 = resource.getrusage(resource.RUSAGE_CHILDREN)
    cpu = (r1.ru_utime - r0.ru_utime) + (r1.ru_stime - r0.ru_stime)
    return res.stdout, wall, cpu


def run_jags(model, sweeps, seed):
    with tempfile.TemporaryDirectory() as tmp:
        shutil.copy(model, os.path.join(tmp, "model.jags"))
        with open(os.path.join(tmp, "data.R"), "w") as f:
            f.write("asia <- 1\nxray <- 1\ndysp <- 1\n")
        with open(os.path.join(tmp, "inits.R"), "w") as f:
            f.write('".RNG.name" <- "base::Mersenne-Twister"\n".RNG.seed" <- %d\n' % seed)
        with open(os.path.join(tmp, "run.cmd"), "w") as f:
            f.write("model in model.jags\ndata in data.R\ncompile, nchains(1)\nparameters in inits.R\n"
                    "initialize\n%supdate %d\ncoda *\nexit\n" % ("".join("monitor %s\n" % n for n in NODES), sweeps))
        _, wall, cpu = timed(["jags", "run.cmd"], cwd=tmp)
        index = [l.split() for l in open(os.path.join(tmp, "CODAindex.txt"))]
        values = [float(l.split()[1]) for l in open(os.path.join(tmp, "CODAchain1.txt"))]
        means = {}
        for name, a, b in index:
            chunk = values[int(a) - 1 : int(b)]
            means[name] = sum(chunk) / len(chunk)
    return means, wall, cpu


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--build", default="build")
    ap.add_argument("--repeats", type=int, default=30000)
    ap.add_argument("--steps", type=int, default=50)
    ap.add_argument("--sweeps", type=int, default=200000)
    ap.add_argument("--seed", type=int, default=1)
    a = ap.parse_args()
    if shutil.which("jags") is None:
        subprocess.run(["apt-get", "install", "-y", "jags"], check=True)
    here = os.path.dirname(os.path.abspath(__file__))
    out, vwall, vcpu = timed([os.path.join(a.build, "bench", "bn_gibbs_bench"), str(a.repeats), str(a.steps),
                              str(a.seed)])
    vesk, exact = {}, {}
    for line in out.splitlines():
        f = line.split("\t")
        if f[0] in NODES:
            vesk[f[0]], exact[f[0]] = float(f[1]), float(f[2])
    jags, jwall, jcpu = run_jags(os.path.join(here, "bn_asia_leaky.jags"), a.sweeps, a.seed)
    print("| node | exact | vesk Gibbs | JAGS |")
    print("|---|---:|---:|---:|")
    for n in NODES:
        print("| %s | %.6f | %.6f | %.6f |" % (n, exact[n], vesk[n], jags[n]))
    verr = max(abs(vesk[n] - exact[n]) for n in NODES)
    jerr = max(abs(jags[n] - exact[n]) for n in NODES)
    print("\n| engine | settings | wall s | CPU s | max error |")
    print("|---|---|---:|---:|---:|")
    print("| vesk BNInferGibbs | GibbsRepeats %d x GibbsT %d = %d updates | %.3f | %.3f | %.4f |"
          % (a.repeats, a.steps, a.repeats * a.steps, vwall, vcpu, verr))
    print("| JAGS %s | %d sweeps of 5 nodes | %.3f | %.3f | %.4f |" % ("4.3.1", a.sweeps, jwall, jcpu, jerr))
    print("\nload average: %.2f %.2f %.2f" % os.getloadavg())
    return 0


if __name__ == "__main__":
    sys.exit(main())
