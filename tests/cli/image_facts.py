# SPDX-License-Identifier: Apache-2.0
"""Compares what our tool says of a disk image with what other tools say of the same file.

Usage: image_facts.py PROPERTY-LIST IMAGE TOOL...
Each TOOL has to say something that can be compared. "TOOL:longer" is for one that knows only a part
of the file, as large as it says. Every difference is a line, and makes the status 1.
"""

import collections
import json
import os
import plistlib
import re
import subprocess
import sys

SECTOR = 512

Partition = collections.namedtuple("Partition", "number start length")


def output_of(*command):
    path = os.environ["PATH"] + ":/usr/sbin:/sbin"
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          env=dict(os.environ, PATH=path), check=True)
    return done.stdout.decode()


def ours(document):
    """Everything that another tool may know as well, by names that all of them share here."""
    listed = document["partitions"]["partitions"]
    mapped = [p for p in listed if "partition-number" in p]
    whole = [p["partition-filesystems"] for p in listed if p["partition-start"] == 0]
    return {
        "format": document["Format"],
        "disk bytes": document["Total Bytes"],
        "image bytes": document["Size Information"]["CUDIFEncoding-bytes-total"],
        "packed bytes": document["Compressed Bytes"],
        "checksum": document.get("Checksum Value"),
        "scheme": document["partitions"]["partition-scheme"],
        "partitions": [Partition(p["partition-number"], p["partition-start"] * SECTOR,
                                 p["partition-length"] * SECTOR) for p in mapped],
        "names": [p["partition-name"] for p in mapped],
        "uuids": [p.get("partition-UUID") for p in mapped],
        "file system": next((kind for fs in whole for kind in fs), None),
        "label": next((label for fs in whole for label in fs.values()), None),
    }


def by_file(image):
    text = output_of("file", "-b", image)
    facts = {}
    # By what stands at the beginning: for a ".dmg" that is its first chunk.
    for pattern, known in (
        (r"ISO 9660 CD-ROM filesystem data.*?'(?P<label>.*)'",
         {"format": "UDTO", "file system": "cd9660"}),
        (r"Linux rev 1\.0 (?P<fs>ext\d).*volume name \"(?P<label>[^\"]*)\"", {"format": "UDRW"}),
        (r"SGI (?P<fs>XFS) filesystem data", {"format": "UDRW"}),
        (r"(?P<fs>BTRFS) Filesystem label \"(?P<label>[^\"]*)\", .*/(?P<disk>\d+) bytes used", {}),
        (r"(?P<fs>Squashfs) filesystem", {"format": "UDRW"}),
        (r"UDF filesystem data .*'(?P<label>.*)'", {"format": "UDTO", "file system": "udf"}),
        (r"DOS/MBR boot sector, (?=.*FAT \().* label: \"(?P<label>[^\"]*)\"",
         {"format": "UDRW", "file system": "msdos"}),
        (r"DOS/MBR boot sector; partition 1 : ID=0xee", {"scheme": "GUID"}),
        (r"DOS/MBR boot sector; partition 1 : ID=0x(?!ee)", {"scheme": "fdisk"}),
        (r"zlib compressed data", {"format": "UDZO"}),
        (r"bzip2 compressed data", {"format": "UDBZ"}),
        (r"XZ compressed data", {"format": "ULMO"}),
    ):
        found = re.match(pattern, text)
        if found:
            said = found.groupdict()
            facts.update(known)
            facts.update({"file system": said["fs"].lower()} if "fs" in said else {})
            facts.update({"label": said["label"].rstrip()} if "label" in said else {})
            facts.update({"disk bytes": int(said["disk"])} if "disk" in said else {})
    return facts


def properties(text):
    return dict(re.findall(r"^([^\n=]+) = (.*)$", text, re.M))


def by_7z_of_udif(head, _):
    formats = {"LZFSE": "ULFO", "XZ": "ULMO", "BZip2": "UDBZ", "ZLIB": "UDZO", "ADC": "UDCO"}
    methods = properties(head)["Method"].split()
    # There is a checksum of the tables as well, which we do not mention.
    comment = dict(re.findall(r"^([\w-]+): (?:CRC: )?(\w+)$", head, re.M))
    return {
        "format": next((formats[method] for method in formats if method in methods), "UDRO"),
        "disk bytes": int(comment["unpack-size"]),
        "packed bytes": int(comment["pack-length"]),
        "checksum": "$" + comment["pack-checksum"],
    }


def by_7z_of_map(scheme, entries):
    # The names are those of files that it would write, and the numbers count these.
    parts = [properties(entry) for entry in entries.split("\n\n") if "Offset" in entry]
    facts = {"scheme": scheme,
             "partitions": [Partition(None, int(part["Offset"]), int(part["Size"]))
                            for part in parts]}
    if scheme == "GUID":
        facts["uuids"] = [part["ID"] for part in parts]
    return facts


