// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/TagRecord.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::changesFor;
using platform::TagAttributes;
using platform::TagRecord;
using platform::TagNames::FinderList;
using platform::TagNames::Names;
using platform::TagNames::withoutColors;
using Value = TagRecord::Value;

Value finder(const Names& entries, bool endsInZero = false) {
    return platform::TagNames::toFinderValue({entries, endsInZero});
}

/// The record after these names were stored in it.
TagRecord stored(TagRecord record, const Names& names) {
    const auto changes = changesFor(record, names);
    EXPECT_TRUE(changes);
    for (const auto& change : changes.value_or(std::vector<platform::TagChange>())) {
        valueOf(record, change.attribute) = change.value;
    }
    return record;
}

TagRecord record(Value desktop, Value plainFinder = {}, Value base = {}) {
    TagRecord result;
    result.desktop = std::move(desktop);
    result.finder[0] = std::move(plainFinder);
    result.base = std::move(base);
    return result;
}

Names entriesIn(const Value& value) {
    const auto list = value ? platform::TagNames::fromFinderValue(*value) : std::nullopt;
    return list ? list->entries : Names{"(none)"};
}

TEST(TagRecord, NamesAreThoseOfTheOnlyList) {
    EXPECT_EQ(TagRecord().names(), std::nullopt);
    EXPECT_EQ(record("a,,b,").names(), (Names{"a", "b"}));
    EXPECT_EQ(record({}, finder({"a\n6", "b,c", ""})).names(), (Names{"a", "b,c", ""}));
    EXPECT_EQ(record("").names(), Names());
}

TEST(TagRecord, FindersListIsTheBetterOfTwoThatAgree) {
    EXPECT_EQ(record("a,b,c", finder({"a,b", "", "c\n1"})).names(), (Names{"a,b", "", "c"}));
}

TEST(TagRecord, ListsThatDifferAreJoinedWithoutABase) {
    EXPECT_EQ(record("a,b", finder({"c", "b"})).names(), (Names{"a", "b", "c"}));
}

TEST(TagRecord, TheOneThatWasEditedSinceBothWereWrittenWins) {
    const TagRecord both = stored(record({}, finder({"x"})), {"a", "b"});
    TagRecord desktopEdited = both;
    desktopEdited.desktop = "a";
    EXPECT_EQ(desktopEdited.names(), Names{"a"});
    TagRecord finderEdited = both;
    finderEdited.finder[0] = finder({"b\n4"});
    EXPECT_EQ(finderEdited.names(), Names{"b"});
    TagRecord bothEdited = desktopEdited;
    bothEdited.finder[0] = finder({"b"});
    EXPECT_EQ(bothEdited.names(), (Names{"a", "b"}));
}

TEST(TagRecord, ColorsAloneAreNoEdit) {
    TagRecord edited = stored(record({}, finder({"x"})), {"a", "b"});
    edited.finder[0] = finder({"a\n1", "b\n2"});
    edited.desktop = "b";
    EXPECT_EQ(edited.names(), Names{"b"});
}

TEST(TagRecord, DamagedOrForgedBasesDecideNothing) {
    const TagRecord both = stored(record({}, finder({"x"})), {"a"});
    ASSERT_TRUE(both.base);
    for (const std::string& base :
         {std::string(), std::string("1 "), both.base->substr(1), *both.base + "0",
          std::string(both.base->size(), '0'), std::string(both.base->size(), ' ')}) {
        EXPECT_EQ(record("b", finder({"a"}), base).names(), (Names{"b", "a"})) << base;
    }
}

TEST(TagRecord, DamagedFinderListsAreLeftAside) {
    EXPECT_EQ(record("a", "bplist00").names(), Names{"a"});
    EXPECT_EQ(record({}, "bplist00").names(), std::nullopt);
    EXPECT_TRUE(record("a", "bplist00").isDamaged());
    EXPECT_FALSE(record("a", finder({"a"})).isDamaged());
    TagRecord second = record({}, "damaged");
    second.finder[1] = finder({"a"});
    EXPECT_EQ(second.names(), Names{"a"});
    EXPECT_TRUE(second.isDamaged());
}

TEST(TagRecord, StoresForTheDesktopsAloneWhereThatIsEnough) {
    const TagRecord result = stored(TagRecord(), {"a", "b"});
    EXPECT_EQ(result.desktop, "a,b");
    EXPECT_EQ(result.finder[0], std::nullopt);
    EXPECT_EQ(result.base, std::nullopt);
}

