"""Reads mail headers on standard input and prints each subject as a mail program shows it."""
import email.header
import email.parser
import sys

headers = sys.stdin.buffer.read().decode("latin-1")
# Every subject is a message of its own; continuation lines begin with white space.
for message in headers.split("Subject: ")[1:]:
    subject = email.parser.HeaderParser().parsestr("Subject: " + message)["Subject"]
    parts = email.header.decode_header(subject)
    print("".join(p if isinstance(p, str) else p.decode(charset or "ascii") for p, charset in parts))
