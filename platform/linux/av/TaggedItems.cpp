// SPDX-License-Identifier: Apache-2.0
// Frames of ID3v2 and packets of Ogg, with TagLib.
#include "platform/linux/av/TaggedItems.h"

#include "platform/linux/ByteText.h"
#include "platform/linux/av/VorbisComment.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <span>
#include <string_view>

#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2tag.h>
#include <taglib/oggfile.h>
#include <taglib/rifffile.h>
#include <taglib/textidentificationframe.h>
#include <taglib/tiostream.h>

namespace platform::av {
namespace {

using CommonKey = MediaAssetProperties::MetadataItem::CommonKey;

/// The bytes of a file for TagLib, which has no way to write to them.
class Stream final : public TagLib::IOStream {
public:
    explicit Stream(const OpenedFile& file)
        : m_file(file)
        , m_length(static_cast<long>(std::min<std::uint64_t>(
              file.size(), static_cast<std::uint64_t>(std::numeric_limits<long>::max())))) {}

    [[nodiscard]] TagLib::FileName name() const override { return ""; }
    TagLib::ByteVector readBlock(unsigned long length) override {
        constexpr unsigned long maximum = 16UL << 20U;
        const auto rest = static_cast<unsigned long>(std::max(m_length - m_position, 0L));
        TagLib::ByteVector block(static_cast<unsigned>(std::min({length, rest, maximum})), '\0');
        const auto space = std::as_writable_bytes(std::span(block.data(), block.size()));
        const auto count = m_file.readSome(static_cast<std::uint64_t>(m_position), space);
        m_position += static_cast<long>(count);
        block.resize(static_cast<unsigned>(count));
        return block;
    }
    void writeBlock(const TagLib::ByteVector& /*data*/) override {}
    void insert(const TagLib::ByteVector& /*data*/, unsigned long /*start*/,
                unsigned long /*replace*/) override {}
    void removeBlock(unsigned long /*start*/, unsigned long /*length*/) override {}
    [[nodiscard]] bool readOnly() const override { return true; }
    [[nodiscard]] bool isOpen() const override { return true; }
    void seek(long offset, Position from) override {
        const long origin = from == Beginning ? 0 : from == Current ? m_position : m_length;
        // Nothing is read beyond the end, so it does not matter how far beyond one goes.
        m_position = offset > m_length - origin ? m_length
                                                : std::max(origin + std::max(offset, -origin), 0L);
    }
    [[nodiscard]] long tell() const override { return m_position; }
    long length() override { return m_length; }
    void truncate(long /*length*/) override {}

private:
    const OpenedFile& m_file;
    long m_length;
    long m_position = 0;
};

/// What of a file is of interest here; not what the library makes of the whole.
template <class Base>
class Parts : public Base {
public:
    using Base::Base;

    [[nodiscard]] TagLib::Tag* tag() const override { return nullptr; }
    [[nodiscard]] TagLib::AudioProperties* audioProperties() const override { return nullptr; }
    bool save() override { return false; }
};

class PlainFile final : public Parts<TagLib::File> {
public:
    explicit PlainFile(Stream& stream)
        : Parts(&stream) {}
};

class OggFile final : public Parts<TagLib::Ogg::File> {
public:
    explicit OggFile(Stream& stream)
        : Parts(&stream) {}
};

class ChunkFile final : public Parts<TagLib::RIFF::File> {
public:
    ChunkFile(Stream& stream, bool isAiff)
        : Parts(&stream, isAiff ? BigEndian : LittleEndian) {}

