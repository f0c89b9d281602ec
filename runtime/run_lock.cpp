// SPDX-License-Identifier: MIT
#include "runtime/run_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/types.h>
#include <time.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "paths/system_paths.h"
#include "runtime/message.h"

namespace {

int fd_flock = -1;
std::string lock_path;

// The process holding a lock on the open file, as /proc/locks names it by
// device and inode; 0 when it cannot be found.
long lock_holder(int fd) {
    struct stat st;
    FILE* locks = fstat(fd, &st) == 0 ? std::fopen("/proc/locks", "re") : nullptr;
    if (!locks)
        return 0;
    long holder = 0;
    char line[256];
    // "1: FLOCK  ADVISORY  WRITE 1234 08:01:5678 0 EOF"; a waiter's line has "->".
    while (holder <= 0 && std::fgets(line, sizeof line, locks)) {
        long pid = 0;
        unsigned int dev_major = 0, dev_minor = 0;
        unsigned long long inode = 0;
        if (!std::strstr(line, "->") &&
            std::sscanf(line, "%*d: %*s %*s %*s %ld %x:%x:%llu", &pid, &dev_major, &dev_minor,
                        &inode) == 4 &&
            dev_major == major(st.st_dev) && dev_minor == minor(st.st_dev) && inode == st.st_ino)
            holder = pid;
    }
    std::fclose(locks);
    return holder > 0 ? holder : 0;
}

// Waits for the lock. With a set of signals, blocked by the caller, one of
// them that arrives ends the wait: it is taken off the pending set and given;
// WHILE_WAITING is called at each poll.
bool wait_for_lock(const sigset_t* stop, int* signal, const std::function<void()>* while_waiting) {
    if (!stop)
        return flock(fd_flock, LOCK_EX) == 0;
    // flock cannot wait for a signal without a race: poll both instead.
    const timespec poll{0, 20 * 1000 * 1000};
    while (flock(fd_flock, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK)
            return false;
        const int arrived = sigtimedwait(stop, nullptr, &poll);
        if (arrived > 0) {
            *signal = arrived;
            return false;
        }
        if (*while_waiting)
            (*while_waiting)();
    }
    return true;
}

bool take(const sigset_t* stop, int* signal, const std::function<void()>* while_waiting) {
    if (fd_flock < 0) {
        // O_NOFOLLOW: a link planted in a shared /tmp must not make root open its target.
        lock_path = system_path("/tmp/padkit.lock");
        fd_flock = open(lock_path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666);
        if (fd_flock < 0) {
            say("Failed to open %s", lock_path.c_str());
            say("Failed to lock!");
            return false;
        }
    }
    if (flock(fd_flock, LOCK_EX | LOCK_NB) == 0)
        return true;
    // Anyone who can open the file can hold it: say who makes this run wait.
    if (errno == EWOULDBLOCK) {
        const long holder = lock_holder(fd_flock);
        if (holder)
            say("Waiting for the lock on %s, held by process %ld.", lock_path.c_str(), holder);
        else
            say("Waiting for the lock on %s, held by another process.", lock_path.c_str());
        if (wait_for_lock(stop, signal, while_waiting))
            return true;
        if (*signal)
            return false;
    }
    say("Failed to lock!");
    return false;
}

}  // namespace

bool take_run_lock() {
    int signal = 0;
    return take(nullptr, &signal, nullptr);
}

bool take_run_lock(const sigset_t& stop, int* signal, const std::function<void()>& while_waiting) {
    *signal = 0;
    return take(&stop, signal, &while_waiting);
}

void release_run_lock() {
    if (fd_flock >= 0)
        flock(fd_flock, LOCK_UN);
}
