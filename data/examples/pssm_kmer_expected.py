#!/usr/bin/python3
"""Expected outputs of examples/kmer_stats and examples/pssm_scan on the bundled inputs, computed
independently: a plain FASTA reader, a brute-force k-mer scan and a float32 (numpy) PSSM model whose
logarithms come from the C library's logf.

    /usr/bin/python3 data/examples/pssm_kmer_expected.py      (from the repository root)
"""
import ctypes
import math
import numpy as np

D = 'data/examples/'
f32 = np.float32
libm = ctypes.CDLL('libm.so.6')
libm.logf.restype = ctypes.c_float
libm.logf.argtypes = [ctypes.c_float]


def g(x):
    return '%.6g' % float(x)


def read_opt(path):
    opt, scope = {}, ''
    for line in open(path):
        line = line.strip()
        if line.startswith('['):
            scope = line[1:-1]
        elif '=' in line:
            k, v = [t.strip() for t in line.split('=', 1)]
            opt[scope + '::' + k] = v
    return opt


def promoters(opt):
    short = {}
    for line in open(opt['Tables::GeneTab']):
        i, _, s = line.split()
        short[s] = int(i)
    length = int(opt['Tables::PromoterLength'])
    table = {}
    name, body = None, []
    lines = open(opt['Tables::Promoters']).read().split('\n')
    for line in lines + ['>']:
        if line.startswith('>'):
            if name is not None and name in short:
                s = ''.join(body)
                s = '\0' * (length - len(s)) + s if len(s) < length else s[len(s) - length:]
                table[short[name]] = s
            name, body = line[1:].split(' ')[0] if len(line) > 1 else None, []
        else:
            body.append(line)
    return table


def kmer_table(optfile, out):
    opt = read_opt(optfile)
    table = promoters(opt)
    k, deg = int(opt['KMer::K']), int(opt.get('KMer::MaxDeg', 0))
    gmin, gmax = int(opt.get('KMer::MinGap', 0)), int(opt.get('KMer::MaxGap', 0))
    frm, to = int(opt.get('KMer::From', 0)), int(opt.get('KMer::To', -1))
    counts, genes = {}, {}
    for gene in sorted(table):
        s = table[gene]
        last = len(s) - k - gmax if to == -1 else min(to, len(s)) - k - gmax
        for p in range(0 if to == -1 else max(frm, 0), last + 1):
            texts = set()
            for gap in range(gmin, gmax + 1):
                bases = [(s[p:p + k], -1)] if gap == 0 else [
                    (s[p:p + l] + str(gap) + s[p + l + gap:p + gap + k], l) for l in range(2, k - 2)]
                for t, digit in bases:
                    for mask in range(1 << len(t)):
                        if bin(mask).count('1') > deg or (digit >= 0 and mask >> digit & 1):
                            continue
                        texts.add(''.join('*' if mask >> i & 1 else c for i, c in enumerate(t)))
            for t in texts:
                counts[t] = counts.get(t, 0) + 1
                genes.setdefault(t, set()).add(gene)
    bg = {}
    if 'Tables::Background' in opt:
        n = int(opt['KMer::BackgroundCols'])
        for line in open(opt['Tables::Background']):
            f = line.split()
            bg[f[0]] = f32(f32(f[n]) / f32(n))
    with open(out, 'w') as f:
        f.write('kmer\tcount\tgenes\tbackground\n')
        for t in sorted(counts):
            if '\0' in t:
                continue
            f.write('%s\t%d\t%d\t%s\n' % (t, counts[t], len(genes[t]), g(bg[t]) if t in bg else 'NA'))


UNK, LOGZERO, START = f32(-1.38629), f32(-3.4028235e38), f32(-3.4028235e36)
IDX, COMP = {'A': 0, 'C': 1, 'G': 2, 'T': 3}, {'A': 3, 'C': 2, 'G': 1, 'T': 0}


