#!/usr/bin/python3
"""Runs motif_search on its bundled option file (outputs redirected to a temporary directory) and checks
its tables against facts computed here from the inputs: the header, one line per seed in order, the
planted motif and its conditions found from the seed GACTC, the gene count of each reported pattern
as a brute-force count of the promoters holding it inside its window, and bicd/bicm agreeing with
the motif table.

    check_motif_search.py <program> <repository root> <option file>
"""
import os
import re
import subprocess
import sys
import tempfile

OUT_KEYS = ('OutMotifs', 'OutBick', 'OutBicd', 'OutBicm')


def read_fasta(path):
    seqs, name = {}, None
    for line in open(path):
        line = line.strip()
        if line.startswith('>'):
            name = line[1:].split()[0]
            seqs[name] = ''
        elif name:
            seqs[name] += line
    return seqs


def holds(seq, pat, frm, to):
    """Starts from `frm`, the pattern's last letter before `to` (-1: none) and before len - 1."""
    L = len(pat)
    last = len(seq) - L - 2
    if to != -1 and len(seq) >= to + L:
        last = to - L
    for s in range(max(frm, 0), last + 1):
        if all(p in '#*' or p == seq[s + i] for i, p in enumerate(pat)):
            return True
    return False


def main():
    prog, root, opt = sys.argv[1:4]
    bad = []
    with tempfile.TemporaryDirectory() as tmp:
        lines = []
        for line in open(os.path.join(root, opt)):
            key = line.split('=', 1)[0].strip()
            if key in OUT_KEYS:
                line = '%s = %s\n' % (key, os.path.join(tmp, key))
            lines.append(line)
        with open(os.path.join(tmp, 'run.opt'), 'w') as f:
            f.writelines(lines)
        res = subprocess.run([prog, os.path.join(tmp, 'run.opt')], cwd=root, capture_output=True)
        if res.returncode != 0:
            sys.stderr.write(res.stderr.decode(errors='replace')[-2000:])
            return 1
        table = open(os.path.join(tmp, 'OutMotifs')).read().splitlines()
        bicd = [l.split('\t') for l in open(os.path.join(tmp, 'OutBicd')).read().splitlines()]
        bicm = [l.split('\t') for l in open(os.path.join(tmp, 'OutBicm')).read().splitlines()]
    seqs = read_fasta(os.path.join(root, 'data/examples/motif_promoters.fa'))
    if table[0] != 'seed\tpattern\tfrom\tto\tscore\tgenes\tconds':
        bad.append('header %r' % table[0])
    rows = [l.split('\t') for l in table[1:]]
    if [r[0] for r in rows] != ['GACTC', 'CCGGA', 'GACTC']:
        bad.append('seeds %r' % [r[0] for r in rows])
    for i, (seed, pat, frm, to, score, genes, conds) in enumerate(rows):
        frm, to, genes = int(frm), int(to), int(genes)
        count = sum(holds(s, pat, frm, to) for s in seqs.values())
        if count != genes:
            bad.append('%s: %d genes reported, %d promoters hold it' % (pat, genes, count))
        members = sum(1 for d in bicd if d[0] == str(i) and d[1] == '1')
        if members != genes:
            bad.append('bicluster %d has %d genes in bicd' % (i, members))
        if bicm[i] != [str(i), pat, str(frm), str(to)]:
            bad.append('bicm line %r' % bicm[i])
        cond_ids = sorted(int(d[2]) for d in bicd if d[0] == str(i) and d[1] == '0')
        if conds != (','.join(map(str, cond_ids)) if cond_ids else '-'):
            bad.append('conditions %s against bicd %r' % (conds, cond_ids))
    # The planted module: GACTCA in genes 0-19, which are up in conditions 0-5.
    first = rows[0]
    if not re.fullmatch(r'#*GACTC[*A]*', first[1]) or 'GACTCA' not in first[1]:
        bad.append('pattern %s' % first[1])
    found = set(map(int, first[6].split(','))) if first[6] != '-' else set()
    if len(found & set(range(6))) < 5 or found - set(range(6)):
        bad.append('conditions %s' % first[6])
    for b in bad:
        print(b)
    return 1 if bad else 0


if __name__ == '__main__':
    sys.exit(main())
