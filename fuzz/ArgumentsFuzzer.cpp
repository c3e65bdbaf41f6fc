// SPDX-License-Identifier: Apache-2.0
#include "cli/QMCLIDispatcher.h"
#include "fuzz/Fuzzing.h"

#include <algorithm>
#include <array>
#include <optional>

namespace {

using fuzzing::require;

constexpr std::array<std::string_view, 4> names{"info", "checksum", "tags", "open"};
constexpr std::int32_t firstStatus = 100; // no status of the frame itself

/// The run that a fake command saw.
struct Call {
    std::size_t command = 0;
    QMCLIStrings arguments;
    QMCLIOptions options;
};
std::optional<Call> lastCall;

template <std::size_t Number>
class FakeCommand final : public QMCLICommand {
public:
    static std::string_view name() { return names[Number]; }
    static std::string_view summary() { return "Fake."; }
    static std::string_view usage() { return "qm fake"; }
    std::int32_t runWithArguments(const QMCLIStrings& arguments,
                                  const QMCLIOptions& options) override {
        lastCall = Call{Number, arguments, options};
        return firstStatus + static_cast<std::int32_t>(Number);
    }
};

QMCLIDispatcher fakedDispatcher() {
    QMCLIDispatcher dispatcher;
    dispatcher.setCommands({{"info", qm_commandClass<FakeCommand<0>>()},
                            {"checksum", qm_commandClass<FakeCommand<1>>()},
                            {"tags", qm_commandClass<FakeCommand<2>>()},
                            {"open", qm_commandClass<FakeCommand<3>>()}});
    return dispatcher;
}

bool isGlobal(std::string_view word) {
    static constexpr std::array<std::string_view, 4> words{"--json", "--verbose", "--quiet",
                                                           "--no-color"};
    return std::ranges::find(words, word) != words.end();
}

bool endsTheLine(std::string_view word) {
    return word == "--version" || word == "-v" || word == "--help" || word == "-h";
}

/// The global words of a line go, all others stay in order.
void checkGlobalArguments(const QMCLIStrings& words) {
    const auto global = qm_readGlobalArguments(words);
    const bool ends = std::ranges::any_of(words, endsTheLine);
    require(ends == (global.request != QMCLIGlobalArguments::Request::command));
    if (ends) {
        return;
    }
    QMCLIStrings expected;
    std::ranges::remove_copy_if(words, std::back_inserter(expected), isGlobal);
    require(global.remaining == expected);
    require(global.options.size() <= 3);
}

/// Operands are a subsequence of the words, and no word is both operand and long option.
void checkCommandArguments(const QMCLIStrings& words) {
    const auto read = qm_readCommandArguments(words, {});
    auto next = words.begin();
    for (const std::string& operand : read.positional) {
        require(!operand.starts_with("--"));
        next = std::find(next, words.end(), operand);
        require(next != words.end());
        ++next;
    }
    require(read.positional.size() + read.options.size() <= words.size());
}

void checkRun(QMCLIDispatcher& dispatcher, const QMCLIStrings& words) {
    std::vector<const char*> argv{"qm"};
    for (const std::string& word : words) {
        argv.push_back(word.c_str());
    }
    argv.push_back(nullptr);
    lastCall.reset();
    const std::int32_t status =
        dispatcher.runWithArgc(static_cast<std::int32_t>(words.size() + 1), argv.data());
    require(status == 0 || status == 10 || lastCall.has_value());
    if (lastCall) {
        require(status == firstStatus + static_cast<std::int32_t>(lastCall->command));
        require(std::ranges::none_of(words, endsTheLine));
        const auto word = std::ranges::find_if_not(words, isGlobal);
        require(word != words.end() && *word == names.at(lastCall->command));
    }
}

} // namespace

/// The input is a command line: words between NUL bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static QMCLIDispatcher dispatcher = fakedDispatcher();
    const QMCLIStrings words = fuzzing::split(fuzzing::textOf(data, size), '\0');
    checkGlobalArguments(words);
    checkCommandArguments(words);
    checkRun(dispatcher, words);
    return 0;
}
