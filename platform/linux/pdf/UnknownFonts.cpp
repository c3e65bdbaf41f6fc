// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/UnknownFonts.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>
#include <utility>

namespace platform::pdf {
namespace {

// Adobe's sets of characters (ISO 32000-2, 9.7.3), older ones included.
constexpr std::array<std::string_view, 7> knownOrderings{"GB1",    "CNS1", "Japan1", "Japan2",
                                                         "Korea1", "KR",   "Manga1"};

bool hasUnknownEncoding(const Object& font) {
    const Object encoding = font.dictLookup("Encoding");
    return encoding.isName() && !encoding.isName("Identity-H") && !encoding.isName("Identity-V");
}

bool hasUnknownCharacters(const Object& descendants) {
    const bool isOne = descendants.isArray() && descendants.arrayGetLength() == 1;
    const Object descendant = isOne ? descendants.arrayGet(0) : Object(objNull);
    const Object system =
        descendant.isDict() ? descendant.dictLookup("CIDSystemInfo") : Object(objNull);
    const Object ordering = system.isDict() ? system.dictLookup("Ordering") : Object(objNull);
    return ordering.isString() &&
           std::ranges::find(knownOrderings, ordering.getString()->toStr()) != knownOrderings.end();
}

Object dictionary(XRef& objects) {
    return Object(new Dict(&objects));
}

Object text(const char* characters) {
    return Object(new GooString(characters));
}

// A font whose characters are what stands for them.
Object knownDescendants(XRef& objects) {
    Object system = dictionary(objects);
    system.dictSet("Registry", text("Adobe"));
    system.dictSet("Ordering", text("Identity"));
    system.dictSet("Supplement", Object(0));
    Object font = dictionary(objects);
    font.dictSet("Type", Object(objName, "Font"));
    font.dictSet("Subtype", Object(objName, "CIDFontType0"));
    font.dictSet("CIDSystemInfo", std::move(system));
    Object list(new Array(&objects));
    list.arrayAdd(std::move(font));
    return list;
}

/// Goes through the resources of a page and of the forms on it.
class FontReplacer {
public:
    explicit FontReplacer(XRef& objects)
        : m_objects(objects) {}

    void visitResources(const Object& resources, int level = 0) {
        constexpr int deepest = 8;
        if (!resources.isDict() || level > deepest) {
            return;
        }
        forEach(resources.dictLookup("Font"), [this](Object& font, Ref ref) { visit(font, ref); });
        forEach(resources.dictLookup("XObject"), [this, level](Object& object, Ref ref) {
            const bool isNew = ref.num < 0 || m_seen.insert(ref.num).second;
            if (isNew && object.isStream()) {
                visitResources(object.streamGetDict()->lookup("Resources"), level + 1);
            }
        });
    }

    [[nodiscard]] bool hasReplaced() const { return m_hasReplaced; }

private:
    template <class Visit>
    void forEach(const Object& dictionary, const Visit& visit) {
        const int count = dictionary.isDict() ? dictionary.dictGetLength() : 0;
        for (int number = 0; number < count && m_looks > 0; ++number, --m_looks) {
            Ref ref = Ref::INVALID();
            Object value = dictionary.getDict()->getVal(number, &ref);
            visit(value, ref);
        }
    }

    void visit(Object& font, Ref ref) {
        const Object descendants =
            font.isDict() ? font.dictLookup("DescendantFonts") : Object(objNull);
        if (!descendants.isArray() ||
            (!hasUnknownEncoding(font) && !hasUnknownCharacters(descendants))) {
            return;
        }
        font.dictSet("Encoding", Object(objName, "Identity-H"));
        font.dictSet("DescendantFonts", knownDescendants(m_objects));
        font.getDict()->remove("ToUnicode");
        if (ref.num >= 0) {
            m_objects.setModifiedObject(&font, ref);
        }
        m_hasReplaced = true;
    }

    XRef& m_objects;
    std::set<int> m_seen;
    int m_looks = 1000;
    bool m_hasReplaced = false;
};

} // namespace

bool replaceUnknownFonts(XRef& objects, const Object& resources) {
    FontReplacer replacer(objects);
    replacer.visitResources(resources);
    return replacer.hasReplaced();
}

} // namespace platform::pdf
