# SPDX-License-Identifier: Apache-2.0
"""Seeds for the fuzz targets that read recordings, films, pictures and PDFs."""
import struct
import zlib


def midi(*tracks, kind=1, division=96):
    head = struct.pack(">4sIHHH", b"MThd", 6, kind, len(tracks), division)
    return head + b"".join(struct.pack(">4sI", b"MTrk", len(track)) + track for track in tracks)


def atom(kind, *contents):
    data = b"".join(contents)
    return struct.pack(">I4s", 8 + len(data), kind) + data


def titled(kind, text):
    return atom(kind, atom(b"data", struct.pack(">II", 1, 0), text))


MOVIE = atom(b"moov", atom(b"mvhd", bytes(12), struct.pack(">II", 1000, 1500), bytes(80)), atom(
    b"udta", atom(b"\xa9nam", b"\0\1\0\0T"), atom(b"titl", bytes(6), b"\xfe\xff\0T"),
    atom(b"meta", bytes(4), atom(b"ilst", titled(b"\xa9ART", b"A"), titled(b"\xa9nam", b"T")))))
KEYS = (atom(b"keys", struct.pack(">II", 0, 1), atom(b"mdta", b"com.apple.quicktime.title"))
        + atom(b"ilst", titled(b"\0\0\0\1", b"T")))


def track(kind, head, entry):
    """A track with two samples of four bytes behind a box "mdat" at the beginning of the file."""
    samples = atom(b"stbl", atom(b"stsd", struct.pack(">II", 0, 1), entry),
                   atom(b"stts", struct.pack(">IIII", 0, 1, 2, 40)),
                   atom(b"stsc", struct.pack(">IIIII", 0, 1, 1, 2, 1)),
                   atom(b"stsz", struct.pack(">III", 0, 4, 2)),
                   atom(b"stco", struct.pack(">III", 0, 1, 24)))
    matrix = struct.pack(">9I", 0, 2**16, 0, 2**32 - 2**16, 0, 0, 48 * 2**16, 0, 2**30)
    return atom(b"trak", atom(b"tkhd", struct.pack(">IIIIII", 7, 0, 0, 1, 0, 80), bytes(16), matrix,
                              struct.pack(">II", 64 * 2**16, 48 * 2**16)),
                atom(b"mdia", atom(b"mdhd", struct.pack(">IIIIII", 0, 0, 0, 1000, 80, 0)),
                     atom(b"hdlr", bytes(8), kind, bytes(13)), atom(b"minf", head, samples)))


def film(picture, sound):
    seen = bytes(16) + struct.pack(">HHIIIH", 64, 48, 72 << 16, 72 << 16, 0, 1) + bytes(32)
    heard = bytes(8) + struct.pack(">HHHHI", 2, 16, 0, 0, 44100 << 16)
    reference = bytes(6) + b"\0\1"
    description = b"\3\x19\0\1\0\4\x11\x40\x15" + bytes(11) + b"\5\2\x12\x10\6\1\2"
    return (atom(b"ftyp", b"qt  ", bytes(4)) + atom(b"mdat", b"12345678") + atom(
        b"moov", atom(b"mvhd", bytes(12), struct.pack(">II", 1000, 80), bytes(80)),
        track(b"vide", atom(b"vmhd", bytes(12)),
              atom(picture, reference, seen, b"\0\x18\xff\xff",
                   atom(b"pasp", struct.pack(">II", 4, 3)))),
        track(b"soun", atom(b"smhd", bytes(8)),
              atom(sound, reference, heard, atom(b"esds", bytes(4), description)))))


