# SPDX-License-Identifier: Apache-2.0
"""Seeds for the fuzz targets that read disks and disk images."""
import bz2
import hashlib
import lzma
import plistlib
import struct
import zlib


def xml(value):
    return plistlib.dumps(value, fmt=plistlib.FMT_XML)


# Disks for DiskLayoutFuzzer.cpp, whose head says how they are written down.
SEAL, PROBE = 1, 2


def disk(wishes, blocks, *pieces):
    result = struct.pack("<BI", wishes, blocks)
    for offset, contents in pieces:
        result += struct.pack("<IH", offset, len(contents)) + contents
    return result


def mbr(*entries):
    table = b"".join(struct.pack("<4xB3xII", *entry) for entry in entries)
    return table.ljust(64, b"\0") + b"\x55\xaa"


def gpt(size, block, entries):
    header = struct.pack("<8sII8xQ40xQII", b"EFI PART", 0x10000, 92, block, entries, 4, 128)
    linux = bytes.fromhex("af3dc60f838472478e793d69d8477de4")
    entry = linux + linux[::-1] + struct.pack("<QQQ", 40, 2**63, 0)
    entry += "Grün 😀".encode("utf-16-le")
    protection = bytes(446) + mbr((0xEE, 1, 2**32 - 1))
    return (0, protection), (block * size, header), (entries * size, entry)


def apple(size):
    entries = [(0, struct.pack(">2sH", b"ER", size))]
    for number, kind in enumerate((b"Apple_partition_map", b"Apple_HFS"), 1):
        entry = struct.pack(">2s2xIII32s32s", b"PM", 2, number, number, b"disk image", kind)
        entries.append((number * size, entry))
    return entries


def descriptor(kind, name, tail):
    return struct.pack("<B5sB", kind, name, 1) + tail


def volume(label, escapes=b""):
    return (b"\0" * 33 + label.ljust(32, b"\0") + bytes(16) + escapes.ljust(40, b"\0")
            + struct.pack("<H26xBBI", 2048, 34, 0, 22))


ISO = [
    (16 * 2048, descriptor(1, b"CD001", volume(b"LABEL"))),
    (17 * 2048, descriptor(0, b"CD001", b"EL TORITO SPECIFICATION")),
    (18 * 2048, descriptor(2, b"CD001", volume("Läbel".encode("utf-16-be"), b"%/E"))),
    (19 * 2048, descriptor(0, b"BEA01", b"") + bytes(2041) + descriptor(0, b"NSR02", b"")),
    (22 * 2048, b"\x40" + bytes(31) + b"\1\0SP\7\1\xbe\xef\0XX\5\1xPX\4\1"),
]
NTFS = [
    (0, b"\xeb\x52\x90NTFS    \0\2\x08" + bytes(26) + struct.pack("<QQ8xB", 256, 20, 0xF6)),
    (20 * 4096, b"FILE"),
    (20 * 4096 + 3072, struct.pack("<4s16xH2xII", b"FILE", 56, 256, 1024)),
    (20 * 4096 + 3072 + 56, struct.pack("<II8xIH2x6s", 0x60, 40, 6, 24, b"W\0i\0n\0")),
]
HFS_PLUS = [
    (1024, b"H+\0\4" + bytes(36) + struct.pack(">II", 512, 256) + bytes(240)
     + struct.pack(">IIII", 100, 1, 200, 8)),
    (100 * 512, struct.pack(">8xB11xII4xH", 1, 1, 1, 1024)),
    (201 * 512, struct.pack(">8xBxH2xHIH6s", 255, 1, 12, 1, 3, b"\0M\0a\0c")),
]
FAT32 = [
    (0, b"\xeb\x58\x90mkfs.fat\0\2\1\x20\0\2" + bytes(4) + b"\xf8" + bytes(10)
     + struct.pack("<II4xI", 70000, 600, 2) + bytes(34) + b"FAT32   "),
    (510, b"\x55\xaa"),
    ((32 + 1200) * 512, b"MY LABEL   \x08" + bytes(20)),
]

