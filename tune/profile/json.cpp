// SPDX-License-Identifier: MIT
#include "tune/profile/json.h"

#include <cstdio>
#include <string>

namespace {

// The length of the UTF-8 sequence at AT, or 0 where the bytes are none: a
// stray or missing continuation byte, an overlong form, a surrogate, or a
// code point past U+10FFFF.
std::size_t utf8_length(const std::string& text, std::size_t at) {
    const unsigned char lead = static_cast<unsigned char>(text[at]);
    const std::size_t length = lead < 0x80                    ? 1
                               : lead >= 0xc2 && lead <= 0xdf ? 2
                               : lead >= 0xe0 && lead <= 0xef ? 3
                               : lead >= 0xf0 && lead <= 0xf4 ? 4
                                                              : 0;
    if (length == 0 || text.size() - at < length)
        return 0;
    for (std::size_t next = at + 1; next < at + length; ++next)
        if ((static_cast<unsigned char>(text[next]) & 0xc0) != 0x80)
            return 0;
    const unsigned char second = static_cast<unsigned char>(text[at + 1]);
    if ((lead == 0xe0 && second < 0xa0) || (lead == 0xed && second > 0x9f) ||
        (lead == 0xf0 && second < 0x90) || (lead == 0xf4 && second > 0x8f))
        return 0;
    return length;
}

}  // namespace

std::string json_string(const std::string& text) {
    std::string quoted = "\"";
    for (std::size_t at = 0; at < text.size();) {
        const unsigned char c = static_cast<unsigned char>(text[at]);
        const std::size_t length = utf8_length(text, at);
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += static_cast<char>(c);
        } else if (c < 0x20 || length == 0) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", c < 0x20 ? c : 0xdc00 + c);
            quoted += escaped;
        } else {
            quoted.append(text, at, length);
        }
        at += length == 0 ? 1 : length;
    }
    return quoted + "\"";
}

std::string json_value(const std::string* value) {
    if (!value)
        return "null";
    if (value->size() >= 2 && value->front() == '{' && value->back() == '}')
        return "[" + value->substr(1, value->size() - 2) + "]";
    // A code that no key names ("code 3") is no number.
    if (value->empty() || value->front() < '0' || value->front() > '9')
        return json_string(*value);
    return *value;
}
