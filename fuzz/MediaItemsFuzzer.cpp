// SPDX-License-Identifier: Apache-2.0
// Looks for titles, artists and albums in the bytes behind the first, which says in what they are.
#include "fuzz/Fuzzing.h"
#include "platform/linux/Utf8.h"
#include "platform/linux/av/Mp4Items.h"
#include "platform/linux/av/TaggedItems.h"
#include "platform/linux/av/VorbisComment.h"
#include "tests/unit/support/MemoryFile.h"

namespace {

using namespace platform;

av::Items itemsIn(char kind, std::string_view bytes) {
    if (kind == 'v') {
        return av::itemsOfVorbisComment(bytesOf(bytes));
    }
    const MemoryFile contents(bytes);
    const auto file = OpenedFile::of(contents.descriptor());
    fuzzing::require(file && av::endOfLeadingTags(*file) <= bytes.size());
    switch (kind) {
    case 'm': return av::itemsOfMp4(*file);
    case 't': return av::itemsOfLeadingTag(*file);
    case 'o': return av::itemsOfOgg(*file);
    default: return av::itemsOfChunks(*file, kind == 'a');
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string text = fuzzing::textOf(data, size);
    for (const auto& item : itemsIn(text.front(), std::string_view(text).substr(1))) {
        fuzzing::require(!item.stringValue || (isUTF8(*item.stringValue) &&
                                               item.stringValue->find('\0') == std::string::npos));
    }
    return 0;
}
