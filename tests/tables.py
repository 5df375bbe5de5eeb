"""Compares the tables of the guides with what the library answers.

usage: tables.py DOCS HEADER LIBRARY LOCALES
"""
import _ctypes
import ctypes
import os
import pathlib
import re
import sys
import tempfile

docs, header, library, locales = map(pathlib.Path, sys.argv[1:])
zvutil = ctypes.CDLL(str(library))
zvutil.mbGetMIMECharset.restype = ctypes.c_char_p
enumeration = header.read_text("utf-8").split("extern ")[1]
number = {name: int(value) for name, value in
          re.findall(r"^    (ZV_\w+) = (\d+),? ", enumeration, re.M)}
wrong = []


def rows(guide, first_cell):
    """The cells of the table whose rows begin so, without the marks of code."""
    lines = (docs / guide).read_text("utf-8").splitlines()
    return [[cell.strip().replace("`", "") for cell in line.strip("|").split("|")]
            for line in lines if re.match(r"\| " + first_cell, line)]


def check(row, column, actual):
    if row[column] != str(actual):
        wrong.append(f"{row[0]}: {row[column]!r} is shown, {str(actual)!r} is so")


def identifier(code_set):
    return next(name for name in number if number[name] == code_set)


def written(function, *arguments):
    out = ctypes.create_string_buffer(2000)
    function(*[out if argument is None else argument for argument in arguments])
    return out.value.decode("latin-1")


code_sets = rows("choosing-a-code-set.md", "`ZV_")
for row in code_sets:
    code_set = number[row[0]]
    mail = zvutil.mbGetCodeSetForMail(code_set)
    check(row, 1, code_set)
    for name in row[2].split(", "):
        if name != "-" and zvutil.mbGetCodeSet(name.encode()) != code_set:
            wrong.append(f"{row[0]} is not called {name}")
    check(row, 3, zvutil.mbmaxcharlenExt(code_set))
    check(row, 4, identifier(mail))
    check(row, 5, zvutil.mbGetMIMECharset(mail).decode())
    check(row, 6, written(zvutil.SetCharset, None, code_set) or "-")
if {row[0] for row in code_sets} != set(number):
    wrong.append("the identifiers of the table and the header differ")

prefixes = [(prefix, row) for row in rows("choosing-a-code-set.md", "(?:`[a-zU]|anything)")
            for prefix in row[0].split(", ")]
for prefix, row in prefixes:
    for name in (prefix, prefix.swapcase(), "/" + prefix):  # behind a slash it is no name's beginning
        check(row if name[0] != "/" else prefixes[-1][1], 3, written(zvutil.SetCodePage, name.encode(), None))
with tempfile.TemporaryDirectory() as folder:
    # By their names some are other locales than they are.
    names = {"jpn", "ja_JP.UTF-8", "RU", "ZH_TW", *(prefix for prefix, _ in prefixes if " " not in prefix)}
    for name in names | set(os.listdir(locales)):
        real = locales / {"zh.GBK": "zh_CN.GBK"}.get(name, name)
        (pathlib.Path(folder) / name).symlink_to(real if real.exists() else locales / "ja_JP.eucJP")
    os.environ["LOCPATH"] = folder
    for locale in (*sorted(os.listdir(folder)), "C.UTF-8"):
        row = next((r for prefix, r in prefixes if locale.lower().startswith(prefix.lower())),
                   prefixes[-1][1])
        os.environ["LC_ALL"] = locale
        zvutil.InitMbutil()
        check(row, 1, identifier(zvutil.InitMbutilExt(0)))
        check(row, 2, identifier(zvutil.mbGetLocaleCodeSet()))
        page = {"ZV_8859_2": "cp1250", "ZV_8859_4": "cp1257", "ZV_8859_5": "cp1251", "ZV_8859_7": "cp1253",
                "ZV_8859_9": "cp1254", "ZV_WESTERN": "cp1252"}.get(row[2], "xx")
        corrected = written(zvutil.mbGetCorrectedLocaleForUnix, b"xx@x", None)
        if corrected != f"xx.{page}@x":
            wrong.append(f"in {locale}, xx@x becomes {corrected} instead of {page}")

for row in rows("choosing-a-code-set.md", '"'):
    name = row[0].strip('"').encode()
    check(row, 2, identifier(zvutil.mbGetCodeSet(name)))
    check(row, 3, identifier(zvutil.mbGetMIMECodeSet(name)))

# Texts that grow most: characters of every kind, alone and alternating with ASCII.
worst = [bytes(text) * 40 for lead in (0x41, 0x82, 0x8E, 0x8F, 0xA4, 0xB1, 0xC9, 0xE0)
         for text in ([lead], [lead, 0xB1], [lead, 0xA1, 0x41], [0x41, lead], [lead, 0xA1, 0xA1])]
for row in rows("converting-text.md", "`ZV_"):
    source, target = number[row[0]], number[row[1]]
    check(row, 5, ["no", "yes"][zvutil.IsConversionSupport(source, target)])
    room = re.fullmatch(r"(\d*)n \+ (\d+)", row[3])
    for text in worst:
        out = written(getattr(zvutil, row[2]), text, None)
        most = int(room[1] or 1) * len(text) + int(room[2])
        exact = re.match(r"\w+", row[4])
        if (out != written(zvutil.convertStrExt, text, source, None, target) or len(out) >= most
                or exact and getattr(zvutil, exact[0])(text) != len(out)):
            wrong.append(f"{row[2]}: {text[:4].hex()} does not become what the table says")

_ctypes.dlclose(zvutil._handle)  # as a host that is done with it may
print("\n".join(wrong) or "The tables are as the library answers.")
sys.exit(bool(wrong))
