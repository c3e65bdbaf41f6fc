// SPDX-License-Identifier: Apache-2.0
// What happens when memory runs out, at each of the moments at which it can.
#include "platform/Json.h"
#include "platform/PropertyList.h"

#include <cstdlib>
#include <functional>
#include <new>
#include <string>

#include <gtest/gtest.h>

namespace {

// How many more times this thread gets memory; negative for always.
thread_local long remaining = -1;

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
    if (remaining == 0) {
        throw std::bad_alloc();
    }
    remaining -= remaining > 0 ? 1 : 0;
    void* const memory = std::malloc(size > 0 ? size : 1);
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
