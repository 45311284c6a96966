#!/usr/bin/env python3
"""Small font files, made by hand:  fonts.py FOLDER writes all of FONTS there.

Glyph 1 of each is a box of half an em, 0.6 ems wide, called "secret" where glyphs have names and found by the code or the
number in the collection 65. BOMBS are good ones, too, but for their last glyph, which calls parts of parts without end.
"""
import pathlib
import struct
import sys


def table_checksum(data):
    return sum(struct.unpack(f">{len(data) // 4}I", data)) & 0xFFFFFFFF


def sfnt(tables):
    at, rows, body = 12 + 16 * len(tables), b"", b""
    for tag, data in sorted(tables.items()):
        padded = data + bytes(-len(data) % 4)
        rows += struct.pack(">4s3I", tag.encode(), table_checksum(padded), at + len(body), len(data))
        body += padded
    return struct.pack(">IHHHH", 0x00010000, len(tables), 16, 0, 0) + rows + body


def simple_glyph(points):
    xs, ys = [x for x, _ in points], [y for _, y in points]
    ends = struct.pack(">H", len(points) - 1) if points else b""
    deltas = [b - a for a, b in zip([0] + xs, xs)], [b - a for a, b in zip([0] + ys, ys)]
    return (struct.pack(">5h", 1 if points else 0, min(xs, default=0), min(ys, default=0), max(xs, default=0), max(ys, default=0))
            + ends + struct.pack(">H", 0) + b"\1" * len(points) + b"".join(struct.pack(">h", d) for row in deltas for d in row))


def composite_glyph(parts):
    data = struct.pack(">5h", -1, 0, 0, 0, 0)
    for number, part in enumerate(parts):
        data += struct.pack(">HHhh", 3 | (0x20 if number + 1 < len(parts) else 0), part, 0, 0)
    return data


BOX = [(100, 0), (600, 0), (600, 500), (100, 500)]


def truetype(glyphs=(simple_glyph([]), simple_glyph(BOX))):
    offsets, body = [0], b""
    for glyph in glyphs:
        body += glyph + bytes(-len(glyph) % 4)
        offsets.append(len(body))
    count = len(glyphs)
    cmap = struct.pack(">HHHHI", 0, 1, 3, 0, 12) + struct.pack(">14H", 4, 32, 0, 4, 4, 1, 0, 0xF041, 0xFFFF, 0, 0xF041, 0xFFFF,
                                                               (1 - 0xF041) & 0xFFFF, 1) + struct.pack(">2H", 0, 0)
    return sfnt({
        "head": struct.pack(">IIIIHHQQ4hHHhhh", 0x10000, 0x10000, 0, 0x5F0F3CF5, 0, 1000, 0, 0, 0, 0, 1000, 1000, 0, 8, 2, 1, 0),
        "hhea": struct.pack(">I3hH11hH", 0x10000, 800, -200, 0, 600, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 1),
        "maxp": struct.pack(">I14H", 0x10000, count, 4, 1, 4, 1, 1, 0, 0, 0, 0, 0, 0, 2, 1),
        "hmtx": struct.pack(">Hh", 600, 100) + bytes(2 * (count - 1)),
        "loca": struct.pack(f">{count + 1}I", *offsets),
        "glyf": body,
        "cmap": cmap,
    })


def encrypted(data, key):
    out = bytearray()
    for byte in bytes(4) + data:
        out.append(byte ^ key >> 8)
        key = ((out[-1] + key) * 52845 + 22719) & 0xFFFF
    return bytes(out)


def long_number(value):
    return b"\xff" + struct.pack(">i", value)


TYPE1_BOX = (long_number(0) + long_number(600) + b"\x0d" + long_number(100) + long_number(0) + b"\x15" + long_number(500) + b"\x06"
             + long_number(500) + b"\x07" + long_number(-500) + b"\x06\x09\x0e")


def type1(last=None, subrs=()):
    def coded(program):
        data = encrypted(program, 4330)
        return b"%d RD " % len(data) + data

    glyphs = [(b".notdef", long_number(0) + long_number(600) + b"\x0d\x0e"), (b"secret", TYPE1_BOX)]
    if last:
        glyphs.append((b"last", last))
    private = (b"dup /Private 8 dict dup begin /RD {string currentfile exch readstring pop} executeonly def /ND {noaccess def} "
               b"executeonly def /NP {noaccess put} executeonly def /BlueValues [] def /MinFeature {16 16} def /password 5839 def\n")
    private += b"/Subrs %d array\n" % len(subrs)
    private += b"".join(b"dup %d " % i + coded(subr) + b" NP\n" for i, subr in enumerate(subrs)) + b"ND\n"
    private += b"2 index /CharStrings %d dict dup begin\n" % len(glyphs)
    private += b"".join(b"/" + name + b" " + coded(program) + b" ND\n" for name, program in glyphs)
    private += b"end\nend\nreadonly put\nnoaccess put\ndup/FontName get exch definefont pop\nmark currentfile closefile\n"
    return (b"%!PS-AdobeFont-1.0: Tiny\n12 dict begin\n/FontInfo 2 dict dup begin /FamilyName (Tiny) readonly def end readonly def\n"
            b"/FontName /Tiny def /PaintType 0 def /FontType 1 def /FontMatrix [0.001 0 0 0.001 0 0] readonly def\n"
            b"/Encoding 256 array 0 1 255 {1 index exch /.notdef put} for\ndup 65 /secret put\nreadonly def\n"
            b"/FontBBox {0 0 1000 1000} readonly def\ncurrentdict end\ncurrentfile eexec\n"
            + encrypted(private, 55665) + b"\n" + (b"0" * 64 + b"\n") * 8 + b"cleartomark\n")


