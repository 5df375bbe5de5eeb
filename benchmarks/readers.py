#!/usr/bin/env python3
"""Measures which programs read the library's mail subjects, and writes the tables of the guide.

usage: readers.py LIBRARY SOURCE_FOLDER
"""
import collections
import ctypes
import ctypes.util
import email
import email.header
import email.policy
import itertools
import pathlib
import platform
import re
import subprocess
import sys
import tempfile

# Subjects are made of a beginning, a topic and an ending, each with each; "|" stands between them.
JAPANESE = ("会議|打ち合わせ|新製品|見積書|請求書|出張|社員旅行|夏季休業|定期点検|研修|契約書|展示会|アンケート|図書館|電車の遅れ|引っ越し",
            "のお知らせ|について|の件|の日程を変更しました|へのご参加をお願いします|は来週の月曜日に行います|をお送りします|"
            "の確認をお願いいたします|についてのご質問への回答|、本日中にご返事ください")
TEXTS = {  # the code set of the host, Python's name of it, a sample text and its encoding; the three parts
    "Japanese without ASCII": ("EUC", "euc_jp", None, "", *JAPANESE),
    "Japanese with ASCII": (
        "EUC", "euc_jp", ("japanese.euc.txt", "euc_jp"), "Re: |Fwd: |[team 12] |", JAPANESE[0],
        "のお知らせ (PDF)|の version 2.0 について|、10 月 5 日の件|の URL をお送りします|は 9:30 からです|の No. 17|について"),
    "Polish": (
        "1250", "cp1250", ("polish.8859-2.txt", "iso8859-2"), "Re: |Odp.: |",
        "Zebranie zarządu|Faktura za październik|Nowa umowa|Wycieczka do Łodzi|Święta|Zamówienie nr 17/2|"
        "Szkolenie|Raport miesięczny|Przegląd kotłowni|Książka",
        " – zmiana terminu|: proszę o odpowiedź| jest w załączniku| w przyszły wtorek o 9:30|? Kto może przyjść?|"
        " dla wszystkich pracowników działu sprzedaży|| (plik umowa_2.pdf)| odwołane| i plan na przyszły rok|"
        " (pilne!)|, część 3"),
    "Russian": (
        "1251", "cp1251", ("russian.8859-5.txt", "iso8859-5"), "Re: |Отв.: |",
        "Собрание отдела|Счёт за октябрь|Новый договор|Поездка в Самару|Праздники|Заказ № 17/2|Обучение|"
        "Отчёт за месяц|Осмотр котельной|Книга",
        " — перенос срока|: прошу ответить| во вложении| в следующий вторник в 9:30|? Кто придёт?|"
        " для всех сотрудников отдела продаж|| (файл договор_2.pdf)| не состоится| и план на будущий год|"
        " (срочно!)|, часть 3"),
    "Chinese in Big5": (
        "BIG5", "big5", ("chinese.big5.txt", "big5"), "Re: |轉寄：|",
        "會議|發票|新合約|旅行|訂單|訓練|月報|檢查|圖書館|搬家",
        "通知|改期|請回覆|在附件中|下星期二上午九點半|有誰能來？|（給全體同仁）| No. 17"),
    "Chinese in EUC": (
        "EUC_C", "gb2312", None, "Re: |转发：|",
        "会议|发票|新合同|旅行|订单|培训|月报|检查|图书馆|搬家",
        "通知|改期|请回复|在附件中|下星期二上午九点半|有谁能来？|（给全体同事）| No. 17"),
    "Korean in EUC": (
        "EUC_K", "euc_kr", None, "Re: |전달: |", "회의|청구서|새 계약서|여행|주문|교육|월간 보고|점검|도서관|이사",
        " 알림| 일정 변경|에 답장 바랍니다|를 첨부합니다|는 다음 화요일 9시 30분입니다|에 누가 옵니까?| (전 직원)| No. 17"),
}


def by_header(line):
    return str(email.header.make_header(email.header.decode_header(line.decode("latin-1"))))


def by_policy(line):
    message = email.message_from_bytes(b"Subject: " + line + b"\n\n", policy=email.policy.default)
    return str(message["Subject"])


GMIME = ctypes.CDLL(ctypes.util.find_library("gmime-3.0"))


def gmime():
    GMIME.g_mime_init()
    unfold, decode = GMIME.g_mime_utils_header_unfold, GMIME.g_mime_utils_header_decode_text
    unfold.restype = decode.restype = ctypes.c_void_p
    unfold.argtypes, decode.argtypes = [ctypes.c_char_p], [ctypes.c_void_p, ctypes.c_void_p]
    return lambda line: ctypes.string_at(decode(None, unfold(line))).decode("utf-8", "replace")


READERS = {"Python's `email.header`": by_header, "Python's `email.policy`": by_policy,
           "GMime": gmime()}


