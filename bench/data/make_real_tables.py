#!/usr/bin/python3
"""Write the real vesk benchmark case from Debian's GO.db and org.Hs.eg.db annotation databases.

    /usr/bin/python3 bench/data/make_real_tables.py --go GO.sqlite --org org.Hs.eg.sqlite \
        --out bench/data/out/real

Standard library only (sqlite3). Tables written into the output directory:

    varob.tab      id<TAB>entrez<TAB>symbol      every human gene of gene_info; id dense from 0 in
                                                  ascending Entrez id order
    chip.txt       entrez                        every gene with at least one GO annotation
    gotype.tab     go_id<TAB>BP|MF|CC            every term of the GO ontology (GO.sqlite go_term)
    clskey.tab     id<TAB>go_id<TAB>term<TAB>n    one class per GO term annotated to a human gene;
                                                  n = number of annotated genes (read and ignored)
    clsassoc.tab   class_id<TAB>gene_id          annotations carried up the ontology (go_*_all),
                                                  evidence codes collapsed: one row per gene and term
    sets.tab       symbol<TAB>set_id             KEGG pathways (kegg table), members by symbol
    sets_key.tsv   set_id<TAB>kegg_path<TAB>rows  which pathway each set id stands for (not read by vesk)
    real.opt       the option file; all paths in it are absolute
    summary.txt    row and id counts of the tables above

Symbols: the printed name (name2) must identify one gene, because gene words are matched by name2
first and a repeated name maps to the last gene read. Of the genes sharing a symbol, the one
preferred (protein-coding first, then GO-annotated, then the lowest Entrez id) keeps it; the others
get "<symbol>_<entrez>". Genes whose symbol would hold white space get the same treatment (none do
in the 2022 release).
"""

import argparse
import os
import sqlite3
import sys

ONTOLOGIES = ("BP", "MF", "CC")


def die(msg):
    sys.stderr.write("make_real_tables.py: " + msg + "\n")
    sys.exit(1)


