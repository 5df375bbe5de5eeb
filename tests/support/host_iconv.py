"""Converts texts with this machine's iconv for a test that an emulator runs.

Each request is a line "FROM TO LENGTH" and the text; its answer is the length of the result on a line
and the result, or -1.
"""
import ctypes
import sys

libc = ctypes.CDLL(None)
libc.iconv_open.restype = ctypes.c_void_p
FAILED = ctypes.c_size_t(-1).value
libc.iconv.restype = ctypes.c_size_t


def converted(source, target, text):
    converter = libc.iconv_open(target, source)
    if converter == FAILED:
        return None
    converter = ctypes.c_void_p(converter)
    room = ctypes.create_string_buffer(len(text) * 8 + 16)
    into, left = ctypes.c_void_p(ctypes.addressof(room)), ctypes.c_size_t(len(room))
    ends = ctypes.byref(into), ctypes.byref(left)
    done = libc.iconv(converter, ctypes.byref(ctypes.c_char_p(text)),
                      ctypes.byref(ctypes.c_size_t(len(text))), *ends)
    done = max(done, libc.iconv(converter, None, None, *ends))
    libc.iconv_close(converter)
    return None if done == FAILED else room.raw[:len(room) - left.value]


for request in sys.stdin.buffer:
    source, target, length = request.split()
    answer = converted(source, target, sys.stdin.buffer.read(int(length)))
    sys.stdout.buffer.write(b"-1\n" if answer is None else b"%d\n%s" % (len(answer), answer))
    sys.stdout.buffer.flush()
