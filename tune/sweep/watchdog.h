// SPDX-License-Identifier: MIT
// The hardware watchdog during a sweep: kept alive by the sweep itself, so
// that a board hung by a value stops the keep-alives and gets reset.
#ifndef PADKIT_WATCHDOG_H
#define PADKIT_WATCHDOG_H

#include <chrono>
#include <string>

class watchdog_keeper {
public:
    watchdog_keeper() = default;
    watchdog_keeper(const watchdog_keeper&) = delete;
    watchdog_keeper& operator=(const watchdog_keeper&) = delete;
    ~watchdog_keeper() { close(); }

    // Opens DEVICE, a board path, which arms the watchdog. On failure says
    // why on standard error and returns false.
    bool open(const std::string& device);
    // One keep-alive byte, unless one went out less than half a second ago;
    // nothing when no device is open.
    void keep_alive();
    // Writes the magic close character and closes; warns when the watchdog
    // stays armed.
    void close();
    // Whether a keep-alive could not be written: the watchdog will reset the
    // board.
    bool failed() const { return broken; }

private:
    int fd = -1;
    std::string device;
    std::chrono::steady_clock::time_point last;
    bool broken = false;  // a failed keep-alive is reported once
};

#endif
