// SPDX-License-Identifier: MIT
#include "tune/sweep/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

whole_file::~whole_file() { discard(); }

bool whole_file::open(const std::string& target) {
    path = target;
    std::string name = target + ".XXXXXX";
    const int fd = mkostemp(name.data(), O_CLOEXEC);
    if (fd < 0)
        return false;
    temporary = name;
    const mode_t mask = umask(0);
    umask(mask);
    if (fchmod(fd, 0666 & ~mask) != 0 || !(file = fdopen(fd, "w"))) {
        const int error = errno;
        close(fd);
        discard();
        errno = error;
        return false;
    }
    return true;
}

bool whole_file::commit() {
    bool good = std::fflush(file) == 0 && !std::ferror(file) && fsync(fileno(file)) == 0;
    int error = errno;
    if (std::fclose(file) != 0 && good) {
        good = false;
        error = errno;
    }
    file = nullptr;
    if (good && std::rename(temporary.c_str(), path.c_str()) != 0) {
        good = false;
        error = errno;
    }
    if (good) {
        temporary.clear();
        return true;
    }
    discard();
    errno = error;
    return false;
}

void whole_file::discard() {
    if (file)
        std::fclose(file);
    file = nullptr;
    if (!temporary.empty())
        unlink(temporary.c_str());
    temporary.clear();
}
