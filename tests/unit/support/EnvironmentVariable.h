// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

/// Gives an environment variable another value while it lives; null unsets it.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, const char* value)
        : m_name(name) {
        if (const char* before = ::getenv(name)) {
            m_before = before;
        }
        set(value);
    }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
    EnvironmentVariable(EnvironmentVariable&&) = delete;
    EnvironmentVariable& operator=(EnvironmentVariable&&) = delete;
    ~EnvironmentVariable() { set(m_before ? m_before->c_str() : nullptr); }

private:
    void set(const char* value) const {
        if (value == nullptr) {
            ::unsetenv(m_name);
        } else {
            ::setenv(m_name, value, 1);
        }
    }

    const char* m_name;
    std::optional<std::string> m_before;
};
