#!/usr/bin/python3
"""Tables of the seqpack tests and benchmark from Debian's data packages (standard library only).

fly_genes.tab: id, record name, record name (the short name, which FASTA names are looked up in), one
line per distinct record name in file order; fly_promoters.fa: the records upper-cased, names only,
60 letters a line; jaspar.pssmk / jaspar.pssmd: each JASPAR PFM as a PSSM (id, consensus placeholder
'-' , from 0, to 2000, both strands) and its count rows (id, position, A, C, G, T).
"""
import argparse
import gzip
import os


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument('--fasta', required=True)
    ap.add_argument('--pfm', required=True)
    ap.add_argument('--out', required=True)
    a = ap.parse_args()
    names, seqs = [], {}
    name, body = None, []
    with gzip.open(a.fasta, 'rt') as f:
        for line in list(f) + ['>']:
            line = line.rstrip('\n')
            if line.startswith('>'):
                if name is not None:
                    if name not in seqs:
                        names.append(name)
                    seqs[name] = ''.join(body).upper()
                name = line[1:].split()[0] if len(line) > 1 else None
                body = []
            else:
                body.append(line)
    with open(os.path.join(a.out, 'fly_genes.tab'), 'w') as f:
        for i, n in enumerate(names):
            f.write('%d\t%s\t%s\n' % (i, n, n))
    with open(os.path.join(a.out, 'fly_promoters.fa'), 'w') as f:
        for n in names:
            s = seqs[n]
            f.write('>%s\n' % n)
            for k in range(0, len(s), 60):
                f.write(s[k:k + 60] + '\n')
    mats, cur = [], None
    for line in open(a.pfm):
        line = line.strip()
        if line.startswith('>'):
            cur = [line[1:], []]
            mats.append(cur)
        elif line:
            cur[1].append([int(float(x)) for x in line.split()])
    with open(os.path.join(a.out, 'jaspar.pssmk'), 'w') as k, open(os.path.join(a.out, 'jaspar.pssmd'), 'w') as d, \
            open(os.path.join(a.out, 'jaspar_names.tsv'), 'w') as nm:
        for i, (title, rows) in enumerate(mats):
            k.write('%d %s 0 2000 1\n' % (i, title.split()[0]))
            nm.write('%d\t%s\n' % (i, title))
            for pos in range(len(rows[0])):
                d.write('%d %d %d %d %d %d\n' % (i, pos, rows[0][pos], rows[1][pos], rows[2][pos], rows[3][pos]))
    print('%d promoters (%d records), %d matrices' % (len(names), sum(1 for _ in names), len(mats)))


if __name__ == '__main__':
    main()
