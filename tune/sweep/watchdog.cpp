// SPDX-License-Identifier: MIT
#include "tune/sweep/watchdog.h"

#include <fcntl.h>
#include <linux/watchdog.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "paths/system_paths.h"
#include "runtime/report.h"

namespace {

// Every driver takes a write of any byte as a keep-alive; 'V' is the magic
// close, so the keep-alive is anything else.
const char keep_alive_byte = '.', magic_close = 'V';

}  // namespace

bool watchdog_keeper::open(const std::string& path) {
    device = path;
    // Without blocking: a FIFO in its place must not stop the run for good.
    fd = ::open(system_path(path).c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat st {};
    const bool opened = fd >= 0 && fstat(fd, &st) == 0;
    if (opened && (S_ISCHR(st.st_mode) || (S_ISREG(st.st_mode) && watchdog_stand_in_allowed))) {
        last = std::chrono::steady_clock::now();
        return true;
    }
    if (opened)
        report("cannot use the watchdog %s: not a character device; nothing written", path.c_str());
    else
        report("cannot open the watchdog %s: %s; nothing written", path.c_str(),
               std::strerror(errno));
    if (fd >= 0)
        ::close(fd);
    fd = -1;
    return false;
}

void watchdog_keeper::keep_alive() {
    const auto now = std::chrono::steady_clock::now();
    if (fd < 0 || now - last < std::chrono::milliseconds(500))
        return;
    last = now;
    if (write(fd, &keep_alive_byte, 1) != 1 && !broken) {
        broken = true;
        report("cannot keep the watchdog %s alive: %s; it will reset the board", device.c_str(),
               std::strerror(errno));
    }
}

void watchdog_keeper::close() {
    if (fd < 0)
        return;
    watchdog_info info{};
    // A driver that says nothing (or a stand-in file) is taken at its word.
    const bool ignored =
        ioctl(fd, WDIOC_GETSUPPORT, &info) == 0 && !(info.options & WDIOF_MAGICCLOSE);
    if (write(fd, &magic_close, 1) != 1)
        report(
            "cannot write the magic close to the watchdog %s: %s; it stays armed and will reset "
            "the board",
            device.c_str(), std::strerror(errno));
    else if (ignored)
        report(
            "the watchdog %s does not take the magic close; it stays armed and will reset the "
            "board",
            device.c_str());
    ::close(fd);
    fd = -1;
}
