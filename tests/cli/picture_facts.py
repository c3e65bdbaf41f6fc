#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compares what an application is told of pictures with what exiftool says of the same files.

Usage: picture_facts.py ANSWERS
ANSWERS is what show_metadata printed, with German dates and without a catalogue of texts. Whatever
exiftool knows of an entry is compared, also that there is none. Every difference is a line, and
makes the status 1; so does an exception that is not needed.
"""

import json
import subprocess
import sys

SRGB = "sRGB IEC61966-2.1"
# XMP says what the block of Exif does not.
PHOTO_GROUPS = ("ExifIFD", "XMP-exif")
RESOLUTION = ("XResolution", "YResolution", "ResolutionUnit")
# What we say instead of a file and a key, and why that is right.
EXCEPTIONS = {
    # The block of Exif is there, and that the maker stands in its first directory is enough.
    ("large.png", "camera"): "Maker",
    ("old-exif.png", "camera"): "Maker",
    # The eight bits are those of the picture that the camera has made for a look at it.
    ("canon.cr2", "colorDepth"): "",
    # A resolution of nearly nothing is what ImageMagick writes when it knows none.
    ("cmyk.psd", "dpi"): "",
    ("gray.psd", "dpi"): "",
    ("rgb16-alpha.psd", "dpi"): "",
    ("srgb.psd", "dpi"): "",
    ("xmp.psd", "dpi"): "",
    ("camera.psd", "dpi"): "72",  # of the block of Exif, then
}


# What exiftool knows of an entry, in our words: an empty text stands for an entry that the file
# does not have, None for what exiftool does not tell.


class Tags:
    """What exiftool says of one file: by names with their groups, and by names alone."""

    def __init__(self, grouped, plain):
        self.grouped, self.plain = grouped, plain

    def first(self, *names):
        """The value of the first of these tags that is there."""
        return next((self.grouped[name] for name in names if name in self.grouped), None)

    def text(self, *names):
        value = self.first(*names)
        return "" if value is None else str(value).rstrip()

    def numbers(self, *names):
        value = self.first(*names)
        return [] if value is None else [float(number) for number in str(value).split()]

    def has_group(self, group):
        return any(name.startswith(group + ":") for name in self.grouped)


def dimensions(tags):
    return f"{tags.plain['ImageWidth']} × {tags.plain['ImageHeight']} px"


def color_depth(tags):
    bits = tags.numbers("SubIFD:BitsPerSample", "IFD0:BitsPerSample", "File:BitsPerSample",
                        "PNG:BitDepth", "Photoshop:BitDepth", "Meta:BitDepthLuma")
    return f"{bits[0]:.0f} Bit" if bits else None


def color_model(tags):
    for name, models in (
        ("PNG:ColorType", {0: "Gray", 2: "RGB", 3: "RGB", 4: "Gray", 6: "RGB"}),
        ("Photoshop:ColorMode", {0: "Gray", 1: "Gray", 2: "RGB", 3: "RGB", 4: "CMYK", 9: "Lab"}),
        ("File:ColorComponents", {1: "Gray", 3: "RGB", 4: "CMYK"}),
        ("IFD0:PhotometricInterpretation", {0: "Gray", 1: "Gray", 2: "RGB", 3: "RGB", 5: "CMYK",
                                            6: "RGB", 8: "Lab", 9: "Lab", 32803: "RGB"}),
        ("GIMP:ColorMode", {0: "RGB", 1: "Gray", 2: "RGB"}),
        ("Meta:ChromaFormat", {0: "Gray", 1: "RGB", 2: "RGB", 3: "RGB"}),
    ):
        if name in tags.grouped:
            return models[tags.grouped[name]]
    return None


def color_profile(tags):
    is_srgb = (tags.first("PNG:SRGBRendering") is not None
               or tags.first("ExifIFD:ColorSpace") == 1 or tags.first("File:ColorSpace") == "sRGB")
    return tags.text("ICC_Profile:ProfileDescription") or (
        SRGB if is_srgb else "")


def dpi(tags):
    inch = 0.0254
    for group, names, units in (
        ("PNG-pHYs", ("PixelsPerUnitX", "PixelsPerUnitY", "PixelUnits"), {1: inch}),
        ("File", ("PixelsPerMeterX", "PixelsPerMeterY", ""), {None: inch}),
        ("JFIF", RESOLUTION, {1: 1, 2: 2.54}),
        ("Photoshop", (*RESOLUTION[:2], ""), {None: 1}),
        ("GIMP", (*RESOLUTION[:2], ""), {None: 1}),
        ("IFD0", RESOLUTION, {None: 1, 2: 1, 3: 2.54}),
    ):
        across, down, unit = (tags.first(f"{group}:{name}") for name in names)
        if across and down and unit in units:
            pair = [number * units[unit] for number in (across, down)]
            # A whole number an inch was rounded to one a metre before.
            pair = [round(number) if units[unit] == inch else int(number) for number in pair]
            return f"{pair[0]}" if across == down else f"{pair[0]} × {pair[1]}"
    return ""


def has_alpha(tags):
    color_type = tags.first("PNG:ColorType")
    if color_type is not None:
        is_there = color_type in (4, 6) or tags.first("PNG:Transparency") is not None
    elif tags.first("Photoshop:NumChannels") is not None:
        colors = {0: 1, 1: 1, 2: 1, 3: 3, 4: 4, 9: 3}[tags.first("Photoshop:ColorMode")]
        is_there = tags.first("Photoshop:NumChannels") > colors
    elif tags.plain["FileType"] == "TIFF":
        is_there = any(number in (1, 2) for number in tags.numbers("IFD0:ExtraSamples"))
    else:
        return None
    return "meta.yes" if is_there else "meta.no"


def animated(tags):
    count = tags.numbers("GIF:FrameCount", "PNG:AnimationFrames", "File:PageCount",
                         "File:ImageCount")
    if not count:
        return "" if tags.plain["FileType"] in ("GIF", "PNG", "TIFF", "JPEG", "BMP") else None
    return "meta.img.frames" if count[0] > 1 else ""


def of_photo(words):
    """What only a file with data of a camera has."""
    return lambda tags: words(tags) if any(map(tags.has_group, PHOTO_GROUPS)) else ""


def formatted(form, name):
    def words(tags):
        numbers = tags.numbers(*(f"{group}:{name}" for group in PHOTO_GROUPS))
        return form(numbers[0]) if numbers else ""
    return of_photo(words)


def focal_length(tags):
    length = formatted(lambda number: f"{number:.1f} mm", "FocalLength")(tags)
    film = formatted(lambda number: f" ({number:.0f} mm eq.)", "FocalLengthIn35mmFormat")(tags)
    return length + film if length else ""


def date_original(tags):
    text = tags.text("ExifIFD:DateTimeOriginal", "XMP-exif:DateTimeOriginal")
    if not text:
        return ""
    (year, month, day), (hour, minute, _) = (part.split(":") for part in text[:19].split())
    return f"{day}.{month}.{year}, {hour}:{minute}"


def gps(tags):
    names = ("GPSLatitude", "GPSLongitude")
    numbers = [tags.first("GPS:" + name) for name in names]
    letters = [tags.text(f"GPS:{name}Ref") for name in names]
    if None in numbers:
        signed = [tags.first("XMP-exif:" + name) for name in names]
        if None in signed:
            return ""
        numbers = [abs(number) for number in signed]
        letters = [pair[number < 0] for pair, number in zip(("NS", "EW"), signed)]
    return ", ".join(f"{number:.4f}° {letter}" for number, letter in zip(numbers, letters))


FACTS = {
    "dimensions": dimensions,
    "colorDepth": color_depth,
    "colorModel": color_model,
    "colorProfile": color_profile,
    "dpi": dpi,
    "hasAlpha": has_alpha,
    "animated": animated,
    "camera": of_photo(lambda tags: tags.text("IFD0:Model", "XMP-tiff:Model", "IFD0:Make")),
    "lens": of_photo(lambda tags: tags.text("ExifIFD:LensModel")),
    "exposure": formatted(lambda t: f"1/{1 / t:.0f} s" if t < 1 else f"{t:.1f} s", "ExposureTime"),
    "aperture": formatted(lambda number: f"f/{number:.1f}", "FNumber"),
    "iso": formatted(lambda number: f"{number:.0f}", "ISO"),
    "focalLength": focal_length,
    "dateOriginal": of_photo(date_original),
    "gps": gps,
    "software": lambda tags: tags.text("IFD0:Software", "PNG:Software"),
    "copyright": lambda tags: tags.text("IPTC:CopyrightNotice", "IFD0:Copyright", "PNG:Copyright",
                                        "XMP-dc:Rights"),
}


def exiftool(*options_and_files):
    done = subprocess.run(["exiftool", "-json", "-n", "-q", *options_and_files],
                          capture_output=True, check=True)
    return {said["SourceFile"]: said for said in json.loads(done.stdout)}


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        answers = json.load(file)
    files = [answer["path"] for answer in answers]
    grouped, plain = exiftool("-G1", *files), exiftool(*files)
    found, unused, compared = [], set(EXCEPTIONS), dict.fromkeys(FACTS, 0)
    for answer in answers:
        name = answer["path"]
        ours = {entry["key"]: entry["value"] for entry in answer["entries"]}
        tags = Tags(grouped[name], plain[name])
        for key, words in FACTS.items():
            theirs, mine = words(tags), ours.get(key, "")
            if theirs is None:
                continue
            compared[key] += theirs != ""
            if theirs == mine:
                continue
            if EXCEPTIONS.get((name, key)) == mine:
                unused.discard((name, key))
            else:
                found.append(f"{name}: {key} is '{theirs}', for us '{mine}'")
    found += [f"{name}: no exception is needed for {key}" for name, key in sorted(unused)]
    found += [f"nothing to compare with {key}" for key, count in compared.items() if count == 0]
    print("\n".join(found))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
