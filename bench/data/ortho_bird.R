# bird.orders from r-cran-ape as a species tree table, with R ape's own leaf sets and ancestors.
# Node ids: ape's node number less one (tips 0..22, inner nodes 23..44).
# Usage: Rscript ortho_bird.R <bird.orders.rda> <out dir>
suppressMessages(library(ape))
args <- commandArgs(trailingOnly = TRUE)
load(args[1])
out <- args[2]
t <- bird.orders
ntip <- length(t$tip.label)
nnode <- t$Nnode
bt <- branching.times(t)
# Inner ranks: 1 for the youngest split up to nnode for the root.
rk <- rank(bt, ties.method = "first")
names(rk) <- names(bt)
parent <- rep(-1, ntip + nnode)
parent[t$edge[, 2]] <- t$edge[, 1]
root <- ntip + 1
rec <- function(k) {
    if (k <= ntip) {
        f <- file.path(out, paste0("sp", k - 1, ".tab"))
        writeLines(sprintf("%d %s_g%d gene x x %s_s%d al_%s_%d", 0:2, t$tip.label[k], 0:2,
                           t$tip.label[k], 0:2, t$tip.label[k], 0:2), f)
        sprintf("%d %s 0 %s %d 0 0 0 x none", k - 1, t$tip.label[k], f, parent[k] - 1)
    } else {
        sprintf("%d n%d 1 none %d %d 0 0 x none", k - 1, k, ifelse(parent[k] < 0, -1, parent[k] - 1),
                rk[[as.character(k)]])
    }
}
# The root first, then the nodes in ape's edge order: each parent's first edge gives its left child.
lines <- c(rec(root), sapply(t$edge[, 2], rec))
writeLines(lines, file.path(out, "tree.tab"))
# Expected: tips below every inner node and each of its children, and the ancestor of tip pairs.
pp <- prop.part(t)
tips_of <- function(k) if (k <= ntip) k else pp[[k - ntip]]
exp <- character(0)
for (k in (ntip + 1):(ntip + nnode)) {
    kids <- t$edge[t$edge[, 1] == k, 2]
    exp <- c(exp, sprintf("node %d %s %s %s", k - 1, paste(sort(tips_of(k)) - 1, collapse = ","),
                          paste(sort(tips_of(kids[1])) - 1, collapse = ","),
                          paste(sort(tips_of(kids[2])) - 1, collapse = ",")))
}
m <- mrca(t)
for (i in 1:ntip) for (j in i:ntip)
    exp <- c(exp, sprintf("lca %d %d %d", i - 1, j - 1, m[t$tip.label[i], t$tip.label[j]] - 1))
writeLines(exp, file.path(out, "expected.tsv"))
cat("bird.orders:", ntip, "tips,", nnode, "inner nodes\n")
