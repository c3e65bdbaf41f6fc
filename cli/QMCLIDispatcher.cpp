// SPDX-License-Identifier: Apache-2.0
#include "cli/QMCLIDispatcher.h"

#include "cli/Console.h"
#include "cli/commands/QMCLIChecksumCommand.h"
#include "cli/commands/QMCLIInfoCommand.h"
#include "cli/commands/QMCLIOpenCommand.h"
#include "cli/commands/QMCLITagsCommand.h"

#include <algorithm>

namespace {

using Request = QMCLIGlobalArguments::Request;

constexpr std::int32_t unknownCommandStatus = 10;

template <class Command>
QMCLIDispatcher::Commands::value_type entry() {
    return {std::string(Command::name()), qm_commandClass<Command>()};
}

bool asksForHelp(const QMCLIStrings& words) {
    return std::ranges::any_of(
        words, [](const std::string& word) { return word == "--help" || word == "-h"; });
}

void printCommandHelp(const std::string& word, const QMCLICommandClass& command) {
    qm_bold("qm {}", word);
    qm_print("{}", command.summary());
    qm_print("");
    qm_print("Usage: {}", command.usage());
}

} // namespace

QMCLIDispatcher::QMCLIDispatcher()
    : m_commands{entry<QMCLIInfoCommand>(), entry<QMCLIChecksumCommand>(),
                 entry<QMCLITagsCommand>(), entry<QMCLIOpenCommand>()} {}

std::int32_t QMCLIDispatcher::runWithArgc(std::int32_t argc, const char* const* argv) {
    const std::int32_t count = std::max(argc, 0);
    const QMCLIStrings words(argv + std::min(count, 1), argv + count);
    QMCLIGlobalArguments global = qm_readGlobalArguments(words);
    if (global.disablesColor) {
        qm_set_color_enabled(false);
    }
    if (global.request == Request::version) {
        qm_print("qm {}", QM_VERSION);
        return 0;
    }
    if (global.request == Request::help || global.remaining.empty()) {
        printHelp();
        return 0;
    }
    return runCommand(std::move(global.remaining), std::move(global.options));
}

std::int32_t QMCLIDispatcher::runCommand(QMCLIStrings words, QMCLIOptions options) {
    const std::string word = words.front();
    words.erase(words.begin());
    const QMCLICommandClass* const command = commandClass(word);
    // The global help comes first, so no line leads here yet; a command that one day keeps the
    // word for itself finds its help in place.
    if (command != nullptr && asksForHelp(words)) {
        printCommandHelp(word, *command);
        return 0;
    }
    if (command == nullptr) {
        qm_error("Unknown command: {}", word);
        qm_print("Run 'qm --help' for available commands.");
        return unknownCommandStatus;
    }
    const QMCLICommandArguments arguments = qm_readCommandArguments(words, std::move(options));
    return command->create()->runWithArguments(arguments.positional, arguments.options);
}

const QMCLICommandClass* QMCLIDispatcher::commandClass(const std::string& word) const {
    const auto found = std::ranges::find(m_commands, word, &Commands::value_type::first);
    return found == m_commands.end() ? nullptr : &found->second;
}

void QMCLIDispatcher::printHelp() const {
    qm_bold("qm — Quillmere CLI Tool");
    qm_print("");
    qm_print("Usage: qm <command> [options] [arguments]");
    qm_print("");
    qm_bold("File Commands:");
    qm_print("  info          Show file metadata and properties");
    qm_print("  checksum      Calculate file checksums (SHA-256, SHA-1, MD5)");
    qm_print("  tags          View and manage macOS file tags");
    qm_print("");
    qm_bold("GUI Commands:");
    qm_print("  open          Open path or URL in Quillmere");
    qm_print("");
    qm_bold("Global Options:");
    qm_print("  --version     Show version");
    qm_print("  --help        Show help");
    qm_print("  --json        JSON output format");
    qm_print("  --verbose     Verbose output");
    qm_print("  --quiet       Suppress non-essential output");
    qm_print("  --no-color    Disable colored output");
}
