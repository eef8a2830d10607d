#!/usr/bin/env python3
"""Runs examples/property_cover on its bundled inputs in a scratch folder and checks the report
against what the inputs give directly: node rows per layer with names and group layout, annotation
edges equal to the class sizes, PSSM edges equal to the genes whose promoter holds the consensus
(the only sites at or above the affinity threshold 0.8: a single mismatch costs at least half), the
candidate counts from the bicd table, and the selection written back as it was read.
    check_prop_cover.py <property_cover binary> <source dir>
"""
import collections, os, subprocess, sys, tempfile

exe, src = sys.argv[1], sys.argv[2]
ex = os.path.join(src, "data", "examples")
fail = []


def check(cond, what):
    if not cond:
        fail.append(what)


def rows(path):
    with open(path) as f:
        lines = f.read().splitlines()
    return lines[0], [l.split("\t") for l in lines[1:]]


with tempfile.TemporaryDirectory() as tmp:
    opt = open(os.path.join(ex, "prop_cover.opt")).read().replace("data/examples/", ex + "/")
    for name in ["prop_cover_nodes.tsv", "prop_cover_candidates.tsv", "prop_cover_cover.tsv", "prop_cover.bick",
                 "prop_cover.bicd"]:
        opt = opt.replace("= " + name, "= " + os.path.join(tmp, name))
    open(os.path.join(tmp, "run.opt"), "w").write(opt)
    r = subprocess.run([exe, os.path.join(tmp, "run.opt")], capture_output=True, text=True)
    check(r.returncode == 0, "exit code %d" % r.returncode)
    head, nodes = rows(os.path.join(tmp, "prop_cover_nodes.tsv"))
    check(head == "node\tlayer\tgroup\tprop\tname\tedges\tpos_genes", "nodes header")
    chead, cands = rows(os.path.join(tmp, "prop_cover_candidates.tsv"))
    check(chead == "id\tfile_score\tscore\tprops\tvars", "candidates header")
    vhead, cover = rows(os.path.join(tmp, "prop_cover_cover.tsv"))
    check(vhead == "id\tscore\tprops\tvars", "cover header")
    out_bick = open(os.path.join(tmp, "prop_cover.bick")).read().split("\n")
    out_bicd = [l.split("\t") for l in open(os.path.join(tmp, "prop_cover.bicd")).read().splitlines()]

# Layout: 24 conditions in groups 0 and 1 (layer 0), 3 PSSMs in group 2 (layer 1), 4 classes in
# group 3 (layer 2), in node order.
conds = [l.split("\t")[1] for l in open(os.path.join(ex, "exp.expk")).read().splitlines()]
key = [l.split() for l in open(os.path.join(ex, "prop_pssm.key")).read().splitlines()]
cls_names = [l.split("\t")[2] for l in open(os.path.join(ex, "prop_cls.key")).read().splitlines()]
want = [(0, 0, c, conds[c]) for c in range(24)] + [(0, 1, c, conds[c]) for c in range(24)]
want += [(1, 2, p, key[p][1]) for p in range(3)] + [(2, 3, c, cls_names[c]) for c in range(4)]
check(len(nodes) == len(want), "node rows %d" % len(nodes))
for i, (n, w) in enumerate(zip(nodes, want)):
    check((int(n[0]), int(n[1]), int(n[2]), int(n[3]), n[4]) == (i,) + w, "node row %d: %s" % (i, n))
    check(int(n[6]) <= int(n[5]), "pos_genes above edges at %d" % i)

sizes = collections.Counter(int(l.split()[0]) for l in open(os.path.join(ex, "prop_cls.assoc")))
for c in range(4):
    check(int(nodes[51 + c][5]) == sizes[c], "class %d edges %s, members %d" % (c, nodes[51 + c][5], sizes[c]))
fa = open(os.path.join(ex, "prop_promoters.fa")).read().split(">")[1:]
seqs = [rec.split("\n", 1)[1].replace("\n", "") for rec in fa]
for p in range(3):
    hits = sum(1 for s in seqs if key[p][1] in s)
    check(int(nodes[48 + p][5]) == hits, "pssm %d edges %s, consensus in %d promoters" % (p, nodes[48 + p][5], hits))

# Candidates: scores from the bick file, member counts from the bicd file.
members = collections.defaultdict(set)
for l in open(os.path.join(ex, "prop_cand.bicd")):
    b, kind, elem, grp, _ = l.split()
    members[int(b)].add((kind, elem, grp))
bick = [l.split() for l in open(os.path.join(ex, "prop_cand.bick"))]
check(len(cands) == len(bick), "candidate rows")
for c, k in zip(cands, bick):
    b = int(c[0])
    check(c[0] == k[0] and float(c[1]) == float(k[1]), "file score of %s" % c[0])
    check(int(c[3]) == sum(1 for m in members[b] if m[0] == "0"), "props of %d" % b)
    check(int(c[4]) == sum(1 for m in members[b] if m[0] == "1"), "vars of %d" % b)

# The selection: ascending ids among the candidates, their rows repeated, written back whole.
ids = [int(v[0]) for v in cover]
check(len(ids) > 0 and ids == sorted(ids), "selection ids %s" % ids)
by_id = {int(c[0]): c for c in cands}
for v in cover:
    c = by_id[int(v[0])]
    check(v[1:] == [c[2], c[3], c[4]], "cover row %s against candidate %s" % (v, c))
check([l.split("\t")[0] for l in out_bick if l] == [str(i) for i in ids], "bick ids")
got = collections.defaultdict(set)
for l in out_bicd:
    got[int(l[0])].add((l[1], l[2], l[3]))
for i in ids:
    check(got[i] == members[i], "bicd members of %d" % i)
check(set(got) == set(ids), "bicd ids")

if fail:
    print("\n".join(fail))
    sys.exit(1)
print("property_cover: %d nodes, %d candidates, %d selected: ok" % (len(nodes), len(cands), len(ids)))