def by_7z_of_file_system(kind, head):
    label = re.search(r"^(?:Label = |Logical Volumes:\n  Id: )(.*)$", head, re.M)
    return {"file system": kind, **({"label": label[1]} if label else {})}


def by_7z_of_section(head, entries):
    kind = properties(head)["Type"]
    if kind == "Dmg":
        return by_7z_of_udif(head, entries)
    if kind == "Iso":
        return {"format": "UDTO"}
    if kind in ("GPT", "MBR"):
        return by_7z_of_map({"GPT": "GUID", "MBR": "fdisk"}[kind], entries)
    known = {"SquashFS": "squashfs", "Udf": "udf", "FAT": "msdos", "Ext": "ext"}
    return by_7z_of_file_system(known[kind], head)


def by_7z(image):
    sections, _, entries = output_of("7z", "l", "-slt", image).partition("\n----------\n")
    heads = sections.split("\n--\n")[1:]
    facts = by_7z_of_section(heads[0], entries)
    facts["image bytes"] = int(properties(heads[0])["Physical Size"])
    # A disk that is a single piece of the image is looked into at once.
    if properties(heads[0])["Type"] == "Dmg" and len(heads) > 1:
        facts.update(by_7z_of_section(heads[1], entries))
        facts["disk bytes"] = int(properties(heads[1])["Physical Size"])
    return facts


def by_dmg2img(image):
    """Its expanded disk, which stays for others to look at."""
    disk = image + ".expanded"
    if not re.search(r"^partition 0: ", output_of("dmg2img", "-l", image), re.M):
        return {}
    output_of("dmg2img", "-s", image, disk)
    facts = by_sfdisk(disk)
    facts["disk bytes"] = os.path.getsize(disk)
    return facts


def by_sfdisk(image):
    table = json.loads(output_of("sfdisk", "-J", image))["partitiontable"]
    # Not the extended partitions that hold others, nor entries of no type, which are unused ones to
    # most readers.
    shown = [p for p in table["partitions"] if p["type"] not in ("0", "5", "f", "85")]
    facts = {
        "scheme": {"gpt": "GUID", "dos": "fdisk"}[table["label"]],
        "partitions": [Partition(int(re.search(r"\d+$", p["node"])[0]),
                                 p["start"] * table["sectorsize"],
                                 p["size"] * table["sectorsize"]) for p in shown],
        "names": [p.get("name", "") for p in shown],
    }
    if table["label"] == "gpt":
        facts["uuids"] = [p["uuid"] for p in shown]
    return facts


def by_sgdisk(image):
    facts = {"scheme": "GUID", "partitions": [], "names": [], "uuids": []}
    for number in re.findall(r"^ +(\d+) +\d+ +\d+ ", output_of("sgdisk", "-p", image), re.M):
        text = output_of("sgdisk", "-i", number, image)
        first, last = (int(re.search(rf"^{which} sector: (\d+)", text, re.M)[1])
                       for which in ("First", "Last"))
        facts["partitions"].append(Partition(int(number), first * SECTOR,
                                             (last - first + 1) * SECTOR))
        facts["names"].append(re.search(r"^Partition name: '(.*)'$", text, re.M)[1])
        facts["uuids"].append(re.search(r"^Partition unique GUID: (\S+)$", text, re.M)[1])
    return facts


def by_isoinfo(image):
    text = output_of("isoinfo", "-d", "-i", image)
    blocks, size = (int(re.search(rf"^{line}: (\d+)$", text, re.M)[1])
                    for line in ("Volume size is", "Logical block size is"))
    return {
        "format": "UDTO",
        "file system": "cd9660",
        "label": re.search(r"^Volume id: (.*)$", text, re.M)[1],
        "disk bytes": blocks * size,
    }


def agree(key, mine, theirs):
    if key == "partitions":
        return len(mine) == len(theirs) and all(
            a[1:] == b[1:] and b.number in (None, a.number) for a, b in zip(mine, theirs))
    if key == "file system" and theirs == "ext":
        return mine in ("ext2", "ext3", "ext4")
    return mine == theirs


def differences(mine, word, image):
    tool, _, condition = word.partition(":")
    theirs = globals()["by_" + tool](image)
    if not theirs:
        yield f"{tool} says nothing"
    for key, value in theirs.items():
        is_less = condition == "longer" and key.endswith(" bytes") and value < mine[key]
        if not is_less and not agree(key, mine[key], value):
            yield f"{tool}: {key} is {value}, for us {mine[key]}"


def main():
    with open(sys.argv[1], "rb") as file:
        mine = ours(plistlib.load(file))
    found = [line for tool in sys.argv[3:] for line in differences(mine, tool, sys.argv[2])]
    print("\n".join(found))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
