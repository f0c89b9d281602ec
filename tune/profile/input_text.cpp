// SPDX-License-Identifier: MIT
#include "tune/profile/input_text.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "runtime/report.h"

std::size_t after_byte_order_mark(const std::string& text) {
    const std::string mark = "\xef\xbb\xbf";
    return text.compare(0, mark.size(), mark) == 0 ? mark.size() : 0;
}

std::string shown(const std::string& text, std::size_t at_most) {
    std::string out;
    for (char c : text) {
        if (out.size() >= at_most)
            return out + "...";
        const unsigned char byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02x", byte);
            out += escaped;
        } else {
            out += c;
        }
    }
    return out;
}

bool read_bounded(int fd, const std::string& name, std::size_t limit, std::string* text) {
    char buffer[65536];
    for (ssize_t got; (got = read(fd, buffer, sizeof buffer)) != 0;) {
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            report("%s: %s", name.c_str(), std::strerror(errno));
            return false;
        }
        text->append(buffer, static_cast<std::size_t>(got));
        if (text->size() > limit) {
            report("%s: larger than %zu MiB; refused", name.c_str(), limit >> 20);
            return false;
        }
    }
    return true;
}
