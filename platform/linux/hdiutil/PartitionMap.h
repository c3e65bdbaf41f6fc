// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/hdiutil/ByteSource.h"

#include <cstdint>
#include <string>
#include <vector>

namespace platform::hdiutil {

/// A part of a disk. All of it lies within the disk, and it is never empty.
struct Partition {
    unsigned number = 0;          ///< as systems count: from 1; logical ones of an MBR from 5
    std::uint64_t firstByte = 0;  ///< from the beginning of the disk
    std::uint64_t byteLength = 0; ///< cut where the disk ends
    std::string name;             ///< UTF-8; empty where it has none, as always in an MBR
    /// What the map says it is for, in the words of macOS where it has some ("Apple_HFS", "EFI");
    /// else the type as the map has it: a GUID in upper case, or "0x17" for a byte of an MBR.
    std::string hint;
    std::string uuid; ///< in upper case; empty but in a GPT
    /// For a stretch that no entry of the map describes and a caller lists nevertheless.
    /// `readPartitionMap` gives none of these.
    bool isSynthesized = false;
};

/// How a disk is divided.
struct PartitionMap {
    enum class Scheme { none, gpt, mbr, apple };

    Scheme scheme = Scheme::none;
    std::uint32_t blockSize = 512;     ///< the bytes in the unit that the map counts in
    std::vector<Partition> partitions; ///< as the map orders them, which may overlap
};

/// Reads the partition map of a disk, which may be damaged or hostile: what cannot be read or makes
/// no sense is as good as absent, and partitions that begin beyond the end are left out. Any
/// thread.
///
/// Of several maps the first of these counts: a GPT, an MBR, an Apple partition map. A GPT needs
/// the MBR that protects it, or none at all; its copy at the end stands in for a damaged one only
/// where that MBR is there. An MBR without any partition is none, and neither is the boot sector of
/// a file system that begins with the disk. A disk with an MBR may hold a file system as a whole
/// besides, as optical images do that also boot from other media: look for one in any case.
[[nodiscard]] PartitionMap readPartitionMap(const ByteSource& disk);

} // namespace platform::hdiutil