def score(logs, site, rev, best=None):
    w, s = len(logs), f32(0)
    for i, c in enumerate(site):
        if c == '\0':
            return LOGZERO
        t = COMP if rev else IDX
        s = f32(s + (logs[w - 1 - i if rev else i][t[c]] if c in t else UNK))
        if best is not None and best > s:
            return s
    return s


def pssm_tables(optfile, out_tab, out_hits):
    opt = read_opt(optfile)
    table = promoters(opt)
    offset, prior = int(opt['Tables::pssm_max_range']), f32(opt['Scan::Prior'])
    keys = [line.split() for line in open(opt['Tables::pssm_key']) if line.strip()]
    pssms = {int(kk[0]): dict(cons=kk[1], lo=offset + int(kk[2]), hi=offset + int(kk[3]), bi=int(kk[4]) != 0,
                              prob=[], logs=[]) for kk in keys}
    for line in open(opt['Tables::pssm_data']):
        f = line.split()
        p = pssms[int(f[0])]
        pos = int(f[1])
        del p['prob'][pos:], p['logs'][pos:]
        v = [f32(f32(x) + prior) for x in f[2:6]]
        tot = f32(f32(f32(v[0] + v[1]) + v[2]) + v[3])
        v = [f32(x / tot) for x in v]
        p['prob'].append(v)
        p['logs'].append([f32(libm.logf(float(x))) for x in v])
    minaff = float(f32(opt['Scan::MinAffinity']))
    with open(out_tab, 'w') as ft, open(out_hits, 'w') as fh:
        fh.write('pssm\tconsensus\tgene\tname\tpos\tstrand\tll\taffinity\n')
        for pid in sorted(pssms):
            p = pssms[pid]
            for i, col in enumerate(p['prob']):
                vals = [f32(f32(c_round(float(f32(x * f32(100))))) / f32(100)) for x in col]
                ft.write('%d\t%d\t%s\n' % (pid, i, '\t'.join(g(v) for v in vals)))
            cons = ''
            for col in p['prob']:
                packed = sorted(int(math.floor(float(f32(x * f32(1000))) + 0.5)) * 4 + b for b, x in enumerate(col))
                top, second = packed[3], packed[2]
                pair = {(0, 1): 'M', (0, 2): 'R', (0, 3): 'W', (1, 2): 'S', (1, 3): 'Y', (2, 3): 'K'}
                cons += 'ACGT'[top & 3] if top > 2400 else '*' if top + second < 3400 else \
                    pair[tuple(sorted((top & 3, second & 3)))]
            maxll = 0.0
            for col in p['logs']:
                maxll += float(max(col))
            w = len(p['logs'])
            for gene in sorted(table):
                s = table[gene]
                if len(s) < w:
                    continue
                best, at, d = START, 0, 1
                for st in range(max(0, p['lo']), min(p['hi'], len(s) - w)):
                    fw = score(p['logs'], s[st:st + w], False, best)
                    if fw > best:
                        best, at, d = fw, st, 1
                    if p['bi']:
                        r = score(p['logs'], s[st:st + w], True)
                        if r > best:
                            best, at, d = r, st, -1
                aff = math.exp(float(best) - maxll)
                if aff >= minaff:
                    fh.write('%d\t%s\t%d\tg%d\t%d\t%d\t%s\t%s\n' % (pid, cons, gene, gene, at, d, g(best), g(aff)))


def c_round(x):
    return math.floor(x + 0.5) if x >= 0 else -math.floor(-x + 0.5)


if __name__ == '__main__':
    kmer_table(D + 'kmer_stats.opt', D + 'kmer_stats_expected.tsv')
    kmer_table(D + 'kmer_gapped.opt', D + 'kmer_gapped_expected.tsv')
    pssm_tables(D + 'pssm_scan.opt', D + 'pssm_scan_expected.tab', D + 'pssm_scan_expected_hits.tsv')
