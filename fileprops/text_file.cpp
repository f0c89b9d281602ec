#include "fileprops/text_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>

namespace {

bool is_space(char c) { return c != '\0' && std::strchr(" \t\n\v\f\r", c) != nullptr; }

}  // namespace

bool read_first_word(const std::string& path, std::string* word) {
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    word->clear();
    // A read error ends the word like the end of the file does.
    char buffer[256];
    ssize_t got = 0;
    while ((got = read(fd, buffer, sizeof buffer)) > 0) {
        const char* c = buffer;
        const char* end = buffer + got;
        if (word->empty())
            while (c < end && is_space(*c))
                ++c;
        const char* start = c;
        while (c < end && !is_space(*c))
            ++c;
        word->append(start, c);
        if (c < end && !word->empty())
            break;
    }
    close(fd);
    return true;
}

bool write_text(const std::string& path, const std::string& text) {
    int fd = open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (fd < 0)
        return false;
    // Short writes and close errors are not reported: kernel attribute files
    // take the value in one write or not at all.
    ssize_t written = write(fd, text.data(), text.size());
    (void)written;
    close(fd);
    return true;
}
