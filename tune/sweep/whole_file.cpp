// SPDX-License-Identifier: MIT
#include "tune/sweep/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace {

enum class target { whole, through, standard_output, refused };

// What the name holds, and so how it is written; errno set when refused.
target target_of(const std::string& path) {
    struct stat named {};
    if (stat(path.c_str(), &named) != 0)
        return errno == ENOENT ? target::whole : target::refused;
    // Through a link such as /dev/stdout a regular file may be standard
    // output: renamed over, the link would be lost.
    struct stat link {};
    struct stat out {};
    if (lstat(path.c_str(), &link) == 0 && S_ISLNK(link.st_mode) &&
        fstat(STDOUT_FILENO, &out) == 0 && out.st_dev == named.st_dev && out.st_ino == named.st_ino)
        return target::standard_output;
    if (S_ISREG(named.st_mode))
        return target::whole;
    if (S_ISCHR(named.st_mode) || S_ISFIFO(named.st_mode))
        return target::through;
    errno = S_ISDIR(named.st_mode) ? EISDIR : ENOTSUP;
    return target::refused;
}

// Standard output's own file, at its offset, so that what follows on
// standard output comes after it instead of over it.
std::FILE* share_standard_output() {
    const int fd = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    std::FILE* file = fd < 0 ? nullptr : fdopen(fd, "w");
    if (fd >= 0 && !file) {
        const int error = errno;
        close(fd);
        errno = error;
    }
    return file;
}

std::FILE* open_as(target kind, const std::string& path) {
    switch (kind) {
    case target::refused: return nullptr;
    case target::standard_output: return share_standard_output();
    case target::whole:
    case target::through: break;
    }
    return std::fopen(path.c_str(), "we");
}

}  // namespace

std::FILE* open_in_place(const std::string& path) { return open_as(target_of(path), path); }

whole_file::~whole_file() { discard(); }

bool whole_file::open(const std::string& target_path) {
    path = target_path;
    const target kind = target_of(target_path);
    if (kind != target::whole)
        return (file = open_as(kind, target_path)) != nullptr;
    // A file that cannot be written now is refused now, not after all the
    // work, as it would be if it were written in place.
    if (access(target_path.c_str(), W_OK) != 0 && errno != ENOENT)
        return false;
    std::string name = target_path + ".XXXXXX";
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
    // What is written through has no temporary file to sync and rename.
    const bool through = temporary.empty();
    bool good =
        std::fflush(file) == 0 && !std::ferror(file) && (through || fsync(fileno(file)) == 0);
    int error = errno;
    if (std::fclose(file) != 0 && good) {
        good = false;
        error = errno;
    }
    file = nullptr;
    if (good && !through && std::rename(temporary.c_str(), path.c_str()) != 0) {
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
