#!/usr/bin/python3
"""Writes assign_table.txt, the bundled table of examples/assign_eval (Python 3, standard library;
run from the repository root): 400 samples of six variables of values 0..2. rain is uniform; wet
copies rain with probability 0.7; slip follows wet and rain; mood and noise are uniform and
independent; late is 1 when slip is 2, else 0, and flipped to 2 with probability 0.1."""
import random

rng = random.Random(2024)
rows = []
for _ in range(400):
    rain = rng.randrange(3)
    wet = rain if rng.random() < 0.7 else rng.randrange(3)
    slip = min(2, (wet + rain) // 2 + (1 if rng.random() < 0.15 else 0))
    mood = rng.randrange(3)
    noise = rng.randrange(3)
    late = 2 if rng.random() < 0.1 else (1 if slip == 2 else 0)
    rows.append((rain, wet, slip, mood, noise, late))
with open("data/examples/assign_table.txt", "w") as out:
    out.write("rain wet slip mood noise late\n")
    for r in rows:
        out.write(" ".join(map(str, r)) + "\n")
