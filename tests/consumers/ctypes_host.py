#!/usr/bin/env python3
"""The README's host in Python, which finds the library and its functions at run time."""
import _ctypes
import ctypes
import sys

ZV_JIS, ZV_EUC = 3, 4
library = ctypes.CDLL("libzvutil.so.1")
euc = ctypes.create_string_buffer(32)
subject = ctypes.create_string_buffer(256)

library.InitMbutilExt(ZV_EUC)
library.shift2eucx(b"\x93\x8c\x8b\x9e", euc)
library.convertSubjectForMail(subject, euc, ZV_JIS, ZV_EUC)
sys.stdout.buffer.write(euc.value + b"\nSubject: " + subject.value + b"\n")
_ctypes.dlclose(library._handle)
