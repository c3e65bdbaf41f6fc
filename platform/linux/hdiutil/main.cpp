// SPDX-License-Identifier: Apache-2.0
// Usage: quillmere-hdiutil attach IMAGE -plist -noverify
//        quillmere-hdiutil detach PATH
//        quillmere-hdiutil imageinfo IMAGE -plist
// Property lists go to standard output; a failure is one line on standard error and status 1.
#include "platform/StandardStreams.h"
#include "platform/linux/hdiutil/Attach.h"
#include "platform/linux/hdiutil/ImageInfo.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <variant>
#include <vector>

namespace {

using platform::PropertyList;
using platform::hdiutil::DiskImage;
using platform::hdiutil::Failure;
using Outcome = std::variant<PropertyList, Failure>;
using Words = std::vector<std::string>;

constexpr int failureStatus = 1;

int fail(const std::string& verb, const std::string& reason) {
    static_cast<void>(
        std::fprintf(stderr, "hdiutil: %s failed - %s\n", verb.c_str(), reason.c_str()));
    return failureStatus;
}

int usage() {
    static_cast<void>(std::fputs("Usage: hdiutil attach IMAGE -plist -noverify\n"
                                 "       hdiutil detach PATH\n"
                                 "       hdiutil imageinfo IMAGE -plist\n",
                                 stderr));
    return failureStatus;
}

int print(const std::string& verb, const PropertyList& list) {
    const platform::Data text = list.serialized(PropertyList::Format::xml);
    const bool isWritten =
        std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    return isWritten ? 0 : fail(verb, "the output could not be written");
}

Outcome describe(const std::string& path) {
    const auto opened = platform::hdiutil::openDiskImage(path);
    if (const auto* reason = std::get_if<std::string>(&opened)) {
        return Failure{*reason};
    }
    return platform::hdiutil::imageInfo(std::get<DiskImage>(opened));
}

int finish(const std::string& verb, const Outcome& outcome) {
    const auto* failure = std::get_if<Failure>(&outcome);
    return failure != nullptr ? fail(verb, failure->reason)
                              : print(verb, std::get<PropertyList>(outcome));
}

int run(const Words& words) {
    const std::string verb = words.empty() ? "" : words[0];
    if (verb == "attach" && words.size() == 4 && words[2] == "-plist" && words[3] == "-noverify") {
        return finish(verb, platform::hdiutil::attachImage(words[1]));
    }
    if (verb == "imageinfo" && words.size() == 3 && words[2] == "-plist") {
        return finish(verb, describe(words[1]));
    }
    if (verb == "detach" && words.size() == 2) {
        const auto failure = platform::hdiutil::detachVolume(words[1]);
        return failure ? fail(verb, failure->reason) : 0;
    }
    return usage();
}

} // namespace

int main(int argc, char* argv[]) {
    platform::StandardStreams::reserveClosedStreams();
    // A file that may not grow further is a failure like others, after which there is much to undo.
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    try {
        return run(Words(argv + (argc > 0 ? 1 : 0), argv + argc));
    } catch (const std::exception& error) {
        return fail(argc > 1 ? argv[1] : "run", error.what());
    }
}
