#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""tables.py RESULTS GROWTH [ARGUMENT...]: puts the tables made of the benchmarks' results into the pages.

RESULTS is what scripts/bench.sh gathers (program, level, contest, contender, side, units per second), GROWTH what
bench_growth printed. Each table goes between the line "<!-- NAME -->" of a page and the next "<!-- end -->". The
arguments are those of the run, and are named with the machine.
"""
import datetime
import re
import sys

LEVELS = ["AVX-512", "AVX-VNNI", "AVX2", "SSE4.1", "portable"]


def read(path):
    """{(program, level): {contest: [(contender, side, rate)]}}"""
    results = {}
    with open(path) as lines:
        for line in lines:
            program, level, contest, contender, side, rate = line.rstrip("\n").split("\t")
            contests = results.setdefault((program, level), {})
            contests.setdefault(contest, []).append((contender, side, float(rate)))
    return results


def best_peer(rows):
    """(its rate, its name); (0, "") where nobody else does the job"""
    return max(((rate, name) for name, side, rate in rows if side == "peer"), default=(0, ""))


def cell(rate, best):
    return f"{rate / best:.2f}" if rate and best else ""


def conversions(results, size):
    levels = [level for level in LEVELS if ("conversions", level) in results]
    first = results["conversions", levels[0]]
    columns = ["conversion", "best peer", "Mpixel/s"] + levels + ["`convertIm`", "new image", "`memcpy`"]
    yield "| " + " | ".join(columns) + " |"
    yield "|---" * len(columns) + "|"
    for contest, rows in first.items():
        name, _, this_size = contest.rpartition(", ")
        if this_size != size:
            continue
        best, peer = best_peer(rows)
        cells = [name, peer, f"{best / 1e6:.0f}"]
        for level in levels:
            same = results["conversions", level].get(contest, [])
            ours = next((rate for who, _, rate in same if who == level), 0)
            cells.append(cell(ours, best_peer(same)[0]))
        for who in ("convertIm", "convertIm, new image", "memcpy"):
            cells.append(cell(next((rate for name, _, rate in rows if name == who), 0), best))
        yield "| " + " | ".join(cells) + " |"


def scaling(results):
    """Contests whose sizes are two."""
    levels = [level for level in LEVELS if ("conversions", level) in results]
    columns = ["scaled copy", "best peer", "Mpixel/s"] + levels
    yield "| " + " | ".join(columns) + " |"
    yield "|---" * len(columns) + "|"
    for contest, rows in results["conversions", levels[0]].items():
        if " to " not in contest.rpartition(", ")[2]:
            continue
        best, peer = best_peer(rows)
        cells = [contest, peer, f"{best / 1e6:.0f}"]
        for level in levels:
            same = results["conversions", level].get(contest, [])
            ours = next((rate for who, _, rate in same if who == level), 0)
            cells.append(cell(ours, best_peer(same)[0]))
        yield "| " + " | ".join(cells) + " |"


def summary(results, size):
    """What a newcomer looks for first."""
    levels = [level for level in ("AVX-512", "AVX2", "SSE4.1") if ("conversions", level) in results]
    yield "| conversion | " + " | ".join(levels) + " |"
    yield "|---" * (len(levels) + 1) + "|"
    for name in ("RGB to 4:4:4", "4:4:4 to RGB", "4:4:4 to 4:2:0", "4:2:0 to 4:4:4", "YUY2 to 4:4:4", "4:4:4 to YUY2",
                 "JFIF to 4:4:4", "4:4:4 to JFIF", "flip RGB left-right", "flip plane left-right"):
        cells = []
        for level in levels:
            rows = results["conversions", level].get(f"{name}, {size}", [])
            best, peer = best_peer(rows)
            ours = next((rate for who, _, rate in rows if who == level), 0)
            cells.append(f"{cell(ours, best)} ({peer})")
        yield f"| {name} | " + " | ".join(cells) + " |"


def jobs(results, programs, scale=1):
    """Ours beside the others, one line a contest; a bound counts where there is no peer."""
    def figure(rate):
        return f"{rate / scale:.4g}" if rate < 1e4 * scale else f"{rate / scale:.0f}"

    yield "| job | ours | others | ours over the first of them |"
    yield "|---|---|---|---|"
    for program in programs:
        for contest, rows in results.get((program, ""), {}).items():
            ours = [rate for _, side, rate in rows if side == "ours"]
            others = [(name, rate) for name, side, rate in rows if side != "ours"]
            if ours and others:
                listed = ", ".join(f"{name} {figure(rate)}" for name, rate in others)
                yield f"| {contest} | {figure(ours[0])} | {listed} | {ours[0] / others[0][1]:.2f} |"


def growth(path):
    """The first table of bench_growth."""
    with open(path) as text:
        rows = [line.rstrip("\n").split(" | ") for line in text if " | " in line and "x" in line.split(" | ")[1]]
    if not rows:
        return
    yield "| conversion | " + " | ".join(entry.split(" ")[0] for entry in rows[0][1:]) + " |"
    yield "|---" * len(rows[0]) + "|"
    for row in rows:
        yield "| " + row[0] + " | " + " | ".join(entry.split(" ")[1] for entry in row[1:]) + " |"


def machine(arguments):
    with open("/proc/cpuinfo") as info:
        text = info.read()
    name = re.search(r"model name\s*: (.*)", text).group(1)
    family, model = (re.search(rf"{what}\s*: (\d+)", text).group(1) for what in ("cpu family", r"model\t"))
    processors = text.count("processor\t")
    day = datetime.date.today().isoformat()
    called = " ".join(["scripts/bench.sh", *arguments])
    yield f"`{called}` on {processors} processors named {name} (family {family}, model {model}), {day}."


def main():
    results, growth_file, arguments = read(sys.argv[1]), sys.argv[2], sys.argv[3:]
    pages = {
        "docs/performance.md": {
            "machine": machine(arguments),
            "640x480": conversions(results, "640x480"),
            "1920x1080": conversions(results, "1920x1080"),
            "3840x2160": conversions(results, "3840x2160"),
            "scaling": scaling(results),
            "video": jobs(results, ["road", "videoread"]),
            "stored": jobs(results, ["stored"], 1e6),
            "startup": jobs(results, ["startup"]),
            "growth": growth(growth_file),
        },
        "README.md": {"speed": summary(results, "1920x1080")},
    }
    for page, parts in pages.items():
        with open(page) as file:
            text = file.read()
        for name, lines in parts.items():
            begin = text.index(f"<!-- {name} -->\n") + len(f"<!-- {name} -->\n")
            end = text.index("<!-- end -->", begin)
            text = text[:begin] + "".join(line + "\n" for line in lines) + text[end:]
        with open(page, "w") as file:
            file.write(text)


main()
