#!/usr/bin/python3
"""PNG heatmaps of the biclusters in a bicluster_search summary (Debian's python3-matplotlib).

    /usr/bin/python3 scripts/bic_heatmap.py <summary.tsv> <gene table> <expression key> <expression cells>
                                            <output prefix> [bicluster id ...]

One PNG per bicluster (all of the summary when no id is given), <output prefix><id>.png: the
bicluster's genes as rows; its conditions first, then the other conditions, a line between the two;
a diverging colour scale (blue below 0, red above) centred at 0 and symmetric about it. The tables
are the ones named by Tables::GeneTab, ExpKey and ExpData; missing cells are drawn grey.
"""
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402


def main():
    if len(sys.argv) < 6:
        print(__doc__)
        return 2
    summary, genes_tab, expk, expr, prefix = sys.argv[1:6]
    want = set(sys.argv[6:])
    gene_id = {w[1]: int(w[0]) for w in (l.split() for l in open(genes_tab))}
    cond_id, cond_name = {}, {}
    for l in open(expk):
        w = l.split()
        cond_id[w[1]] = int(w[0])
        cond_name[int(w[0])] = w[1]
    ncond = max(cond_name) + 1
    x = np.full((max(gene_id.values()) + 1, ncond), np.nan)
    for l in open(expr):
        g, c, v = l.split()
        x[int(g), int(c)] = float(v)
    with open(summary) as f:
        f.readline()
        for line in f:
            w = line.rstrip("\n").split("\t")
            if want and w[0] not in want:
                continue
            rows = [gene_id[n] for n in w[6].split(",")]
            inside = [cond_id[n] for n in w[7].split(",")]
            cols = inside + [c for c in range(ncond) if c not in set(inside)]
            m = x[np.ix_(rows, cols)]
            lim = np.nanmax(np.abs(m)) if np.isfinite(m).any() else 1.0
            fig, ax = plt.subplots(figsize=(min(12, 2 + 0.12 * len(cols)), min(10, 1.5 + 0.12 * len(rows))))
            cmap = plt.get_cmap("RdBu_r").copy()
            cmap.set_bad("0.7")
            im = ax.imshow(np.ma.masked_invalid(m), aspect="auto", cmap=cmap, vmin=-lim, vmax=lim,
                           interpolation="nearest")
            ax.axvline(len(inside) - 0.5, color="black", linewidth=1)
            ax.set_title("bicluster %s: %d genes x %d conditions (q %s)" % (w[0], len(rows), len(inside), w[3]))
            ax.set_xlabel("its conditions | the other conditions")
            ax.set_ylabel("genes")
            if len(rows) <= 40:
                ax.set_yticks(range(len(rows)))
                ax.set_yticklabels(w[6].split(","), fontsize=6)
            else:
                ax.set_yticks([])
            ax.set_xticks([])
            fig.colorbar(im, ax=ax, fraction=0.03)
            fig.tight_layout()
            fig.savefig("%s%s.png" % (prefix, w[0]), dpi=80)
            plt.close(fig)
    return 0


if __name__ == "__main__":
    sys.exit(main())
