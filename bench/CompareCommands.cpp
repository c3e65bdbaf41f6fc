// SPDX-License-Identifier: Apache-2.0
// Usage: compare_commands ROUNDS COMMAND... -- COMMAND...
// Runs two commands in turn, ROUNDS times each, with their output thrown away, and prints the
// shortest wall-clock time of each in microseconds and the largest resident size of each in KiB.
// Taking turns gives both the same share of what else the machine does; the shortest time is the
// one that was disturbed least.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <spawn.h>

#include <sys/resource.h>
#include <sys/wait.h>

namespace {

using Clock = std::chrono::steady_clock;
using Command = std::vector<char*>;

struct Result {
    long shortest = -1; // microseconds
    long largest = 0;   // KiB
};

[[noreturn]] void fail(const char* what) {
    static_cast<void>(std::fprintf(stderr, "compare_commands: %s\n", what));
    std::exit(2);
}

void runOnce(Command& command, Result& result) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    const auto start = Clock::now();
    pid_t process = 0;
    if (posix_spawnp(&process, command[0], &actions, nullptr, command.data(), environ) != 0) {
        fail(command[0]);
    }
    int status = 0;
    rusage usage{};
    ::wait4(process, &status, 0, &usage);
    const auto end = Clock::now();
    posix_spawn_file_actions_destroy(&actions);
    // 1 is getfattr's answer when some files lack the attribute.
    if (!WIFEXITED(status) || WEXITSTATUS(status) > 1) {
        fail(command[0]);
    }
    const long time = static_cast<long>(
        std::chrono::duration_cast<std::chrono::microseconds>(end - start).count());
    result.shortest = result.shortest < 0 ? time : std::min(result.shortest, time);
    result.largest = std::max(result.largest, usage.ru_maxrss);
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc < 3) {
        fail("ROUNDS COMMAND... -- COMMAND...");
    }
    std::array<Command, 2> commands;
    std::size_t which = 0;
    for (int i = 2; i < argc; ++i) {
        if (std::string_view(argv[i]) == "--" && which == 0) {
            which = 1;
        } else {
            commands[which].push_back(argv[i]);
        }
    }
    if (commands[0].empty() || commands[1].empty()) {
        fail("two commands are needed");
    }
    std::array<Result, 2> results;
    for (Command& command : commands) {
        command.push_back(nullptr);
    }
    for (int round = std::atoi(argv[1]); round > 0; --round) {
        runOnce(commands[0], results[0]);
        runOnce(commands[1], results[1]);
    }
    std::printf("%ld %ld %ld %ld\n", results[0].shortest, results[1].shortest, results[0].largest,
                results[1].largest);
    return 0;
}
