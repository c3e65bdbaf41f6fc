// SPDX-License-Identifier: Apache-2.0
// Works out how long the notes in bytes play.
#include "fuzz/Fuzzing.h"
#include "platform/linux/av/MidiFile.h"
#include "tests/unit/support/MemoryFile.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace platform;
    const MemoryFile contents(fuzzing::textOf(data, size));
    const auto file = OpenedFile::of(contents.descriptor());
    fuzzing::require(file.has_value());
    const auto duration = av::durationOfMidi(*file);
    fuzzing::require(!duration || (std::isfinite(*duration) && *duration >= 0));
    return 0;
}
