// SPDX-License-Identifier: Apache-2.0
#include "fuzz/Fuzzing.h"
#include "platform/Json.h"

namespace {

using fuzzing::require;
using platform::Json;

bool isWellFormed(const std::string& document) {
    bool inText = false;
    for (std::size_t i = 0; i < document.size(); ++i) {
        const auto c = static_cast<unsigned char>(document[i]);
        require(c >= ' ' || (!inText && c == '\n'));
        if (inText && c == '\\') {
            ++i;
        } else if (c == '"') {
            inText = !inText;
        }
    }
    return !inText;
}

} // namespace

/// Texts of any bytes, as names of files have them, make a document that can be read.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Json::Object members;
    Json::Array elements;
    for (const std::string& part : fuzzing::split(fuzzing::textOf(data, size), '\n')) {
        members.emplace_back(part, Json(part));
        elements.emplace_back(static_cast<std::int64_t>(part.size()));
    }
    members.emplace_back("elements", std::move(elements));
    std::string error;
    const auto document = Json(std::move(members)).serialized(error);
    require(document && error.empty() && isWellFormed(*document));
    return 0;
}
