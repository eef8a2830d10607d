#!/usr/bin/python3
"""Round trip of the real case through the standard files: GO.db and org.Hs.eg.db to OBO, GAF, GMT,
vesk_import to vesk tables, and vesk on both routes.

    /usr/bin/python3 bench/real_roundtrip.py [--build build] [--passes 100]

Needs bench/data/fetch_real.sh run first (the two SQLite databases under bench/data/scratch/ and the
direct tables in bench/data/out/real/). Writes into bench/data/out/roundtrip/:

  go.obo        every live GO term (id, name, namespace, is_a and relationship lines from the
                go_*_parents tables) and every obsolete one (is_obsolete: true)
  human.gaf.gz  GAF 2.2, one row per direct annotation of go_bp, go_mf, go_cc (gene, term,
                evidence), genes in the direct route's order, the direct route's printed symbols
  genes.tsv     Entrez id and printed symbol of every gene of varob.tab, in its order
  kegg.gmt      the sets of sets.tab with their KEGG ids (sets_key.tsv), members as listed
  import/       vesk_import's tables from those files

GO.db carries BP annotations over regulates links too, so the import propagates over part_of,
regulates, positively_regulates and negatively_regulates. Then checks: same classes (id, key,
name), same memberships, same chip and genes; and vesk on both routes (with the direct route's type
labels BP/MF/CC written as P/F/C, the importer's labels) gives byte-identical reports. Exit 1 on a
difference.
"""

import argparse
import glob
import gzip
import os
import sqlite3
import subprocess
import sys

BENCH = os.path.dirname(os.path.abspath(__file__))
REPO = os.path.dirname(BENCH)
REAL = os.path.join(BENCH, "data", "out", "real")
OUT = os.path.join(BENCH, "data", "out", "roundtrip")
NS = {"BP": "biological_process", "MF": "molecular_function", "CC": "cellular_component"}
REL = {"isa": None, "part of": "part_of", "regulates": "regulates",
       "positively regulates": "positively_regulates", "negatively regulates": "negatively_regulates"}


def obo_escape(s):
    return s.replace("\\", "\\\\").replace("!", "\\!").replace("{", "\\{")


def find_db(name):
    hits = glob.glob(os.path.join(BENCH, "data", "scratch", "root", "**", name), recursive=True)
    if not hits:
        sys.exit("%s not found: run bench/data/fetch_real.sh first" % name)
    return hits[0]


def write_inputs(go, hs):
    varob = [line.rstrip("\n").split("\t") for line in open(os.path.join(REAL, "varob.tab"))]
    printed = {entrez: name2 for _, entrez, name2 in varob}
    with open(os.path.join(OUT, "genes.tsv"), "w") as f:
        for _, entrez, name2 in varob:
            f.write("%s\t%s\n" % (entrez, name2))

    terms = go.execute("SELECT _id, go_id, term, ontology FROM go_term WHERE ontology IN ('BP','MF','CC') "
                       "ORDER BY go_id").fetchall()
    go_of = {iid: goid for iid, goid, _, _ in terms}
    parents = {}
    for o in ("bp", "mf", "cc"):
        for child, parent, rel in go.execute("SELECT _id, _parent_id, relationship_type FROM go_%s_parents" % o):
            if rel not in REL:
                sys.exit("unknown relationship type %r" % rel)
            if parent not in go_of:
                continue  # the "all" root of GO.db, no GO term
            parents.setdefault(child, []).append((REL[rel], go_of[parent]))
    with open(os.path.join(OUT, "go.obo"), "w") as f:
        f.write("format-version: 1.2\nontology: go\n! written from GO.db by bench/real_roundtrip.py\n")
        for iid, goid, name, ont in terms:
            f.write("\n[Term]\nid: %s\nname: %s\nnamespace: %s\n" % (goid, obo_escape(name), NS[ont]))
            for rel, target in sorted(parents.get(iid, []), key=lambda p: (p[0] is not None, p)):
                if rel is None:
                    f.write("is_a: %s\n" % target)
                else:
                    f.write("relationship: %s %s\n" % (rel, target))
        for goid, name, ont in go.execute("SELECT go_id, term, ontology FROM go_obsolete ORDER BY go_id"):
            f.write("\n[Term]\nid: %s\nname: %s\nnamespace: %s\nis_obsolete: true\n"
                    % (goid, obo_escape(name), NS.get(ont, "biological_process")))
        f.write("\n[Typedef]\nid: part_of\nname: part of\n")

    entrez_of = dict(hs.execute("SELECT _id, gene_id FROM genes"))
    order = {entrez: k for k, (_, entrez, _) in enumerate(varob)}
    rows = []
    for o, aspect in (("bp", "P"), ("mf", "F"), ("cc", "C")):
        for gid, goid, ev in hs.execute("SELECT _id, go_id, evidence FROM go_%s" % o):
            e = entrez_of[gid]
            rows.append((order[e], goid, ev, aspect, e))
    rows.sort()
    with gzip.open(os.path.join(OUT, "human.gaf.gz"), "wt") as f:
        f.write("!gaf-version: 2.2\n!written from org.Hs.eg.db by bench/real_roundtrip.py\n")
        for _, goid, ev, aspect, e in rows:
            f.write("\t".join(["EntrezGene", e, printed[e], "", goid, "GO_REF:0000000", ev, "", aspect, "",
                               "", "gene", "taxon:9606", "20220912", "org.Hs.eg.db", "", ""]) + "\n")

    keys = {}
    for line in open(os.path.join(REAL, "sets_key.tsv")):
        f = line.rstrip("\n").split("\t")
        if f[0].isdigit():
            keys[int(f[0])] = f[1]
    members = {}
    for line in open(os.path.join(REAL, "sets.tab")):
        word, sid = line.split()
        members.setdefault(int(sid), []).append(word)
    with open(os.path.join(OUT, "kegg.gmt"), "w") as f:
        for sid in range(max(members) + 1):
            f.write("\t".join([keys.get(sid, "set%d" % sid), "KEGG pathway"] + members.get(sid, [])) + "\n")
    return len(terms), len(rows)


