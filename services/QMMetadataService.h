// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/QMFileItem.h"
#include "model/QMMetadataCategory.h"
#include "model/QMMetadataEntry.h"
#include "model/QMMetadataResult.h"
#include "platform/Export.h"
#include "platform/ImageSource.h"
#include "platform/MediaAsset.h"
#include "platform/PDFDocument.h"
#include "platform/PropertyList.h"
#include "services/QMDiskImageService.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// Tells what is in a file: which category it belongs to, which lines the user wants to see of it,
/// and the lines. Labels, names and values are UTF-8, in the user's language where the application
/// has a catalogue. Services live in shared pointers and never change; any thread, several files at
/// once.
class QM_EXPORT QMMetadataService : public std::enable_shared_from_this<QMMetadataService> {
public:
    /// Keys as preferences hold them: nothing is checked, so others than texts may be among them.
    using Keys = platform::PropertyList::Array;

    /// Reads what an image file says of its first image, as `platform::imagePropertiesOfFile` does;
    /// called on any thread, several files at once.
    using ImageReader = std::function<std::optional<platform::ImageProperties>(
        const std::string& path, bool wantsImageCount)>;

    /// Reads what a film or a recording says of itself, as `platform::mediaAssetPropertiesOfFile`
    /// does; called on any thread, several files at once.
    using AssetReader = std::function<std::optional<platform::MediaAssetProperties>(
        const std::string& path, bool wantsMetadata)>;
    /// The same for PDFs, as `platform::pdfDocumentPropertiesOfFile`.
    using PDFReader = std::function<std::optional<platform::PDFDocumentProperties>(
        const std::string& path, bool wantsText)>;

    /// What a service works with. Others than the defaults are for tests.
    struct Settings {
        /// Describes disk images; null for the one of the process.
        std::shared_ptr<const QMDiskImageService> diskImages;
        /// Reads images; empty for the one of the system.
        ImageReader imageReader = {};
        /// Reads films and recordings; empty for the one of the system.
        AssetReader assetReader = {};
        /// Reads PDFs; empty for the one of the system.
        PDFReader pdfReader = {};
    };

    /// The one service of the process, made when it is first asked for.
    [[nodiscard]] static const std::shared_ptr<QMMetadataService>& sharedService();

    /// A service of its own.
    [[nodiscard]] static std::shared_ptr<QMMetadataService> init();
    /// The same with settings of its own.
    [[nodiscard]] static std::shared_ptr<QMMetadataService> init(Settings settings);

    /// Gets the result, or null.
    using Completion = std::function<void(std::shared_ptr<QMMetadataResult>)>;
    /// Tells what is in the file of `fileItem`. `completion` is called exactly once, unless it is
    /// empty: with null before this returns, on this thread, when there is nothing to be told of
    /// the item - none, a folder, an extension of no category, or the preference
    /// "QMMetadataEnabled" is not set -; otherwise with a result, later, on the main queue, which
    /// somebody must service. The entries are those of the keys that the user has enabled;
    /// categories that nothing is read of have none, and so have files that cannot be read, or not
    /// with the memory that there is. Nothing limits the time it takes. Throws std::bad_alloc when
    /// there is no memory to begin; then `completion` is not called.
    void extractMetadataForFileItem(const std::shared_ptr<const QMFileItem>& fileItem,
                                    Completion completion) const;

    /// The category of files with this extension, in any case and without its dot;
    /// `QMMetadataCategoryNone` for an unknown one.
    [[nodiscard]] static QMMetadataCategory categoryForExtension(std::string_view extension);

    /// The category's name for people; empty for "none" and for numbers that are no category.
    [[nodiscard]] static std::string nameForCategory(QMMetadataCategory category);

    /// The keys that the category's files may have entries for, in the order in which settings
    /// offer them. Constants.
    [[nodiscard]] static std::span<const std::string_view>
    availableKeysForCategory(QMMetadataCategory category);

    /// The keys that the user wants to see: what the preference "QMMetadataEnabled_" with the
    /// category's number holds, unchanged, even if that is nothing; all of them when there is no
    /// such array. Never null.
    [[nodiscard]] static std::shared_ptr<const Keys>
    enabledKeysForCategory(QMMetadataCategory category);

    /// Whether `key` is among `keys`, as a text.
    [[nodiscard]] static bool containsKey(const Keys& keys, std::string_view key);

    /// The label of a key, for settings; the key itself when it is of no category.
    [[nodiscard]] static std::string localizedNameForKey(std::string_view key);

    /// The language of files with this extension, which has to be in lower case; nullopt for an
    /// unknown one. Constants.
    [[nodiscard]] static std::optional<std::string_view>
    programmingLanguageForExtension(std::string_view extension);

    // The extractors, one for each category that has one. Each reads the file at `path`, appends to
    // `into` what it finds of `enabledKeys`, in the order of display, and appends nothing when the
    // file cannot be opened. They may take long: they belong on a background queue.

    /// Size, colours and resolution of the first image in an image file, and what the camera wrote
    /// down when it was taken. No pixels are decoded. The images are counted, which may mean
    /// reading the whole file, only for the key "animated".
    void extractImageMetadata(const std::string& path, const Keys& enabledKeys,
                              QMMetadataEntries& into) const;

    /// Duration, size, rate and codecs of a film, and how many sound tracks it has.
    void extractVideoMetadata(const std::string& path, const Keys& enabledKeys,
                              QMMetadataEntries& into) const;

    /// Duration and form of the sound in a recording, and every title, artist and album that the
    /// file has, in its own order. Channels and depth are told only along with the sample rate.
    void extractAudioMetadata(const std::string& path, const Keys& enabledKeys,
                              QMMetadataEntries& into) const;

    /// Encoding, counts, line ends, language and interpreter of a text file, from its first 64 KiB.
    /// Nothing but regular files is read, so FIFOs and devices never block; a file whose reading
    /// fails counts as one that cannot be opened.
    void extractTextMetadata(const std::string& path, const Keys& enabledKeys,
                             QMMetadataEntries& into) const;

    /// How many pages a PDF has, its version, what it says of its origin, whether it is encrypted,
    /// and, only for the key "searchable", whether its first page has text. No other page is read.
    void extractPDFMetadata(const std::string& path, const Keys& enabledKeys,
                            QMMetadataEntries& into) const;

    /// Format, size, encryption and partition scheme of a disk image, as the disk-image tool tells
    /// them. The tool runs whatever is enabled, and takes its time.
    void extractDiskImageMetadata(const std::string& path, const Keys& enabledKeys,
                                  QMMetadataEntries& into) const;

private:
    explicit QMMetadataService(Settings settings);

    [[nodiscard]] std::optional<platform::MediaAssetProperties>
    assetPropertiesOfFile(const std::string& path, bool wantsMetadata) const;

    [[nodiscard]] std::shared_ptr<QMMetadataEntries>
    entriesForPath(const std::string& path, QMMetadataCategory category) const;

    const Settings m_settings;
};
