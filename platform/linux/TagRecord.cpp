// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/TagRecord.h"

#include "platform/Digest.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace platform {

using TagNames::FinderList;
using TagNames::Names;

const char* const TagAttributes::base = "user." QM_APPLICATION_ID ".tags-base";

namespace {

enum class Winner { desktop, finder, both };

// The digest of a list, by which it is known again without being kept.
std::string digestOf(const Names& names) {
    Digest::SHA256 context;
    for (const std::string& name : names) {
        context.update(bytesOf(name));
        context.update(bytesOf(std::string_view("\0", 1)));
    }
    return Digest::hexString(context.finish());
}

std::string baseValue(const Names& desktop, const std::string& finderDigest) {
    return std::string("1 ").append(digestOf(desktop)).append(" ").append(finderDigest);
}

// A base under which the Finder's list counts, whatever it is: no list has this digest.
std::string baseForFinder(const Names& desktop) {
    return baseValue(desktop, std::string(2 * Digest::sha256Length, '0'));
}

// What the desktops would read, had they stored these names.
Names asDesktopsReadIt(const Names& names) {
    return TagNames::fromDesktopValue(TagNames::toDesktopValue(names));
}

// Which of two different lists was edited since both were written, as far as that is on record.
Winner winnerOf(const Names& desktop, const Names& finder, const TagRecord::Value& base) {
    constexpr std::size_t digestSize = 2 * Digest::sha256Length;
    constexpr std::string_view prefix = "1 ";
    if (!base || base->size() != prefix.size() + digestSize + 1 + digestSize ||
        !base->starts_with(prefix) || (*base)[prefix.size() + digestSize] != ' ') {
        return Winner::both;
    }
    const std::string_view digests = std::string_view(*base).substr(prefix.size());
    const bool desktopEdited = digests.substr(0, digestSize) != digestOf(desktop);
    const bool finderEdited = digests.substr(digestSize + 1) != digestOf(finder);
    if (desktopEdited == finderEdited) {
        return Winner::both;
    }
    return desktopEdited ? Winner::desktop : Winner::finder;
}

Names joined(Names first, Names second) {
    for (std::string& name : second) {
        if (std::ranges::find(first, name) == first.end()) {
            first.push_back(std::move(name));
        }
    }
    return first;
}

// The Finder's list that counts: the first that can be read.
std::optional<FinderList> finderList(const TagRecord& record) {
    for (const TagRecord::Value& value : record.finder) {
        if (auto list = value ? TagNames::fromFinderValue(*value) : std::nullopt) {
            return list;
        }
    }
    return std::nullopt;
}

Winner winnerOf(const TagRecord& record, const Names& desktop, const Names& finder) {
    // The Finder's list can hold names that the desktops' cannot, so it is the better of two
    // that agree.
    return asDesktopsReadIt(finder) == desktop ? Winner::finder
                                               : winnerOf(desktop, finder, record.base);
}

// The names with the colours that they had.
Names colored(const Names& names, const Names& oldEntries) {
    const Names oldNames = TagNames::withoutColors(oldEntries);
    Names entries;
    for (const std::string& name : names) {
        const auto known = std::ranges::find(oldNames, name);
        entries.push_back(known == oldNames.end()
                              ? name
                              : oldEntries[static_cast<std::size_t>(known - oldNames.begin())]);
    }
    return entries;
}

class Changes {
public:
    explicit Changes(TagRecord record)
        : m_record(std::move(record)) {}

