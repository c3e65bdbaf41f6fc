// SPDX-License-Identifier: Apache-2.0
// Looks through bytes as the boxes of a HEIF file.
#include "fuzz/Fuzzing.h"
#include "platform/linux/media/HeifBoxes.h"
#include "platform/linux/media/HeifItems.h"
#include "tests/unit/support/MemoryFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const MemoryFile memory(fuzzing::textOf(data, size));
    const auto file = platform::OpenedFile::of(memory.descriptor());
    fuzzing::require(file.has_value());
    const auto description = platform::media::descriptionOfHeif(*file);
    fuzzing::require(description.end <= size);
    if (!description.meta) {
        return 0;
    }
    // Something has to say so.
    fuzzing::require(!platform::media::isMonochromeHeif(*file, *description.meta) ||
                     description.meta->size() > 16);
    for (const auto& number : platform::media::lengthsOfHeifPictures(*file, *description.meta)) {
        fuzzing::require(number.size <= 8 && number.offset + number.size <= size);
    }
    return 0;
}
