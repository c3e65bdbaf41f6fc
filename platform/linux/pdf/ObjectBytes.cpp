// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/ObjectBytes.h"

#include "platform/linux/Inflate.h"

namespace platform::pdf {
namespace {

using namespace std::string_view_literals;

// Behind the word that a stream begins with, and the end of its line.
bool takeStreamStart(FileBytes& file, std::uint64_t& offset) {
    if (file.takeValue(offset) != "stream"sv) {
        return false;
    }
    const std::string_view end = file.at(offset, 2);
    const std::size_t size = end == "\r\n"sv ? 2 : end.starts_with('\n') ? 1 : 0;
    offset += size;
    return size > 0;
}

} // namespace

std::optional<Reference> takeObjectHeader(FileBytes& file, std::uint64_t& offset) {
    const auto number = integerOf(file.takeValue(offset).value_or(""sv));
    const auto generation = number ? integerOf(file.takeValue(offset).value_or(""sv)) : number;
    if (!generation || *number > largestNumber || *generation > largestNumber ||
        file.takeValue(offset) != "obj"sv) {
        return std::nullopt;
    }
    return Reference{static_cast<std::uint32_t>(*number), static_cast<std::uint32_t>(*generation)};
}

std::optional<std::string> streamData(FileBytes& file, std::uint64_t offset,
                                      const Dictionary& dictionary,
                                      std::optional<std::uint64_t> length, std::size_t limit) {
    const std::string_view filter = dictionary["/Filter"];
    const bool isPacked = filter == "/FlateDecode"sv;
    if (!length || *length > limit || (!filter.empty() && !isPacked) ||
        !takeStreamStart(file, offset)) {
        return std::nullopt;
    }
    const std::string_view bytes = file.at(offset, static_cast<std::size_t>(*length));
    if (bytes.size() < *length) {
        return std::nullopt;
    }
    return isPacked ? inflated(bytes, limit) : std::optional(std::string(bytes));
}

} // namespace platform::pdf