def avi(codec, height):
    def chunk(kind, data):
        return struct.pack("<4sI", kind, len(data)) + data + bytes(len(data) % 2)
    stream = b"vids" + codec + struct.pack("<10I4H", *(0, 0, 0, 1, 25), *(0, 2, 0, 0, 0),
                                           *(0, 0, 64, height))
    form = struct.pack("<IiiHH4sIiiII", 40, 64, height, 1, 16, codec, 0, 0, 0, 0, 0)
    main = struct.pack("<14I", 40000, 0, 0, 0, 2, 0, 1, 0, 64, height, 0, 0, 0, 0)
    head = chunk(b"LIST", b"hdrl" + chunk(b"avih", main) + chunk(
        b"LIST", b"strl" + chunk(b"strh", stream) + chunk(b"strf", form)))
    return chunk(b"RIFF", b"AVI " + head + chunk(b"LIST", b"movi" + 2 * chunk(b"00dc", b"1234")))


FRAMES = b"ID3\3\0\0\0\0\0\x1aTIT2\0\0\0\2\0\0\0TTPE1\0\0\0\4\0\0\0A\0B"


def comments(*texts):
    data = struct.pack("<II", 0, len(texts))
    return data + b"".join(struct.pack("<I", len(t.encode())) + t.encode() for t in texts)


def wave(chunks):
    form = struct.pack("<4sIHHIIHH", b"fmt ", 16, 1, 2, 44100, 176400, 4, 16)
    data = b"WAVE" + form + struct.pack("<4sI", b"data", 16) + bytes(16) + chunks
    return struct.pack("<4sI", b"RIFF", len(data)) + data


def ogg(number, packet):
    return struct.pack("<4sBBQIIIBB", b"OggS", 0, 2 if number == 0 else 0, 0, 1, number, 0, 1,
                       len(packet)) + packet


def tiff(fields):
    """A directory of fields: tag, type, count, value; what is longer than four bytes follows."""
    head, tail = b"II*\0" + struct.pack("<IH", 8, len(fields)), b""
    place = len(head) + 12 * len(fields) + 4
    for kind, form, count, value in fields:
        head += struct.pack("<HHI", kind, form, count)
        if len(value) > 4:
            head += struct.pack("<I", place + len(tail))
            tail += value
        else:
            head += value.ljust(4, b"\0")
    return head + bytes(4) + tail


def png(*chunks):
    text = b"\x89PNG\r\n\x1a\n"
    for kind, data in chunks:
        text += struct.pack(">I4s", len(data), kind) + data
        text += struct.pack(">I", zlib.crc32(kind + data))
    return text


def riff(*chunks):
    text = b"WEBP"
    for kind, data in chunks:
        text += struct.pack("<4sI", kind, len(data)) + data + bytes(len(data) % 2)
    return struct.pack("<4sI", b"RIFF", len(text)) + text


PHOTO = tiff([(271, 2, 5, b"Maker"), (282, 5, 1, struct.pack("<II", 72, 1)),
              (283, 5, 1, struct.pack("<II", 72, 0)), (700, 1, 5, b"<xmp>"),
              (34665, 4, 1, struct.pack("<I", 8)), (34853, 4, 1, struct.pack("<I", 8))])
PIXELS = tiff([(254, 4, 1, b"\0"), (256, 3, 1, b"\x0c"), (257, 3, 1, b"\x08"),
               (258, 3, 1, b"\x08"), (259, 3, 1, b"\1"), (262, 3, 1, b"\1"),
               (273, 4, 1, b"\x08"), (278, 3, 1, b"\x08"), (279, 4, 1, b"\x60"),
               (330, 4, 1, struct.pack("<I", 8))])


def raw_photo(*fields):
    """A photograph as the sensor saw it, whose size stands only in its directory for cameras."""
    def directory(place):
        return tiff([(271, 2, 2, b"M"), (0x8769, 4, 1, struct.pack("<I", place)), *fields])
    data = directory(len(directory(0)))
    camera = [(40962, 4, 1, 4000), (40963, 4, 1, 3000)]
    data += struct.pack("<H", len(camera)) + b"".join(struct.pack("<HHII", *f) for f in camera)
    return data + bytes(4)


VIEWS = tiff([(0xB001, 4, 1, b"\2"),
              (0xB002, 7, 32, struct.pack("<IIIIIIII", 0x20020002, 9, 0, 0, 0x020002, 9, 9, 0))])
