#!/usr/bin/env python3
"""Writes the charts of the code pages into Src/Utils/Unicode/Charts, from Python's codecs.

The written files are checked in, so that a build needs no Python. Only what cannot be derived is written:
the upper halves of the single-byte charsets, the pairs of code page 936, and the 32 places in which code
page 1252 differs from Latin-1. The compiler derives the way back.

    Tools/generate_charsets.py [--check]     --check writes nothing and fails if a file differs
"""

import pathlib
import sys

FOLDER = pathlib.Path(__file__).resolve().parent.parent / "Src" / "Utils" / "Unicode" / "Charts"
SINGLE_BYTE = ["cp1250", "cp1251", "cp862", "cp874"]
SINGLE_BYTE += [f"iso8859_{part}" for part in (1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 13, 14, 15, 16)]
HEADING = "// Written by Tools/generate_charsets.py; do not edit.\n"


def decoded(charset, *data):
    """The code point of one character, or 0 if the bytes are unassigned or more than one character."""
    try:
        text = bytes(data).decode(charset)
    except UnicodeDecodeError:
        return 0
    return ord(text) if len(text) == 1 else 0


def check_reversible(charset, values):
    assigned = [value for value in values if value]
    if len(assigned) != len(set(assigned)) or max(assigned) > 0xFFFF:
        sys.exit(f"{charset}: the way back is ambiguous or leaves the Basic Multilingual Plane")


def rows(values):
    lines = [", ".join(f"0x{value:04x}" for value in values[at:at + 16]) for at in range(0, len(values), 16)]
    return ",\n    ".join(lines)


def single_byte():
    text = HEADING + "// The bytes 0x80 to 0xff of each charset; 0 is unassigned. The lower half is ASCII.\n"
    for charset in SINGLE_BYTE:
        values = [decoded(charset, byte) for byte in range(256)]
        check_reversible(charset, values)
        if values[:128] != list(range(128)):
            sys.exit(f"{charset}: the lower half is not ASCII")
        text += f"\nFUNDO_CHARSET({charset},\n    {rows(values[128:])})\n"
    return text


def code_page_936():
    text = HEADING + "// A row for each lead byte from 0x81, a character for each second byte from 0x40 to 0xfe.\n"
    chart = [[decoded("cp936", lead, second) for second in range(256)] for lead in range(0x81, 0xFF)]
    check_reversible("cp936", [value for row in chart for value in row])
    for row in chart:
        if any(row[:0x40]) or row[0xFF]:
            sys.exit("cp936: a second byte outside 0x40 to 0xfe")
        text += 'u"' + "".join(chr(value) if value else "\\0" for value in row[0x40:0xFF]) + '",\n'
    return text


def code_page_1252():
    # The five undefined bytes stand for themselves.
    values = [decoded("cp1252", byte) or byte for byte in range(256)]
    check_reversible("cp1252", values)
    if any(values[byte] != byte for byte in range(256) if not 0x80 <= byte < 0xA0):
        sys.exit("cp1252: differs from Latin-1 outside 0x80 to 0x9f")
    return HEADING + "// The bytes 0x80 to 0x9f.\n" + rows(values[0x80:0xA0]) + "\n"


def main():
    files = {"SingleByte.inc": single_byte(), "CodePage936.inc": code_page_936(),
             "CodePage1252.inc": code_page_1252()}
    if "--check" not in sys.argv[1:]:
        for name, text in files.items():
            (FOLDER / name).write_bytes(text.encode())
        return
    stale = [name for name, text in files.items() if (FOLDER / name).read_bytes() != text.encode()]
    if stale:
        sys.exit(f"differ from what the generator writes: {', '.join(stale)}")


main()