def check_schema(con, table, columns):
    row = con.execute("SELECT sql FROM sqlite_master WHERE type='table' AND name=?", (table,)).fetchone()
    if row is None:
        die("table %s missing" % table)
    have = [r[1] for r in con.execute("PRAGMA table_info(%s)" % table)]
    for c in columns:
        if c not in have:
            die("table %s lacks column %s (has %s)" % (table, c, ", ".join(have)))


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--go", required=True, help="GO.sqlite of the GO.db package")
    ap.add_argument("--org", required=True, help="org.Hs.eg.sqlite of the org.Hs.eg.db package")
    ap.add_argument("--out", required=True, help="output directory (created)")
    ap.add_argument("--passes", type=int, default=1000, help="BootstrapNum of real.opt (default 1000)")
    ap.add_argument("--seed", type=int, default=20221, help="Random::Seed of real.opt")
    args = ap.parse_args()

    out = os.path.abspath(args.out)
    os.makedirs(out, exist_ok=True)
    go = sqlite3.connect("file:%s?mode=ro" % os.path.abspath(args.go), uri=True)
    hs = sqlite3.connect("file:%s?mode=ro" % os.path.abspath(args.org), uri=True)

    check_schema(go, "go_term", ["go_id", "term", "ontology"])
    check_schema(hs, "genes", ["_id", "gene_id"])
    check_schema(hs, "gene_info", ["_id", "symbol"])
    check_schema(hs, "genetype", ["_id", "gene_type"])
    check_schema(hs, "kegg", ["_id", "path_id"])
    for o in ONTOLOGIES:
        check_schema(hs, "go_%s_all" % o.lower(), ["_id", "go_id", "evidence"])

    # --- genes -------------------------------------------------------------------------------
    rows = hs.execute(
        "SELECT g._id, g.gene_id, i.symbol, t.gene_type FROM genes g "
        "JOIN gene_info i ON i._id = g._id LEFT JOIN genetype t ON t._id = g._id").fetchall()
    n_genes_table = hs.execute("SELECT count(*) FROM genes").fetchone()[0]
    if len(rows) != n_genes_table:
        sys.stderr.write("note: %d genes lack gene_info rows and are left out\n" % (n_genes_table - len(rows)))
    for _, entrez, _, _ in rows:
        if not entrez.isdigit():
            die("non-numeric Entrez id %r" % entrez)
    rows.sort(key=lambda r: int(r[1]))

    # GO annotations carried up the ontology; one (gene, term) pair whatever the evidence codes.
    term_genes = {}  # go_id -> set of internal _id
    term_ont = {}
    for o in ONTOLOGIES:
        for gid, goid in hs.execute("SELECT DISTINCT _id, go_id FROM go_%s_all" % o.lower()):
            term_genes.setdefault(goid, set()).add(gid)
            prev = term_ont.setdefault(goid, o)
            if prev != o:
                die("GO term %s annotated under both %s and %s" % (goid, prev, o))
    annotated = set()
    for s in term_genes.values():
        annotated.update(s)

    # Unique printed names.
    by_symbol = {}
    for r in rows:
        by_symbol.setdefault(r[2], []).append(r)
    printed = {}
    dup_report = []
    for sym, group in by_symbol.items():
        bad = (sym == "" or any(ch.isspace() for ch in sym))
        if len(group) == 1 and not bad:
            printed[group[0][0]] = sym
            continue
        group.sort(key=lambda r: (r[3] != "protein-coding", r[0] not in annotated, int(r[1])))
        for k, (iid, entrez, _, _) in enumerate(group):
            if k == 0 and not bad:
                printed[iid] = sym
            else:
                printed[iid] = "%s_%s" % ("".join(sym.split()) or "NOSYMBOL", entrez)
        dup_report.append((sym, [(g[1], printed[g[0]]) for g in group]))
    if len(set(printed.values())) != len(printed):
        die("printed names still not unique")
    entrez_set = set(r[1] for r in rows)
    clash = [p for p in printed.values() if p in entrez_set]
    if clash:
        die("symbols equal to Entrez ids: %s" % clash[:5])

    dense = {}  # internal _id -> dense vesk id
    with open(os.path.join(out, "varob.tab"), "w") as f:
        for k, (iid, entrez, _, _) in enumerate(rows):
            dense[iid] = k
            f.write("%d\t%s\t%s\n" % (k, entrez, printed[iid]))
    entrez_of = {iid: entrez for iid, entrez, _, _ in rows}

    # --- chip: every GO-annotated gene, by Entrez id (name1) -----------------------------------
    chip = sorted((iid for iid in annotated if iid in dense), key=lambda i: dense[i])
    with open(os.path.join(out, "chip.txt"), "w") as f:
        for iid in chip:
            f.write(entrez_of[iid] + "\n")

    # --- type table: the whole ontology --------------------------------------------------------
    terms = {}
    n_type = 0
    with open(os.path.join(out, "gotype.tab"), "w") as f:
        for goid, name, ont in go.execute("SELECT go_id, term, ontology FROM go_term ORDER BY go_id"):
            terms[goid] = (name, ont)
            if ont in ONTOLOGIES:
                f.write("%s\t%s\n" % (goid, ont))
                n_type += 1

    # --- classes: annotated terms in GO id order -------------------------------------------------
    class_ids = sorted(term_genes)
    missing = [t for t in class_ids if t not in terms]
    mismatched = [t for t in class_ids if t in terms and terms[t][1] != term_ont[t]]
    n_assoc = 0
    with open(os.path.join(out, "clskey.tab"), "w") as fk, open(os.path.join(out, "clsassoc.tab"), "w") as fa:
        for cid, goid in enumerate(class_ids):
            name = terms[goid][0] if goid in terms else goid
            name = " ".join(name.replace("\t", " ").split())  # no tabs or line breaks in a key row
            members = sorted(dense[g] for g in term_genes[goid] if g in dense)
            fk.write("%d\t%s\t%s\t%d\n" % (cid, goid, name, len(members)))
            for g in members:
                fa.write("%d\t%d\n" % (cid, g))
            n_assoc += len(members)

    # --- gene sets: KEGG pathways by printed name ---------------------------------------------
    path_genes = {}
    for iid, path in hs.execute("SELECT DISTINCT _id, path_id FROM kegg"):
        path_genes.setdefault(path, []).append(iid)
    n_set_rows = 0
    set_sizes = []
    off_chip = set()
    chip_set = set(chip)
    with open(os.path.join(out, "sets.tab"), "w") as fs, open(os.path.join(out, "sets_key.tsv"), "w") as fk:
        for sid, path in enumerate(sorted(path_genes)):
            members = sorted((g for g in path_genes[path] if g in dense), key=lambda g: dense[g])
            for g in members:
                fs.write("%s\t%d\n" % (printed[g], sid))
                if g not in chip_set:
                    off_chip.add(g)
            fk.write("%d\thsa%s\t%d\n" % (sid, path, len(members)))
            n_set_rows += len(members)
            set_sizes.append(len(members))

    # --- option file ----------------------------------------------------------------------------
    def p(name):
        return os.path.join(out, name)

    with open(p("real.opt"), "w") as f:
        f.write("# Real vesk benchmark case: human genes, GO classes, KEGG pathway sets.\n")
        f.write("# Written by bench/data/make_real_tables.py; all paths are absolute.\n\n")
        f.write("[Random]\nSeed = %d\n\n" % args.seed)
        f.write("[Tables]\n")
        f.write("varob = %s\nChipOrfs = %s\nGoTypeTab = %s\ngoclskey = %s\nclsassoc = %s\nSetsOrfs = %s\n"
                % (p("varob.tab"), p("chip.txt"), p("gotype.tab"), p("clskey.tab"), p("clsassoc.tab"),
                   p("sets.tab")))
        f.write("AnnotReport = %s\n\n" % p("real_report.tsv"))
        f.write("[Vesk]\nBootstrapNum = %d\nMinClsSize = 5\nMaxClsSize = 500\nMinClsInter = 2\n"
                "MaxPvToRep = 0.01\nFilterRedPVThres = 0.01\nReportGeneList = 0\n" % args.passes)

    # --- summary -------------------------------------------------------------------------------
    sizes = sorted(len([g for g in term_genes[t] if g in dense]) for t in class_ids)
    in_range = sum(1 for s in sizes if 5 <= s <= 500)
    lines = [
        "varob.tab     %d genes (ids 0..%d)" % (len(rows), len(rows) - 1),
        "chip.txt      %d genes with a GO annotation" % len(chip),
        "gotype.tab    %d GO terms (BP %d, MF %d, CC %d)" % (
            n_type, sum(1 for v in terms.values() if v[1] == "BP"), sum(1 for v in terms.values() if v[1] == "MF"),
            sum(1 for v in terms.values() if v[1] == "CC")),
        "clskey.tab    %d classes (BP %d, MF %d, CC %d); %d with 5..500 genes; median %d, max %d genes" % (
            len(class_ids), sum(1 for t in class_ids if term_ont[t] == "BP"),
            sum(1 for t in class_ids if term_ont[t] == "MF"), sum(1 for t in class_ids if term_ont[t] == "CC"),
            in_range, sizes[len(sizes) // 2], sizes[-1]),
        "clsassoc.tab  %d memberships" % n_assoc,
        "sets.tab      %d rows, %d sets (KEGG pathways), %d distinct genes, %d of them off the chip;"
        " set sizes %d..%d" % (n_set_rows, len(set_sizes), len(set(g for v in path_genes.values() for g in v)),
                               len(off_chip), min(set_sizes), max(set_sizes)),
        "symbols       %d shared by several genes (%d genes renamed <symbol>_<entrez>)" % (
            len(dup_report), sum(len(v) - 1 for _, v in dup_report)),
    ]
    if missing:
        lines.append("classes       %d annotated GO ids not in GO.sqlite (named by their id)" % len(missing))
    if mismatched:
        lines.append("classes       %d GO ids typed differently in GO.sqlite" % len(mismatched))
    for sym, group in sorted(dup_report):
        lines.append("  %s: %s" % (sym, ", ".join("%s->%s" % g for g in group)))
    with open(p("summary.txt"), "w") as f:
        f.write("\n".join(lines) + "\n")
    sys.stdout.write("\n".join(lines) + "\n")
    sys.stdout.write("option file: %s\n" % p("real.opt"))


if __name__ == "__main__":
    main()