# Chunks of a small disk image: type, sectors, data. They lie one behind the other.
TEXT = b"sectors of a disk " * 57
NOISE = bytes(i * i % 251 for i in range(512))
UDIF_CHUNKS = [
    (1, 1, NOISE),
    (0, 9, b""),
    (0x80000004, 1, b"\x81ab" + b"\x7f\0\1" * 7 + b"\x65\0\0"),
    (0x80000005, 2, zlib.compress(TEXT[:1024])),
    (2, 1, b""),
    (0x80000006, 2, bz2.compress(TEXT[:1024])),
    (0x80000008, 2, lzma.compress(TEXT[:1024])),
]


def sparse(sectors_per_band, sectors, *bands):
    """The beginning of a sparse image's header, as its target takes it."""
    fields = struct.pack(">4sIIII", b"sprs", 3, sectors_per_band, 1, sectors).ljust(64, b"\0")
    return (fields + struct.pack(f">{len(bands)}I", *bands)).ljust(256, b"\0")


def udif_table(first, chunks, offset):
    """A block table, and the data of its chunks, which goes to the offset of the data fork."""
    records, data, sector = b"", b"", 0
    for kind, sectors, packed in chunks:
        records += struct.pack(">IIQQQQ", kind, 0, sector, sectors, len(data), len(packed))
        data += packed
        sector += sectors
    records += struct.pack(">IIQQQQ", 0xFFFFFFFF, 0, sector, 0, len(data), 0)
    header = struct.pack(">4sIQQQII", b"mish", 1, first, sector, offset, 0, 0)
    count = struct.pack(">I", len(records) // 40)
    return header.ljust(200, b"\0") + count + records, data, sector


def resource_fork(tables):
    data = b"".join(struct.pack(">I", len(table)) + table for table in tables)
    references, place = b"", 0
    for table in tables:
        references += struct.pack(">HHII", 0, 0, place, 0)
        place += 4 + len(table)
    types = struct.pack(">H4sHH", 0, b"blkx", len(tables) - 1, 10) + references
    tail = struct.pack(">24xHH", 28, 28 + len(types)) + types + b"\4name"
    return struct.pack(">IIII", 16, 16 + len(data), len(data), len(tail)) + data + tail


def udif(groups, old=False, first=False):
    """An image with a table for each group of chunks."""
    tables, data, sector = [], b"", 0
    for chunks in groups:
        table, packed, sectors = udif_table(sector, chunks, len(data))
        tables.append(table)
        data += packed
        sector += sectors
    blocks = [{"Name": "x", "Data": table} for table in tables]
    listing = resource_fork(tables) if old else xml({"resource-fork": {"blkx": blocks}})
    start = 512 if first else 0
    place = struct.pack(">QQ", start + len(data), len(listing))
    trailer = struct.pack(">4sIII8xQQ", b"koly", 4, 512, 1, start, len(data))
    trailer += (place if old else b"").ljust(16, b"\0") + struct.pack(">II", 1, 1)
    trailer = trailer.ljust(216, b"\0") + (b"" if old else place)
    trailer = trailer.ljust(488, b"\0") + struct.pack(">IQ", 1, sector) + bytes(12)
    return trailer + data + listing if first else data + listing + trailer


def progress(written=4096, size=1 << 20, image=b"/image.dmg"):
    start = struct.pack(">QQ", written, written ^ (2**64 - 1))
    description = b"qmexpan1" + struct.pack(">QQ", size, 12) + b"0" * 36 + b"s" * 32 + image
    return start + description + hashlib.sha256(description).digest()


# Files in memory for DiskImageFuzzer.cpp: the pieces in their places, and zeros behind them.
def raw(zeros, *pieces):
    data = bytearray(max(offset + len(contents) for offset, contents in pieces))
    for offset, contents in pieces:
        data[offset:offset + len(contents)] = contents
    return bytes([zeros]) + bytes(data)


def bundle(start, *bands):
    """A sparse bundle, as SparseBundleFuzzer.cpp takes it."""
    for name, is_folder, contents in bands:
        start += struct.pack("<B", len(name)) + name
        start += struct.pack("<BH", is_folder, len(contents)) + contents
    return start


def bundle_info(**more):
    info = xml({"diskimage-bundle-type": "com.apple.diskimage.sparsebundle",
                **{name.replace("_", "-"): value for name, value in more.items()}})
    return struct.pack("<BH", 0, len(info)) + info
