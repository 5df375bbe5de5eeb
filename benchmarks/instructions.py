#!/usr/bin/env python3
"""Writes what the converters and iconv cost in instructions on another processor into performance.md.

usage: instructions.py PROCESSOR PERFORMANCE.md COMMAND...      the emulator and instruction_counts
"""
import pathlib
import subprocess
import sys
import textwrap

from report import COUNTS_TITLE, table

REMARK = ("`script/bench --target {}` counts instructions per byte of text in an emulator, where the "
          "speed of a real machine cannot be told. A text is a sample of `examples/texts` sixteen "
          "times over, converted once.")


def counts(command):
    """The instructions between the calls of getppid(): the library's and iconv's, for each text."""
    run = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    counted, count = [], 0
    for line in run.stderr:
        if line.startswith(b"Trace "):
            count += 1
        elif b" getppid(" in line:
            counted.append(count)
            count = 0
    texts = [line.split() for line in run.stdout.read().decode().splitlines()]
    if run.wait() != 0 or len(counted) != 3 * len(texts) or not texts:
        sys.exit(f"{command[-2]} failed")
    return zip(texts, counted[1::3], counted[2::3])


def main():
    processor, page, command = sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3:]
    lines = [[f"`{function}`", source, target, f"{own / int(size):.2f}", f"{peer / int(size):.1f}",
              f"{peer / own:.1f}x"]
             for (function, source, target, size), own, peer in counts(command)]
    header = ["operation", "from", "to", "zvutil", "iconv", "iconv to zvutil"]
    text = page.read_text().partition(f"\n{COUNTS_TITLE}")[0]
    page.write_text(f"{text}\n{COUNTS_TITLE}{processor}\n\n"
                    f"{textwrap.fill(REMARK.format(processor), 100)}\n\n{table(header, lines)}")


if __name__ == "__main__":
    main()
