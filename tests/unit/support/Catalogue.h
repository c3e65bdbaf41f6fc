// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/LocalizedStrings.h"
#include "tests/unit/support/EnvironmentVariable.h"

#include <clocale>
#include <optional>
#include <string>

#include <libintl.h>

#include <gtest/gtest.h>

/// Binds the catalogues of the tests. The C library keeps them for the whole process.
class Catalogue : public testing::Test {
protected:
    ~Catalogue() override {
        ::textdomain("messages");
        std::setlocale(LC_MESSAGES, "C");
    }
    void use(const char* languages, const std::string& folder = QM_TEST_CATALOGUES) {
        m_languages.reset();
        m_languages.emplace("LANGUAGE", languages);
        ASSERT_TRUE(platform::LocalizedStrings::bindCatalogue("qm-test", folder));
    }

private:
    std::optional<EnvironmentVariable> m_languages;
};
