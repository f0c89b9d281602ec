// SPDX-License-Identifier: MIT
#include "tune/profile/json.h"

#include <cstdio>
#include <string>

std::string json_string(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
            quoted += escaped;
        } else {
            quoted += c;
        }
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
