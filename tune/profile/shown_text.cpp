// SPDX-License-Identifier: MIT
#include "tune/profile/shown_text.h"

#include <cstdio>

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
