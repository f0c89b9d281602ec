// SPDX-License-Identifier: MIT
#include "properties/strict_value.h"

#include <cstdint>
#include <string>
#include <vector>

bool parse_strict_u32(const std::string& text, uint32_t* out, std::string* problem) {
    const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const unsigned base = hex ? 16 : 10;
    const std::string::size_type first = hex ? 2 : 0;
    uint64_t value = 0;
    for (std::string::size_type i = first; i < text.size(); ++i) {
        const char c = text[i];
        unsigned digit = base;
        if (c >= '0' && c <= '9')
            digit = static_cast<unsigned>(c - '0');
        else if (hex && c >= 'a' && c <= 'f')
            digit = static_cast<unsigned>(c - 'a' + 10);
        else if (hex && c >= 'A' && c <= 'F')
            digit = static_cast<unsigned>(c - 'A' + 10);
        if (digit >= base) {
            *problem = "'" + text + "' is not a decimal or 0x hexadecimal number";
            return false;
        }
        value = value * base + digit;
        if (value > UINT32_MAX) {
            *problem = text + " does not fit 32 bits";
            return false;
        }
    }
    if (text.size() == first) {
        *problem = text.empty() ? "missing value"
                                : "'" + text + "' is not a decimal or 0x hexadecimal number";
        return false;
    }
    *out = static_cast<uint32_t>(value);
    return true;
}

std::string trimmed(const std::string& text) {
    const char* blanks = " \t\r";
    const std::string::size_type first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return "";
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool brace_elements(const std::string& text, std::vector<std::string>* elements) {
    if (text.size() < 2 || text.front() != '{' || text.back() != '}')
        return false;
    elements->clear();
    std::string::size_type start = 1;
    for (;;) {
        const std::string::size_type comma = text.find(',', start);
        if (comma == std::string::npos) {
            elements->push_back(text.substr(start, text.size() - 1 - start));
            return true;
        }
        elements->push_back(text.substr(start, comma - start));
        start = comma + 1;
    }
}
