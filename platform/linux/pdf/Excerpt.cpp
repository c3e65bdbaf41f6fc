// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/Excerpt.h"

#include "platform/linux/pdf/DocumentUpdate.h"
#include "platform/linux/pdf/ObjectValues.h"

#include <algorithm>
#include <array>

namespace platform::pdf {
namespace {

using namespace std::string_view_literals;

// What an offset in a table can be.
constexpr std::uint64_t largestFile = 9'000'000'000;
// A page with more is better left to the document's own table.
constexpr std::size_t mostShown = 500;
constexpr std::size_t largestUpdate = std::size_t{8} << 20U;
// Bytes of a list that is read as fast as it is cut down.
constexpr std::size_t shortList = 256;

constexpr std::array soughtInTrailer{"/Root"sv, "/Info"sv, "/Encrypt"sv, "/ID"sv};
// What poppler looks up in catalogs when it opens a document.
constexpr std::array soughtInCatalog{"/AcroForm"sv, "/URI"sv, "/Version"sv};
// What leads away from a page, or has nothing to do with whether there is text on it.
constexpr std::array detours{"/Annots"sv, "/CharProcs"sv,      "/Metadata"sv,
                             "/P"sv,      "/Parent"sv,         "/PieceInfo"sv,
                             "/Pg"sv,     "/StructTreeRoot"sv, "/Thumb"sv};

bool isIn(const auto& keys, std::string_view key) {
    return std::ranges::find(keys, key) != keys.end();
}

bool isPage(const Dictionary& node) {
    return node["/Type"] == "/Page"sv || (node["/Type"] != "/Pages"sv && node["/Kids"].empty());
}

// The value with only the first of the references in its array `children`.
std::string withFirstOf(std::string_view children, std::string_view first, std::string_view value) {
    const auto start = static_cast<std::size_t>(children.data() - value.data());
    std::string text(value.substr(0, start));
    text.append("[").append(first).append("]");
    return text.append(value.substr(start + children.size()));
}

class ExcerptMaker {
public:
    ExcerptMaker(FileBytes& file, ObjectTable& table)
        : m_table(table)
        , m_values(file, table)
        , m_update(file.size()) {}

    std::optional<Excerpt> make(bool wantsText, std::uint64_t fewestObjects) {
        const auto trailer = Dictionary::of(m_table.trailer());
        const auto count = trailer ? integerOf((*trailer)["/Size"]) : std::nullopt;
        if (!count || *count < fewestObjects || *count > mostObjects) {
            return std::nullopt;
        }
        m_isEncrypted = !(*trailer)["/Encrypt"].empty();
        if (!addCatalog((*trailer)["/Root"], wantsText)) {
            return std::nullopt;
        }
        std::string entries;
        for (const auto key : soughtInTrailer) {
            const std::string_view value = (*trailer)[key];
            follow(key == "/Root"sv ? ""sv : value);
            entries.append(value.empty() ? ""sv : key).append(" ").append(value);
        }
        addFollowed();
        if (!m_isGood || m_update.size() > largestUpdate) {
            return std::nullopt;
        }
        const std::uint64_t end = m_update.endOfNumbers();
        return Excerpt{m_update.finish(m_table.start(), entries), end, *count, m_numberOfChildren};
    }

private:
    struct Found {
        Reference reference;
        Place place;
        std::string value;
    };

    struct Node {
        std::string child; ///< a reference; empty for a page
        std::string contents;
        std::string resources;
    };

    bool addCatalog(std::string_view reference, bool wantsText) {
        const auto value = add(reference);
        const auto catalog = Dictionary::of(value);
        if (!catalog) {
            return false;
        }
        for (const auto& [key, entry] : catalog->entries()) {
            if (isIn(soughtInCatalog, key)) {
                add(entry);
            } else if (key == "/OCProperties"sv && wantsText) {
                follow(entry);
            }
        }
        return addPages(std::string((*catalog)["/Pages"]), wantsText);
    }

