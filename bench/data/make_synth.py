#!/usr/bin/python3
"""Synthetic vesk case of any size: an ontology-like class DAG and gene sets with planted enrichment.

    python3 bench/data/make_synth.py --out DIR [--genes 10000] [--classes 2000] [--sets 200]
                                     [--passes 100] [--seed 1]

Standard library only; the same arguments give the same files, byte for byte, under the same
Python version (the benchmark uses /usr/bin/python3 of Debian 12).

The model:

* Genes 0..G-1, name1 "SYNG<6 digits>", name2 "SYM<id>". A random fraction (--annotated-frac) of
  them can be annotated; a random fraction (--chip-frac) of all genes is on the chip, listed by
  name1, so some annotated genes are off the chip and some chip genes carry no class.
* Classes form three ontologies (BP, MF, CC in the proportions 60/25/15). Each is a root and up to
  --max-depth levels below it, every level about --branching times wider than the one above. A
  term has a random parent on the level above and, with probability --multi-parent, a second one
  (one or two levels up), so the graph is a DAG, not a tree. A term without children draws a
  power-law number of genes (P(s) ~ s^-alpha, --leaf-alpha, from 2 up to --leaf-max); a term with
  children holds the union of its children plus a few genes of its own, as annotations carried up
  an ontology do. The root holds every gene of its ontology. Class ids are a random permutation
  of the terms, so the hierarchy is not visible in id order.
* Gene sets have log-uniform sizes in --set-min..--set-max. A fraction (--planted-frac) of them is
  enriched: 40-80% of the members come from the union of 1-3 source classes of testable size,
  the rest from all genes. Members are listed by name2, one in ten by name1, in random order.

Files written into --out: varob.tab, chip.txt, gotype.tab (a fraction --untyped-frac of the class
keys is left out, so the report shows "NA" for them), clskey.tab, clsassoc.tab, sets.tab,
synth.opt (absolute paths) and summary.txt.
"""

import argparse
import math
import os
import random
import sys

NAMESPACES = (("BP", 0.60), ("MF", 0.25), ("CC", 0.15))


def power_law(rng, alpha, lo, hi):
    """Integer in lo..hi with P(s) ~ s^-alpha (inverse transform of the continuous law, redrawn above hi)."""
    while True:
        u = rng.random()
        s = int(lo * (1.0 - u) ** (-1.0 / (alpha - 1.0)))
        if s <= hi:
            return max(lo, s)


