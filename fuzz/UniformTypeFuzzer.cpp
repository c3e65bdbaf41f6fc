// SPDX-License-Identifier: Apache-2.0
#include "fuzz/Fuzzing.h"
#include "platform/UniformType.h"

#include <string>
#include <string_view>

namespace {

using fuzzing::require;
using platform::UniformType::conformsTo;
using platform::UniformType::identifierForItem;
using platform::UniformType::ItemKind;
using platform::UniformType::kindForIdentifier;
using platform::UniformType::mimeType;

constexpr unsigned kindCount = static_cast<unsigned>(ItemKind::blockDevice) + 1;

std::string upperCased(std::string_view text) {
    std::string result(text);
    for (char& character : result) {
        if (character >= 'a' && character <= 'z') {
            character = static_cast<char>(character - 'a' + 'A');
        }
    }
    return result;
}

/// What holds for every type an item can have.
void checkItem(ItemKind kind, std::string_view extension) {
    const std::string identifier = identifierForItem(kind, extension);
    require(!identifier.empty());
    require(identifier == identifierForItem(kind, upperCased(extension)));
    require(conformsTo(identifier, identifier));
    require(conformsTo(identifier, upperCased(identifier)));
    require(conformsTo(identifier, "public.item"));
    require(!kindForIdentifier(identifier).empty());
    if (identifier.starts_with("dyn.")) {
        require(kind == ItemKind::file);
        require(conformsTo(identifier, "public.data"));
        require(!conformsTo(identifier, "public.content"));
        require(!mimeType(identifier));
    }
}

/// What holds for every text taken for an identifier.
void checkIdentifiers(std::string_view identifier, std::string_view other) {
    require(!kindForIdentifier(identifier).empty());
    const auto mime = mimeType(identifier);
    require(!mime || (!mime->empty() && mime->find(';') == std::string_view::npos));
    require(!mime || conformsTo(identifier, identifier));
    if (conformsTo(identifier, other)) {
        require(conformsTo(identifier, identifier) && conformsTo(other, other));
        require(conformsTo(upperCased(identifier), upperCased(other)));
        require(!conformsTo(other, "public.data") || conformsTo(identifier, "public.data"));
    }
}

} // namespace

/// The first byte chooses the kind of item; a line break, if any, parts two texts after it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const auto kind = static_cast<ItemKind>(data[0] % kindCount);
    const std::string input(data + 1, data + size);
    const std::string_view text(input);
    const std::size_t end = text.find('\n');
    const std::string_view first = text.substr(0, end);
    const std::string_view second =
        end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    checkItem(kind, first);
    checkIdentifiers(first, second);
    checkIdentifiers(first, first);
    checkIdentifiers(identifierForItem(kind, first), second);
    return 0;
}
