// SPDX-License-Identifier: MIT
#include "properties/access_result.h"

#include <utility>

#include "runtime/message.h"

access_result access_result::failed(std::string line) {
    access_result result{false, {}};
    if (!line.empty())
        result.lines.push_back(std::move(line));
    return result;
}

void access_result::add(const access_result& other) {
    ok = ok && other.ok;
    lines.insert(lines.end(), other.lines.begin(), other.lines.end());
}

bool access_result::said() const {
    for (const std::string& line : lines)
        say("%s", line.c_str());
    return ok;
}
