// SPDX-License-Identifier: Apache-2.0
#include "platform/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

namespace platform::StandardStreams {

bool outputIsTerminal() {
    return ::isatty(STDOUT_FILENO) == 1;
}

void reserveClosedStreams() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) == -1) {
            // The lowest free descriptor is the one that was found closed. Its direction is the
            // wrong one on purpose.
            static_cast<void>(
                ::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
        }
    }
}

} // namespace platform::StandardStreams
