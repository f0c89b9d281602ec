// SPDX-License-Identifier: MIT
#include "runtime/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "runtime/message.h"
namespace {

bool input_closed = false;

// Runs before every static object of the program, whatever the link order:
// the catalogue opens files while it is built. A descriptor 0, 1 or 2 that is
// closed is opened on /dev/null, so that no file the program opens takes its
// place and receives what is meant for the terminal.
__attribute__((constructor(101))) void open_standard_descriptors() {
    for (int fd = 0; fd <= 2; ++fd) {
        if (fcntl(fd, F_GETFD) >= 0 || errno != EBADF)
            continue;
        input_closed = input_closed || fd == STDIN_FILENO;
        if (open("/dev/null", O_RDWR) != fd) {
            static const char message[] =
                "Failed to open /dev/null for a closed standard stream.\n";
            const ssize_t written = write(STDERR_FILENO, message, sizeof message - 1);
            (void)written;
            _exit(255);
        }
    }
}

}  // namespace

bool standard_input_was_closed() { return input_closed; }

bool standard_output_written() {
    if (std::fflush(stdout) == 0 && !std::ferror(stdout))
        return true;
    say("write standard output failed.");
    return false;
}
