#!/usr/bin/python3
# Writes blosum62_codes.opt: BLOSUM62 (from Biopython's substitution_matrices) as the option scope
# [Subst] over the 24 protein codes (A 1, B 2, C 3 ... Z 22; codes 0 and 23 take the X row/column).
from Bio.Align import substitution_matrices

m = substitution_matrices.load("BLOSUM62")
letters = "ABCDEFGHIKLMNPQRSTVWYZ"
codes = ["X"] + list(letters) + ["X"]
print("[Subst]")
print("MaxSymbolID = 24")
print("Matrix = {f 576")
for a in codes:
    print(" ".join(str(int(m[a][b])) for b in codes))
print("}")
