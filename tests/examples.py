"""Runs an example and compares what it prints with what its first comment says.

usage: examples.py SOURCE PROGRAM...
"""
import pathlib
import re
import subprocess
import sys
import tempfile

source, *program = sys.argv[1:]
comment = re.search(r" \* Prints:\n(.*?) \*/", pathlib.Path(source).read_text("utf-8"), re.S)[1]
with tempfile.TemporaryDirectory() as folder:
    done = subprocess.run(program, cwd=folder, stdout=subprocess.PIPE, check=True, timeout=60)
printed = done.stdout.decode()
if printed != re.sub(r"^ \*   ", "", comment, flags=re.M):
    sys.exit(f"{source} prints\n{printed}")
