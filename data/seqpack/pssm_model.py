#!/usr/bin/python3
"""Independent single-precision model of PSSM scans and counting, and the case table it writes.

Draws random PSSMs (logs given directly, some from a small set of values so that ties are common,
some log-odds with positive entries)
and random sequences with N, '*' and NUL (written '.'), and computes with numpy float32 arithmetic:
the best site (start, score, strand), the scores of all starts of the window, the weighted counts,
and the likelihood of words on both strands. Floats are written as the integer of their 32 bits.

    /usr/bin/python3 data/seqpack/pssm_model.py > data/seqpack/pssm_cases.txt
"""
import numpy as np

f32 = np.float32
UNK = f32(-1.38629)
LOGZERO = f32(-3.4028235e38)
START = f32(-3.4028235e36)
IDX = {'A': 0, 'C': 1, 'G': 2, 'T': 3}
COMP = {'A': 3, 'C': 2, 'G': 1, 'T': 0}


def bits(x):
    return int(np.array([x], dtype=np.float32).view(np.uint32)[0])


def score(logs, site, rev, early=False, best=None):
    w = len(logs)
    s = f32(0)
    for i, c in enumerate(site):
        col = logs[w - 1 - i] if rev else logs[i]
        if c == '\0':
            return LOGZERO
        if (COMP if rev else IDX).get(c) is None:
            v = UNK
        else:
            v = col[(COMP if rev else IDX)[c]]
        s = f32(s + v)
        if early and best > s:
            return s
    return s


def window(n, w, lo, hi):
    return max(0, lo), min(hi, n - w)


def best_site(logs, seq, lo, hi, bidir):
    w = len(logs)
    if len(seq) < w:
        return 0, LOGZERO, 1
    best, at, d = START, 0, 1
    a, b = window(len(seq), w, lo, hi)
    for s in range(a, b):
        f = score(logs, seq[s:s + w], False, True, best)
        if f > best:
            best, at, d = f, s, 1
        if bidir:
            r = score(logs, seq[s:s + w], True)
            if r > best:
                best, at, d = r, s, -1
    return at, best, d


def like(logs, word, rev):
    w = len(logs)
    s = f32(0)
    for i in range(w):
        c = word[i]
        t = COMP if rev else IDX
        if c not in t:
            return LOGZERO
        s = f32(s + logs[w - 1 - i if rev else i][t[c]])
    return s


def main():
    rng = np.random.default_rng(20261123)
    quant = [f32(np.log(0.25)), f32(np.log(0.5)), f32(np.log(0.125)), f32(-3.4028235e36)]
    ncase = 300
    print(ncase)
    for case in range(ncase):
        w = int(rng.integers(1, 9))
        n = int(rng.integers(0, 40))
        tied = case % 3 == 0
        logs = []
        for _ in range(w):
            if tied:
                logs.append([quant[int(rng.integers(0, 4))] for _ in range(4)])
            elif case % 6 == 5:
                # log-odds columns: positive entries too
                logs.append([f32(x) for x in rng.normal(0, 2, 4)])
            else:
                p = rng.dirichlet([1, 1, 1, 1])
                logs.append([f32(np.log(x)) if x > 1e-30 else f32(-3.4028235e36) for x in p])
        alphabet = 'ACGT' if tied else 'ACGTACGTACGTN*\0'
        if case % 5 == 1:
            # a palindrome-rich sequence over two letters
            alphabet = 'AT'
        seq = ''.join(alphabet[int(rng.integers(0, len(alphabet)))] for _ in range(n))
        if case % 7 == 2 and n > 5:
            pad = int(rng.integers(1, n // 2 + 1))
            seq = '\0' * pad + seq[pad:]
        lo = int(rng.integers(-2, 6)) if case % 4 == 0 else 0
        hi = int(rng.integers(0, n + 3)) if case % 4 == 1 else 1000000
        bidir = int(rng.integers(0, 2))
        print('case', w, n, lo, hi, bidir)
        for col in logs:
            print('L', *[bits(v) for v in col])
        print('S', seq.replace('\0', '.') if n else '-')
        at, best, d = best_site(logs, seq, lo, hi, bidir)
        print('M', at, bits(best), d)
        # update_like_vec from random earlier scores
        ll0 = [f32(x) for x in rng.normal(-10, 3, n)]
        ll = list(ll0)
        diff = [f32(0)] * n
        dirs = [0] * n
        a, b = window(n, w, lo, hi)
        for s in range(a, b):
            sc = score(logs, seq[s:s + w], False)
            dirs[s] = 1
            if bidir:
                r = score(logs, seq[s:s + w], True)
                if r > sc:
                    sc, dirs[s] = r, -1
            if sc > LOGZERO:
                diff[s] = f32(sc - ll[s])
                ll[s] = sc
            else:
                diff[s] = ll[s] = LOGZERO
        print('U0', *[bits(v) for v in ll0])
        print('U', *[bits(v) for v in ll])
        print('D', *[bits(v) for v in diff])
        print('R', *dirs)
        # count_weighted from random probabilities, weights and strands
        prob = [[f32(x) for x in rng.uniform(0, 1, 4)] for _ in range(w)]
        wts = [f32(x) for x in rng.uniform(0, 1, n)]
        sdir = [int(x) for x in rng.choice([1, -1], n)]
        thresh = f32(rng.uniform(0, 1))
        print('P', *[bits(v) for col in prob for v in col])
        print('W', bits(thresh), *[bits(v) for v in wts])
        print('Q', *sdir)
        for s in range(a, b):
            if not wts[s] >= thresh:
                continue
            for i in range(w):
                c = seq[s + i]
                if sdir[s] == 1:
                    if c in IDX:
                        prob[i][IDX[c]] = f32(prob[i][IDX[c]] + wts[s])
                elif c in COMP:
                    prob[w - 1 - i][COMP[c]] = f32(prob[w - 1 - i][COMP[c]] + wts[s])
        print('C', *[bits(v) for col in prob for v in col])
        # likelihood of the words at every start where the PSSM fits
        out = []
        for s in range(0, n - w + 1):
            out += [bits(like(logs, seq[s:s + w], False)), bits(like(logs, seq[s:s + w], True))]
        print('K', *out)
    return


if __name__ == '__main__':
    main()
