// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/Inflate.h"

#include <algorithm>
#include <memory>

#include <libdeflate.h>

namespace platform {
namespace {

struct FreeDecompressor {
    void operator()(libdeflate_decompressor* object) const { libdeflate_free_decompressor(object); }
};

using Decompressor = std::unique_ptr<libdeflate_decompressor, FreeDecompressor>;

} // namespace

bool inflateInto(std::span<std::byte> output, std::span<const std::byte> input) {
    const Decompressor decompressor(libdeflate_alloc_decompressor());
    // Without a place for the number of bytes written, all of the output must be filled.
    return decompressor && libdeflate_zlib_decompress_ex(decompressor.get(), input.data(),
                                                         input.size(), output.data(), output.size(),
                                                         nullptr, nullptr) == LIBDEFLATE_SUCCESS;
}

std::optional<std::string> inflated(std::string_view input, std::size_t limit) {
    constexpr std::size_t usual = 8; // times as long
    const Decompressor decompressor(libdeflate_alloc_decompressor());
    std::string output;
    auto result = decompressor ? LIBDEFLATE_INSUFFICIENT_SPACE : LIBDEFLATE_BAD_DATA;
    std::size_t written = 0;
    for (std::size_t room = input.size();
         result == LIBDEFLATE_INSUFFICIENT_SPACE && output.size() < limit;) {
        room = room < limit / usual ? room * usual : limit;
        output.resize(std::max<std::size_t>(room, 1));
        result = libdeflate_zlib_decompress_ex(decompressor.get(), input.data(), input.size(),
                                               output.data(), output.size(), nullptr, &written);
    }
    output.resize(written);
    return result == LIBDEFLATE_SUCCESS ? std::optional(std::move(output)) : std::nullopt;
}

} // namespace platform
