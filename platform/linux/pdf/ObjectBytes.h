// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/pdf/FileBytes.h"
#include "platform/linux/pdf/Values.h"

namespace platform::pdf {

/// The first words of an object, "1 0 obj", at `offset`, which is moved behind them; nullopt where
/// there are none. Any thread.
[[nodiscard]] std::optional<Reference> takeObjectHeader(FileBytes& file, std::uint64_t& offset);

/// What the stream whose dictionary ends at `offset` holds, of which `length` bytes are in the
/// file. nullopt where there is none, and when it is packed in another way than by FlateDecode or
/// larger than `limit`. Predictors are left alone. Any thread.
[[nodiscard]] std::optional<std::string> streamData(FileBytes& file, std::uint64_t offset,
                                                    const Dictionary& dictionary,
                                                    std::optional<std::uint64_t> length,
                                                    std::size_t limit);

} // namespace platform::pdf
