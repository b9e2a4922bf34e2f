#!/usr/bin/env python3
"""Test files that ImageMagick does not write: top-first and id-text Targa files,
BMP RLE4 and short palettes, DXT3 and 16-bit DDS files, JPEG variants, damaged
files, zip archives (stored, deflated, refused, damaged) and the search-path tree.
Called by tools/make-testdata.sh DIR after ImageMagick made DIR/image."""
import os
import random
import shutil
import struct
import sys
import zipfile

out = sys.argv[1]
img = os.path.join(out, "image")
rng = random.Random(1234)


def read(name):
    with open(os.path.join(img, name), "rb") as f:
        return f.read()


def write(path, data):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as f:
        f.write(data)


def tga_top_first(src, dst):
    d = read(src)
    w, h, bits = struct.unpack("<HHB", d[12:17])
    row = w * bits // 8
    pixels = d[18 + d[0]:18 + d[0] + row * h]
    rows = [pixels[i * row:(i + 1) * row] for i in range(h)]
    head = bytearray(d[:18])
    head[0] = 0
    head[17] = 0x20     # top row first; alpha bits left out, as 8 + 0x20 is no case of the format choice
    write(os.path.join(img, dst), bytes(head) + b"".join(reversed(rows)))


def tga_with_id(src, dst):
    d = read(src)
    head = bytearray(d[:18])
    head[0] = 127
    write(os.path.join(img, dst), bytes(head) + bytes(range(127)) + d[18 + d[0]:])


def bmp(width, height, bits, compression, palette, data, clr_used):
    info = struct.pack("<IiiHHIIiiII", 40, width, height, 1, bits, compression, len(data), 2835, 2835, clr_used, 0)
    off = 14 + 40 + len(palette)
    return b"BM" + struct.pack("<IHHI", off + len(data), 0, 0, off) + info + palette + data


def dds(width, height, flags, pf_flags, fourcc, bits, masks, data, linear, mips=0):
    caps = 0x1000 | (0x400008 if mips else 0)
    rec = struct.pack("<IIIIIII", 124, flags, height, width, linear, 0, mips) + b"\0" * 44
    rec += struct.pack("<II4sIIIII", 32, pf_flags, fourcc, bits, *masks)
    rec += struct.pack("<IIII", caps, 0, 0, 0) + b"\0" * 4
    return b"DDS " + rec + data


# Targa
tga_top_first("tga24.tga", "tga24top.tga")
tga_top_first("tga32.tga", "tga32top.tga")
tga_with_id("tga32.tga", "tga32id127.tga")
write(os.path.join(img, "tga32_footer.tga"), read("tga32.tga") + b"\0" * 8 + b"TRUEVISION-XFILE.\0")

# BMP: RLE4 (refused), an 8-bit file with a palette of two entries
write(os.path.join(img, "bmp4rle.bmp"),
      bmp(4, 2, 4, 2, bytes(64), b"\x04\x12\x00\x00\x04\x34\x00\x01", 0))
pal2 = bytes([0, 0, 255, 0, 255, 0, 0, 0])   # red, blue
write(os.path.join(img, "bmp8_clr2.bmp"),
      bmp(6, 2, 8, 0, pal2, bytes([0, 1, 0, 1, 0, 1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0]), 2))

# DDS: DXT3 with seeded blocks, 16-bit formats with chosen words, 32 bits without the alpha flag
blocks = b"".join(bytes(rng.randrange(256) for _ in range(8)) +
                  struct.pack("<HH", rng.randrange(65536), rng.randrange(65536)) +
                  bytes(rng.randrange(256) for _ in range(4)) for _ in range(16 * 16))
write(os.path.join(img, "dds_dxt3.dds"),
      dds(64, 64, 0x81007, 0x4, b"DXT3", 0, (0, 0, 0, 0), blocks, len(blocks)))
# the premultiplied forms: DXT2 with the DXT3 blocks, DXT4 with the top level of ImageMagick's DXT5 file
write(os.path.join(img, "dds_dxt2.dds"),
      dds(64, 64, 0x81007, 0x4, b"DXT2", 0, (0, 0, 0, 0), blocks, len(blocks)))
dxt5 = read("dds_dxt5.dds")
write(os.path.join(img, "dds_dxt4.dds"),
      dds(64, 64, 0x81007, 0x4, b"DXT4", 0, (0, 0, 0, 0), dxt5[128:128 + 64 * 64], 64 * 64))
words = struct.pack("<4H", 0xFFFF, 0x0001, 0xF00F, 0x8000) + struct.pack("<4H", 0x7FFF, 0x07E0, 0xF800, 0x001F)
for name, pf_flags, masks in (("565", 0x40, (0xF800, 0x7E0, 0x1F, 0)),
                              ("555", 0x40, (0x7C00, 0x3E0, 0x1F, 0)),
                              ("1555", 0x41, (0x7C00, 0x3E0, 0x1F, 0x8000)),
                              ("4444", 0x41, (0xF00, 0xF0, 0xF, 0xF000))):
    write(os.path.join(img, "dds_16_%s.dds" % name), dds(4, 2, 0x100F, pf_flags, b"\0\0\0\0", 16, masks, words, 8))
