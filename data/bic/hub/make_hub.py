#!/usr/bin/python3
"""Writes the small data set of the ExpSeqDB tests into this folder:

    /usr/bin/python3 data/bic/hub/make_hub.py

24 genes, 6 conditions; genes 0-7 are raised by 2.5 in conditions 0-2 over standard normal noise
(seed 5, two decimals). The same cells are written as a plain key/data pair, a wide text table, a key
table naming that text table, and a multi-array pair (array 0 measures every gene and conditions 0-2,
array 1 genes 0-11 and conditions 3-5). Promoters are 60 random letters, genes 0-7 with GATTGCC at 20;
gene 23 has none. Also: a PSSM pair, gene classes, binary relations, location and phenotype data (the
expression's first two conditions, shifted), bicluster tables for the expression graph and for the
layered graph, an avoid table, and one option file per expression road (key, txt, plain, array).
"""
import os
import random

HERE = os.path.dirname(os.path.abspath(__file__))
REL = 'data/bic/hub/'
GENES, CONDS = 24, 6


def write(name, text):
    with open(os.path.join(HERE, name), 'w') as f:
        f.write(text)


def main():
    rng = random.Random(5)
    cells = [[round(rng.gauss(0, 1) + (2.5 if g < 8 and c < 3 else 0), 2) for c in range(CONDS)]
             for g in range(GENES)]
    write('varob.tab', ''.join('%d\tYG%03d\tgene\t-\t-\tG%d\tA%d\n' % (g, g, g, g) for g in range(GENES)))
    write('avoid.tab', '0\t3\tG3\n1\t5\tG5\n')
    write('expk.txt', ''.join('%d E%d x 0 1 0\n' % (c, c) for c in range(CONDS)))
    write('expr.txt', ''.join('%d %d %g\n' % (g, c, cells[g][c]) for g in range(GENES) for c in range(CONDS)))
    write('expk_arr.txt', ''.join('%d E%d x 0 1 %d\n' % (c, c, c // 3) for c in range(CONDS)))
    write('arrk.txt', '0 arrayA\n1 arrayB\n')
    write('arrd.txt', ''.join('0 %d\n' % g for g in range(GENES)) + ''.join('1 %d\n' % g for g in range(12)))
    write('wide.txt', 'ORF\t' + '\t'.join('E%d' % c for c in range(CONDS)) + '\n' +
          ''.join('G%d\t' % g + '\t'.join('%g' % x for x in cells[g]) + '\n' for g in range(GENES)))
    # A trailing tab after the last value: the pair is still stored.
    write('prop.key', '1\ttxt\tfile\t%swide.txt\tkey_col\t0\tfirst_data_col\t1\t\n' % REL)
    write('lone.key', '1\ttxt\tfile\t%swide.txt\n2\ttxt\n' % REL)
    seqs = []
    for g in range(GENES - 1):
        s = [rng.choice('ACGT') for _ in range(60)]
        if g < 8:
            s[20:27] = 'GATTGCC'
        seqs.append('>G%d\n%s\n' % (g, ''.join(s)))
    write('promoters.fa', ''.join(seqs))
    write('pssm.key', '0 GATTGCC -60 0 0\n1 TTT -60 -10 1\n')
    pssm = ''
    for i, b in enumerate('GATTGCC'):
        pssm += '0 %d ' % i + ' '.join('9' if x == b else '0' for x in 'ACGT') + '\n'
    for i in range(3):
        pssm += '1 %d 0 0 0 9\n' % i
    write('pssm.data', pssm)
    write('cls.key', '0 \tC0\tmodule\t8\n1 \tC1\tother\t4\n')
    write('cls.assoc', ''.join('0 %d\n' % g for g in range(8)) + ''.join('1 %d\n' % g for g in range(10, 14)))
    write('br.key', '0 ppi\n1 genetic\n')
    write('br.rels', '0 0 1\n0 1 2\n0 2 3\n1 4 5\n1 0 7\n0 10 11\n')
    write('locak.txt', '0 L0 x 0 1 0\n1 L1 x 0 1 0\n')
    write('locar.txt', ''.join('%d %d %g\n' % (g, c, cells[g][c] + 0.5) for g in range(GENES) for c in range(2)))
    write('phenok.txt', '0 P0 x 0 1 0\n1 P1 x 0 1 0\n')
    write('phenor.txt', ''.join('%d %d %g\n' % (g, c, -cells[g][c]) for g in range(GENES) for c in range(2)))
    # Expression graph biclusters: conditions in group 0, genes in group 0; a pattern for bicluster 0.
    write('exp.bick', '0\t5.5\n1\t2.25\n')
    write('exp.bicd', ''.join('0\t0\t%d\t0\t1\n' % c for c in range(3)) +
          ''.join('0\t1\t%d\t0\t1\n' % g for g in range(8)) + '1\t0\t4\t1\t1\n1\t1\t12\t0\t1\n1\t1\t13\t0\t1\n')
    write('exp.bicm', '0\tGATTGCC\t0\t60\n')
    # Layered graph biclusters: property numbers in their groups (0-1 expression, 2 PSSM, 3 classes).
    write('prop.bick', '0\t3\n')
    write('prop.bicd', '0\t0\t1\t0\t1\n0\t0\t0\t2\t1\n0\t0\t0\t3\t1\n' +
          ''.join('0\t1\t%d\t0\t1\n' % g for g in range(4)))

    common = '''[Tables]
varob = {r}varob.tab
avoid_vars = {r}avoid.tab
Promoters = {r}promoters.fa
PromoterLength = 60
UseOrf2ForFasta = 0
pssm_key = {r}pssm.key
pssm_data = {r}pssm.data
pssm_max_range = 60
goclskey = {r}cls.key
clsassoc = {r}cls.assoc
layer_key = {r}br.key
br_rels = {r}br.rels
locak = {r}locak.txt
locar = {r}locar.txt
phenok = {r}phenok.txt
phenor = {r}phenor.txt
[DB]
ValSpaceScope = ValSpace
GraphScope = Graph
PU = 0.8
WgtCalcScope = Weights
UseExprLayer = 1
UsePssmLayer = 1
UseAnnotLayer = 1
UseLocaLayer = 2
UsePhenoLayer = 1
PSSMLayerScope = Pssm
AnnotsLayerScope = Annot
PhenoGraphScope = Graph
LocaGraphScope = Graph
BinRelWgtCalcScope = BRWgt
[ProbValSpace]
ExpressDefaultVal = 0
UseAutomaticDiscretization = {auto}
[LocaProbValSpace]
LocaDefaultVal = 0
[PhenoProbValSpace]
PhenoDefaultVal = 0
[RandomGraph]
RandFactor = 2
ProbRanges = {{ f 2
0.5 0.9
}}
BRRandFactor = 2
[Down]
Points = {{ f 4
-2 1 -0.5 0
}}
[Flat]
Points = {{ f 6
-1 0 0 1 1 0
}}
[Up]
Points = {{ f 4
0.5 0 2 1
}}
[ValSpace]
FuncScopes = {{ s 3
Down
Flat
Up
}}
Logit = 1
BinSize = 0.01
RangeMax = 4
ZeroState = 1
RangeBase = -4
SureFactor = 0.05
SoSoFactor = 0.25
Offset = 4
MaxDiscBins = 80
[Graph]
Logit = 0
EdgePThresh = 0.2
EdgeNonZeroP = 0.3
AllowConditionOrientation = 1
AllowVarOrientation = 0
ExpCardinality = 2
VarCardinality = 2
VarOrientation = 0
Factors = {{ f 1
1.0
}}
StateOfGroupPair = {{ i 12
0 0 2
0 1 0
1 0 0
1 1 2
}}
BuildEdgesFromFile = 0
AllowCondOrientation = 1
PropCardinality = 2
VarMaxGroupId = 2
[Pssm]
EdgePThresh = 0.1
[Bins]
MaxGroupBins = 8
MinGroupInterval = 2
[Weights]
BinningScope = Bins
MinimumPU = 0.001
Logit = 0
LimitNegPosRatio = 0
MinNegWeightRatio = 0.5
UseSeriesFactor = 0
UseExpWeight = 0
MaxPatchPU = 0.9
ModelP = {{ f 5
0.8 0.8 0.8 0.8 0.8
}}
MaxPU = {{ f 5
0.9 0.9 0.9 0.9 0.9
}}
'''
    roads = {
        'key': 'ExprFileType = key\nExprTxtFile = {r}prop.key\nbick = {r}prop.bick\nbicd = {r}prop.bicd\n',
        'txt': 'ExprFileType = txt\nExprTxtFile = {r}wide.txt\nExprTxtFileKeyCol = 0\nExprTxtFileDataCol = 1\n'
               'ForceOneArrayType = 1\nbick = {r}exp.bick\nbicd = {r}exp.bicd\nbicm = {r}exp.bicm\n',
        'plain': 'ExprFileType = plain\nexpr = {r}expr.txt\nexpk = {r}expk.txt\nHaveArraySetTables = 0\n'
                 'bick = {r}exp.bick\nbicd = {r}exp.bicd\nbicm = {r}exp.bicm\n',
        'array': 'expr = {r}expr.txt\nexpk = {r}expk_arr.txt\nHaveArraySetTables = 1\narrk = {r}arrk.txt\n'
                 'arrd = {r}arrd.txt\nbick = {r}exp.bick\nbicd = {r}exp.bicd\nbicm = {r}exp.bicm\n',
    }
    for name, extra in roads.items():
        text = common.format(r=REL, auto=1)
        text = text.replace('[DB]\n', '[Tables]\n' + extra.format(r=REL) + '[DB]\n', 1)
        write('road_%s.opt' % name, text)


if __name__ == '__main__':
    main()
