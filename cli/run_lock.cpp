#include "cli/run_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cstdio>
#include <string>

#include "platform/system_paths.h"

namespace {

int fd_flock = -1;

}  // namespace

bool take_run_lock() {
    if (fd_flock < 0) {
        // O_NOFOLLOW: a link planted in a shared /tmp must not make root open its target.
        const std::string lock_path = system_path("/tmp/padkit.lock");
        fd_flock = open(lock_path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666);
        if (fd_flock < 0) {
            std::fprintf(stderr, "Failed to open %s\nFailed to lock!\n", lock_path.c_str());
            return false;
        }
    }
    if (flock(fd_flock, LOCK_EX) != 0) {
        std::fputs("Failed to lock!\n", stderr);
        return false;
    }
    return true;
}

void release_run_lock() {
    if (fd_flock >= 0)
        flock(fd_flock, LOCK_UN);
}