x888 = bytearray(read("dds_argb.dds"))
struct.pack_into("<I", x888, 80, 0x40)
struct.pack_into("<I", x888, 104, 0)
write(os.path.join(img, "dds_x888.dds"), bytes(x888))

# JPEG: a four-channel file in the JFIF form, and a colour file whose first marker is APP1
cmyk = read("jpg_cmyk.jpg")
app0 = b"\xFF\xE0" + struct.pack(">H", 16) + b"JFIF\0\x01\x01\0\0\x01\0\x01\0\0"
write(os.path.join(img, "jpg_cmyk_jfif.jpg"), cmyk[:2] + app0 + cmyk[2:])
exif = bytearray(read("jpg_color.jpg"))
exif[3] = 0xE1
write(os.path.join(img, "bad_jpg_app1.jpg"), bytes(exif))

# zip archives: the same members stored and deflated, names in mixed case, nested folders
members = [("Maps/Wall.TGA", read("tga24.tga")), ("textures/sub/Deep/Brick.bmp", read("bmp24.bmp")),
           ("Photo.JPG", read("jpg_color.jpg")), ("scripts/console.cfg", b"echo hello\r\nbind x quit\r\n"),
           ("big.txt", b"".join(b"line %06d of a compressible member\n" % i for i in range(4000))),
           ("Skin.dds", read("dds_argb.dds"))]
for name, method in (("pak_stored.zip", zipfile.ZIP_STORED), ("pak_deflated.zip", zipfile.ZIP_DEFLATED)):
    with zipfile.ZipFile(os.path.join(out, "zip", name), "w", method) as z:
        z.writestr(zipfile.ZipInfo("Empty/"), b"")
        for member, data in members:
            z.writestr(member, data)
stored = read(os.path.join(out, "zip", "pak_stored.zip"))


def patched(base, edits):
    d = bytearray(base)
    for offset, value in edits:
        d[offset:offset + len(value)] = value
    return bytes(d)


def central(d, member):
    return [i for i in range(len(d)) if d.startswith(b"PK\x01\x02", i) and d[i + 46:i + 46 + len(member)] == member][0]


def local(d, member):
    return [i for i in range(len(d)) if d.startswith(b"PK\x03\x04", i) and d[i + 30:i + 30 + len(member)] == member][0]


end = stored.rindex(b"PK\x05\x06")
c_wall, l_wall = central(stored, b"Maps/Wall.TGA"), local(stored, b"Maps/Wall.TGA")
data_wall = l_wall + 30 + len(b"Maps/Wall.TGA")
bad = {
    "bad_crc.zip": [(data_wall + 100, bytes([stored[data_wall + 100] ^ 0x55]))],
    "bad_encrypted.zip": [(c_wall + 8, b"\x01\x00"), (l_wall + 6, b"\x01\x00")],
    "bad_method.zip": [(c_wall + 10, b"\x0c\x00"), (l_wall + 8, b"\x0c\x00")],
    "bad_split.zip": [(end + 4, b"\x01\x00")],
    "bad_directory.zip": [(c_wall, b"PK\x09\x09")],
    "bad_local.zip": [(l_wall, b"XX\x03\x04")],
    "bad_offset.zip": [(c_wall + 42, struct.pack("<I", len(stored) + 1000))],
    "bad_dirsize.zip": [(end + 12, struct.pack("<I", 0x7FFFFFFF))],
}
for name, edits in bad.items():
    write(os.path.join(out, "zip", name), patched(stored, edits))
write(os.path.join(out, "zip", "bad_truncated.zip"), stored[:len(stored) // 2])
deflated = read(os.path.join(out, "zip", "pak_deflated.zip"))
l_big = local(deflated, b"big.txt")
write(os.path.join(out, "zip", "bad_inflate.zip"), patched(deflated, [(l_big + 30 + 7 + 20, b"\xff\xff\xff\xff")]))

# the search-path tree
search = os.path.join(out, "search")
write(os.path.join(search, "a", "wall.jpeg"), read("jpg_color.jpg"))
write(os.path.join(search, "b", "maps", "stone.tga"), read("tga24.tga"))
write(os.path.join(search, "d", "foo", "wall2.tga"), read("tga24.tga"))
write(os.path.join(search, "Base", "Wall.TGA"), read("tga24.tga"))
write(os.path.join(search, "e", "tile.bmp"), read("bmp24.bmp"))
write(os.path.join(search, "e", "tile.tga"), read("tga24.tga"))
os.makedirs(os.path.join(search, "c"), exist_ok=True)
with zipfile.ZipFile(os.path.join(search, "c", "pak0.zip"), "w", zipfile.ZIP_DEFLATED) as z:
    z.writestr("Textures/Marble.TGA", read("tga32.tga"))
    z.writestr("maps/granite.BMP", read("bmp8.bmp"))
