// SPDX-License-Identifier: Apache-2.0
#include "platform/Text.h"
#include "platform/linux/Icu.h"

#include <limits>
#include <memory>
#include <utility>

namespace platform::Text {
namespace {

using Iterator = std::unique_ptr<icu::BreakIterator>;

Iterator makeIterator() {
    UErrorCode status = U_ZERO_ERROR;
    Iterator iterator(icu::BreakIterator::createWordInstance(icu::Locale::getRoot(), status));
    return U_FAILURE(status) != 0 ? nullptr : std::move(iterator);
}

// An iterator that has read no text yet. Copies are cheaper than new ones.
Iterator copyOfIterator() {
    // Never destroyed: workers may still count while the process ends.
    static const Iterator& first = *new Iterator(makeIterator());
    return Iterator(first ? first->clone() : nullptr);
}

// Iterators may not be used by two threads at once, and read the text where it is.
struct WordIterator {
    icu::UnicodeString text;
    Iterator iterator = copyOfIterator();
};

} // namespace

std::optional<std::size_t> wordCount(std::string_view text) {
    thread_local WordIterator words;
    if (!words.iterator || text.size() > std::numeric_limits<std::int32_t>::max()) {
        return std::nullopt;
    }
    // UTF-16 costs a copy, but going through UTF-8 in place takes up to twice as long.
    words.text =
        icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    if (words.text.isBogus() != 0) {
        return std::nullopt;
    }
    words.iterator->setText(words.text);
    std::size_t count = 0;
    while (words.iterator->next() != icu::BreakIterator::DONE) {
        count += static_cast<std::size_t>(words.iterator->getRuleStatus() >= UBRK_WORD_NUMBER);
    }
    return count;
}

} // namespace platform::Text