def subjects(texts, codec, sample, parts):
    lines = (texts / sample[0]).read_text(sample[1]).splitlines() if sample else []
    made = ("".join(choice) for choice in itertools.product(*(part.split("|") for part in parts)))
    # What the host's code set lacks is none of its subjects.
    return [line for line in (*lines, *made)
            if line and line.encode(codec, "ignore").decode(codec) == line]


def by_library(library, code_set, encoded):
    """The subjects as convertSubjectForMail() writes them."""
    number = library.mbGetCodeSet(code_set.encode())
    library.InitMbutilExt(number)
    lines = []
    for subject in encoded:
        out = ctypes.create_string_buffer(64 * len(subject) + 64)
        library.convertSubjectForMail(out, subject, library.mbGetCodeSetForMail(number), number)
        lines.append(out.value)
    return lines


def by_words(program, code_set, codec, encoded):
    """The subjects as the guide's program writes them."""
    command = [program, code_set] + ([] if code_set == "EUC" else [codec.replace("_", "-")])
    done = subprocess.run(command, input=b"".join(line + b"\n" for line in encoded),
                          stdout=subprocess.PIPE, check=True)
    return done.stdout.rstrip(b"\n").removeprefix(b"Subject: ").split(b"\nSubject: ")


def attempt(reader, line):
    try:
        return reader(line)
    except (LookupError, ValueError, email.errors.HeaderParseError):
        return ""


def loss(subject, line, read):
    """Why a reader does not give the subject."""
    charset = re.search(rb"=\?([^?]*)\?", line)[1].decode()
    if charset in ("iso-2022-cn", "iso-8859-1"):
        return "The charset name is not that of the text, or readers do not know it."
    if subject.encode(charset, "ignore").decode(charset) != subject:
        return ("Half-width katakana become full-width." if charset == "iso-2022-jp" else
                "Characters that ISO 8859 lacks travel as control codes.")
    if "_" in subject:
        return "`_` comes back as a space."
    if b"?=20" in line:
        return "`?` before a blank ends the word."
    if "".join(read.split()) == "".join(subject.split()):
        return "Blanks where pieces meet are lost or come in."
    return "What follows a padded word is dropped."


def share(count, total):
    return f"{100 * count // total} %" if count == 0 or 100 * count >= total else "below 1 %"


def table(header, rows):
    lines = [header, ["---"] + ["--:"] * (len(header) - 1), *rows]
    return "".join(f"| {' | '.join(map(str, line))} |\n" for line in lines)


def measure(library, words, texts):
    """The two tables: what is read exactly, and why the rest is not."""
    exact, losses, total = [], collections.defaultdict(collections.Counter), 0
    for name, (code_set, codec, sample, *parts) in TEXTS.items():
        wanted = subjects(texts, codec, sample, parts)
        encoded = [subject.encode(codec) for subject in wanted]
        total += len(wanted)
        row, of_words = [], []
        standard = by_words(words, code_set, codec, encoded)
        written = by_library(library, code_set, encoded)
        for name_of_reader, reader in READERS.items():
            read = [attempt(reader, line) for line in written]
            row.append(share(sum(map(str.__eq__, wanted, read)), len(wanted)))
            of_words.append(sum(attempt(reader, line) == subject
                                for subject, line in zip(wanted, standard)))
            for subject, line, text in zip(wanted, written, read):
                if subject != text:
                    losses[loss(subject, line, text)][name_of_reader] += 1
        exact.append([name, len(wanted), *row, share(min(of_words), len(wanted))])
    gmime_version = ".".join(str(ctypes.c_uint.in_dll(GMIME, f"gmime_{part}_version").value)
                             for part in ("major", "minor", "micro"))
    by_frequency = sorted(losses, key=lambda why: -losses[why].total())
    return {"exact": table(["text", "subjects", *READERS, "`words.c`"], exact)
            + f"\nThe readers are those of Python {platform.python_version()} and GMime {gmime_version}.\n",
            "losses": table(["loss", *READERS],
                            [[why, *(share(losses[why][reader], total) for reader in READERS)]
                             for why in by_frequency])}


def main():
    library, source = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    guide = source / "docs/writing-a-subject.md"
    text = guide.read_text("utf-8")
    with tempfile.TemporaryDirectory() as folder:
        program = pathlib.Path(folder, "words")
        code = re.search(r"^```c\n(/\* words\.c \*/\n.*?)^```", text, re.M | re.S)[1]
        program.with_suffix(".c").write_text(code, "utf-8")
        subprocess.run(["cc", f"-I{source}/common/include", program.with_suffix(".c"), library,
                        f"-Wl,-rpath,{library.parent}", "-o", program], check=True)
        tables = measure(ctypes.CDLL(str(library)), program, source / "examples/texts")
    for name, measured in tables.items():
        text = re.sub(rf"(?<=<!-- {name} -->\n).*?(?=<!-- end -->)", lambda _: measured, text, 1, re.S)
    guide.write_text(text, "utf-8")


main()