def short_number(value):
    return b"\x1c" + struct.pack(">h", value)


CFF_BOX = (short_number(600) + short_number(100) + short_number(0) + b"\x15" + short_number(500) + b"\x06" + short_number(500)
           + b"\x07" + short_number(-500) + b"\x06\x0e")


def cff(is_cid=False, last=None, subrs=()):
    def index(items):
        if not items:
            return b"\0\0"
        offsets = [1]
        for item in items:
            offsets.append(offsets[-1] + len(item))
        return struct.pack(">HB", len(items), 4) + struct.pack(f">{len(offsets)}I", *offsets) + b"".join(items)

    def number(value):
        return b"\x1d" + struct.pack(">i", value)

    glyphs = [short_number(600) + b"\x0e", CFF_BOX] + ([last] if last else [])
    names = [65, 66] if is_cid else [393, 394]
    charset = b"\0" + struct.pack(f">{len(glyphs) - 1}H", *names[:len(glyphs) - 1])
    encoding = bytes([0, 1, 65])
    select = struct.pack(">BHHBH", 3, 1, 0, 0, len(glyphs))
    private = number(6) + b"\x13"  # the subroutines stand behind it

    def pieces(at):
        top = number(391) + number(392) + number(0) + b"\x0c\x1e" if is_cid else b""
        top += number(at["charset"]) + b"\x0f" + number(at["glyphs"]) + b"\x11"
        if is_cid:
            top += number(67) + b"\x0c\x22" + number(at["fonts"]) + b"\x0c\x24" + number(at["select"]) + b"\x0c\x25"
        else:
            top += number(at["encoding"]) + b"\x10" + number(len(private)) + number(at["private"]) + b"\x12"
        yield "head", bytes([1, 0, 4, 4])
        yield "name", index([b"Tiny"])
        yield "top", index([top])
        yield "strings", index([b"Adobe", b"Identity", b"secret", b"last"])
        yield "global", index([])
        yield "charset", charset
        yield "encoding", encoding
        yield "select", select
        yield "glyphs", index(glyphs)
        yield "private", private
        yield "subrs", index(list(subrs))
        yield "fonts", index([number(len(private)) + number(at["private"]) + b"\x12"])

    at = dict.fromkeys(("charset", "encoding", "select", "glyphs", "private", "fonts"), 0)
    place = 0
    for name, data in pieces(at):
        at[name] = place
        place += len(data)
    return b"".join(data for _, data in pieces(at))


def cid():
    glyph = encrypted(TYPE1_BOX, 4330)
    head = 4 * 67 + 4  # a place of four bytes for each of 66 numbers, and the end
    places = b"".join(struct.pack(">B", 0) + (head + (len(glyph) if n > 65 else 0)).to_bytes(3, "big") for n in range(67))
    data = places + bytes(head - len(places)) + glyph
    return (b"%!PS-Adobe-3.0 Resource-CIDFont\n/CIDInit /ProcSet findresource begin\n20 dict begin\n/CIDFontName /Tiny def\n"
            b"/CIDFontVersion 1 def\n/CIDFontType 0 def\n/CIDSystemInfo 3 dict dup begin\n/Registry (Adobe) def\n"
            b"/Ordering (Identity) def\n/Supplement 0 def\nend def\n/FontBBox [0 0 1000 1000] def\n/CIDMapOffset 0 def\n/FDBytes 1 def\n"
            b"/GDBytes 3 def\n/CIDCount 66 def\n/FDArray 1 array\ndup 0\n%ADOBeginFontDict\n14 dict begin\n/FontName /Tiny0 def\n"
            b"/FontType 1 def\n/FontMatrix [0.001 0 0 0.001 0 0] def\n/PaintType 0 def\n%ADOBeginPrivateDict\n/Private 10 dict dup begin\n"
            b"/MinFeature {16 16} def\n/BlueValues [] def\n/lenIV 4 def\n/SubrMapOffset 0 def\n/SDBytes 3 def\n/SubrCount 0 def\nend def\n"
            b"%ADOEndPrivateDict\ncurrentdict end\n%ADOEndFontDict\nput\ndef\n(Binary) " + b"%d StartData " % len(data) + data)


FANOUT = 30
FONTS = {
    "box.ttf": truetype(),
    "box.t1": type1(),
    "box.cff": cff(),
    "box-cid.cff": cff(is_cid=True),
    "box.cid": cid(),
}
BOMBS = {
    "bomb.ttf": truetype([simple_glyph([]), simple_glyph(BOX), simple_glyph([])]
                         + [composite_glyph([part, part]) for part in range(2, 2 + FANOUT)]),
    "bomb.cff": cff(last=short_number(600) + short_number(9 - 107) + b"\x0a\x0e",
                    subrs=[b"\x0b"] + [(short_number(n - 107) + b"\x0a") * FANOUT + b"\x0b" for n in range(9)]),
    "bomb.t1": type1(last=long_number(0) + long_number(600) + b"\x0d" + long_number(9) + b"\x0a\x0e",
                     subrs=[b"\x0b"] + [(long_number(n) + b"\x0a") * FANOUT + b"\x0b" for n in range(9)]),
}

if __name__ == "__main__":
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    for file_name, contents in {**FONTS, **BOMBS}.items():
        (folder / file_name).write_bytes(contents)