    void set(const char* attribute, TagRecord::Value value) {
        TagRecord::Value& current = valueOf(m_record, attribute);
        if (current != value) {
            current = value;
            m_changes.push_back({attribute, std::move(value)});
        }
    }
    std::vector<TagChange> take() { return std::move(m_changes); }

private:
    TagRecord m_record;
    std::vector<TagChange> m_changes;
};

// The list that counts goes last, and of the Finder's lists the first, which counts, after the
// others: so no step brings out a list that did not count before.
std::vector<TagChange> removal(const TagRecord& record) {
    const auto finder = finderList(record);
    const bool desktopWins = record.desktop && finder &&
                             winnerOf(record, TagNames::fromDesktopValue(*record.desktop),
                                      TagNames::withoutColors(finder->entries)) == Winner::desktop;
    Changes changes(record);
    if (!desktopWins && finder) {
        changes.set(TagAttributes::desktop, std::nullopt);
    }
    for (std::size_t i = TagAttributes::finder.size(); i > 0; --i) {
        changes.set(TagAttributes::finder.at(i - 1), std::nullopt);
    }
    changes.set(TagAttributes::desktop, std::nullopt);
    changes.set(TagAttributes::base, std::nullopt);
    return changes.take();
}

// The desktops' list may hold names that do not count, as it does when a name with a comma is in
// the Finder's. They must not come out when that one is replaced.
void keepDesktopListBack(Changes& changes, const TagRecord& record) {
    const Names desktop = TagNames::fromDesktopValue(record.desktop.value_or(std::string()));
    const Names counting = record.names().value_or(Names());
    const bool allCount = std::ranges::all_of(desktop, [&counting](const std::string& name) {
        return std::ranges::find(counting, name) != counting.end();
    });
    if (!allCount) {
        changes.set(TagAttributes::base, baseForFinder(desktop));
    }
}

// Whether Samba's zero byte belongs behind a value: as it was, and its way where that is unknown.
bool endsInZero(const TagRecord::Value& value, std::size_t spelling) {
    const auto list = value ? TagNames::fromFinderValue(*value) : std::nullopt;
    return list ? list->endsInZero : value && spelling > 0;
}

// Sets every spelling of the Finder's list that is there, or the plain one when none is.
bool setFinderLists(Changes& changes, const TagRecord& record, const Names& entries) {
    const bool hasNone = std::ranges::none_of(record.finder, &TagRecord::Value::has_value);
    for (std::size_t i = 0; i < record.finder.size(); ++i) {
        if (!record.finder.at(i) && !(hasNone && i == 0)) {
            continue;
        }
        auto value = TagNames::toFinderValue({entries, endsInZero(record.finder.at(i), i)});
        if (!value) {
            return false;
        }
        changes.set(TagAttributes::finder.at(i), *std::move(value));
    }
    return true;
}

} // namespace

TagRecord::Value& valueOf(TagRecord& record, const char* attribute) {
    const std::string_view name = attribute;
    for (std::size_t i = 0; i < record.finder.size(); ++i) {
        if (name == TagAttributes::finder.at(i)) {
            return record.finder.at(i);
        }
    }
    return name == TagAttributes::desktop ? record.desktop : record.base;
}

std::optional<Names> TagRecord::names() const {
    const auto list = finderList(*this);
    if (!list) {
        return desktop ? std::optional(TagNames::fromDesktopValue(*desktop)) : std::nullopt;
    }
    Names finderNames = TagNames::withoutColors(list->entries);
    if (!desktop) {
        return finderNames;
    }
    Names desktopNames = TagNames::fromDesktopValue(*desktop);
    switch (winnerOf(*this, desktopNames, finderNames)) {
    case Winner::desktop: return desktopNames;
    case Winner::finder: return finderNames;
    case Winner::both: break;
    }
    return joined(std::move(desktopNames), std::move(finderNames));
}

bool TagRecord::isDamaged() const {
    return std::ranges::any_of(
        finder, [](const Value& value) { return value && !TagNames::fromFinderValue(*value); });
}

// The Finder's list comes first: while the desktops' is still the old one, the two differ, and
// then either the Finder's or both count. The other way round, a name with a comma would show as
// two for a moment.
std::optional<std::vector<TagChange>> changesFor(const TagRecord& record, const Names& names) {
    if (names.empty()) {
        return removal(record);
    }
    Changes changes(record);
    const bool needsFinder = std::ranges::any_of(record.finder, &TagRecord::Value::has_value) ||
                             !std::ranges::all_of(names, TagNames::fitsDesktops);
    if (needsFinder) {
        const auto old = finderList(record);
        const Names entries = colored(names, old ? old->entries : Names());
        keepDesktopListBack(changes, record);
        if (!setFinderLists(changes, record, entries)) {
            return std::nullopt;
        }
    }
    const std::string desktop = TagNames::toDesktopValue(names);
    changes.set(TagAttributes::desktop,
                desktop.empty() ? TagRecord::Value() : TagRecord::Value(desktop));
    const bool hasBoth = needsFinder && !desktop.empty();
    changes.set(TagAttributes::base,
                hasBoth ? TagRecord::Value(baseValue(TagNames::fromDesktopValue(desktop),
                                                     digestOf(TagNames::withoutColors(names))))
                        : TagRecord::Value());
    return changes.take();
}

} // namespace platform
