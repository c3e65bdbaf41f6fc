// SPDX-License-Identifier: Apache-2.0
// HEIF, with pictures by HEVC or AV1 (ISO/IEC 23008-12), with libheif.
#include "platform/linux/media/HeifReader.h"

#include "platform/linux/ByteOrder.h"
#include "platform/linux/media/BufferedFile.h"
#include "platform/linux/media/ColorProfile.h"
#include "platform/linux/media/HeifBoxes.h"
#include "platform/linux/media/HeifItems.h"
#include "platform/linux/media/ImageFormats.h"
#include "platform/linux/media/PhotoBlocks.h"

#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include <libheif/heif.h>

namespace platform::media {
namespace {

constexpr std::size_t bufferSize = 4U << 10U;

/// The file as libheif sees it, which loads what it can get. It has only the boxes, until their end
/// was reached, and in these the pictures have no data.
struct Input {
    Input(const OpenedFile& image, const HeifDescription& description)
        : file(image, bufferSize)
        , end(description.end) {
        if (description.meta) {
            hidden = lengthsOfHeifPictures(image, *description.meta);
        }
    }

    BufferedFile file;
    std::uint64_t end;
    std::vector<HeifNumber> hidden;
};

Input& inputOf(void* data) {
    return *static_cast<Input*>(data);
}

std::int64_t position(void* data) {
    return static_cast<std::int64_t>(inputOf(data).file.position());
}

int readBytes(void* buffer, std::size_t size, void* data) {
    Input& input = inputOf(data);
    const std::span bytes(static_cast<std::byte*>(buffer), size);
    const std::uint64_t offset = input.file.position();
    if (input.file.read(bytes) != size) {
        return 1;
    }
    hideNumbers(input.hidden, offset, bytes);
    return 0;
}

int seek(std::int64_t position, void* data) {
    if (position < 0) {
        return 1;
    }
    inputOf(data).file.seek(static_cast<std::uint64_t>(position));
    return 0;
}

heif_reader_grow_status waitForSize(std::int64_t size, void* data) {
    Input& input = inputOf(data);
    if (size >= 0 && static_cast<std::uint64_t>(size) <= input.end) {
        return heif_reader_grow_status_size_reached;
    }
    // It has come to the end of the boxes, and reads what is in the items next.
    input.end = input.file.size();
    return heif_reader_grow_status_size_beyond_eof;
}

constexpr heif_reader reader{1, position, readBytes, seek, waitForSize};

struct FreeContext {
    void operator()(heif_context* context) const { ::heif_context_free(context); }
};
using Context = std::unique_ptr<heif_context, FreeContext>;

struct ReleaseHandle {
    void operator()(heif_image_handle* handle) const { ::heif_image_handle_release(handle); }
};
using Handle = std::unique_ptr<heif_image_handle, ReleaseHandle>;

bool isGood(const heif_error& error) {
    return error.code == heif_error_Ok;
}

Handle primaryImage(const Context& context) {
    heif_image_handle* handle = nullptr;
    const heif_error error = ::heif_context_get_primary_image_handle(context.get(), &handle);
    Handle owned(handle);
    return isGood(error) ? std::move(owned) : nullptr;
}

Data profileOf(const Handle& image) {
    const std::size_t size = ::heif_image_handle_get_raw_color_profile_size(image.get());
    if (size == 0 || size > maximumProfileSize) {
        return {};
    }
    Data profile(size);
    const heif_error error = ::heif_image_handle_get_raw_color_profile(image.get(), profile.data());
    return isGood(error) ? profile : Data();
}

// Whether the numbers that stand for a colour space (ITU-T H.273) are those of sRGB.
bool isMarkedAsSRGB(const Handle& image) {
    heif_color_profile_nclx* found = nullptr;
    const heif_error error = ::heif_image_handle_get_nclx_color_profile(image.get(), &found);
    const std::unique_ptr<heif_color_profile_nclx, void (*)(heif_color_profile_nclx*)> marks(
        found, ::heif_nclx_color_profile_free);
    return isGood(error) && marks != nullptr &&
           marks->color_primaries == heif_color_primaries_ITU_R_BT_709_5 &&
           marks->transfer_characteristics == heif_transfer_characteristic_IEC_61966_2_1;
}

// The bytes of the first item of that type and, if it has several, that kind of content; empty
// without one or when it is too large.
Data itemOf(const Handle& image, const char* type, std::string_view content) {
    constexpr std::size_t mostItems = 16;
    std::array<heif_item_id, mostItems> items{};
    const int count = ::heif_image_handle_get_list_of_metadata_block_IDs(
        image.get(), type, items.data(), static_cast<int>(items.size()));
    for (const heif_item_id item : std::span(items).first(static_cast<std::size_t>(count))) {
        const char* const kind = ::heif_image_handle_get_metadata_content_type(image.get(), item);
        const std::size_t size = ::heif_image_handle_get_metadata_size(image.get(), item);
        if ((kind == nullptr ? "" : kind) != content || size > maximumBlockSize) {
            continue;
        }
        Data bytes(size);
        return isGood(::heif_image_handle_get_metadata(image.get(), item, bytes.data())) ? bytes
                                                                                         : Data();
    }
    return {};
}

// The first four bytes of the item say how far behind them the block begins.
Data exifOf(const Handle& image) {
    constexpr std::size_t offsetSize = 4;
    Data block = itemOf(image, "Exif", "");
    if (block.size() <= offsetSize) {
        return {};
    }
    const std::size_t start = offsetSize + std::size_t{bigEndian<std::uint32_t>(block, 0)};
    block.erase(block.begin(),
                block.begin() + static_cast<std::ptrdiff_t>(std::min(start, block.size())));
    return block;
}

ImageProperties propertiesOf(const Handle& image, bool isMonochrome) {
    ImageProperties properties;
    properties.pixelWidth = ::heif_image_handle_get_ispe_width(image.get());
    properties.pixelHeight = ::heif_image_handle_get_ispe_height(image.get());
    if (const int bits = ::heif_image_handle_get_luma_bits_per_pixel(image.get()); bits > 0) {
        properties.depth = bits;
    }
    const Data profile = profileOf(image);
    properties.colorModel = isMonochrome || isGrayProfile(profile) ? "Gray" : "RGB";
    properties.profileName = nameOfProfile(profile);
    if (!properties.profileName && isMarkedAsSRGB(image)) {
        properties.profileName = sRGBProfileName;
    }
    properties.hasAlpha = ::heif_image_handle_has_alpha_channel(image.get()) != 0;
    if (Data block = exifOf(image); !block.empty()) {
        addExif(block, properties);
    }
    addXmp(itemOf(image, "mime", "application/rdf+xml"), properties);
    return properties;
}

} // namespace

void prepareHeif() {
    ::heif_init(nullptr);
}

std::optional<ImageProperties> readHeif(const OpenedFile& file, bool wantsImageCount) {
    const HeifDescription description = descriptionOfHeif(file);
    Input input(file, description);
    const Context context(::heif_context_alloc());
    const bool isRead =
        context != nullptr &&
        isGood(::heif_context_read_from_reader(context.get(), &reader, &input, nullptr));
    const Handle image = isRead ? primaryImage(context) : nullptr;
    if (image == nullptr) {
        return std::nullopt;
    }
    ImageProperties properties =
        propertiesOf(image, description.meta && isMonochromeHeif(file, *description.meta));
    if (*properties.pixelWidth <= 0 || *properties.pixelHeight <= 0) {
        return std::nullopt;
    }
    if (wantsImageCount) {
        properties.imageCount = static_cast<std::uint64_t>(
            std::max(::heif_context_get_number_of_top_level_images(context.get()), 1));
    }
    return properties;
}

} // namespace platform::media
