// SPDX-License-Identifier: MIT
#include "tune/sweep/run_log.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "runtime/report.h"

bool log_dir_usable(const std::string& dir) {
    struct stat info {};
    const char* why = nullptr;
    if (stat(dir.c_str(), &info) != 0)
        why = std::strerror(errno);
    else if (!S_ISDIR(info.st_mode))
        why = "not a directory";
    else if (access(dir.c_str(), W_OK | X_OK) != 0)
        why = std::strerror(errno);
    if (why)
        report("--log %s: %s; nothing written", dir.c_str(), why);
    return !why;
}

std::string run_log_path(const std::string& dir, const std::string& point, long long run) {
    std::string name;
    for (char c : point) {
        if (c == ' ')
            continue;
        const bool safe = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                          (c >= '0' && c <= '9') ||
                          std::string("._,:=+-").find(c) != std::string::npos;
        name += safe ? c : '_';
    }
    return dir + "/" + name + "." + std::to_string(run) + ".log";
}
