#!/usr/bin/python3
"""Agreement of match columns: the Viterbi paths of the 45 globins through globins4.hmm mapped onto the
profile topology (tests/hmm/profile_ref.py, the recursions of hmm_ref.py) against HMMER's hmmalign
(A2M output: upper case match, lower case insert). Run after bench/hmm_fetch_profiles.sh:

  /usr/bin/python3 bench/profile_hmmalign_compare.py
"""
import os
import subprocess
import sys

root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(root, "tests", "hmm"))
import profile_ref  # noqa: E402
import hmm_ref  # noqa: E402

d = os.path.join(root, "bench", "data", "scratch", "hmm")
a2m = subprocess.run(["hmmalign", "--outformat", "A2M", os.path.join(d, "globins4.hmm"),
                      os.path.join(d, "globins45.fa")], capture_output=True, text=True, check=True).stdout
theirs = {}
for line in a2m.split("\n"):
    if line.startswith(">"):
        name = line[1:].split()[0]
        theirs[name] = ""
    elif line.strip():
        theirs[name] += line.strip()
model, _ = profile_ref.profile_model(os.path.join(d, "globins4.hmm"))
names, seqs = profile_ref.read_fasta(os.path.join(d, "globins45.fa"))
same = total = 0
for name, s in zip(names, seqs):
    cols_h, k = [], 0
    for c in theirs[name]:
        if c.isupper() or c == "-":
            k += 1
        if c.isupper():
            cols_h.append(k)
        elif c.islower():
            cols_h.append(None)
    _, path = hmm_ref.viterbi(model, [profile_ref.CODES.index(c) + 1 for c in s])
    cols_v = []
    for st in path[1:]:
        if st == 1 or (st > 1 and st % 3 == 0):
            cols_v.append(None)  # insert
        elif st % 3 == 2:
            cols_v.append((st + 1) // 3)  # match of table position t = (id + 1) / 3
    assert len(cols_v) == len(cols_h) == len(s)
    same += sum(a == b for a, b in zip(cols_v, cols_h))
    total += len(s)
print("residues with the same match column (or both inserted): %d of %d (%.2f%%)" % (same, total, 100.0 * same / total))
