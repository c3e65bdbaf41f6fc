// SPDX-License-Identifier: Apache-2.0
// What happens when memory runs out, at each of the moments at which it can.
#include "platform/FileTags.h"
#include "platform/Json.h"
#include "platform/PropertyList.h"
#include "platform/linux/TagSearch.h"
#include "tests/unit/support/TemporaryFolder.h"

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>
#include <string>

#include <gtest/gtest.h>

namespace {

// How many more times there is memory, for all threads together; negative for always.
std::atomic<long> remaining = -1;

bool isMemoryLeft() {
    long before = remaining;
    while (before > 0 && !remaining.compare_exchange_weak(before, before - 1)) {
    }
    return before != 0;
}

// Runs `action` with memory for 0, 1, 2, … allocations until it succeeds. Answers how many it took.
long allocationsUntilDone(const std::function<void()>& action) {
    for (long count = 0;; ++count) {
        remaining = count;
        try {
            action();
            remaining = -1;
            return count;
        } catch (const std::bad_alloc&) {
            remaining = -1;
        }
    }
}

const std::string longText(100, 'x');

} // namespace

void* operator new(std::size_t size) {
    void* const memory = isMemoryLeft() ? std::malloc(size > 0 ? size : 1) : nullptr;
    return memory != nullptr ? memory : throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

TEST(Memory, JsonThatCannotBeCopiedStaysAsItWas) {
    using platform::Json;
    const Json json = Json::Array{Json::Object{{longText, longText}, {"b", Json::Array{longText}}}};
    Json copy = nullptr;
    EXPECT_GT(allocationsUntilDone([&] { copy = json; }), 4);
    std::string error;
    EXPECT_EQ(copy.serialized(error), json.serialized(error));
}

TEST(Memory, PropertyListsThatCannotBeCopiedStayAsTheyWere) {
    using platform::PropertyList;
    const PropertyList list =
        PropertyList::Array{PropertyList::Dictionary{{longText, longText}, {"b", 1}}, longText};
    PropertyList copy = PropertyList::Array{longText};
    const PropertyList before = copy;
    EXPECT_GT(allocationsUntilDone([&] {
                  EXPECT_EQ(copy, before);
                  copy = list;
              }),
              4);
    EXPECT_EQ(copy, list);
}

TEST(Memory, JsonIsWrittenOrTheLackOfMemoryIsThrown) {
    using platform::Json;
    const Json json = Json::Object{{"list", Json::Array{longText, 1.5, nullptr}}};
    std::string error;
    const auto wanted = json.serialized(error);
    EXPECT_GT(allocationsUntilDone([&] { EXPECT_EQ(json.serialized(error), wanted); }), 2);
    EXPECT_EQ(error, "");
}

TEST(Memory, ASearchFindsEverythingOrTheLackOfMemoryIsThrown) {
    const TemporaryFolder folder;
    for (const char* const name : {"a/b/c", "a/b/d", "a/e", "f"}) {
        ASSERT_NE(folder.folder(name), "");
        // Without tags, where the file system keeps no attributes, it is still walked.
        static_cast<void>(platform::FileTags::write(folder.path(name), {longText}));
    }
    const platform::SearchScope scope{{folder.path()}, {}};
    const auto wanted = platform::itemsWithTag(scope, longText);
    EXPECT_GT(
        allocationsUntilDone([&] { EXPECT_EQ(platform::itemsWithTag(scope, longText), wanted); }),
        20);
}
