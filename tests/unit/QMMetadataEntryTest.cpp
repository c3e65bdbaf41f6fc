// SPDX-License-Identifier: Apache-2.0
#include "model/QMMetadataEntry.h"

#include "model/QMMetadataResult.h"

#include <gtest/gtest.h>

namespace {

TEST(QMMetadataEntry, HoldsWhatItIsGiven) {
    const auto entry = QMMetadataEntry::entryWithKey("pageCount", "Pages", "12");
    EXPECT_EQ(entry->key, "pageCount");
    EXPECT_EQ(entry->localizedKey, "Pages");
    EXPECT_EQ(entry->value, "12");
    EXPECT_FALSE(entry->isPrimary);
}

TEST(QMMetadataEntry, DashStandsForAnAbsentValueOnly) {
    EXPECT_EQ(QMMetadataEntry::entryWithKey("k", "l", std::nullopt)->value, "\u2014");
    EXPECT_EQ(QMMetadataEntry::entryWithKey("k", "l", "")->value, "");
    EXPECT_EQ(QMMetadataEntry::entryWithKey("k", "l", " x ")->value, " x ");
}

TEST(QMMetadataEntry, PrimaryOnesFollowTheSameRules) {
    const auto absent = QMMetadataEntry::primaryEntryWithKey("k", "l", std::nullopt);
    EXPECT_EQ(absent->value, "\u2014");
    EXPECT_TRUE(absent->isPrimary);
    const auto entry = QMMetadataEntry::primaryEntryWithKey("k", "l", "v");
    EXPECT_EQ(entry->key, "k");
    EXPECT_EQ(entry->localizedKey, "l");
    EXPECT_EQ(entry->value, "v");
}

TEST(QMMetadataEntry, AbsentNamesStayAbsent) {
    const auto entry = QMMetadataEntry::entryWithKey(std::nullopt, std::nullopt, "v");
    EXPECT_EQ(entry->key, std::nullopt);
    EXPECT_EQ(entry->localizedKey, std::nullopt);
}

TEST(QMMetadataEntry, KeepsItsOwnTexts) {
    std::string text = "before";
    const auto entry = QMMetadataEntry::entryWithKey(text, text, text);
    text = "after";
    EXPECT_EQ(entry->key, "before");
    EXPECT_EQ(entry->localizedKey, "before");
    EXPECT_EQ(entry->value, "before");
}

TEST(QMMetadataEntry, CanBeChanged) {
    const auto entry = QMMetadataEntry::entryWithKey("k", "l", "v");
    entry->key = "key";
    entry->localizedKey = std::nullopt;
    entry->value = std::nullopt;
    entry->isPrimary = true;
    EXPECT_EQ(entry->key, "key");
    EXPECT_EQ(entry->localizedKey, std::nullopt);
    EXPECT_EQ(entry->value, std::nullopt);
    EXPECT_TRUE(entry->isPrimary);
}

TEST(QMMetadataResult, IsEmptyAtFirst) {
    const QMMetadataResult result;
    EXPECT_EQ(result.category, QMMetadataCategoryNone);
    EXPECT_EQ(result.categoryName, std::nullopt);
    EXPECT_EQ(result.entries, nullptr);
}

TEST(QMMetadataResult, SharesItsEntriesWithWhoeverFillsThem) {
    const auto entries = std::make_shared<QMMetadataEntries>();
    entries->push_back(QMMetadataEntry::entryWithKey("first", "l", "v"));
    QMMetadataResult result;
    result.entries = entries;
    entries->push_back(QMMetadataEntry::entryWithKey("second", "l", "v"));
    ASSERT_EQ(result.entries->size(), 2U);
    EXPECT_EQ(result.entries->front()->key, "first");
    EXPECT_EQ(result.entries->back()->key, "second");
}

} // namespace
