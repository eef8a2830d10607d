#!/usr/bin/python3
"""Writes the bundled inputs of examples/kmer_stats and examples/pssm_scan (standard library only).

30 genes (id, FBgn-style name, short name g<id>); promoters of 40 to 140 bases over A, C, G, T with a
few N, planted E-box (CACGTG), AP-1 (TGACTCA, also reversed as TGAGTCA) and GATA sites, lines of 60,
gene 5 without a promoter, gene 7 twice, two unknown names, no final line end; a background table of
a name and three numbers; three PSSMs as pssmk/pssmd count tables.

    /usr/bin/python3 data/examples/kmer_pssm_data.py      (from the repository root)
"""
import random

OUT = 'data/examples/'


def main():
    rng = random.Random(1123)
    with open(OUT + 'kmer_genes.tab', 'w') as f:
        for i in range(30):
            f.write('%d\tFBgn%07d\tg%d\n' % (i, 1000 + i, i))
    records = []
    sites = ['CACGTG', 'TGACTCA', 'TGAGTCA', 'AGATAA']
    for i in range(30):
        if i == 5:
            continue
        n = rng.randint(40, 140)
        s = [rng.choice('ACGT') if rng.random() > 0.02 else 'N' for _ in range(n)]
        for site in sites:
            if rng.random() < 0.4:
                at = rng.randint(0, n - len(site))
                s[at:at + len(site)] = site
        records.append(('g%d' % i, ''.join(s)))
        if i == 7:
            records.append(('unk%d' % i, ''.join(rng.choice('ACGT') for _ in range(50))))
    records.insert(3, ('g7', 'ACGT' * 20))  # replaced by the later g7 record
    records.append(('nosuchgene', 'CACGTGCACGTG'))
    text = []
    for name, seq in records:
        text.append('>%s some description\n' % name)
        for k in range(0, len(seq), 60):
            text.append(seq[k:k + 60] + '\n')
    with open(OUT + 'kmer_promoters.fa', 'w') as f:
        f.write(''.join(text).rstrip('\n'))
    with open(OUT + 'kmer_background.tsv', 'w') as f:
        pool = set()
        for _, seq in records[:12]:
            for k in range(0, len(seq) - 6, 7):
                if 'N' not in seq[k:k + 6]:
                    pool.add(seq[k:k + 6])
        for name in sorted(pool)[:25] + ['AAAAAA', 'CACGTG', 'TTTTTT']:
            f.write('%s\t%s\n' % (name, '\t'.join('%.2f' % rng.uniform(0, 3) for _ in range(3))))
    with open(OUT + 'pssm_key.pssmk', 'w') as f:
        f.write('0 CACGTG -90 -6 1\n1 TGACTCA -100 0 0\n2 AGATAA -60 -20 1\n')
    with open(OUT + 'pssm_data.pssmd', 'w') as f:
        # JASPAR-like counts, columns A C G T.
        ebox = [(1, 18, 1, 0), (19, 0, 1, 0), (0, 20, 0, 0), (0, 0, 20, 0), (0, 1, 0, 19), (1, 0, 18, 1)]
        ap1 = [(0, 1, 1, 18), (0, 0, 20, 0), (19, 0, 1, 0), (1, 12, 6, 1), (0, 0, 0, 20), (2, 17, 1, 0),
               (18, 1, 1, 0)]
        gata = [(16, 1, 2, 1), (0, 0, 20, 0), (20, 0, 0, 0), (0, 0, 0, 20), (18, 0, 0, 2), (14, 2, 3, 1)]
        for pid, cols in enumerate([ebox, ap1, gata]):
            for pos, c in enumerate(cols):
                f.write('%d %d %d %d %d %d\n' % ((pid, pos) + c))


if __name__ == '__main__':
    main()