def build_namespace(rng, n_terms, pool, args):
    """Members (sets of gene ids) of n_terms terms of one ontology; term 0 is the root."""
    if n_terms <= 0:
        return []
    # Levels 1..D below the root, each about --branching times wider than the one above.
    rest = n_terms - 1
    depth = max(1, min(args.max_depth, int(round(math.log(max(rest, 1)) / math.log(args.branching)))))
    weights = [args.branching ** l for l in range(1, depth + 1)]
    widths = [max(1, int(rest * w / sum(weights))) for w in weights] if rest else []
    while rest and sum(widths) > rest:
        widths[widths.index(max(widths))] -= 1
    if widths:
        widths[-1] += rest - sum(widths)
    level_terms = [[0]]
    nxt = 1
    for w in widths:
        level_terms.append(list(range(nxt, nxt + w)))
        nxt += w
    children = [[] for _ in range(n_terms)]
    for l in range(1, len(level_terms)):
        above = level_terms[l - 1]
        for t in level_terms[l]:
            parent = above[rng.randrange(len(above))]
            children[parent].append(t)
            if l >= 2 and rng.random() < args.multi_parent:
                # a second parent, one or two levels up: the graph is a DAG, not a tree
                up = level_terms[l - 1 - (1 if l >= 3 and rng.random() < 0.3 else 0)]
                extra = up[rng.randrange(len(up))]
                if extra != parent:
                    children[extra].append(t)
    members = [None] * n_terms
    for l in range(len(level_terms) - 1, -1, -1):
        for t in level_terms[l]:
            if children[t]:
                own = power_law(rng, 2.5, 1, 50) - 1
            else:
                own = power_law(rng, args.leaf_alpha, 2, args.leaf_max)
            m = set(rng.sample(pool, min(own, len(pool)))) if own else set()
            for c in children[t]:
                m |= members[c]
            members[t] = m
    return members


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--out", required=True, help="output directory (created)")
    ap.add_argument("--genes", type=int, default=10000)
    ap.add_argument("--classes", type=int, default=2000)
    ap.add_argument("--sets", type=int, default=200)
    ap.add_argument("--passes", type=int, default=100, help="BootstrapNum of synth.opt")
    ap.add_argument("--seed", type=int, default=1, help="seed of the generator and Random::Seed of synth.opt")
    ap.add_argument("--annotated-frac", type=float, default=0.8)
    ap.add_argument("--chip-frac", type=float, default=0.85)
    ap.add_argument("--branching", type=float, default=3.0, help="growth of the ontology's width per level")
    ap.add_argument("--max-depth", type=int, default=10, help="deepest level below the root")
    ap.add_argument("--leaf-alpha", type=float, default=1.9)
    ap.add_argument("--leaf-max", type=int, default=300)
    ap.add_argument("--multi-parent", type=float, default=0.3)
    ap.add_argument("--set-min", type=int, default=10)
    ap.add_argument("--set-max", type=int, default=300)
    ap.add_argument("--planted-frac", type=float, default=0.3)
    ap.add_argument("--untyped-frac", type=float, default=0.01)
    ap.add_argument("--min-cls-size", type=int, default=5)
    ap.add_argument("--max-cls-size", type=int, default=500)
    ap.add_argument("--min-cls-inter", type=int, default=2)
    ap.add_argument("--max-pv-to-rep", default="0.01")
    ap.add_argument("--filter-red-pv", default="0.01")
    args = ap.parse_args()
    if args.genes < 10 or args.classes < 3 or args.sets < 1 or args.passes < 0:
        ap.error("need at least 10 genes, 3 classes, 1 set and 0 passes")

    rng = random.Random(args.seed)
    out = os.path.abspath(args.out)
    os.makedirs(out, exist_ok=True)
    G = args.genes
    name1 = ["SYNG%06d" % g for g in range(G)]
    name2 = ["SYM%d" % g for g in range(G)]

    genes = list(range(G))
    pool = sorted(rng.sample(genes, max(1, int(G * args.annotated_frac))))
    chip = sorted(rng.sample(genes, max(2, int(G * args.chip_frac))))

    # --- classes ---------------------------------------------------------------------------------
    counts = [int(args.classes * share) for _, share in NAMESPACES]
    counts[0] += args.classes - sum(counts)
    members, kinds = [], []
    for (ns, _), n in zip(NAMESPACES, counts):
        t = build_namespace(rng, n, pool, args)
        members.extend(t)
        kinds.extend([ns] * len(t))
    C = len(members)
    perm = list(range(C))
    rng.shuffle(perm)  # perm[term] = class id
    by_id = [None] * C
    for term, cid in enumerate(perm):
        by_id[cid] = term

    with open(os.path.join(out, "varob.tab"), "w") as f:
        for g in range(G):
            f.write("%d\t%s\t%s\n" % (g, name1[g], name2[g]))
    with open(os.path.join(out, "chip.txt"), "w") as f:
        for g in chip:
            f.write(name1[g] + "\n")
    n_typed = 0
    n_assoc = 0
    with open(os.path.join(out, "gotype.tab"), "w") as ft, open(os.path.join(out, "clskey.tab"), "w") as fk, \
            open(os.path.join(out, "clsassoc.tab"), "w") as fa:
        for cid in range(C):
            term = by_id[cid]
            key = "SYN:%07d" % cid
            m = sorted(members[term])
            fk.write("%d\t%s\tsynthetic %s term %d\t%d\n" % (cid, key, kinds[term], term, len(m)))
            for g in m:
                fa.write("%d\t%d\n" % (cid, g))
            n_assoc += len(m)
            if rng.random() >= args.untyped_frac:
                ft.write("%s\t%s\n" % (key, kinds[term]))
                n_typed += 1

    # --- gene sets -------------------------------------------------------------------------------
    chip_set = set(chip)
    chip_size = {t: sum(1 for g in members[t] if g in chip_set) for t in range(C)}
    sources = [t for t in range(C) if args.min_cls_size <= chip_size[t] <= args.max_cls_size]
    n_planted = 0
    n_rows = 0
    lo, hi = math.log(args.set_min), math.log(max(args.set_min, args.set_max))
    with open(os.path.join(out, "sets.tab"), "w") as f:
        for sid in range(args.sets):
            size = min(G, int(round(math.exp(rng.uniform(lo, hi)))))
            chosen = set()
            if sources and rng.random() < args.planted_frac:
                n_planted += 1
                src = set()
                for t in rng.sample(sources, min(len(sources), rng.randint(1, 3))):
                    src |= members[t]
                want = min(len(src), int(round(size * rng.uniform(0.4, 0.8))))
                chosen.update(rng.sample(sorted(src), want))
            while len(chosen) < size:
                chosen.add(rng.randrange(G))
            order = sorted(chosen)
            rng.shuffle(order)
            for g in order:
                f.write("%s\t%d\n" % (name1[g] if rng.random() < 0.1 else name2[g], sid))
            n_rows += len(order)

    def p(name):
        return os.path.join(out, name)

    with open(p("synth.opt"), "w") as f:
        f.write("# Synthetic vesk case: make_synth.py --genes %d --classes %d --sets %d --passes %d --seed %d\n"
                % (G, args.classes, args.sets, args.passes, args.seed))
        f.write("# All paths are absolute.\n\n")
        f.write("[Random]\nSeed = %d\n\n" % args.seed)
        f.write("[Tables]\n")
        f.write("varob = %s\nChipOrfs = %s\nGoTypeTab = %s\ngoclskey = %s\nclsassoc = %s\nSetsOrfs = %s\n"
                % (p("varob.tab"), p("chip.txt"), p("gotype.tab"), p("clskey.tab"), p("clsassoc.tab"),
                   p("sets.tab")))
        f.write("AnnotReport = %s\n\n" % p("synth_report.tsv"))
        f.write("[Vesk]\nBootstrapNum = %d\nMinClsSize = %d\nMaxClsSize = %d\nMinClsInter = %d\n"
                "MaxPvToRep = %s\nFilterRedPVThres = %s\nReportGeneList = 0\n"
                % (args.passes, args.min_cls_size, args.max_cls_size, args.min_cls_inter, args.max_pv_to_rep,
                   args.filter_red_pv))

    sizes = sorted(chip_size.values())
    lines = [
        "genes %d" % G,
        "chip %d" % len(chip),
        "classes %d" % C,
        "testable_classes %d" % len(sources),
        "median_class_size %d" % sizes[len(sizes) // 2],
        "max_class_size %d" % sizes[-1],
        "memberships %d" % n_assoc,
        "typed_classes %d" % n_typed,
        "sets %d" % args.sets,
        "planted_sets %d" % n_planted,
        "set_rows %d" % n_rows,
        "passes %d" % args.passes,
        "seed %d" % args.seed,
    ]
    with open(p("summary.txt"), "w") as f:
        f.write("\n".join(lines) + "\n")
    sys.stdout.write(" ".join(lines) + "\n")


if __name__ == "__main__":
    main()
