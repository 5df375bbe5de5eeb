"""Converts the texts of documentation packages by zvconv and by iconv, and compares.

usage: real_texts.py ZVCONV

Differences are allowed only where the guide "Converting an archive" lists them.
"""
import email.header
import gzip
import pathlib
import subprocess
import sys

import gi
gi.require_version("GMime", "3.0")
from gi.repository import GMime

GMime.init()

ZVCONV = pathlib.Path(sys.argv[1]).resolve()
PACKAGES = {  # by the encodings that their texts are tried in: zvconv's and iconv's names
    ("manpages-ja", "manpages-ja-dev", "edict", "skkdic"):
        {"EUC": "EUC-JP", "SJIS": "SJIS", "JIS": "ISO-2022-JP"},
    ("debian-reference-zh-tw",): {"BIG5": "BIG5", "EUC_H": "EUC-TW"},
    ("manpages-ru",): {"8859_5": "ISO-8859-5", "1251": "CP1251"},
    ("manpages-pl", "manpages-pl-dev"): {"8859_2": "ISO-8859-2", "1250": "CP1250"},
}
UNICODE = ["UTF-8", "UTF-16", "UTF-16BE"]
failures = []


def check(good, what):
    if not good:
        failures.append(what)
        print("FAILED:", what)


def run(*command, text):
    return subprocess.run(command, input=text, capture_output=True)


def zvconv(source, target, text, *options):
    return run(ZVCONV, "-f", source, "-t", target, *options, text=text)


def iconv(source, target, text, *options):
    return run("iconv", *options, "-f", source, "-t", target, text=text).stdout


def texts(packages):
    """All text files, in UTF-8; dictionaries are in EUC."""
    listing = subprocess.run(["dpkg", "-L", *packages], capture_output=True, check=True, text=True)
    for name in listing.stdout.splitlines():
        path = pathlib.Path(name)
        if not path.is_file() or path.is_symlink():
            continue
        data = gzip.open(path).read() if path.suffix == ".gz" else path.read_bytes()
        if path.parts[3:4] == ("edict",) or path.name.startswith("SKK-JISYO"):
            yield data.decode("euc-jp", "ignore")
        elif "man" in path.parts or path.suffix in (".txt", ".html"):
            yield data.decode("utf-8", "ignore")


def common(text, names):
    """The characters that every encoding has; both programs get the same text."""
    data = text.encode()
    for name in names:
        data = iconv(name, "UTF-8", iconv("UTF-8", name, data, "-c"), "-c")
    # Half-width katakana are full-width in JIS, and what iconv reads as yen sign and overline in
    # Shift-JIS and JIS is ASCII to the library.
    return "".join(c for c in data.decode() if not "\uFF61" <= c <= "\uFF9F" and c not in "¥‾")


def alike(target, text):
    """What allowed differences leave."""
    if target == "JIS":  # the same text, whatever its escape sequences
        return text.replace(b"\x1b(J", b"\x1b(B").replace(b"\x1b(B\x1b(B", b"\x1b(B")
    if target == "EUC_H":  # two dashes
        return text.replace(b"\xA1\xB9", b"\xA1\xB7")
    return text.replace(b"\xA1\x58", b"\xA1\x56") if target == "BIG5" else text


def compare_all(encodings, text):
    utf8 = text.encode()
    for name, iconv_name in encodings.items():
        source = iconv("UTF-8", iconv_name, utf8)
        for target, iconv_target in (encodings | {unicode: unicode for unicode in UNICODE}).items():
            # From SJIS iconv has no backslash to write, and reads one as a yen sign.
            if target == name or (name, target) == ("SJIS", "JIS"):
                continue
            done = zvconv(name, target, source)
            expected = iconv(iconv_name, iconv_target, source)
            check(done.returncode == 0, f"{name} to {target}: {done.stderr.decode()[:300]}")
            check(alike(target, done.stdout) == alike(target, expected),
                  f"{name} to {target} differs from iconv")
            print(f"{name} to {target}: {len(source)} bytes,",
                  "the same" if done.stdout == expected else "the same but for what is listed")
        for unicode in UNICODE:
            there = zvconv(name, unicode, source).stdout
            back = zvconv(unicode, name, there).stdout
            check(alike(name, back) == alike(name, source), f"{name} through {unicode} and back")


def subjects(target, text):
    """Headers of real lines, read by other programs."""
    # Readers drop white space at the ends of a header, and control codes have no place in one.
    # Python knows fewer characters of Big5.
    lines = list(dict.fromkeys(line.strip() for line in text.splitlines()
                               if line.strip() and line.isprintable()))[::5]
    if target in ("BIG5", "EUC_H"):
        lines = [line for line in lines if line.encode("big5", "ignore").decode("big5") == line]
    headers = zvconv("UTF-8", target, "".join(line + "\n" for line in lines).encode(), "-s",
                     "--standard")
    check(headers.returncode == 0, f"subjects of {target}: {headers.stderr.decode()[:300]}")
    subjects = headers.stdout.decode("ascii").replace("\n ", " ").splitlines()
    check(len(subjects) == len(lines), f"subjects of {target}: {len(subjects)}, {len(lines)} lines")
    missed = {"Python": 0, "GMime": 0, "zvconv": 0}
    decoded = run(ZVCONV, "--decode-headers", "-t", "UTF-8", text=headers.stdout).stdout.decode()
    for line, subject, own in zip(lines, subjects, decoded.splitlines()):
        value = subject.removeprefix("Subject: ")
        missed["Python"] += str(email.header.make_header(email.header.decode_header(value))) != line
        missed["GMime"] += GMime.utils_header_decode_text(None, value) != line
        missed["zvconv"] += own.removeprefix("Subject: ") != line
    check(not any(missed.values()), f"subjects of {target} misread: {missed}")
    print(f"subjects of {target}: {len(lines)} lines, misread: {missed}")


for packages, encodings in PACKAGES.items():
    text = common("".join(texts(packages)), encodings.values())
    check(len(text) > 500000, f"little text in {packages}")
    compare_all(encodings, text)
    for target in [*encodings, "UTF-8"]:
        subjects(target, text[:3000000])
sys.exit(f"{len(failures)} checks failed" if failures else 0)
