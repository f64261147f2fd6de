# SPDX-License-Identifier: MIT
"""Grey 8-bit PNG files for the tool tests, written without any imaging
library: rows are lists of grey values, one per pixel."""
import struct
import zlib

SIGNATURE = b"\x89PNG\r\n\x1a\n"


def chunk(kind, body):
    return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))


def header(w, h):
    return chunk(b"IHDR", struct.pack(">IIBBBBB", w, h, 8, 0, 0, 0, 0))


def write(path, rows):
    """rows: h rows of w grey values (0..255, rounded to the nearest)."""
    data = b"".join(b"\0" + bytes(int(v + 0.5) for v in row) for row in rows)
    png = SIGNATURE + header(len(rows[0]), len(rows))
    png += chunk(b"IDAT", zlib.compress(data)) + chunk(b"IEND", b"")
    open(path, "wb").write(png)


def write_header_only(path, w, h):
    """A PNG whose header claims w x h pixels; no pixel data follows."""
    open(path, "wb").write(SIGNATURE + header(w, h))
