// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Data.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace platform::media {

/// The fields of a TIFF structure (TIFF 6.0, Exif 2.32): a whole file, or the block of that form in
/// others. Fields have names such as "Exif.Photo.FNumber"; the second part is the directory:
/// "Image" is the first, "SubImage1" and so on are those beneath it, "Photo" has what Exif defines,
/// "GPSInfo" the position. One thread at a time.
class PhotoTags {
public:
    /// Silences the library underneath, and lets it look for the files that it asks for once.
    static void prepare();
    /// Decodes the structure in `bytes`, which is changed on the way: metadata in XML and fields of
    /// more than four million elements are hidden from the library. nullopt when it is no such
    /// structure.
    [[nodiscard]] static std::optional<PhotoTags> decode(std::span<std::byte> bytes);

    PhotoTags(PhotoTags&& other) noexcept;
    PhotoTags& operator=(PhotoTags&& other) noexcept;
    PhotoTags(const PhotoTags&) = delete;
    PhotoTags& operator=(const PhotoTags&) = delete;
    ~PhotoTags();

    /// Whether any field is in that directory.
    [[nodiscard]] bool hasDirectory(std::string_view name) const;
    [[nodiscard]] bool hasField(const std::string& name) const;
    /// The bytes of a text; nullopt for fields that are missing or no text.
    [[nodiscard]] std::optional<std::string> text(const std::string& name) const;
    /// The number at `index` of a field; nullopt when there is none or its denominator is 0.
    [[nodiscard]] std::optional<double> number(const std::string& name,
                                               std::size_t index = 0) const;
    /// Whether a number is there that says nothing: it is missing, or 0/0, which is how some
    /// cameras leave a part out.
    [[nodiscard]] bool isLeftOut(const std::string& name, std::size_t index) const;
    /// The whole numbers of a field, the first 16 at most.
    [[nodiscard]] std::vector<std::int64_t> integers(const std::string& name) const;
    /// The XMP packet in the first directory.
    [[nodiscard]] std::optional<std::string> xmpPacket() const;
    /// The bytes of the copyright notice in the IPTC record of a TIFF file.
    [[nodiscard]] std::optional<std::string> copyrightNotice() const;

private:
    struct Fields;
    explicit PhotoTags(std::unique_ptr<Fields> fields);

    std::unique_ptr<Fields> m_fields;
};

/// The bytes of the copyright notice in an IPTC record (IPTC-IIM 4.2, data set 2:116). Any thread.
[[nodiscard]] std::optional<std::string> copyrightNoticeOfIptc(DataView record);

} // namespace platform::media
