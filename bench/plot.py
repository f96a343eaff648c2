#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""plot.py RESULTS SIZE: an SVG of the conversions of one frame size on standard output: each level of instructions as
the ratio to the best peer that was held to the same.

RESULTS is what scripts/bench.sh gathers: program, level, contest, contender, side, units per second.
"""
import sys
from xml.sax.saxutils import escape

LEVELS = [("AVX-512", "#123f77"), ("AVX-VNNI", "#1f5fa8"), ("AVX2", "#5b93d1"), ("SSE4.1", "#9cc4ec"),
          ("portable", "#d5d5d5")]
LEFT, WIDTH, BAR, GAP, TOP = 170, 560, 8, 12, 40


def read(path, size):
    """{conversion: {level: ratio to the best peer}}"""
    best, ours = {}, {}
    with open(path) as lines:
        for line in lines:
            program, level, contest, contender, side, rate = line.rstrip("\n").split("\t")
            name, _, this_size = contest.rpartition(", ")
            if program != "conversions" or this_size != size:
                continue
            if side == "peer":
                best[name, level] = max(best.get((name, level), 0), float(rate))
            if contender == level:
                ours.setdefault(name, {})[level] = float(rate)
    return {
        name: {level: rate / best[name, level] for level, rate in rates.items() if (name, level) in best}
        for name, rates in ours.items()
    }


def main():
    ratios = {name: levels for name, levels in read(sys.argv[1], sys.argv[2]).items() if levels}
    if not ratios:
        sys.exit("plot: no conversion of that size with a peer")
    shown = [(level, colour) for level, colour in LEVELS if any(level in levels for levels in ratios.values())]
    longest = 4.0  # longer bars are cut and carry their ratio
    unit = WIDTH / longest
    row = BAR * len(shown) + GAP
    height = TOP + row * len(ratios) + 20
    out = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{LEFT + WIDTH + 60}" height="{height}"'
        ' font-family="sans-serif" font-size="11">',
        '<rect width="100%" height="100%" fill="white"/>',
        f'<text x="10" y="16" font-size="13">Throughput over the best peer\'s with the same instructions,'
        f" {escape(sys.argv[2])}, one thread</text>",
    ]
    for i, (level, colour) in enumerate(shown):
        x = LEFT + 100 * i
        out.append(f'<rect x="{x}" y="22" width="10" height="10" fill="{colour}"/>')
        out.append(f'<text x="{x + 14}" y="31">{level}</text>')
    for n, (name, levels) in enumerate(ratios.items()):
        y = TOP + row * n + GAP / 2
        out.append(f'<text x="{LEFT - 8}" y="{y + row / 2}" text-anchor="end">{escape(name)}</text>')
        for i, (level, colour) in enumerate(shown):
            if level not in levels:
                continue
            length = min(levels[level], longest) * unit
            out.append(f'<rect x="{LEFT}" y="{y + BAR * i}" width="{length:.1f}" height="{BAR - 1}" fill="{colour}"/>')
            out.append(
                f'<text x="{LEFT + length + 3:.1f}" y="{y + BAR * (i + 1) - 1}" font-size="8">'
                f"{levels[level]:.2f}</text>"
            )
    out.append(
        f'<line x1="{LEFT + unit}" y1="{TOP}" x2="{LEFT + unit}" y2="{height - 20}" stroke="#c00"'
        ' stroke-dasharray="3 3"/>'
    )
    out.append("</svg>")
    print("\n".join(out))


main()