TEST(TagRecord, NamesThatDesktopsCannotReadNeedTheFindersList) {
    const TagRecord comma = stored(TagRecord(), {"a,b", "c"});
    EXPECT_EQ(comma.desktop, "a,b,c");
    EXPECT_EQ(entriesIn(comma.finder[0]), (Names{"a,b", "c"}));
    EXPECT_TRUE(comma.base);
    const TagRecord empty = stored(TagRecord(), {""});
    EXPECT_EQ(empty.desktop, std::nullopt);
    EXPECT_EQ(entriesIn(empty.finder[0]), Names{""});
    EXPECT_EQ(empty.base, std::nullopt);
}

TEST(TagRecord, EverySpellingThatIsThereIsKeptUp) {
    TagRecord old;
    old.finder[1] = finder({"x"}, true);
    old.finder[2] = finder({"y"});
    const TagRecord result = stored(old, {"a"});
    EXPECT_EQ(result.finder[0], std::nullopt);
    EXPECT_EQ(result.finder[1], finder({"a"}, true));
    EXPECT_EQ(result.finder[2], finder({"a"}));
    EXPECT_EQ(result.desktop, "a");
}

TEST(TagRecord, ColorsAreKeptByName) {
    const TagRecord result =
        stored(record({}, finder({"Red\n6", "Work", "Red\n1"})), {"new", "Work", "Red", "Own\n3"});
    EXPECT_EQ(entriesIn(result.finder[0]), (Names{"new", "Work", "Red\n6", "Own\n3"}));
    EXPECT_EQ(result.names(), (Names{"new", "Work", "Red", "Own"}));
}

TEST(TagRecord, NoNamesRemoveEveryTrace) {
    TagRecord old = stored(record("a", finder({"b"})), {"c"});
    old.finder[1] = "damaged";
    const TagRecord result = stored(old, {});
    EXPECT_FALSE(result.desktop || result.base || result.finder[0] || result.finder[1]);
}

TEST(TagRecord, WhatIsThereAlreadyIsNotWrittenAgain) {
    const TagRecord both = stored(record({}, finder({"x"})), {"a", "b"});
    EXPECT_TRUE(changesFor(both, {"a", "b"})->empty());
    EXPECT_TRUE(changesFor(TagRecord(), {})->empty());
}

TEST(TagRecord, TextsThatAreNotUTF8CannotGoIntoTheFindersList) {
    EXPECT_EQ(stored(TagRecord(), {"caf\xE9"}).desktop, "caf\xE9");
    EXPECT_FALSE(changesFor(TagRecord(), {"caf\xE9,b"}));
    EXPECT_FALSE(changesFor(record({}, finder({"x"})), {"caf\xE9"}));
}

bool isWithin(const Names& names, const Names& first, const Names& second) {
    return std::ranges::all_of(names, [&](const std::string& name) {
        return std::ranges::find(first, name) != first.end() ||
               std::ranges::find(second, name) != second.end();
    });
}

/// Checks every state that a process which dies in the middle could leave behind.
void checkSteps(TagRecord current, const Names& names) {
    const Names before = current.names().value_or(Names());
    const Names after = withoutColors(names);
    const auto changes = changesFor(current, names);
    ASSERT_TRUE(changes);
    for (const auto& change : *changes) {
        valueOf(current, change.attribute) = change.value;
        const Names seen = current.names().value_or(Names());
        EXPECT_TRUE(isWithin(seen, before, after))
            << testing::PrintToString(seen) << " between " << testing::PrintToString(before)
            << " and " << testing::PrintToString(after);
    }
    EXPECT_EQ(current.names().value_or(Names()), after);
}

TEST(TagRecord, NoStepShowsANameThatNeitherListHas) {
    const std::vector<Value> desktops{{}, "", "a", "a,b", "c,", "x,y"};
    const std::vector<Value> finders{{},
                                     "damaged",
                                     finder({"a"}),
                                     finder({"a", "b\n2"}),
                                     finder({"a,b"}),
                                     finder({"c\n6"}),
                                     finder({""}),
                                     finder({"z"}, true)};
    const std::vector<Value> seconds{{}, "damaged", finder({"d"}), finder({"a"})};
    const Value edited = stored(record({}, finder({"a"})), {"a"}).base;
    const Value other = stored(record({}, finder({"c"})), {"c"}).base;
    const std::vector<Names> lists{{},   {"a"}, {"a", "b"}, {"a,b"},      {"", "a"},
                                   {""}, {"c"}, {"x\n3"},   {",", "new"}, {","}};
    for (const Value& desktop : desktops) {
        for (const Value& first : finders) {
            for (const Value& second : seconds) {
                for (const Value& base : {Value(), Value("junk"), edited, other}) {
                    TagRecord old = record(desktop, first, base);
                    old.finder[1] = second;
                    for (const Names& names : lists) {
                        checkSteps(old, names);
                    }
                }
            }
        }
    }
}

} // namespace
