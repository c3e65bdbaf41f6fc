// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

/// Scripts that another application runs.
namespace platform::ScriptRunner {

/// Why a script did not run, or where it stopped.
struct Failure {
    /// For people, in English or in the application's own words, which come unchanged; nullopt
    /// when the application gave none.
    std::optional<std::string> message;
};

/// Sends the text `source` to the running application with the reverse-DNS identifier
/// `application` and waits until it has run it, or for 25 seconds. The application is never
/// started; that it is not running is known as soon as the system can be asked. nullopt when the
/// script ran.
///
/// `source` holds no NUL. Bytes of it that are not UTF-8 reach the application unharmed beside a
/// readable form. Any thread; blocks it.
[[nodiscard]] std::optional<Failure> run(const std::string& application, const std::string& source);

} // namespace platform::ScriptRunner
