#!/usr/bin/env python3
"""Writes the seed inputs of the YUV4MPEG2 and PNG fuzz targets (run from anywhere; the
files are committed, so this only needs running again to change them)."""
import os
import struct
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))


def write(target, name, data):
    os.makedirs(os.path.join(HERE, target), exist_ok=True)
    with open(os.path.join(HERE, target, name), "wb") as f:
        f.write(data)


# ---- YUV4MPEG2 -------------------------------------------------------------------------------

def planes(width, height, chroma, index):
    cw = (width + 1) // 2
    ch = (height + 1) // 2 if chroma == "420" else height
    y = bytes((16 + 7 * i + 13 * index) % 256 for i in range(width * height))
    u = bytes((40 + 5 * i + index) % 256 for i in range(cw * ch))
    v = bytes((200 - 3 * i - index) % 256 for i in range(cw * ch))
    return y + u + v


def y4m(width, height, chroma, tags, frames, frame_line=b"FRAME"):
    head = b"YUV4MPEG2 W%d H%d %s\n" % (width, height, tags)
    body = b"".join(frame_line + b"\n" + planes(width, height, chroma, i) for i in range(frames))
    return head + body


def y4m_seeds():
    t = "fuzz_y4m"
    write(t, "420-progressive-2-frames.y4m", y4m(4, 2, "420", b"F25:1 Ip A1:1 C420jpeg", 2))
    write(t, "422-top-field-first.y4m", y4m(6, 4, "422", b"F30000:1001 It C422", 1))
    write(t, "420-odd-size-bottom-first.y4m", y4m(3, 3, "420", b"Ib C420mpeg2 XYSCSS=420MPEG2", 1))
    write(t, "420-frame-parameters.y4m", y4m(2, 2, "420", b"Im C420paldv", 2, b"FRAME Ixyz"))
    write(t, "no-chroma-tag.y4m", y4m(5, 1, "420", b"", 1))
    # Broken ones: each must be refused with a reason.
    write(t, "truncated-frame.y4m", y4m(8, 4, "420", b"C420", 1)[:-5])
    write(t, "missing-frame-line.y4m", b"YUV4MPEG2 W2 H2 C420\n" + planes(2, 2, "420", 0))
    write(t, "header-only.y4m", b"YUV4MPEG2 W16 H16 C422\n")
    write(t, "444.y4m", b"YUV4MPEG2 W2 H2 C444\nFRAME\n" + bytes(12))
    write(t, "zero-width.y4m", b"YUV4MPEG2 W0 H2\nFRAME\n")
    write(t, "not-y4m.y4m", b"P5 2 2 255\n\x00\x01\x02\x03")


# ---- PNG -------------------------------------------------------------------------------------

def chunk(kind, data, crc=None):
    c = zlib.crc32(kind + data) if crc is None else crc
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", c & 0xFFFFFFFF)


def png(width, height, depth, color, rows, extra=b"", interlace=0):
    ihdr = struct.pack(">IIBBBBB", width, height, depth, color, 0, 0, interlace)
    raw = b"".join(b"\x00" + r for r in rows)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", ihdr) + extra + chunk(b"IDAT", zlib.compress(raw)) +
            chunk(b"IEND", b""))


def adam7_rows(pixels, width, height):
    """Filter-free Adam7 pass rows of 8-bit RGB pixels (pixels[y][x] = bytes of 3)."""
    passes = [(0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2), (0, 1, 1, 2)]
    rows = []
    for x0, y0, dx, dy in passes:
        xs = range(x0, width, dx)
        if not xs:
            continue
        for y in range(y0, height, dy):
            rows.append(b"".join(pixels[y][x] for x in xs))
    return rows


def png_seeds():
    t = "fuzz_png"
    write(t, "gray8-2x2.png", png(2, 2, 8, 0, [b"\x00\x80", b"\xff\x40"]))
    write(t, "rgb8-3x2.png", png(3, 2, 8, 2, [bytes(range(9)), bytes(range(100, 109))]))
    write(t, "rgba8-2x2.png", png(2, 2, 8, 6, [bytes(range(8)), bytes(range(8, 16))]))
    plte = chunk(b"PLTE", bytes([255, 0, 0, 0, 255, 0, 0, 0, 255, 9, 9, 9])) + chunk(b"tRNS", b"\x00\x80")
    write(t, "palette2-5x1-trns.png", png(5, 1, 2, 3, [bytes([0b00011011, 0b01000000])], plte))
    write(t, "gray-alpha16-2x1.png", png(2, 1, 16, 4, [bytes([1, 2, 3, 4, 5, 6, 7, 8])]))
    write(t, "gray1-9x2-gamma.png", png(9, 2, 1, 0, [b"\xaa\x80", b"\x55\x00"], chunk(b"gAMA", struct.pack(">I", 45455))))
    pixels = [[bytes([x * 40, y * 40, (x + y) * 20]) for x in range(5)] for y in range(5)]
    write(t, "rgb8-5x5-interlaced.png", png(5, 5, 8, 2, adam7_rows(pixels, 5, 5), interlace=1))
    # Broken ones: each must be refused with a reason.
    good = png(2, 2, 8, 0, [b"\x00\x80", b"\xff\x40"])
    write(t, "truncated.png", good[:-20])
    bad_crc = bytearray(good)
    bad_crc[29] ^= 0xFF  # inside the IHDR CRC
    write(t, "bad-ihdr-crc.png", bytes(bad_crc))
    write(t, "short-idat.png", png(4, 4, 8, 2, [bytes(12)]))
    write(t, "zero-width.png", png(0, 1, 8, 0, [b""]))
    write(t, "signature-only.png", b"\x89PNG\r\n\x1a\n")


if __name__ == "__main__":
    y4m_seeds()
    png_seeds()
