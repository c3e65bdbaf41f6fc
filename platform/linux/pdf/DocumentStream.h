// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/pdf/Poppler.h"

namespace platform::pdf {

/// A file as poppler reads it, by its descriptor, which nobody may close before; its position does
/// not matter. poppler's own stream would close it. One thread at a time.
class DocumentStream final : public BaseSeekInputStream {
public:
    /// All of the file, which has `size` bytes.
    DocumentStream(int descriptor, Goffset size);

    BaseStream* copy() override;
    Stream* makeSubStream(Goffset from, bool isLimited, Goffset size, Object&& head) override;

private:
    DocumentStream(int descriptor, Goffset from, bool isLimited, Goffset size, Object&& head);

    [[nodiscard]] Goffset currentPos() const override { return m_position; }
    void setCurrentPos(Goffset offset) override { m_position = offset; }
    Goffset read(char* buffer, Goffset size) override;

    int m_descriptor;
    Goffset m_position = 0;
};

} // namespace platform::pdf
