#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""plot.py TABLE SIZE: an SVG of the conversions of one frame size, as ratios to the best peer, on standard output.

TABLE is what bench_conversions --table=TABLE has written.
"""
import sys
from xml.sax.saxutils import escape

SERIES = [("AVX-512", "#1f5fa8"), ("AVX2", "#7fb2e5"), ("memcpy", "#bbbbbb")]
LEFT, WIDTH, BAR, GAP, TOP = 170, 560, 9, 12, 40


def read(path, size):
    """{conversion: {contender: rate}} and {conversion: rate of the best peer}"""
    rates, best = {}, {}
    with open(path) as table:
        for line in table:
            contest, contender, side, rate = line.rstrip("\n").split("\t")
            name, _, this_size = contest.rpartition(", ")
            if this_size != size:
                continue
            rates.setdefault(name, {})[contender] = float(rate)
            if side == "peer":
                best[name] = max(best.get(name, 0), float(rate))
    return rates, best


def main():
    rates, best = read(sys.argv[1], sys.argv[2])
    names = [name for name in rates if best.get(name)]
    if not names:
        sys.exit("plot: no conversion of that size with a peer")
    longest = 4.0  # longer bars are cut and carry their ratio
    unit = WIDTH / longest
    row = BAR * len(SERIES) + GAP
    height = TOP + row * len(names) + 20
    out = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{LEFT + WIDTH + 60}" height="{height}"'
        ' font-family="sans-serif" font-size="11">',
        '<rect width="100%" height="100%" fill="white"/>',
        f'<text x="10" y="16" font-size="13">Throughput over the best peer\'s, {escape(sys.argv[2])}, one thread</text>',
    ]
    for i, (series, colour) in enumerate(SERIES):
        x = LEFT + 110 * i
        out.append(f'<rect x="{x}" y="22" width="10" height="10" fill="{colour}"/>')
        out.append(f'<text x="{x + 14}" y="31">{series}</text>')
    for n, name in enumerate(names):
        y = TOP + row * n + GAP / 2
        out.append(f'<text x="{LEFT - 8}" y="{y + row / 2}" text-anchor="end">{escape(name)}</text>')
        for i, (series, colour) in enumerate(SERIES):
            if series not in rates[name]:
                continue
            ratio = rates[name][series] / best[name]
            length = min(ratio, longest) * unit
            out.append(f'<rect x="{LEFT}" y="{y + BAR * i}" width="{length:.1f}" height="{BAR - 1}" fill="{colour}"/>')
            out.append(
                f'<text x="{LEFT + length + 3:.1f}" y="{y + BAR * i + BAR - 1}" font-size="9">{ratio:.2f}</text>'
            )
    out.append(
        f'<line x1="{LEFT + unit}" y1="{TOP}" x2="{LEFT + unit}" y2="{height - 20}" stroke="#c00" stroke-dasharray="3 3"/>'
    )
    out.append("</svg>")
    print("\n".join(out))


main()
