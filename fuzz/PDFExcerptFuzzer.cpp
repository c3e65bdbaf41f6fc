// SPDX-License-Identifier: Apache-2.0
// Makes excerpts of bytes behind a header as a PDF, and takes values off them.
#include "fuzz/Fuzzing.h"
#include "platform/linux/pdf/Excerpt.h"
#include "platform/linux/pdf/TableSection.h"
#include "tests/unit/support/MemoryFile.h"

namespace {

using fuzzing::require;
using namespace platform::pdf;

void takeValues(std::string_view text) {
    while (const auto value = takeValue(text)) {
        std::string again(*value);
        again += "\nx "; // numbers could go on
        std::string_view rest = again;
        require(!value->empty() && takeValue(rest) == *value);
        require(!(integerOf(*value) && referenceOf(*value)));
        const auto count = countOfReferences(*value);
        require(!count || *count <= value->size() / 5);
        ValueReader reader(*value);
        for (std::uint64_t left = count.value_or(0); left > 0; --left) {
            const auto item = reader.next();
            require(item && referenceOf(*item));
        }
        static_cast<void>(Dictionary::of(*value));
    }
}

// The newest table is in the update, and whatever it names is somewhere.
void checkUpdate(const std::string& bytes, const Excerpt& excerpt) {
    const std::string whole = bytes + excerpt.update;
    const MemoryFile file(whole);
    FileBytes reader(file.descriptor(), whole.size());
    const auto start = whole.rfind("\nstartxref\n");
    std::string_view rest = std::string_view(whole).substr(start + 11);
    const auto place = integerOf(takeToken(rest).value_or(""));
    require(place && *place > bytes.size());
    const auto section = TableSection::at(reader, *place);
    require(section &&
            integerOf((*Dictionary::of(section->trailer()))["/Size"]) == excerpt.endOfNumbers);
    const auto last = section->find(reader, static_cast<std::uint32_t>(excerpt.endOfNumbers - 1));
    require(last && last->kind == Place::Kind::plain && last->offset < whole.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = std::string("%PDF-1.5\n").append(fuzzing::textOf(data, size));
    takeValues(bytes);
    const MemoryFile file(bytes);
    for (const bool wantsText : {true, false}) {
        if (const auto excerpt = excerptOf(file.descriptor(), bytes.size(), wantsText, 0)) {
            require(excerpt->numberOfChildren.value_or(1) > 0);
            checkUpdate(bytes, *excerpt);
        }
    }
    return 0;
}
