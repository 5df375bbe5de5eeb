#!/usr/bin/env python3
"""Writes performance.md and performance.svg from a run of zvutil_bench.

usage: report.py RESULTS.json FOLDER
"""

import json
import math
import pathlib
import sys
import textwrap
from dataclasses import dataclass, field
from html import escape

LIBRARY = "zvutil"
FLOORS = ("strlen+memcpy", "C library")
COUNTS_TITLE = "## Instructions on "  # the last section, which instructions.py writes
MOST_GROWTH = 2  # cost per byte of the largest text against that of the smallest

FAMILIES = {
    "conversions": (
        "Conversions",
        "A whole string from one encoding into another. iconv and ICU keep their converters open "
        "between the calls.",
    ),
    "strings": (
        "Strings",
        "The peer does the same job by walking with `mbrlen` in a real locale of the code set. "
        "What is looked for is not there, so that every search sees the whole text; `mbidx` and "
        "`mbstrncpy` look at its end alone. The C library does the same for bytes: `strchr` for "
        "`mbstrchr`, `strnlen` for `mbidx`, and so on. Hiragana give a search no false candidates; "
        "mixed text, in SJIS and BIG5, does.",
    ),
    "mail": (
        "Mail",
        "Quoted-printable texts of one line, both ways per byte of the plain text, and subjects "
        "of 60 bytes. GMime is handed its subjects in UTF-8.",
    ),
    "streams": (
        "Streams",
        "A file of a mebibyte, which the system holds in memory. stdio writes its lines "
        "unbuffered, since the library's streams hold no write back.",
    ),
    "list": (
        "List",
        "GPtrArray's walk by position is a macro; the cursor of a list is a call for each item.",
    ),
    "services": (
        "Services",
        "libc converts the file with stdio and iconv, and reads the list with strtok_r, which cuts "
        "characters of Shift-JIS.",
    ),
}


AT_ONE_END = ("mbidx", "mbstrncpy")  # whose peer walks the whole text
NOISE = 0.05  # where no more than the same pace is wanted


@dataclass
class Target:
    what: str  # "peer": at least this many times as fast; "floor": at most this many times its time
    factor: float

    def __str__(self):
        return f"{self.factor:g}x" if self.what == "peer" else f"floor {self.factor:g}x"

    def met(self, row):
        if self.what == "peer":
            return row.speedup() >= (self.factor if self.factor > 1 else 1 - NOISE)
        return row.floor_ratio() <= self.factor

    def shortfall(self, row):
        if self.what == "peer":
            return f"{row.speedup():.2f}x of {self.factor:g}x"
        return f"{row.floor_ratio():.2f}x the floor, at most {self.factor:g}x wanted"


@dataclass
class Row:
    family: str
    operation: str
    text: str
    size: int
    unit: str
    times: dict = field(default_factory=dict)  # best nanoseconds per unit, by peer

    def peers(self):
        return [peer for peer in self.times if peer != LIBRARY and peer not in FLOORS]

    def floor(self):
        return next((peer for peer in self.times if peer in FLOORS), None)

    def speedup(self):
        return min(self.times[peer] for peer in self.peers()) / self.times[LIBRARY]

    def floor_ratio(self):
        return self.times[LIBRARY] / self.times[self.floor()]

    def targets(self):
        if self.family == "conversions":
            if self.operation in ("big2euchx", "euch2bigx"):
                wanted = {48: 8, 65536: 10}
            else: # the code pages begin with a digit
                wanted = {48: 8, 65536: 30} if self.operation[1].isdigit() else {48: 12, 65536: 20}
            targets = [Target("peer", wanted[self.size])] if self.size in wanted else []
            floor = [Target("floor", 2 if self.size == 65536 else 4)] if self.text == "ASCII" else []
            return targets + floor
        if self.family == "strings":
            targets = [Target("peer", 10)] if self.size == 4096 else []
            searches = ("mbidx", "mbstrchr", "mbstrrchr", "mbstrstr", "mbstrpbrk")
            clear = self.text.endswith("hiragana") or self.operation == "mbidx"
            if self.operation in searches and clear and self.size == 4096:
                targets.append(Target("floor", 3))
            return targets
        if self.family == "mail" and self.size not in (1, 4096):
            return []
        if self.operation in ("ZVfputs", "list_getNext"): # a system call a line; a macro
            return []
        return [Target("peer", 5 if self.family == "mail" else 1)]

    def name(self):
        return f"`{self.operation}`, {self.text}, {size_text(self.size, self.unit)}"