XMP = (b"<?xpacket begin=''?><x:xmpmeta><rdf:RDF><rdf:Description tiff:Make='a &amp; b' "
       b"exif:FNumber='28/10' exif:GPSLatitude='48,30.6N' exif:GPSLongitude=\"2,15,0W\">"
       b"<exif:DateTimeOriginal>2023-07-14T18:30:05Z</exif:DateTimeOriginal><!-- x -->"
       b"<dc:rights><rdf:Alt><rdf:li xml:lang='x-default'>&#xa9; me</rdf:li></rdf:Alt></dc:rights>"
       b"</rdf:Description></rdf:RDF></x:xmpmeta>")
IPTC = b"\x1c\2\x74\0\4Mine"
RESOURCES = b"8BIM" + struct.pack(">HHI", 1028, 0, 9) + IPTC + b"\0"
JPEG = (b"\xff\xd8\xff\xe0\0\x10JFIF\0\1\1\1\0H\0H\0\0\xff\xe1"
        + struct.pack(">H", len(PHOTO) + 8) + b"Exif\0\0" + PHOTO
        + b"\xff\xe1" + struct.pack(">H", len(XMP) + 31) + b"http://ns.adobe.com/xap/1.0/\0" + XMP
        + b"\xff\xe2" + struct.pack(">H", len(VIEWS) + 6) + b"MPF\0" + VIEWS
        + b"\xff\xed" + struct.pack(">H", len(RESOURCES) + 16) + b"Photoshop 3.0\0" + RESOURCES
        + b"\xff\xc0\0\x0b\x08\0\x08\0\x0c\1\1\x11\0\xff\xda\0\x08\1\1\0\0?\0")
PNG = png((b"IHDR", struct.pack(">IIBBBBB", 12, 8, 8, 2, 0, 0, 0)), (b"sRGB", b"\0"),
          (b"pHYs", struct.pack(">IIB", 2835, 2835, 1)), (b"acTL", struct.pack(">II", 2, 0)),
          (b"tEXt", b"Software\0me"), (b"zTXt", b"Raw profile type iptc\0\0" + zlib.compress(
              b"\niptc\n9\n" + IPTC.hex().encode())), (b"IDAT", b"x"), (b"IDAT", b"y"),
          (b"eXIf", PHOTO), (b"IEND", b""))
GIF = (b"GIF89a" + struct.pack("<HH3x", 12, 8) + b"!\xf9\4\1\0\0\1\0"
       + (b"," + struct.pack("<4xHHB", 12, 8, 0) + b"\2\2D\1\0") * 2 + b";")
WEBP = riff((b"VP8X", b"\x08\0\0\0\x0b\0\0\7\0\0"), (b"EXIF", PHOTO),
            (b"VP8L", b"\x2f\x0b\xc0\1\0"))
BITMAP = (bytes(12) + struct.pack("<IiiHHIIiiII", 124, 12, -8, 1, 32, 3, 0, 2835, 2835, 0, 0)
          + struct.pack("<IIII4s48xIIII", 1023 << 20, 1023 << 10, 1023, 3 << 30, b"DEBM", 0, 124,
                        3, 0) + b"ICC")
ICON = struct.pack("<H4B8xI", 1, 16, 0, 0, 0, 22) + struct.pack("<IiiHH24x", 40, 16, 32, 1, 32)
DOCUMENT = (struct.pack(">H6xHIIHH", 1, 4, 8, 12, 8, 3) + struct.pack(">I3sI", 3, b"abc",
            len(RESOURCES)) + RESOURCES)
GIMP = b"v011\0" + struct.pack(">IIII", 12, 8, 0, 150) + struct.pack(
    ">IIffII", 19, 8, 300, 150, 0, 0) + struct.pack(">QQIII", 70, 0, 12, 8, 1)


