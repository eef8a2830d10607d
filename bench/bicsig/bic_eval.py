#!/usr/bin/python3
"""Recovery and relevance of biclusters against planted modules (Prelic et al. 2006, with the Jaccard
index of gene x condition cells as the match score).

    recovery  = mean over planted modules of the best Jaccard index with any reported bicluster
    relevance = mean over reported biclusters of the best Jaccard index with any planted module

Both are 0 when either side is empty. Used as a module by run_bicsig_bench.py and as a script:

    bic_eval.py <truth.tsv> <summary.tsv> <genes.tab> <exp.expk> [max_q min_conds min_genes]
"""
import sys


def cells(genes, conds):
    return {(g, c) for g in genes for c in conds}


def jaccard(a, b):
    """Jaccard index of the cell sets of two (genes, conds) pairs, by inclusion-exclusion."""
    ga, ca = set(a[0]), set(a[1])
    gb, cb = set(b[0]), set(b[1])
    inter = len(ga & gb) * len(ca & cb)
    union = len(ga) * len(ca) + len(gb) * len(cb) - inter
    return inter / union if union else 0.0


def recovery_relevance(truth, found):
    if not truth or not found:
        return 0.0, 0.0
    rec = sum(max(jaccard(t, f) for f in found) for t in truth) / len(truth)
    rel = sum(max(jaccard(f, t) for t in truth) for f in found) / len(found)
    return rec, rel


def read_truth(path):
    mods = []
    with open(path) as f:
        for line in f:
            w = line.rstrip("\n").split("\t")
            mods.append(([int(x) for x in w[2].split(",")], [int(x) for x in w[3].split(",")]))
    return mods


def read_names(path, col=1):
    m = {}
    with open(path) as f:
        for line in f:
            w = line.split()
            m[w[col]] = int(w[0])
    return m


def read_summary(path, gene_ids, cond_ids):
    """Rows of the summary: dict with score, p, q, genes, conds (ids), in file order."""
    rows = []
    with open(path) as f:
        header = f.readline().rstrip("\n").split("\t")
        assert header[:6] == ["id", "score", "p", "q", "genes", "conditions"], header
        for line in f:
            w = line.rstrip("\n").split("\t")
            genes = [gene_ids[n] for n in w[6].split(",")] if w[6] else []
            conds = [cond_ids[n] for n in w[7].split(",")] if w[7] else []
            rows.append({"id": int(w[0]), "score": float(w[1]), "p": float(w[2]), "q": float(w[3]),
                         "genes": genes, "conds": conds})
    return rows


def select(rows, max_q, min_conds, min_genes):
    return [(r["genes"], r["conds"]) for r in rows
            if r["q"] <= max_q and len(r["conds"]) >= min_conds and len(r["genes"]) >= min_genes]


def main():
    truth = read_truth(sys.argv[1])
    rows = read_summary(sys.argv[2], read_names(sys.argv[3]), read_names(sys.argv[4]))
    max_q, min_c, min_g = (float(sys.argv[5]), int(sys.argv[6]), int(sys.argv[7])) if len(sys.argv) > 7 else (1, 0, 0)
    found = select(rows, max_q, min_c, min_g)
    rec, rel = recovery_relevance(truth, found)
    print("%d biclusters: recovery %.3f relevance %.3f" % (len(found), rec, rel))


if __name__ == "__main__":
    main()
