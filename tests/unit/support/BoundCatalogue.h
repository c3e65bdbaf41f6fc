// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/LocalizedStrings.h"
#include "tests/unit/support/EnvironmentVariable.h"

#include <clocale>
#include <string>

#include <libintl.h>

/// Binds the catalogues of the tests, or those in another folder, while it lives. `languages` are
/// those that the user prefers; null for those of the locale.
class BoundCatalogue {
public:
    explicit BoundCatalogue(const char* languages, const std::string& folder = QM_TEST_CATALOGUES)
        : m_languages("LANGUAGE", languages)
        , m_isBound(platform::LocalizedStrings::bindCatalogue("qm-test", folder)) {}
    BoundCatalogue(const BoundCatalogue&) = delete;
    BoundCatalogue& operator=(const BoundCatalogue&) = delete;
    BoundCatalogue(BoundCatalogue&&) = delete;
    BoundCatalogue& operator=(BoundCatalogue&&) = delete;
    ~BoundCatalogue() {
        ::textdomain("messages");
        std::setlocale(LC_MESSAGES, "C");
    }

    [[nodiscard]] bool isBound() const { return m_isBound; }

private:
    EnvironmentVariable m_languages;
    bool m_isBound;
};
