// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/pdf/Poppler.h"

#include <span>
#include <string_view>

namespace platform::pdf {

/// A file as poppler reads it, by its descriptor, which nobody may close before; its position does
/// not matter. poppler's own stream would close it. More bytes can seem to be at its end. One
/// thread at a time.
class DocumentStream final : public BaseSeekInputStream {
public:
    /// All of the file, which has `size` bytes, and `more`, which must outlive this.
    DocumentStream(int descriptor, Goffset size, std::string_view more = {});

    BaseStream* copy() override;
    Stream* makeSubStream(Goffset from, bool isLimited, Goffset size, Object&& head) override;

private:
    DocumentStream(const DocumentStream& whole, Goffset from, bool isLimited, Goffset size,
                   Object&& head);

    [[nodiscard]] Goffset currentPos() const override { return m_position; }
    void setCurrentPos(Goffset offset) override { m_position = offset; }
    Goffset read(char* buffer, Goffset size) override;
    [[nodiscard]] std::size_t readFile(std::span<char> buffer) const;
    [[nodiscard]] std::size_t readMore(std::span<char> buffer) const;

    int m_descriptor;
    Goffset m_fileSize;
    std::string_view m_more;
    Goffset m_position = 0;
};

} // namespace platform::pdf