    // The way to the first page.
    bool addPages(std::string reference, bool wantsText) {
        constexpr int deepest = 64;
        std::string resources;
        for (int level = 0; level < deepest; ++level) {
            auto node = addNode(reference, level == 0);
            if (!node) {
                return false;
            }
            add(node->resources);
            resources = node->resources.empty() ? resources : node->resources;
            if (node->child.empty()) {
                follow(wantsText ? node->contents : "");
                follow(wantsText ? resources : "");
                return true;
            }
            reference = node->child;
        }
        return false;
    }

    // A node of the tree of pages, cut down when it has many children.
    std::optional<Node> addNode(std::string_view reference, bool isRoot) {
        const auto found = find(reference);
        const auto node = found ? Dictionary::of(found->value) : std::nullopt;
        if (!node) {
            return std::nullopt;
        }
        Node parts{"", std::string((*node)["/Contents"]), std::string((*node)["/Resources"])};
        if (isPage(*node)) {
            show(*found);
            return parts;
        }
        const std::string_view children = (*node)["/Kids"];
        const auto count = countOfReferences(children);
        const auto first = ValueReader(children).next();
        if (!count || !first) {
            return std::nullopt;
        }
        parts.child = *first;
        if (children.size() <= shortList) {
            show(*found);
        } else {
            m_numberOfChildren = isRoot ? count : m_numberOfChildren;
            write(*found, withFirstOf(children, *first, found->value));
        }
        return parts;
    }

    std::optional<Found> find(std::string_view reference) {
        const auto target = referenceOf(reference);
        const auto place = target ? m_table.find(target->number) : std::nullopt;
        const auto value = place ? m_values.valueOf(target->number, *place) : std::nullopt;
        return value ? std::optional(Found{*target, *place, std::string(*value)}) : std::nullopt;
    }

    // Shows the object, if this is a reference to one, and answers its value.
    std::string add(std::string_view reference) {
        auto found = find(reference);
        if (!found) {
            return {};
        }
        show(*found);
        return std::move(found->value);
    }

    void show(const Found& found) {
        if (found.place.kind == Place::Kind::packed) {
            write(found, found.value);
        } else {
            m_update.name({found.reference.number, found.place.number}, found.place.offset);
        }
    }

    void write(const Found& found, std::string_view value) {
        const bool isPacked = found.place.kind == Place::Kind::packed;
        // Strings are encrypted where objects are not packed.
        m_isGood = m_isGood && !(isPacked && m_isEncrypted);
        if (m_update.size() <= largestUpdate) {
            m_update.write({found.reference.number, isPacked ? 0 : found.place.number}, value);
        }
    }

    // Has references in the value followed, wherever they lead.
    void follow(std::string_view value) {
        if (const auto reference = referenceOf(value)) {
            if (m_known.insert(reference->number).second) {
                m_followed.emplace_back(value);
            }
            return;
        }
        ValueReader reader(value); // has nothing in it for other values
        while (auto item = reader.next()) {
            const bool isDetour = isDictionary(value) && isIn(detours, *item);
            item = isDictionary(value) ? reader.next() : item;
            follow(isDetour ? ""sv : item.value_or(""sv));
        }
    }

    void addFollowed() {
        for (std::size_t next = 0;
             next < m_followed.size() && m_update.numberOfObjects() < mostShown; ++next) {
            follow(add(std::string(m_followed[next])));
        }
    }

    ObjectTable& m_table;
    ObjectValues m_values;
    DocumentUpdate m_update;
    bool m_isEncrypted = false;
    bool m_isGood = true;
    std::optional<std::uint64_t> m_numberOfChildren;
    std::vector<std::string> m_followed; ///< references
    std::set<std::uint32_t> m_known;     ///< their numbers
};

} // namespace

std::optional<Excerpt> excerptOf(int descriptor, std::uint64_t size, bool wantsText,
                                 std::uint64_t fewestObjects) {
    FileBytes file(descriptor, size);
    // Its own, so that what was read of objects is not lost by looking into the table.
    FileBytes tableBytes(descriptor, size);
    if (size > largestFile || !file.at(0, 5).starts_with("%PDF-"sv)) {
        return std::nullopt;
    }
    auto table = ObjectTable::of(tableBytes);
    return table ? ExcerptMaker(file, *table).make(wantsText, fewestObjects) : std::nullopt;
}

} // namespace platform::pdf
