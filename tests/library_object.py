"""Checks the built shared object: what it exports, what it needs, what it holds where.

NM, READELF, OBJDUMP and STRIP in the environment are the tools of its machine.

usage: library_object.py LIBRARY VERSION_SCRIPT SOURCE_FOLDER BUILD_TYPE COMPILER
"""
import os
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


def output(tool, *arguments):
    command = os.environ.get(tool.upper(), tool), *arguments
    return subprocess.run(command, capture_output=True, check=True, text=True).stdout


wanted = set(re.findall(r"^\s+(\w+);$", pathlib.Path(version_script).read_text(), re.M))
state = {"MBUTIL_Initialized", "MBUTIL_I_Am_MultiByte", "MBUTIL_I_Am_Japanese",
         "serverNameFromConfig", "pellorAlarmIsSet"}
symbols = re.findall(r" (\w) (\w+)(?:@\S+)?$", output("nm", "--dynamic", library), re.M)
imported = {name for kind, name in symbols if kind in "Uw"}
exported = {name for kind, name in symbols if kind not in "UwA"}
functions = {name for kind, name in symbols if kind in "TW"}
check(exported == wanted, f"exported and listed names differ: {exported ^ wanted}")

dynamic = output("readelf", "--dynamic", library)
needed = re.findall(r"NEEDED.*\[(.*)\]", dynamic)
# Some machines keep the value that guards return addresses in the loader.
check(needed[0] == "libc.so.6" and all(name.startswith("ld") for name in needed[1:]),
      f"needs {needed}")

segments = dict(re.findall(r"^  (GNU_\w+) .*?(R?W?E?) +0x\w+$",
                           output("readelf", "--wide", "--segments", library), re.M))
check(segments.get("GNU_STACK") == "RW", "the stack may hold code")
check("GNU_RELRO" in segments and re.search(r"FLAGS.* NOW|BIND_NOW", dynamic),
      "relocations stay writable")
check("__stack_chk_fail" in imported, "no return address is checked")
check(build_type == "Debug" or any(name.endswith("_chk") for name in imported),
      "no call of the C library is checked")
# Formats come from hosts and their catalogues, where the checked forms would end the process.
formatting = {name for name in imported if "printf" in name or "syslog" in name}
check(formatting == {"vsnprintf", "syslog"}, f"formats are handed to {formatting}")

# The one entry is the compiler's own frame registration.
header = output("readelf", "--file-header", library)
entry = 8 if "ELF64" in header else 4
initialisers = re.search(r" \.init_array +INIT_ARRAY +\w+ +\w+ (\w+)",
                         output("readelf", "--wide", "--sections", library))[1]
check(int(initialisers, 16) <= entry, f"{int(initialisers, 16) // entry - 1} static initialisers")

if "X86-64" in header:
    code = output("objdump", "--disassemble", "--no-show-raw-insn", library)
    marked = set(re.findall(r"<(\w+)(?:@@\w+)?>:\n\s+\w+:\s+endbr64", code))
    check(functions <= marked, f"no jump may end at {sorted(functions - marked)[:5]}")
    check("SHSTK" in output("readelf", "--notes", library), "no shadow stack is asked for")
    frames = [int(size, 0) for size in re.findall(r"subq?\s+\$(0x\w{1,8}|\d+), ?%rsp", code)]
    check(max(frames) <= 4096, f"a frame of {max(frames)} bytes may step over the end of the stack")
# Its own functions are not to be replaced by a host's.
bound_later = set(re.findall(r" (\w+)(?:@\S+)? \+ 0$",
                             output("readelf", "--wide", "--relocs", library), re.M))
check(not bound_later & functions, f"a host may replace {sorted(bound_later & functions)[:5]}")

writable = {name for kind, name in symbols if kind in "BDV"}
check(writable == state, f"what can be written differs: {writable ^ state}")

# As it is shipped, but where blocks may be taken apart for want of vectors.
if build_type == "Release" and compiler == "GNU" and re.search("X86-64|AArch64", header):
    with tempfile.NamedTemporaryFile() as stripped:
        output("strip", "-o", stripped.name, library)
        size = pathlib.Path(stripped.name).stat().st_size
        check(size <= 288 * 1024, f"{size} bytes stripped")


def words(folder, files):
    paths = (pathlib.Path(sources) / folder).rglob(files)
    return set(re.findall(r"\w+", "".join(path.read_text() for path in paths)))


fuzzed = words("fuzz", "*.[ch]*")
untested = wanted - fuzzed - words("tests", "*.[ch]*")
check(not untested, f"no test names {untested}")
unlisted = wanted - fuzzed - words("fuzz", "not_fuzzed.txt")
check(not unlisted, f"neither a target nor the list of what is not fuzzed names {unlisted}")

print("\n".join(failures) or "The shared object is as it should be.")
sys.exit(bool(failures))
