// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/PageText.h"

#include "platform/linux/pdf/UnknownFonts.h"

#include <ctime>

namespace platform::pdf {
namespace {

constexpr std::clock_t patience = 2 * CLOCKS_PER_SEC;

/// Takes the characters of a page, and draws nothing.
class CharacterDevice final : public OutputDev {
public:
    bool upsideDown() override { return false; }
    bool useDrawChar() override { return true; }
    bool interpretType3Chars() override { return false; }
    bool needNonText() override { return false; }

    void drawChar(GfxState* /*state*/, double /*x*/, double /*y*/, double /*dx*/, double /*dy*/,
                  double /*originX*/, double /*originY*/, CharCode /*code*/, int /*length*/,
                  const Unicode* /*characters*/, int count) override {
        m_hasText = m_hasText || count > 0;
    }

    [[nodiscard]] bool hasText() const { return m_hasText; }
    [[nodiscard]] bool isLate() const { return m_isLate; }

    /// Whether there is nothing left to find out, or no time; `device` is one of these.
    static bool isDone(void* device) {
        auto& self = *static_cast<CharacterDevice*>(device);
        self.m_isLate = self.m_isLate || std::clock() - self.m_start > patience;
        return self.m_hasText || self.m_isLate;
    }

private:
    bool m_hasText = false;
    bool m_isLate = false;
    std::clock_t m_start = std::clock();
};

std::optional<bool> seenText(PDFDoc& document, PageParts& page) {
    if (!page.contents.isStream() && !page.contents.isArray()) {
        return false;
    }
    constexpr double resolution = 72;
    // Where the page ends does not matter.
    const PDFRectangle box(0, 0, resolution, resolution);
    Dict* const resources = page.resources.isDict() ? page.resources.getDict() : nullptr;
    CharacterDevice device;
    Gfx interpreter(&document, &device, 1, resources, resolution, resolution, &box, nullptr, 0,
                    &CharacterDevice::isDone, &device, document.getXRef());
    interpreter.display(&page.contents);
    if (device.hasText()) {
        return true;
    }
    return device.isLate() ? std::nullopt : std::optional(false);
}

} // namespace

std::optional<bool> hasText(PDFDoc& document, PageParts& page) {
    const auto found = seenText(document, page);
    // poppler leaves out what is written in fonts that it does not know enough about.
    return found == false && replaceUnknownFonts(*document.getXRef(), page.resources)
               ? seenText(document, page)
               : found;
}

} // namespace platform::pdf
