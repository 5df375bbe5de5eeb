"""Reads mail headers on standard input and prints each subject as a mail program shows it."""
import email.header
import email.parser
import sys

headers = sys.stdin.buffer.read().decode("latin-1")
# Every subject is a message of its own; continuation lines begin with white space.
for message in headers.split("Subject: ")[1:]:
    subject = email.parser.HeaderParser().parsestr("Subject: " + message)["Subject"]
    print(email.header.make_header(email.header.decode_header(subject)))
