#!/usr/bin/python3
"""Promoters of the motif_search example: 200 bases of random A, C, G, T for each gene of genes.tab,
named by the short name; genes 0-19 (the module up in conditions 0-5) carry GACTCA starting between
100 and 130. Also the input bicluster set of one pattern with a window. Run from the repository root."""
import random

random.seed(17)
with open('data/examples/motif_promoters.fa', 'w') as f:
    for g in range(200):
        seq = [random.choice('ACGT') for _ in range(200)]
        if g < 20:
            at = random.randint(100, 130)
            seq[at:at + 6] = 'GACTCA'
        f.write('>g%03d\n' % g)
        s = ''.join(seq)
        for i in range(0, 200, 60):
            f.write(s[i:i + 60] + '\n')
with open('data/examples/motif_in.bick', 'w') as f:
    f.write('0\t0\n')
open('data/examples/motif_in.bicd', 'w').close()
with open('data/examples/motif_in.bicm', 'w') as f:
    f.write('0\tGACTC\t90\t150\n')
