#!/usr/bin/env python3
"""Runs examples/property_search on its bundled inputs in a scratch folder and checks the report
against the inputs and the written tables: the header; ids 0 to n-1 as in the bick file with the same
scores; the property and variable counts and the property names (layer:name, in node order: group,
then property number) from the bicd lines, names taken from exp.expk, prop_pssm.key and prop_cls.key;
no empty result; no two results overlapping by more than Hash::MaxOverlap (a property is its layer and
number, so both orientations of a condition are one); and the planted module of make_example.py
(genes 0-19 up in conditions 0-5, class 0 = genes 0-19) found again.
    check_prop_search.py <property_search binary> <source dir> [optimizer, isa when absent]
"""
import collections, os, subprocess, sys, tempfile

exe, src = sys.argv[1], sys.argv[2]
ex = os.path.join(src, "data", "examples")
fail = []


def check(cond, what):
    if not cond:
        fail.append(what)


outs = ["prop_search_bics.tsv", "prop_search.bick", "prop_search.bicd"]
with tempfile.TemporaryDirectory() as tmp:
    opt = open(os.path.join(ex, "prop_search.opt")).read().replace("data/examples/", ex + "/")
    if len(sys.argv) > 3:
        opt = opt.replace("Optimizer = isa", "Optimizer = " + sys.argv[3])
    for name in outs:
        opt = opt.replace("= " + name, "= " + os.path.join(tmp, name))
    open(os.path.join(tmp, "run.opt"), "w").write(opt)
    r = subprocess.run([exe, os.path.join(tmp, "run.opt")], capture_output=True, text=True)
    check(r.returncode == 0, "exit code %d: %s" % (r.returncode, r.stderr[-500:]))
    lines = open(os.path.join(tmp, outs[0])).read().splitlines()
    bick = [l.split("\t") for l in open(os.path.join(tmp, outs[1])).read().splitlines()]
    bicd = [l.split("\t") for l in open(os.path.join(tmp, outs[2])).read().splitlines()]

max_overlap = float([l for l in opt.splitlines() if l.startswith("MaxOverlap")][0].split("=")[1])
check(lines[0] == "id\tscore\tbr_score\tranked_score\tprops\tvars\tproperties", "header")
rows = [l.split("\t") for l in lines[1:]]
check(len(rows) > 0, "no result")
check([r[0] for r in rows] == [str(i) for i in range(len(rows))], "ids")
check([(b[0], b[1]) for b in bick] == [(r[0], r[1]) for r in rows], "bick ids and scores")

# Names by (group, number): groups 0 and 1 the two orientations of the conditions, 2 the PSSMs, 3 the
# classes.
conds = [l.split("\t")[1] for l in open(os.path.join(ex, "exp.expk")).read().splitlines()]
pssm = [l.split()[1] for l in open(os.path.join(ex, "prop_pssm.key")).read().splitlines()]
cls = [l.split("\t")[2] for l in open(os.path.join(ex, "prop_cls.key")).read().splitlines()]
layer_of = {0: 0, 1: 0, 2: 1, 3: 2}
names = {0: conds, 1: pssm, 2: cls}
props, vars_ = collections.defaultdict(list), collections.defaultdict(set)
for d in bicd:
    check(len(d) == 5, "bicd line %s" % d)
    b, kind, elem, grp = int(d[0]), d[1], int(d[2]), int(d[3])
    float(d[4])
    if kind == "0":
        props[b].append((grp, elem))
    else:
        check(kind == "1", "bicd kind %s" % kind)
        vars_[b].add(elem)
for r in rows:
    b = int(r[0])
    check(int(r[4]) == len(props[b]) and int(r[5]) == len(vars_[b]), "counts of %d" % b)
    check(int(r[4]) + int(r[5]) > 0, "empty result %d" % b)
    want = ",".join("%d:%s" % (layer_of[g], names[layer_of[g]][n]) for g, n in sorted(props[b]))
    check(r[6] == want, "properties of %d: %s, want %s" % (b, r[6], want))
    check(float(r[2]) == 0.0, "br_score without relations")

ids = [int(r[0]) for r in rows]
for i, a in enumerate(ids):
    for b in ids[i + 1:]:
        pa = {(layer_of[g], n) for g, n in props[a]}
        pb = [(layer_of[g], n) for g, n in props[b]]
        e = sum(1 for p in pb if p in pa)
        v = len(vars_[a] & vars_[b])
        inter = e * v
        denom = len(props[a]) * len(vars_[a]) + len(props[b]) * len(vars_[b]) - inter
        check(denom <= 0 or inter / denom <= max_overlap + 1e-6, "overlap of %d and %d" % (a, b))

module = set(range(20))
best = max(ids, key=lambda b: len(vars_[b] & module) / len(vars_[b] | module))
jac = len(vars_[best] & module) / len(vars_[best] | module)
found = {names[0][n] for g, n in props[best] if g == 0}
check(jac >= 0.9, "best Jaccard with the planted genes %.2f" % jac)
check(len(found & {"cond%02d" % c for c in range(6)}) >= 5, "planted conditions in %s" % sorted(found))

if fail:
    print("\n".join(fail))
    sys.exit(1)
print("property_search: %d results, planted module at Jaccard %.2f: ok" % (len(rows), jac))
