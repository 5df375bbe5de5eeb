"""Checks that the README's host is the example that was built, and that its output can be read.

usage: readme_host.py README EXAMPLE_SOURCE EXAMPLE_PROGRAM...
"""
import email.header
import pathlib
import re
import subprocess
import sys

readme, source, *program = sys.argv[1:]
shown = re.search(r"^```c\n(.*?)^```", pathlib.Path(readme).read_text(), re.M | re.S)[1]
assert shown == pathlib.Path(source).read_text(), "the README shows another host"
output = subprocess.run(program, capture_output=True, check=True).stdout
text, subject = output.decode("euc_jp").split("\nSubject: ")
decoded = str(email.header.make_header(email.header.decode_header(subject.strip())))
assert text == decoded == "\u6771\u4eac", output
print("The README's host works as shown.")
