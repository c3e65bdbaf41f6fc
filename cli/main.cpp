// SPDX-License-Identifier: Apache-2.0
#include "cli/Console.h"
#include "cli/QMCLIDispatcher.h"
#include "platform/StandardStreams.h"

#include <cstdio>
#include <exception>
#include <new>
#include <system_error>

namespace {

constexpr int failureStatus = 1;

int report(const char* what) {
    static_cast<void>(std::fprintf(stderr, "qm: %s\n", what));
    return failureStatus;
}

// Output that did not arrive is a failure, whatever the command made of it.
int statusAfterFlush(int status) {
    const int error = qm_flush();
    if (error == 0) {
        return status;
    }
    const int failure = report(("write error: " + std::generic_category().message(error)).c_str());
    return status != 0 ? status : failure;
}

} // namespace

int main(int argc, char* argv[]) {
    platform::StandardStreams::reserveClosedStreams();
    try {
        return statusAfterFlush(QMCLIDispatcher().runWithArgc(argc, argv));
    } catch (const std::bad_alloc&) {
        return report("out of memory");
    } catch (const std::exception& error) {
        return report(error.what());
    }
}
