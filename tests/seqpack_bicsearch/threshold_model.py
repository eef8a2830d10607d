#!/usr/bin/python3
"""Independent model of the best-rank search of the seed-to-PSSM code, written from its description
with numpy and scipy: genes ranked by their best site's log likelihood under a two-column PSSM
(each promoter holds one two-letter word), sets looked at only where the likelihood changes, within
MaxVars ranks and with more than MinMotifBicFrac of the focus genes above; a set's value is the log
hypergeometric term of its focus genes (scipy's hypergeom.logpmf), taken as 0 when the overlap lies
below its expectation. Writes the cases and their expected results:

    threshold_model.py > data/seqpack_bicsearch/threshold_cases.txt
"""
import itertools

import numpy as np
from scipy.stats import hypergeom

COL0 = [0.41, 0.29, 0.19, 0.11]  # A C G T
COL1 = [0.07, 0.13, 0.23, 0.57]
BASES = 'ACGT'


def ml(word):
    return np.log(COL0[BASES.index(word[0])]) + np.log(COL1[BASES.index(word[1])])


def log_term(total, focus, drawn, hits):
    if hits < focus * drawn / total:
        return 0.0
    return float(hypergeom.logpmf(hits, total, focus, drawn))


def best_rank(words, focus, need_frac, max_vars, fp_score, final):
    order = sorted(range(len(words)), key=lambda g: -ml(words[g]))  # stable: gene order on ties
    total, nfocus = len(words), len(focus)
    need = int(need_frac * nfocus)
    best, best_hit = 0.0, 0
    drawn = hits = 0
    for i in range(min(total, max_vars + 1)):
        g = order[i]
        if i > 0 and words[g] != words[order[i - 1]] and hits > need:
            lp = log_term(total, nfocus, drawn, hits)
            if not final:
                if lp < best:
                    best, best_hit = lp, i
            else:
                if lp < -fp_score:
                    best_hit = i
                best = min(best, lp)
        drawn += 1
        hits += g in focus
    return -best, best_hit, words[order[best_hit - 1]] if best_hit > 0 else '-'


def main():
    words = [a + b for a, b in itertools.product(BASES, repeat=2)]
    vals = sorted(ml(w) for w in words)
    assert min(np.diff(vals)) > 1e-3, 'two words would tie'
    rng = np.random.default_rng(20261124)
    cases = [  # genes, focus size, need fraction, MaxVars, FpThreshScore, focus bias
        (40, 8, 0.0, 40, 1.0, 0.8), (60, 12, 0.25, 30, 2.0, 0.7), (50, 10, 0.5, 50, 3.0, 0.9),
        (80, 6, 0.0, 20, 0.5, 0.6), (30, 10, 0.95, 30, 1.0, 0.5), (70, 15, 0.2, 70, 50.0, 0.8),
        (30, 5, 1.0, 30, 1.0, 0.9)]
    for n, (genes, nfocus, need_frac, max_vars, fp_score, bias) in enumerate(cases):
        focus = set(int(g) for g in rng.choice(genes, nfocus, replace=False))
        # Focus genes lean to the likely words, the others are uniform.
        likely = [w for w in sorted(words, key=lambda w: -ml(w))[:5]]
        ws = [likely[rng.integers(5)] if g in focus and rng.random() < bias else words[rng.integers(16)]
              for g in range(genes)]
        print('case %d %g %d %g' % (n, need_frac, max_vars, fp_score))
        print('words ' + ' '.join(ws))
        print('focus ' + ' '.join(str(g) for g in sorted(focus)))
        for final in (False, True):
            score, hit, last = best_rank(ws, focus, need_frac, max_vars, fp_score, final)
            print('expect %d %.6f %d %s' % (final, score, hit, last))
    print('end')


if __name__ == '__main__':
    main()
