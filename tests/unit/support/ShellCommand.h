// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>

/// Runs a command line of the shell, with the administrator's tools in reach, and answers what it
/// prints. What it says on standard error is lost unless the line keeps it; a status other than 0
/// is an exception, so that no test goes on without what it was to look at.
inline std::string outputOfShell(const std::string& line) {
    const std::string command = "PATH=\"$PATH:/usr/sbin:/sbin\"; { " + line + "\n} 2>/dev/null";
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) {
        throw std::runtime_error("no shell for " + line);
    }
    std::string output;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
        output.push_back(static_cast<char>(c));
    }
    if (::pclose(pipe) != 0) {
        throw std::runtime_error("failed: " + line);
    }
    return output;
}
