#!/usr/bin/python3
"""Biopython's PositionSpecificScoringMatrix.calculate on both strands, as the peer of vesk's PSSM scan.

    seqpack_biopython.py <promoters.fa> <pssmd> <n promoters> [<vesk_sites.tsv>]

Builds each matrix from the count rows of <pssmd> with a pseudo-count of 0.025 per cell (as vesk's
PssmSet reads them), takes log-odds against a uniform background and scores the first n promoters
on both strands. Prints the CPU time of the calculate calls and the time per matrix per Mb. With vesk's
sites table, also the share of promoters where Biopython's best start and strand (vesk's window: the
last start excluded; ties to the earlier start, then the forward strand) equal vesk's, and how many
of the others are near-ties in Biopython's own scores.
"""
import sys
import time

import numpy as np
from Bio import motifs
from Bio.Seq import Seq


def main():
    fasta, pssmd, n = sys.argv[1], sys.argv[2], int(sys.argv[3])
    seqs, body = [], None
    for line in open(fasta):
        if line.startswith('>'):
            if len(seqs) == n:
                break
            body = []
            seqs.append(body)
        else:
            body.append(line.strip())
    seqs = [Seq(''.join(b)) for b in seqs]
    mb = sum(len(s) for s in seqs) / 1e6
    rows = {}
    for line in open(pssmd):
        f = line.split()
        rows.setdefault(int(f[0]), []).append([float(x) for x in f[2:6]])
    vesk = {}
    if len(sys.argv) > 4:
        for line in open(sys.argv[4]):
            i, g, pos, d, _ = line.split('\t')
            vesk[(int(i), int(g))] = (int(pos), int(d))
    cpu = 0.0
    same = total = near = 0
    for i in sorted(rows):
        cols = rows[i]
        m = motifs.Motif(alphabet='ACGT', counts={b: [c[k] for c in cols] for k, b in enumerate('ACGT')})
        pssm = m.counts.normalize(pseudocounts=0.025).log_odds()
        rc = pssm.reverse_complement()
        w = len(cols)
        for g, s in enumerate(seqs):
            t0 = time.process_time()
            fw = pssm.calculate(s)
            rv = rc.calculate(s)
            cpu += time.process_time() - t0
            if vesk:
                end = len(s) - w  # the last start is left out
                if end <= 0:
                    continue
                f, r = np.nan_to_num(fw[:end], nan=-1e30), np.nan_to_num(rv[:end], nan=-1e30)
                both = np.maximum(f, r)
                at = int(np.argmax(both))
                d = 1 if f[at] >= r[at] else -1
                total += 1
                v = vesk.get((i, g))
                if v == (at, d):
                    same += 1
                elif v is not None and 0 <= v[0] < end:
                    # Biopython's own score of vesk's site against its best one
                    theirs = (f if v[1] == 1 else r)[v[0]]
                    near += abs(float(theirs) - float(both[at])) <= 1e-3
    print('Biopython calculate, both strands: %d matrices over %d promoters (%.3f Mb), cpu %.2f s, '
          '%.2f ms per matrix per Mb' % (len(rows), len(seqs), mb, cpu, 1000 * cpu / len(rows) / mb))
    if vesk:
        print('best start and strand equal to vesk in %d of %d (%.4f); of the others, %d are sites that '
              'Biopython scores within 1e-3 of its best (near-ties)' % (same, total, same / max(total, 1), near))


if __name__ == '__main__':
    main()