def read_rows(results):
    rows = {}
    for entry in sorted(results["benchmarks"], key=lambda entry: entry["family_index"]):
        if entry["run_type"] != "iteration":
            continue
        family, operation, text, size, peer = entry["run_name"].split("/")
        key = family, operation, text, size
        row = rows.setdefault(key, Row(family, operation, text, int(size), entry["label"]))
        time = entry["cpu_time"] / entry["units"]
        row.times[peer] = min(time, row.times.get(peer, math.inf))
    first = {}
    for row in rows.values():
        first.setdefault((row.operation, row.text), len(first))
    return sorted(rows.values(), key=lambda row: (first[row.operation, row.text], row.size))


def size_text(size, unit):
    if unit != "byte":
        return unit if size == 1 else f"{size} {unit}s"
    for power, name in ((20, "MiB"), (10, "KiB")):
        if size % (1 << power) == 0:
            return f"{size >> power} {name}"
    return f"{size} bytes"


def number(value):
    """Three digits that count."""
    return f"{value:.{max(0, 2 - math.floor(math.log10(value)))}f}"


def factor(value):
    return f"{value:.0f}x" if value >= 100 else f"{value:.1f}x" if value >= 2 else f"{value:.2f}x"


def table(header, lines):
    rule = ["---"] * 3 + ["--:"] * (len(header) - 3)
    return "".join(f"| {' | '.join(cells)} |\n" for cells in [header, rule, *lines])


def verdict(targets, row):
    if not targets:
        return ["", ""]
    met = all(target.met(row) for target in targets)
    return [", ".join(map(str, targets)), "yes" if met else "**no**"]


def family_table(rows):
    peers = list(dict.fromkeys(peer for row in rows for peer in row.times))
    has_floor = any(row.floor() for row in rows)
    header = ["operation", "text", "size"] + [f"{peer}, ns" for peer in peers]
    header += ["to best peer"] + (["to floor"] if has_floor else []) + ["target", "met"]
    lines = []
    for row in rows:
        cells = [f"`{row.operation}`", row.text, size_text(row.size, row.unit)]
        cells += [number(row.times[peer]) if peer in row.times else "" for peer in peers]
        cells.append(factor(row.speedup()))
        if has_floor:
            cells.append(factor(row.floor_ratio()) if row.floor() else "")
        lines.append(cells + verdict(row.targets(), row))
    return table(header, lines)


def growths(rows):
    """The sizes and costs per byte of each operation and text."""
    costs = {}
    for row in rows:
        if row.family == "growth":
            costs.setdefault((row.operation, row.text), {})[row.size] = row.times[LIBRARY]
    return costs


def growth(costs):
    return costs[max(costs)] / costs[min(costs)]


def growth_table(costs):
    sizes = sorted(next(iter(costs.values())))
    header = ["operation", "code set", "text"] + [f"{size_text(s, 'byte')}, ns" for s in sizes]
    lines = []
    for (operation, text), by_size in costs.items():
        met = "yes" if growth(by_size) <= MOST_GROWTH else "**no**"
        lines.append([f"`{operation}`", *text.split(", "), *(number(by_size[s]) for s in sizes),
                      factor(growth(by_size)), f"{MOST_GROWTH}x", met])
    return table(header + ["growth", "target", "met"], lines)


def processor():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return "unknown processor"


def summary(rows, costs):
    judged = [(row, target) for row in rows for target in row.targets()]
    missed = [f"{row.name()}: {target.shortfall(row)}" for row, target in judged
              if not target.met(row)]
    missed += [f"`{operation}`, {text}: the cost per byte grows {factor(growth(by_size))}"
               for (operation, text), by_size in costs.items() if growth(by_size) > MOST_GROWTH]
    total = len(judged) + len(costs)
    text = f"{total - len(missed)} of {total} targets were met in this run"
    return text + (". Missed:\n\n" + "".join(f"- {line}\n" for line in missed) if missed else ".\n")