    // What the library keeps from others.
    [[nodiscard]] unsigned count() const { return chunkCount(); }
    [[nodiscard]] TagLib::ByteVector nameOf(unsigned number) const { return chunkName(number); }
    [[nodiscard]] long offsetOf(unsigned number) const { return chunkOffset(number); }
    [[nodiscard]] TagLib::ByteVector dataOf(unsigned number) { return chunkData(number); }
};

DataView viewOf(const TagLib::ByteVector& bytes) {
    return std::as_bytes(std::span(bytes.data(), bytes.size()));
}

// The frames' names in version 2.3 and 2.4 of ID3; those of version 2.2 become the same.
constexpr std::array frameNames{
    ItemName{"TIT2", CommonKey::title},
    ItemName{"TPE1", CommonKey::artist},
    ItemName{"TALB", CommonKey::albumName},
};
constexpr std::array chunkNames{
    ItemName{"NAME", CommonKey::title},
    ItemName{"AUTH", CommonKey::artist},
};

template <std::size_t size>
const ItemName* find(const std::array<ItemName, size>& table, const TagLib::ByteVector& name) {
    const auto* const found =
        std::ranges::find_if(table, [view = viewOf(name)](const ItemName& one) {
            return view.size() == one.name.size() && hasTextAt(view, 0, one.name);
        });
    return found == table.end() ? nullptr : found;
}

// A frame may have several values. They become one text, with the mark between them that version
// 2.3 has for several artists.
std::string textOf(const TagLib::StringList& values) {
    const std::string joined = values.toString("/").to8Bit(true);
    return itemText(bytesOf(joined));
}

void appendTag(TagLib::File& file, long offset, Items& items) {
    const TagLib::ID3v2::Tag tag(&file, offset, TagLib::ID3v2::FrameFactory::instance());
    for (const TagLib::ID3v2::Frame* frame : tag.frameList()) {
        const auto* const text = dynamic_cast<const TagLib::ID3v2::TextIdentificationFrame*>(frame);
        const ItemName* const name = text == nullptr ? nullptr : find(frameNames, frame->frameID());
        if (name != nullptr) {
            items.push_back({name->key, textOf(text->fieldList())});
        }
    }
}

// The comments in a packet with this beginning.
struct CommentPacket {
    std::string_view stream; ///< how the first packet begins
    std::string_view mark;   ///< how that of the comments begins
};
constexpr std::array commentPackets{
    CommentPacket{"\x01vorbis", "\x03vorbis"},
    CommentPacket{"OpusHead", "OpusTags"},
    CommentPacket{"\x7F"
                  "FLAC",
                  "\x04"},
    CommentPacket{"\x80theora", "\x81theora"},
    CommentPacket{"Speex   ", ""},
};

} // namespace

Items itemsOfLeadingTag(const OpenedFile& file) {
    Stream stream(file);
    PlainFile plain(stream);
    Items items;
    appendTag(plain, 0, items);
    return items;
}

Items itemsOfChunks(const OpenedFile& file, bool isAiff) {
    Stream stream(file);
    ChunkFile chunks(stream, isAiff);
    Items items;
    for (unsigned i = 0; i < chunks.count(); ++i) {
        const TagLib::ByteVector name = chunks.nameOf(i);
        const ItemName* const known = isAiff ? find(chunkNames, name) : nullptr;
        if (name == "ID3 " || name == "id3 ") {
            appendTag(chunks, chunks.offsetOf(i), items);
        } else if (known != nullptr) {
            items.push_back({known->key, itemText(viewOf(chunks.dataOf(i)))});
        }
    }
    return items;
}

Items itemsOfOgg(const OpenedFile& file) {
    // In FLAC's case the packet is a block with a head of four bytes.
    constexpr std::size_t flacHeadSize = 4;
    Stream stream(file);
    OggFile ogg(stream);
    const TagLib::ByteVector first = ogg.packet(0);
    const auto* const kind = std::ranges::find_if(commentPackets, [&](const CommentPacket& one) {
        return hasTextAt(viewOf(first), 0, one.stream);
    });
    const TagLib::ByteVector second =
        kind == commentPackets.end() ? TagLib::ByteVector() : ogg.packet(1);
    const DataView comments = viewOf(second);
    if (kind == commentPackets.end() || !hasTextAt(comments, 0, kind->mark)) {
        return {};
    }
    const std::size_t skipped = kind->mark == "\x04" ? flacHeadSize : kind->mark.size();
    return itemsOfVorbisComment(comments.subspan(std::min(skipped, comments.size())));
}

} // namespace platform::av
