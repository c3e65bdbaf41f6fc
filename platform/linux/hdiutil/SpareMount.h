// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/Descriptor.h"

#include <optional>
#include <string>
#include <utility>

namespace platform::hdiutil {

/// A second mount of a mounted file system that no path shows. It keeps the file system, with its
/// options and all that is written to it, but keeps nobody from unmounting the first one, nor hides
/// that files are open there. Gone, with the file system if it is the last mount of it, when the
/// object is.
class SpareMount {
public:
    /// Of what is mounted at `mountPoint`. nullopt, with errno set, when the system refuses, as it
    /// does to anyone but root.
    [[nodiscard]] static std::optional<SpareMount> of(const std::string& mountPoint);

    /// Shows the file system at `mountPoint`, an existing folder, where it stays beyond the end of
    /// this object. False, with errno set, when the system refuses.
    [[nodiscard]] bool moveTo(const std::string& mountPoint) const;

private:
    explicit SpareMount(Descriptor descriptor)
        : m_descriptor(std::move(descriptor)) {}
    Descriptor m_descriptor;
};

} // namespace platform::hdiutil
