#!/usr/bin/env python3
"""Measures zvconv beside other programs, whole processes, and writes programs.md and programs.svg.

usage: programs.py ZVCONV TEXTS FOLDER
"""
import datetime
import math
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
from html import escape

SIZE = 100_000_000
SLOW_SIZE = 10_000_000  # for the others, whose times grow with it
# The system counts user time by ticks, so that only the mean of many runs tells that of a short one.
ROUNDS = 9
RUNS = {"zvconv": 5}  # in a round
SLOW_ROUNDS = 3

# The conversions: zvconv's, iconv's and nkf's names, the text, the least factor to iconv wanted.
CONVERSIONS = [
    ("EUC", "SJIS", "EUC-JP", "SJIS", "-Es", "japanese.jis", 8),
    ("SJIS", "EUC", "SJIS", "EUC-JP", "-Se", "japanese.jis", 8),
    ("JIS", "EUC", "ISO-2022-JP", "EUC-JP", "-Je", "japanese.jis", 8),
    ("JIS", "SJIS", "ISO-2022-JP", "SJIS", "-Js", "japanese.jis", 8),
    ("EUC", "JIS", "EUC-JP", "ISO-2022-JP", "-Ej", "japanese.jis", 8),
    ("SJIS", "JIS", "SJIS", "ISO-2022-JP", "-Sj", "japanese.jis", 8),
    ("BIG5", "EUC_H", "BIG5", "EUC-TW", None, "chinese.big5", 6),
    ("EUC_H", "BIG5", "EUC-TW", "BIG5", None, "chinese.big5", 6),
    ("8859_5", "1251", "ISO-8859-5", "CP1251", None, "russian.8859-5", 8),
    ("1251", "8859_5", "CP1251", "ISO-8859-5", None, "russian.8859-5", 8),
    ("8859_2", "1250", "ISO-8859-2", "CP1250", None, "polish.8859-2", 8),
    ("1250", "8859_2", "CP1250", "ISO-8859-2", None, "polish.8859-2", 8),
    ("SJIS", "UTF-8", "SJIS", "UTF-8", "-Sw", "japanese.jis", None),
    ("UTF-8", "EUC", "UTF-8", "EUC-JP", "-We", "japanese.jis", None),
    ("JIS", "UTF-8", "ISO-2022-JP", "UTF-8", "-Jw", "japanese.jis", None),
]
SAMPLES = {"japanese.jis": "ISO-2022-JP", "chinese.big5": "BIG5", "russian.8859-5": "ISO-8859-5",
           "polish.8859-2": "ISO-8859-2"}
PROGRAMS = ["zvconv", "iconv", "nkf", "recode", "uconv"]


def iconv(source, target, text):
    return subprocess.run(["iconv", "-f", source, "-t", target], input=text, capture_output=True,
                          check=True).stdout


def commands(zvconv, conversion):
    source, target, iconv_source, iconv_target, nkf, _, _ = conversion
    yield "zvconv", [zvconv, "-f", source, "-t", target]
    yield "iconv", ["iconv", "-f", iconv_source, "-t", iconv_target]
    if nkf:
        yield "nkf", ["nkf", nkf, "-x", "-m0"]
    yield "recode", ["recode", f"{iconv_source}..{iconv_target}"]
    yield "uconv", ["uconv", "-f", iconv_source, "-t", iconv_target]


