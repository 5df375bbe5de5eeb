"""Runs the commands of a guide as its reader would and compares what they print.

usage: guides.py GUIDE SOURCE_FOLDER LIBRARY ZVCONV LOCALES

In the guide, a block of C that begins with a comment of a file's name is saved under that name;
each block of sh is run, and a block of text behind it is what it prints. The comments
<!-- setup: ... --> and <!-- not run: reason --> are for this test alone.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

guide, source, library, zvconv, locales = map(pathlib.Path, sys.argv[1:])
BLOCK = re.compile(r"<!-- setup: (?P<setup>.*?) -->|(?P<skip><!-- not run: .*? -->\n)?"
                   r"^```(?P<kind>\w*)\n(?P<text>.*?)^```$(?:\n\n```text\n(?P<output>.*?)^```$)?",
                   re.M | re.S)

with tempfile.TemporaryDirectory() as folder:
    scratch = pathlib.Path(folder)
    for entry in source.iterdir():
        if not entry.name.startswith((".", "build")):
            (scratch / entry.name).symlink_to(entry)
    (scratch / "zvutil.pc").write_text(
        "Name: zvutil\nDescription: the library in its build folder\nVersion: 1\n"
        f"Cflags: -I{source}/common/include\n"
        f"Libs: -L{library.parent} -lzvutil -Wl,-rpath,{library.parent}\n")
    environment = os.environ | {
        "PATH": f"{zvconv.parent}:{os.environ['PATH']}", "PKG_CONFIG_PATH": folder,
        "LOCPATH": str(locales), "LC_ALL": "C", "PYTHONIOENCODING": "utf-8",
        "CMAKE_BUILD_PARALLEL_LEVEL": "2"}

    def run(commands):
        done = subprocess.run(["sh", "-eu", "-c", commands], cwd=scratch, env=environment,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        print(f"$ {commands.rstrip()}\n{done.stdout.decode(errors='backslashreplace')}")
        if done.returncode != 0:
            sys.exit(f"{guide.name}: status {done.returncode}")
        return done.stdout.decode(errors="backslashreplace")

    ran = 0
    for block in BLOCK.finditer(guide.read_text("utf-8")):
        name = re.match(r"/\* (\w+\.c) \*/\n", block["text"] or "")
        if block["setup"]:
            run(block["setup"])
        elif block["kind"] == "c" and name:
            (scratch / name[1]).write_text(block["text"], "utf-8")
        elif block["kind"] == "sh" and not block["skip"]:
            ran += 1
            printed = run(block["text"])
            if block["output"] is not None and printed != block["output"]:
                sys.exit(f"{guide.name}: the guide shows\n{block['output']}")
    print(f"{ran} blocks of commands ran as shown.")
