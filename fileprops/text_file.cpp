#include "fileprops/text_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <fstream>

bool read_first_word(const std::string& path, std::string* word) {
    std::ifstream in(path);
    if (!in)
        return false;
    word->clear();
    in >> *word;
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