def table(path, cols=None):
    with open(path) as f:
        rows = [line.rstrip("\n").split("\t") for line in f]
    return [r[:cols] if cols else r for r in rows]


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--build", default=os.path.join(REPO, "build"))
    ap.add_argument("--passes", type=int, default=100)
    args = ap.parse_args()
    os.makedirs(OUT, exist_ok=True)
    go = sqlite3.connect("file:%s?mode=ro" % find_db("GO.sqlite"), uri=True)
    hs = sqlite3.connect("file:%s?mode=ro" % find_db("org.Hs.eg.sqlite"), uri=True)
    n_terms, n_rows = write_inputs(go, hs)
    print("wrote go.obo (%d live terms), human.gaf.gz (%d rows), genes.tsv, kegg.gmt" % (n_terms, n_rows))

    imp = os.path.join(OUT, "import")
    cmd = [os.path.join(args.build, "tools", "vesk_import"), "--obo", os.path.join(OUT, "go.obo"),
           "--gaf", os.path.join(OUT, "human.gaf.gz"), "--genes", os.path.join(OUT, "genes.tsv"),
           "--gmt", os.path.join(OUT, "kegg.gmt"),
           "--relations", "part_of,regulates,positively_regulates,negatively_regulates", "--out", imp]
    print(" ".join(cmd))
    subprocess.run(cmd, check=True)

    bad = []
    direct_keys = table(os.path.join(REAL, "clskey.tab"), 3)
    if direct_keys != table(os.path.join(imp, "clskey.tab"), 3):
        bad.append("classes differ")
    if table(os.path.join(REAL, "clsassoc.tab")) != table(os.path.join(imp, "clsassoc.tab")):
        bad.append("memberships differ")
    if table(os.path.join(REAL, "varob.tab")) != table(os.path.join(imp, "genes.tab")):
        bad.append("genes differ")
    name_of = {r[1]: r[2] for r in table(os.path.join(REAL, "varob.tab"))}
    if [name_of[r[0]] for r in table(os.path.join(REAL, "chip.txt"))] != [r[0] for r in table(os.path.join(imp, "chip.txt"))]:
        bad.append("chips differ")
    print("classes %d, memberships %d: %s" % (len(direct_keys), len(table(os.path.join(imp, "clsassoc.tab"))),
                                              "; ".join(bad) or "equal"))

    # vesk on both routes, same passes, the direct type labels in the importer's letters.
    relabel = os.path.join(OUT, "gotype_pfc.tab")
    with open(relabel, "w") as f:
        for key, lab in table(os.path.join(REAL, "gotype.tab")):
            f.write("%s\t%s\n" % (key, {"BP": "P", "MF": "F", "CC": "C"}.get(lab, lab)))
    vesk = os.path.join(args.build, "tools", "vesk")
    reports = []
    for route, opt, extra in (("direct", os.path.join(REAL, "real.opt"), "GoTypeTab = %s\n" % relabel),
                              ("import", os.path.join(imp, "run.opt"), "")):
        rep = os.path.join(OUT, "report_%s.tsv" % route)
        over = os.path.join(OUT, "over_%s.opt" % route)
        with open(over, "w") as f:
            f.write("[Random]\nSeed = 20221\n[Tables]\n%sAnnotReport = %s\n[Vesk]\nBootstrapNum = %d\n"
                    "MinClsSize = 5\nMaxClsSize = 500\nMinClsInter = 2\nMaxPvToRep = 0.01\n"
                    "FilterRedPVThres = 0.01\nReportGeneList = 0\n" % (extra, rep, args.passes))
        subprocess.run([vesk, opt, over], check=True, cwd=os.path.dirname(opt), stderr=subprocess.DEVNULL)
        reports.append(open(rep, "rb").read())
    same = reports[0] == reports[1]
    print("reports (%d passes, %d lines): %s" % (args.passes, reports[0].count(b"\n"),
                                                 "byte-identical" if same else "DIFFERENT"))
    if not same:
        bad.append("reports differ")
    sys.exit(1 if bad else 0)


if __name__ == "__main__":
    main()