def user_time(command, path):
    """Seconds of processor time of the program itself; None where it fails."""
    with open(path, "rb") as text:
        process = subprocess.Popen(command, stdin=text, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = status
    return usage.ru_utime if status == 0 else None


def measure(zvconv, conversion, sample, folder):
    source = iconv(SAMPLES[conversion[5]], conversion[2], sample)
    path, part = pathlib.Path(folder, "text"), pathlib.Path(folder, "part")
    path.write_bytes(source * (SIZE // len(source)))
    part.write_bytes(source * (SLOW_SIZE // len(source)))
    times = {}
    for i in range(ROUNDS):  # in turn, so that whatever else runs meets all of them
        for program, command in commands(zvconv, conversion):
            slow = program not in ("zvconv", "iconv")
            if slow and i >= SLOW_ROUNDS or not shutil.which(command[0]):
                continue
            text = part if slow else path
            for _ in range(RUNS.get(program, 1)):
                time = user_time(command, text)
                times.setdefault(program, []).append(time and time * SIZE / text.stat().st_size)
    return {program: statistics.mean(runs) for program, runs in times.items() if None not in runs}


def name(conversion):
    return f"{conversion[0]} to {conversion[1]}"


def factor(times):
    return times["iconv"] / times["zvconv"]


def missed(results):
    return [f"- {name(c)}: {factor(times):.1f} times iconv, {c[6]} wanted\n"
            for c, times in results if c[6] and factor(times) < c[6]]


def table(results):
    lines = ["| conversion | " + " | ".join(f"{p}, s" for p in PROGRAMS) + " | zvconv to iconv |",
             "| --- |" + " --: |" * (len(PROGRAMS) + 1)]
    for conversion, times in results:
        cells = [f"{times[p]:.3f}" if p in times else "" for p in PROGRAMS]
        lines.append(f"| {name(conversion)} | " + " | ".join(cells) + f" | {factor(times):.1f}x |")
    return "\n".join(lines) + "\n"


def version(*command):
    return subprocess.run(command, capture_output=True, text=True).stdout.splitlines()[0]


def page(results):
    wanted = [c for c, _ in results if c[6]]
    short = missed(results)
    return f"""# Performance of zvconv

The program and its peers, whole processes, each converting the same 100 MB of prose from standard
input to nowhere; nkf, recode and uconv a tenth of it, reckoned up. `script/bench` measures anew and
writes this page and the chart. The times are seconds of user time, means of runs
taken in turn: {RUNS["zvconv"] * ROUNDS} of zvconv, {ROUNDS} of iconv, {SLOW_ROUNDS} of the others. Where the library has no
converter, zvconv uses iconv's; UTF-8 to EUC goes by Shift-JIS, for which iconv is quicker.

- Programs: {version("iconv", "--version")}; {version("recode", "--version")};
  {" ".join(version("uconv", "--version").split()[:2])}; nkf
- Date: {datetime.date.today()}

At least 8 times as fast as iconv is wanted of Japanese encodings and code pages, 6 times of Big5 and
EUC-TW: {len(wanted) - len(short)} of {len(wanted)} are.

{"".join(short)}{chr(10) if short else ""}![How fast the programs are](programs.svg)

{table(results)}
An empty cell: the program does not serve the pair or refused the text.
"""


def chart(results):
    """Bars of throughput, zvconv's in colour; grey suits light and dark."""
    width, left, step = 860, 180, 11
    paces = [100 / time for _, times in results for time in times.values()]
    least, most = min(paces) / 1.5, max(paces)
    shapes, y = [], 30
    for conversion, times in results:
        shapes.append(f"<text x='0' y='{y + 10}' font-weight='bold'>{escape(name(conversion))}</text>")
        for program in (p for p in PROGRAMS if p in times):
            pace = 100 / times[program]
            length = (width - left - 70) * math.log(pace / least) / math.log(most / least)
            colour = "#3d85c6" if program == "zvconv" else "#80808090"
            shapes.append(f"<text x='{left - 6}' y='{y + 9}' text-anchor='end'>{program}</text>"
                          f"<rect x='{left}' y='{y + 1}' width='{length:.1f}' height='{step - 2}' "
                          f"fill='{colour}'/><text x='{left + length + 5:.1f}' y='{y + 9}'>"
                          f"{pace:.0f}</text>")
            y += step
        y += 8
    return "\n".join([f"<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 {width} {y}' "
                      "font-family='sans-serif' font-size='10' fill='#808080'>",
                      "<title>How fast the programs are</title>",
                      "<text x='0' y='14' font-size='12'>MB in a second of user time, whole "
                      "processes; a logarithmic scale.</text>", *shapes, "</svg>\n"])


def main():
    zvconv, texts, folder = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    results = []
    with tempfile.TemporaryDirectory() as scratch:
        for conversion in CONVERSIONS:
            sample = (texts / f"{conversion[5]}.txt").read_bytes()
            results.append((conversion, measure(zvconv, conversion, sample, scratch)))
    (folder / "programs.md").write_text(page(results))
    (folder / "programs.svg").write_text(chart(results))
    print("".join(missed(results)) or "zvconv is as many times as fast as iconv as is wanted.\n",
          end="")


if __name__ == "__main__":
    main()
