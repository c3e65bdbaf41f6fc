// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/PropertyList.h"

#include <optional>
#include <string>
#include <variant>

namespace platform::hdiutil {

/// Why something was not done, in one line for people.
struct Failure {
    std::string reason;

    /// The failure that the system gives this number (errno).
    [[nodiscard]] static Failure ofSystem(int error);
};

/// Shows the file systems of the image at `path` as folders and answers what is to be printed. An
/// image that is attached already stays as it is, and the answer is the same again. After a
/// failure nothing is left behind but, where the system stopped it, the start of an expanded disk
/// for the next call.
[[nodiscard]] std::variant<PropertyList, Failure> attachImage(const std::string& path);

/// Undoes what attaching made of the image that is shown at `path` or has that device: all of its
/// volumes, or none when one is in use. A path that attaching did not make is unmounted when it
/// is on a loop or removable device.
[[nodiscard]] std::optional<Failure> detachVolume(const std::string& path);

} // namespace platform::hdiutil
