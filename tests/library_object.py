"""Checks the built shared object: what it exports, what it needs, what it holds where.

usage: library_object.py LIBRARY VERSION_SCRIPT SOURCE_FOLDER BUILD_TYPE COMPILER
"""
import pathlib
import re
import subprocess
import sys
import tempfile

library, version_script, sources, build_type, compiler = sys.argv[1:]
failures = []


def check(holds, message):
    if not holds:
        failures.append(message)


def lines(*command):
    return subprocess.run(command, capture_output=True, check=True, text=True).stdout.splitlines()


wanted = set(re.findall(r"^\s+(\w+);$", pathlib.Path(version_script).read_text(), re.M))
symbols = [line.split() for line in lines("readelf", "--wide", "--dyn-syms", library)]
imported = {s[7].split("@")[0] for s in symbols if len(s) > 7 and s[6] == "UND"}
symbols = [s for s in symbols if len(s) == 8 and s[4] in ("GLOBAL", "WEAK") and s[6].isdigit()]
exported = {s[7].split("@")[0] for s in symbols}
check(exported == wanted, f"exported and listed names differ: {exported ^ wanted}")

dynamic = "\n".join(lines("readelf", "--dynamic", library))
needed = re.findall(r"NEEDED.*\[(.*)\]", dynamic)
check(needed == ["libc.so.6"], f"needs {needed}")

segments = dict(re.findall(r"^  (GNU_\w+) .*?(R?W?E?) +0x\w+$",
                           "\n".join(lines("readelf", "--wide", "--segments", library)), re.M))
check(segments.get("GNU_STACK") == "RW", "the stack may hold code")
check("GNU_RELRO" in segments and re.search(r"FLAGS.* NOW|BIND_NOW", dynamic),
      "relocations stay writable")
check("__stack_chk_fail" in imported, "no return address is checked")
check(build_type == "Debug" or any(name.endswith("_chk") for name in imported),
      "no call of the C library is checked")

sections = {}
for line in lines("readelf", "--wide", "--section-headers", library):
    if match := re.match(r"\s*\[\s*(\d+)\] (\S+)\s+\S+\s+\w+\s+\w+\s+(\w+)", line):
        sections[match[1]] = (match[2], int(match[3], 16))
# The one entry is the compiler's own frame registration.
initialisers = dict(sections.values()).get(".init_array", 0)
check(initialisers <= 8, f"{initialisers // 8 - 1} static initialisers")

if "X86-64" in "".join(lines("readelf", "--file-header", library)):
    code = "\n".join(lines("objdump", "--disassemble", "--no-show-raw-insn", library))
    marked = set(re.findall(r"<(\w+)(?:@@\w+)?>:\n\s+\w+:\s+endbr64", code))
    functions = {s[7].split("@")[0] for s in symbols if s[3] == "FUNC"}
    check(functions <= marked, f"no jump may end at {sorted(functions - marked)[:5]}")

state = {"MBUTIL_Initialized", "MBUTIL_I_Am_MultiByte", "MBUTIL_I_Am_Japanese",
         "serverNameFromConfig", "pellorAlarmIsSet"}
for symbol in symbols:
    name, section = symbol[7].split("@")[0], sections[symbol[6]][0]
    if symbol[3] == "OBJECT" and name not in state:
        check(section in (".rodata", ".data.rel.ro"), f"{name} stands in {section}")

if build_type == "Release" and compiler == "GNU":  # as it is shipped
    with tempfile.NamedTemporaryFile() as stripped:
        lines("strip", "-o", stripped.name, library)
        size = pathlib.Path(stripped.name).stat().st_size
        check(size <= 250 * 1024, f"{size} bytes stripped")

tested = "".join(path.read_text() for folder in ("tests", "fuzz")
                 for path in (pathlib.Path(sources) / folder).rglob("*.[ch]*"))
for name in sorted(wanted):
    check(re.search(rf"\b{name}\b", tested), f"no test names {name}")

print("\n".join(failures) or "The shared object is as it should be.")
sys.exit(bool(failures))