HEIF = (
    atom(b"ftyp", b"heic" + bytes(4) + b"mif1")
    + atom(b"meta", bytes(4), atom(b"hdlr", bytes(8) + b"pict" + bytes(13)),
           atom(b"pitm", bytes(4) + b"\0\1"),
           atom(b"iloc", bytes(4) + b"\x44\0\0\1\0\1\0\0\0\1" + bytes(8)),
           atom(b"iinf", bytes(5) + b"\1", atom(b"infe", b"\2\0\0\0\0\1\0\0hvc1\0")),
           atom(b"iprp", atom(b"ipco", atom(b"ispe", bytes(4) + struct.pack(">II", 12, 8)),
                              atom(b"hvcC", b"\1".ljust(16, b"\0") + b"\xfc" + bytes(6))),
                atom(b"ipma", bytes(7) + b"\1\0\1\2\1\2"))))


def pdf(*objects, trailer=b"/Root 1 0 R"):
    """What stands behind the header; the table of objects is left to be found."""
    text = b"".join(b"%d 0 obj %s endobj\n" % pair for pair in enumerate(objects, 1))
    return text + b"trailer <<" + trailer + b">>\n"


def pdf_stream(data, entries=b""):
    return b"<<%s/Length %d>>stream\n%s\nendstream" % (entries, len(data), data)


def pdf_with_table(objects, trailer, packed=False):
    """What stands behind a header of nine bytes, with a table of the objects in one form or the
    other. The second object is packed into the third where that is asked for."""
    text, places = b"", []
    for number, value in enumerate(objects, 1):
        places.append(9 + len(text))
        text += b"%d 0 obj\n%s\nendobj\n" % (number, value)
    start, size = 9 + len(text), len(objects) + 1
    if packed:
        entries = [(0, 0, 0)] + [(1, place, 0) for place in places] + [(1, start, 0)]
        entries[2] = (2, 3, 0)
        rows = [struct.pack(">BIB", *entry) for entry in entries]
        above = [bytes(6), *rows]
        table = b"".join(b"\2" + bytes((one - other) & 255 for one, other in zip(row, before))
                         for row, before in zip(rows, above))
        text += b"%d 0 obj\n" % size + pdf_stream(zlib.compress(table), (
            b"/Type/XRef/Filter/FlateDecode/DecodeParms<</Predictor 12/Columns 6>>/W[1 4 1]/Size %d"
            % (size + 1)) + trailer) + b"\nendobj\n"
    else:
        text += b"xref\n0 %d\n0000000000 65535 f \n" % size + b"".join(
            b"%010d 00000 n \n" % place for place in places)
        text += b"trailer\n<</Size %d%s>>\n" % (size, trailer)
    return text + b"startxref\n%d\n%%%%EOF\n" % start


PDF_ROOT = [b"<</Type/Catalog/Pages 2 0 R/Version/1.7>>", b"<</Type/Pages/Count 1/Kids[3 0 R]>>"]
PDF_PAGE = (b"<</Type/Page/Contents 4 0 R/Resources<</Font<</F 5 0 R>>/XObject<</X 6 0 R>>>>"
            b"/MediaBox[0 0 9 9]>>")
PDF_TEXT = pdf_stream(b"q 1 0 0 1 0 0 cm BT /F 9 Tf (a) Tj [(b) -9 <63>] TJ ET Q /X Do")
PDF_FONT = (b"<</Type/Font/Subtype/Type0/BaseFont/R/Encoding/90ms-RKSJ-H/DescendantFonts[<</Type/Font"
            b"/Subtype/CIDFontType0/BaseFont/R/CIDSystemInfo<</Registry(Adobe)/Ordering(Japan1)"
            b"/Supplement 1>>>>]>>")
PDF_FORM = pdf_stream(b"BT /F 9 Tf (x) ' ET", b"/Type/XObject/Subtype/Form/BBox[0 0 9 9]")
PDF_INFO = b"<</Title(T\\344)/Author<FEFF00DC>/Creator(\xef\xbb\xbfC)>>"
