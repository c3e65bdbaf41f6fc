// SPDX-License-Identifier: Apache-2.0
// GIF (CompuServe's Graphics Interchange Format, version 89a), with giflib.
#include "platform/linux/media/BufferedFile.h"
#include "platform/linux/media/ImageFormats.h"

#include <algorithm>
#include <memory>

#include <gif_lib.h>

namespace platform::media {
namespace {

constexpr std::size_t bufferSize = 4U << 10U;
constexpr std::size_t countingBufferSize = 64U << 10U;

int readBytes(GifFileType* gif, GifByteType* buffer, int size) {
    auto* const file = static_cast<BufferedFile*>(gif->UserData);
    const auto count = static_cast<std::size_t>(std::max(size, 0));
    return static_cast<int>(file->read(std::as_writable_bytes(std::span(buffer, count))));
}

struct CloseGif {
    void operator()(GifFileType* gif) const { ::DGifCloseFile(gif, nullptr); }
};
using Gif = std::unique_ptr<GifFileType, CloseGif>;

// One walk along the records. The image data are passed over in their blocks, not decoded.
class Walk {
public:
    explicit Walk(GifFileType* gif)
        : m_gif(gif) {}

    // Goes on to the next image and stands behind its header; false at the end, or where the file
    // is damaged.
    bool toNextImage() {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        while (::DGifGetRecordType(m_gif, &type) == GIF_OK) {
            if (type == IMAGE_DESC_RECORD_TYPE) {
                return ::DGifGetImageHeader(m_gif) == GIF_OK;
            }
            if (type != EXTENSION_RECORD_TYPE || !passExtension()) {
                return false;
            }
        }
        return false;
    }

    bool passImage() {
        int codeSize = 0;
        GifByteType* block = nullptr;
        bool isGood = ::DGifGetCode(m_gif, &codeSize, &block) == GIF_OK;
        while (isGood && block != nullptr) {
            isGood = ::DGifGetCodeNext(m_gif, &block) == GIF_OK;
        }
        return isGood;
    }

    // Whether an extension before the first image has named a transparent colour.
    [[nodiscard]] bool isTransparent() const { return m_isTransparent; }

private:
    bool passExtension() {
        int code = 0;
        GifByteType* block = nullptr;
        bool isGood = ::DGifGetExtension(m_gif, &code, &block) == GIF_OK;
        while (isGood && block != nullptr) {
            GraphicsControlBlock control{};
            // A block begins with its length.
            if (code == GRAPHICS_EXT_FUNC_CODE &&
                ::DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK) {
                m_isTransparent = control.TransparentColor != NO_TRANSPARENT_COLOR;
            }
            isGood = ::DGifGetExtensionNext(m_gif, &block) == GIF_OK;
        }
        return isGood;
    }

    GifFileType* m_gif;
    bool m_isTransparent = false;
};

} // namespace

std::optional<ImageProperties> readGif(const OpenedFile& file, bool wantsImageCount) {
    BufferedFile bytes(file, wantsImageCount ? countingBufferSize : bufferSize);
    const Gif gif(::DGifOpen(&bytes, readBytes, nullptr));
    if (gif == nullptr || gif->SWidth <= 0 || gif->SHeight <= 0) {
        return std::nullopt;
    }
    ImageProperties properties;
    properties.pixelWidth = gif->SWidth;
    properties.pixelHeight = gif->SHeight;
    properties.depth = 8;
    properties.colorModel = "RGB";
    Walk walk(gif.get());
    const bool hasImage = walk.toNextImage();
    properties.hasAlpha = walk.isTransparent();
    if (wantsImageCount) {
        std::uint64_t count = hasImage ? 1 : 0;
        for (bool goesOn = hasImage; goesOn && walk.passImage();) {
            goesOn = walk.toNextImage();
            count += goesOn ? 1 : 0;
        }
        properties.imageCount = count;
    }
    return properties;
}

} // namespace platform::media
