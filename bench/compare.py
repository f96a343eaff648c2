#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""compare.py DIRECTORY ROUNDS: the speed of this tree over an older one's, row by row, slowest first.

DIRECTORY has the tables that the rounds wrote: old.1.tsv, this.1.tsv, old.2.tsv, ... The ratio is that of the best of
all rounds; the spread goes from the least to the greatest ratio of two runs of one round.
"""
import statistics
import sys


def read(path):
    """{row: rate} of what is ours"""
    rates = {}
    with open(path) as table:
        for line in table:
            contest, contender, side, rate = line.rstrip("\n").split("\t")
            if side == "ours":
                rates[contest + " | " + contender] = float(rate)
    return rates


def main():
    directory, rounds = sys.argv[1], int(sys.argv[2])
    old, this = ([read(f"{directory}/{which}.{n + 1}.tsv") for n in range(rounds)] for which in ("old", "this"))
    rows = []
    for name in old[0]:
        if name not in this[0]:
            continue
        before, after = [table[name] for table in old], [table[name] for table in this]
        ratios = [a / b for a, b in zip(after, before)]
        rows.append((max(after) / max(before), min(ratios), max(ratios), name))
    if not rows:
        sys.exit("compare: no row is in both")
    rows.sort()
    print("ratio    spread      row")
    for ratio, least, greatest, name in rows:
        print(f"{ratio:.3f} {least:.3f}-{greatest:.3f} {name}")
    print(f"{len(rows)} rows: median {statistics.median(r[0] for r in rows):.3f}, lowest {rows[0][0]:.3f}")


main()
