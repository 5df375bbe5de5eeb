"""Writes a small corpus for every fuzz target: python3 fuzz/seeds.py TEXTS WORDS FOLDER WORDS_FOLDER

A target takes its choices from the first bytes and its texts behind them, each up to a zero byte.
The words of a dictionary of libFuzzer's become a file each.
"""

import ast
import pathlib
import random
import sys

texts = {path.name: path.read_bytes() for path in sorted(pathlib.Path(sys.argv[1]).iterdir())}
words = [line for line in pathlib.Path(sys.argv[2]).read_text().splitlines() if line.startswith('"')]
folder = pathlib.Path(sys.argv[3])
made_up = random.Random(1)

japanese = [texts[f"japanese.{form}.txt"] for form in ("sjis", "euc", "jis")]
shift_jis, euc, jis = japanese
chinese = [texts["chinese.big5.txt"], texts["chinese.euctw.txt"]]
single = [texts["russian.8859-5.txt"], texts["polish.8859-2.txt"]]
mixed = b"ab,AZ\n\a\x81\x82\xA0\xA1\xA2\x8E\x8F\xB0[\xE1\xFE\xFF\\~"
katakana = bytes(range(0xA1, 0xE0))
declaration = b'<?xml version="1.0" encoding="x" standalone="yes"?>  <r/>'
# The digit zero where the tables of digits have it.
zeros = [(0x82, 0x4F), *[(0xA3, 0xB0)] * 3, *[(0xA2, 0xAF)] * 2]

seeds = {
    "strings": [
        bytes([code_set, 4 + 6 * properties, 0, 30]) + text[:90] + b"\0" + part
        for code_set in range(11) for properties in range(5)
        for text, part in ((mixed * 3, mixed[:3]), (chinese[1], b"\xA4"), (shift_jis, b"\x83\x5C,"))
    ] + [bytes([code_set, 2, 1, 30]) + b"a" + b"\xA2" * 290 for code_set in (1, 2, 7)],
    "converters": [
        bytes([direction]) + text
        for direction, source in enumerate((shift_jis, euc, shift_jis, euc, jis, jis, *chinese))
        for text in (source, katakana, mixed, b"x" * 70 + source[:40],
                     b"\xC9\x4A\xDD\xFC\xA3\xE1\xF9\xFE\xA1\x30", b"\x8E\xA1\xA1\xA1")
    ] + [bytes([pair]) + text for pair in range(8, 12) for text in (*single, bytes(range(1, 256)))],
    "detection": [*japanese, b"\xB0\xE0\xE1\xFEz", b"\xB0\xE0\xE1 z\xF1", b"\x8E\xB1z", b"\x1B$(x"],
    "mail": [
        bytes([code_set, mail, room, 11]) + text
        for code_set, mail, text in (
            (0, 0, euc), (1, 0, shift_jis), (2, 3, chinese[0]), (4, 1, single[1]), (5, 2, single[0]),
            (0, 0, jis), (6, 1, b"caf=E9=\n=3D=4G soft=\r\nbreaks "))
        for room in (20, 200)
    ],
    "text_streams": [
        bytes([pair, room, choice]) + text
        for pair, text in enumerate(
            (shift_jis, euc, jis, jis, *chinese, shift_jis, euc, euc, single[0]))
        for choice, room in enumerate((7, 70, 7, 70, 7, 70, 7, 70))
    ] + [bytes([pair, 70, 4]) + most * 330 for pair, most in ((2, b"\xB0\xA1a"), (3, b"\xB1a\xB1"))],
    "xml": [
        bytes([current, code_set]) + text + b"\0 \x83\x65>"
        for current, code_set in ((5, 1), (2, 4), (1, 14))
        for text in (declaration, b"<!-- -->" * 4 + declaration, b"\x83\x65 " + declaration)
    ],
    "currency": [
        bytes([code_set, 3, 4]) + text
        for code_set in (0, 1)
        for text in (b"2\\USD\\2\\JPY\\0\\", b"1\\\x83\\\\\\-2147483648\\more", b"3\\A\\1\\", b"0\\",
                     b"4294967297\\A\\1\\", b"99999999999999999999\\A\\1\\",
                     b"1\\A\\2147483648\\")
    ] + [bytes([0, position, 4]) + b"1\\USD\\2\\" for position in range(248, 256)]
      + [b"\0\3\4%d\\" % count + b"\\7\\" * 290 for count in (256, 257, 290, 291)],
    "list": [bytes([capacity]) + made_up.randbytes(400) for capacity in (*range(8), *range(250, 256))],
    "streams": [bytes([mode, limit]) + made_up.randbytes(300) for mode in range(12) for limit in (0, 1)],
    "names": [
        bytes([table]) + locale + b"\0" + b"".join(
            bytes([row, first + i]) for row, first in (zero, (0xA1, 0xA1), (0xA1, 0x40)) for i in range(16))
        for table, zero in enumerate(zeros)
        for locale in (b"de_DE.ISO8859-15@euro", b"zh_TW.BIG5", b"ja@x")
    ] + [
        b"\0\0\0" + b"\0".join(hosts) for hosts in (
            (b"alpha.beta.gamma", b"ALPHA.beta.gamma", b"srv", b"listed", b"\2SRV.beta.gamma"),
            (b"alpha.beta.gamma", b"delta.x", b"", b"\x83\x41\x83\x61", b"\2\x83\x61\x83\x41"),
            (b"alpha.beta.gamma", b"delta.x", b"srv", b"$", b"\2alpha"),
            (b"a" * 53 + b".xyz", b"m" * 63 + b"\x83\x41", b"s" * 60, b"@", b"\1"),
            (b"a" * 53 + b".xyz", b"other", b"s" * 61, b"", b"\2" + b"s" * 61),
            (b"solo", b"SOLO", b"t" * 64, b"x", b"\1"))
    ],
    "configuration": [
        bytes([length, more]) + text
        for length, more in ((0, 0), (230, 7), (242, 1), (250, 6))
        for text in (
            b"Key:\0Key: \t value \t\r\nServer-directory: \t /db/dir  \r\nKey:\n\nKey:",
            b"Key: \0Key: v \nKey:v\nKey: \n", b"Key: \0Key: last  ",
            b"K\0" + b"v" * 283 + b"K piece\nK" + b"w" * 300 + b"\nServer-directory:/a\0b\n",
            b"x\0" + b"x" * 352 + b"\nx\n", b"th\0th\0ree\n\nth",
            b"K\0Server-directory:/" + b"d" * 254 + b"\n")
    ],
}


def write(folder, inputs):
    folder.mkdir(parents=True, exist_ok=True)
    for number, data in enumerate(inputs):
        (folder / f"{number:03}").write_bytes(data)


for target, inputs in seeds.items():
    write(folder / target, inputs)
write(pathlib.Path(sys.argv[4]), [ast.literal_eval(f"b{word}") for word in words])