def report(context, rows, costs):
    peers = ", ".join(f"{name} {context[name]}" for name in ("glibc", "ICU", "GMime", "GLib"))
    sections = [f"""# Performance

The library and its peers on the same texts in the same process. `script/bench` measures anew and
writes this page and the chart.

- Machine: {processor()}, {context['num_cpus']} processors, {context['mhz_per_cpu']} MHz
- Compiler: {context['compiler']}, release build
- Peers: {peers}
- Date: {context['date'][:10]}

Every time is processor time in nanoseconds per byte (per call of a subject, per item of a list),
the best of several repetitions, which are taken in random order. "To best peer" says how many times
as fast the library is as the fastest peer, "to floor" how many times as long it takes as `strlen`
and `memcpy` of the same text, or as the C library's function for bytes. A target is a factor to the best peer
or, where it says so, to the floor; where that is 1, {NOISE:.0%} less count as noise. Strings and mail
have theirs at 4 KiB; what a short text costs stands beside.

{summary(rows, costs)}
![How many times as fast as the fastest peer](performance.svg)
"""]
    for family, (title, remark) in FAMILIES.items():
        own = [row for row in rows if row.family == family]
        sections.append(f"## {title}\n\n{textwrap.fill(remark, 100)}\n\n{family_table(own)}")
    sections.append("## Growth\n\nTexts made to lead a simple search astray. The cost per byte of "
                    "the text and of what is looked\nfor, which may grow with it, should stay; up to "
                    f"{MOST_GROWTH} times counts as that.\n\n"
                    + growth_table(costs))
    return "\n".join(sections)


class Chart:
    """Bars of the ratio to the best peer, on a logarithmic scale; grey suits light and dark."""

    WIDTH, LEFT, RIGHT, STEP = 860, 330, 50, 17
    TEXT, LINES, BAR = "#808080", "#80808060", "#3d85c6"

    def __init__(self, rows):
        ratios = [row.speedup() for row in rows]
        self.low = min(0.5, *ratios) / 1.2
        self.high = max(ratios) * 1.1
        self.shapes = []
        self.y = 60
        for family in dict.fromkeys(row.family for row in rows):
            self.text(0, self.y, FAMILIES[family][0], "font-weight='bold'")
            self.y += self.STEP
            for row in (row for row in rows if row.family == family):
                self.bar(row)
            self.y += self.STEP // 2

    def x(self, ratio):
        share = math.log(ratio / self.low) / math.log(self.high / self.low)
        return self.LEFT + share * (self.WIDTH - self.LEFT - self.RIGHT)

    def text(self, x, y, text, more=""):
        self.shapes.append(f"<text x='{x:.1f}' y='{y}' {more}>{escape(text)}</text>")

    def bar(self, row):
        left, right = sorted((self.x(1), self.x(row.speedup())))
        colour = f"none' stroke='{self.BAR}" if row.operation in AT_ONE_END else self.BAR
        label = f"{row.operation}, {row.text}, {size_text(row.size, row.unit)}"
        self.text(self.LEFT - 6, self.y, label, "text-anchor='end'")
        self.shapes.append(f"<rect x='{left:.1f}' y='{self.y - 11}' width='{right - left:.1f}' "
                           f"height='12' fill='{colour}'/>")
        self.text(right + 5, self.y, factor(row.speedup()))
        self.y += self.STEP

    def axis(self):
        lines = []
        for ratio in (0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100, 200, 500, 1000):
            if self.low <= ratio <= self.high:
                x = self.x(ratio)
                lines.append(f"<path d='M{x:.1f} 46V{self.y}' stroke='{self.LINES}'/>"
                             f"<text x='{x:.1f}' y='42' text-anchor='middle'>{ratio:g}x</text>")
        return lines

    def svg(self):
        return "\n".join([
            f"<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 {self.WIDTH} {self.y}' "
            f"font-family='sans-serif' font-size='12' fill='{self.TEXT}'>",
            "<title>How many times as fast as the fastest peer</title>",
            "<text x='0' y='12'>Times as fast as the fastest peer.</text>",
            "<text x='0' y='26'>Outlined: the library looks at one end of the text, the peer walks "
            "all of it.</text>",
            *self.axis(), *self.shapes, "</svg>\n"])


def charted(row):
    """Few sizes of a family, so that the chart stays readable."""
    return row.size in {"conversions": (65536,), "strings": (48, 4096)}.get(row.family, (row.size,))


def main():
    results = json.loads(pathlib.Path(sys.argv[1]).read_text())
    folder = pathlib.Path(sys.argv[2])
    every = read_rows(results)
    costs = growths(every)
    rows = [row for row in every if row.family != "growth"]
    folder.mkdir(exist_ok=True)
    page = folder / "performance.md"
    counts = page.read_text().partition(f"\n{COUNTS_TITLE}") if page.exists() else ()
    page.write_text(report(results["context"], rows, costs) + "".join(counts[1:]))
    chart = Chart([row for row in rows if charted(row)])
    (folder / "performance.svg").write_text(chart.svg())
    print(summary(rows, costs))


if __name__ == "__main__":
    main()
