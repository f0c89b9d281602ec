// SPDX-License-Identifier: MIT
#include "tune/sweep/whole_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <random>

namespace {

// A temporary file's name: a dot, the result's name, the marker, then
// random_letters of letters.
const std::string marker = ".padkit-";
constexpr std::size_t random_letters = 6;
const char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";

struct split_path {
    std::string directory, name;  // directory ends in '/' unless it is empty
};

split_path split(const std::string& path) {
    const std::string::size_type slash = path.rfind('/');
    if (slash == std::string::npos)
        return {"", path};
    return {path.substr(0, slash + 1), path.substr(slash + 1)};
}

// The result's name a temporary file's NAME stands for; empty for any other name.
std::string result_name(const std::string& name) {
    const std::size_t tail = marker.size() + random_letters;
    if (name.size() <= tail + 1 || name[0] != '.' ||
        name.compare(name.size() - tail, marker.size(), marker) != 0 ||
        name.find_first_not_of(letters, name.size() - random_letters) != std::string::npos)
        return "";
    return name.substr(1, name.size() - tail - 1);
}

std::string temporary_name(const std::string& path) {
    static std::minstd_rand random(std::random_device{}());
    std::uniform_int_distribution<std::size_t> pick(0, sizeof letters - 2);
    const split_path parts = split(path);
    std::string name = parts.directory + "." + parts.name + marker;
    for (std::size_t at = 0; at < random_letters; ++at)
        name += letters[pick(random)];
    return name;
}

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

std::string result_of_temporary(const std::string& path) {
    const split_path parts = split(path);
    const std::string result = result_name(parts.name);
    return result.empty() ? "" : parts.directory + result;
}

void remove_temporaries(const std::string& path) {
    const split_path parts = split(path);
    if (parts.name.empty())
        return;
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(
        opendir(parts.directory.empty() ? "." : parts.directory.c_str()), closedir);
    if (!directory)
        return;
    while (const dirent* entry = readdir(directory.get())) {
        struct stat info {};
        if (result_name(entry->d_name) == parts.name &&
            fstatat(dirfd(directory.get()), entry->d_name, &info, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(info.st_mode))
            unlinkat(dirfd(directory.get()), entry->d_name, 0);
    }
}

whole_file::~whole_file() { discard(); }

bool whole_file::prepare(const std::string& target_path) {
    path = target_path;
    const target kind = target_of(target_path);
    if (kind != target::whole)
        return (file = open_as(kind, target_path)) != nullptr;
    // A file that cannot be written now is refused now, not after all the
    // work, as it would be if it were written in place.
    if (access(target_path.c_str(), W_OK) != 0 && errno != ENOENT)
        return false;
    const std::string directory = split(target_path).directory;
    if (access(directory.empty() ? "." : directory.c_str(), W_OK | X_OK) != 0)
        return false;
    remove_temporaries(target_path);
    return true;
}

bool whole_file::create(const std::function<void(const std::string&)>& note) {
    if (file)
        return true;
    int fd = -1;
    do {
        temporary = temporary_name(path);
        if (note)
            note(temporary);
        // Created with the permissions a new file gets.
        fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (fd < 0 && errno == EEXIST);
    if (fd < 0 || !(file = fdopen(fd, "w"))) {
        const int error = errno;
        if (fd >= 0)
            close(fd);
        else
            temporary.clear();
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
