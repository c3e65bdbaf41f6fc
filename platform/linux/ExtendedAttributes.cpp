// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/ExtendedAttributes.h"

#include "platform/linux/TextPieces.h"

#include <array>
#include <cerrno>
#include <utility>

#include <sys/xattr.h>

namespace platform::ExtendedAttributes {
namespace {

// The kernel's own limits for one value and for one list (XATTR_SIZE_MAX, XATTR_LIST_MAX).
constexpr std::size_t maximumSize = 65536;

} // namespace

NameList::NameList(const std::string& path) {
    // On the stack first: most items have no attributes, and lists of items are long.
    std::array<char, 1024> buffer; // NOLINT(*-member-init): the system fills it
    ssize_t size = ::llistxattr(path.c_str(), buffer.data(), buffer.size());
    if (size >= 0) {
        m_names.assign(buffer.data(), static_cast<std::size_t>(size));
        return;
    }
    if (errno == ERANGE) {
        m_names.resize(maximumSize);
        size = ::llistxattr(path.c_str(), m_names.data(), m_names.size());
    }
    m_error = size >= 0 || errno == ENOTSUP ? 0 : errno;
    m_names.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
}

bool NameList::contains(std::string_view name) const {
    std::string_view rest = m_names;
    while (!rest.empty()) {
        if (takePiece(rest, '\0') == name) {
            return true;
        }
    }
    return false;
}

int load(const std::string& path, const char* name, std::optional<std::string>& value) {
    value.reset();
    std::string bytes(256, '\0');
    ssize_t size = ::lgetxattr(path.c_str(), name, bytes.data(), bytes.size());
    if (size < 0 && errno == ERANGE) {
        bytes.resize(maximumSize);
        size = ::lgetxattr(path.c_str(), name, bytes.data(), bytes.size());
    }
    if (size < 0) {
        return errno == ENODATA ? 0 : errno;
    }
    bytes.resize(static_cast<std::size_t>(size));
    value = std::move(bytes);
    return 0;
}

int store(const std::string& path, const char* name, const std::optional<std::string>& value) {
    const int result = value ? ::lsetxattr(path.c_str(), name, value->data(), value->size(), 0)
                             : ::lremovexattr(path.c_str(), name);
    return result == 0 || (!value && errno == ENODATA) ? 0 : errno;
}

} // namespace platform::ExtendedAttributes
