// SPDX-License-Identifier: MIT
#include "fileprops/kernel_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "paths/system_paths.h"

namespace {

constexpr size_t page_size = 4096;

bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

}  // namespace

kernel_file::kernel_file(const std::string& board_path) : board_path_(board_path) {}

const std::string& kernel_file::path() const {
    if (path_.empty())
        path_ = system_path(board_path_);
    return path_;
}

bool kernel_file::read_first_word(std::string* word) const {
    const int fd = open(path().c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return false;
    // One byte past the page tells a full page from a longer file.
    char text[page_size + 1];
    size_t size = 0;
    ssize_t got = 0;
    while (size < sizeof text &&
           ((got = read(fd, text + size, sizeof text - size)) > 0 || (got < 0 && errno == EINTR)))
        size += got > 0 ? static_cast<size_t>(got) : 0;
    close(fd);
    if (size > page_size)
        size = 0;
    size_t begin = 0;
    while (begin < size && is_space(text[begin]))
        ++begin;
    size_t end = begin;
    while (end < size && !is_space(text[end]))
        ++end;
    word->assign(text + begin, end - begin);
    return true;
}

write_result kernel_file::write(const std::string& text, std::string* problem) const {
    const int fd = open(path().c_str(), O_WRONLY | O_TRUNC | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return write_result::not_opened;
    // A file size limit (ulimit -f) must fail the write, not kill the run.
    std::signal(SIGXFSZ, SIG_IGN);
    // Kernel attribute files take the value in one write or not at all.
    const ssize_t written = ::write(fd, text.data(), text.size());
    const char* failure = written < 0                                   ? std::strerror(errno)
                          : static_cast<size_t>(written) != text.size() ? "short write"
                                                                        : nullptr;
    if (close(fd) != 0 && !failure)
        failure = std::strerror(errno);
    if (failure) {
        *problem = "write " + path() + " failed: " + failure;
        return write_result::not_written;
    }
    return write_result::written;
}
