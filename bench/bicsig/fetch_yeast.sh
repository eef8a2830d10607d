#!/bin/sh
# Fetches the yeast cell-cycle compendium of Debian's r-cran-kohonen (800 genes x 77 conditions, a
# phase per gene) and writes it out as vesk tables under bench/data/scratch/bicsig/yeast (git-ignored):
# genes.tab, exp.expk, exp.expr (each gene centred and scaled to unit variance over its measured
# conditions; missing cells left out) and phase.tsv (gene id, phase).
#
#   sh bench/bicsig/fetch_yeast.sh           (needs apt-get download, dpkg-deb, Rscript of r-base-core)
set -e
here=$(cd "$(dirname "$0")" && pwd)
out="$here/../data/scratch/bicsig/yeast"
mkdir -p "$out"
cd "$out"
command -v Rscript >/dev/null || apt-get install -y r-base-core
if [ ! -f yeast.rda ]; then
    rm -f r-cran-kohonen_*.deb
    apt-get download r-cran-kohonen
    rm -rf pkg && dpkg-deb -x r-cran-kohonen_*.deb pkg
    cp pkg/usr/lib/R/site-library/kohonen/data/yeast.rda .
    rm -rf pkg r-cran-kohonen_*.deb
fi
Rscript -e 'load("yeast.rda");
  m <- cbind(yeast$alpha, yeast$cdc15, yeast$cdc28, yeast$elu, yeast$cln, yeast$clb);
  write.table(m, "yeast_matrix.tsv", sep="\t", quote=FALSE, na="NA");
  write.table(data.frame(gene=rownames(m), phase=as.character(yeast$class)), "yeast_phase.tsv",
              sep="\t", quote=FALSE, row.names=FALSE)'
/usr/bin/python3 - <<'PY'
import math
rows = [l.rstrip("\n").split("\t") for l in open("yeast_matrix.tsv")]
conds = rows[0]
with open("genes.tab", "w") as g, open("exp.expr", "w") as e:
    for gid, r in enumerate(rows[1:]):
        g.write("%d\t%s\t%s\n" % (gid, r[0], r[0].lower()))
        vals = [(c, float(x)) for c, x in enumerate(r[1:]) if x != "NA"]
        mu = sum(v for _, v in vals) / len(vals)
        sd = math.sqrt(sum((v - mu) ** 2 for _, v in vals) / max(1, len(vals) - 1)) or 1.0
        for c, v in vals:
            e.write("%d\t%d\t%.4f\n" % (gid, c, (v - mu) / sd))
with open("exp.expk", "w") as k:
    for c, name in enumerate(conds):
        k.write("%d\t%s\tx\t0\t1\t0\n" % (c, name))
phase = [l.rstrip("\n").split("\t") for l in open("yeast_phase.tsv")][1:]
with open("phase.tsv", "w") as p:
    for gid, (name, ph) in enumerate(phase):
        p.write("%d\t%s\n" % (gid, ph))
print("%d genes x %d conditions" % (len(rows) - 1, len(conds)))
PY
