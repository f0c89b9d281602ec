// SPDX-License-Identifier: MIT
#include "fileprops/property_file.h"

#include <climits>
#include <cstdio>
#include <cstdlib>

#include "properties/strict_value.h"
#include "runtime/message.h"

namespace {

// A leading decimal int after blanks: a text without a number gives 0, one
// beyond int the nearest int limit.
int extract_int(const std::string& text) {
    const long number = std::strtol(text.c_str(), nullptr, 10);
    return number < INT_MIN ? INT_MIN : number > INT_MAX ? INT_MAX : static_cast<int>(number);
}

bool is_blank(const std::string& text) {
    return text.find_first_not_of(" \t\n\v\f\r") == std::string::npos;
}

}  // namespace

property_file<int>::property_file(const std::string& name, const std::string& path, int min,
                                  int max)
    : property(name), file(path), min(min), max(max) {
    if (read_at_construction)
        read_update();
}

bool property_file<int>::read_at_construction = true;

property_file<int>::~property_file() = default;

bool property_file<int>::read_update() {
    valid = false;
    std::string word;
    if (!file.read_first_word(&word)) {
        report("open " + file.path() + " failed.");
        return false;
    }
    value = extract_int(word);
    if (value < min || value > max) {
        report("current value " + std::to_string(value) +
               " is not valid, valid range = " + std::to_string(min) + " ~ " + std::to_string(max));
        return false;
    }
    last_report.clear();
    valid = true;
    return true;
}

void property_file<int>::report(const std::string& message) {
    if (message == last_report)
        return;
    last_report = message;
    say("%s", message.c_str());
}

bool property_file<int>::get(std::string& out) {
    if (!read_update())
        return false;
    out = std::to_string(value);
    return true;
}

bool property_file<int>::check(const std::string& text, std::string* canonical,
                               std::string* problem) {
    uint32_t number = 0;
    if (!parse_strict_u32(text, &number, problem))
        return false;
    const long long wanted = number;
    if (wanted < min || wanted > max) {
        *problem = text + " is not in " + std::to_string(min) + ".." + std::to_string(max);
        return false;
    }
    *canonical = std::to_string(number);
    return true;
}

sweep_axis property_file<int>::axis() const { return {min, max, 1, false}; }

void property_file<int>::warn_about_range(const std::string& text, int bound) {
    say("apply current value %d to %sis limited to %d", value, text.c_str(), bound);
}

bool property_file<int>::set(const std::string& text) {
    if (!read_update())
        return false;
    const bool relative = text.size() > 1 && (text[0] == '-' || text[0] == '+');
    const std::string number_text = relative ? text.substr(1) : text;
    if (is_blank(number_text)) {
        say("failed to parse value %s", text.c_str());
        return false;
    }
    const long long number = extract_int(number_text);

    if (relative) {
        // A negative amount turns the direction round ("+-5" acts as "-5"),
        // so the stored value stays within min..max.
        const long long delta = text[0] == '+' ? number : -number;
        if (delta < 0 && value - static_cast<long long>(min) < -delta) {
            warn_about_range(text, min);
            value = min;
        } else if (delta > 0 && static_cast<long long>(max) - value < delta) {
            warn_about_range(text, max);
            value = max;
        } else {
            value = static_cast<int>(value + delta);
        }
        return commit();
    }

    int result = static_cast<int>(number);
    if (number < min) {
        result = min > max ? max : min;
        warn_about_range(text, result);
    } else if (number > max) {
        result = max;
        warn_about_range(text, max);
    }
    value = result;
    return commit();
}

bool property_file<int>::commit() {
    if (!valid)
        return false;
    const write_result result = file.write(std::to_string(value));
    if (result == write_result::not_opened)
        report("open " + file.path() + " failed.");
    return result == write_result::written;
}
