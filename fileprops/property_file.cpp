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

bool property_file<int>::read_update() { return fetch().said(); }

access_result property_file<int>::fetch() {
    valid = false;
    std::string word;
    if (!file.read_first_word(&word))
        return failure("open " + file.path() + " failed.");
    value = extract_int(word);
    if (value < min || value > max)
        return failure("current value " + std::to_string(value) + " is not valid, valid range = " +
                       std::to_string(min) + " ~ " + std::to_string(max));
    last_report.clear();
    valid = true;
    return {};
}

access_result property_file<int>::failure(const std::string& message) {
    if (message == last_report)
        return access_result::failed();
    last_report = message;
    return access_result::failed(message);
}

bool property_file<int>::get(std::string& out) {
    long long code = 0;
    if (!read_code(&code).said())
        return false;
    out = std::to_string(code);
    return true;
}

value_domain property_file<int>::domain() {
    value_domain numbers;
    numbers.low = min;
    numbers.high = max;
    return numbers;
}

access_result property_file<int>::read_code(long long* code) {
    const access_result result = fetch();
    *code = value;
    return result;
}

access_result property_file<int>::write_code(long long code) {
    if (code < min || code > max)
        return access_result::failed();
    const access_result result = fetch();
    if (!result.ok)
        return result;
    value = static_cast<int>(code);
    return store();
}

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

bool property_file<int>::commit() { return store().said(); }

access_result property_file<int>::store() {
    if (!valid)
        return access_result::failed();
    std::string problem;
    switch (file.write(std::to_string(value), &problem)) {
    case write_result::written: return {};
    case write_result::not_opened: return failure("open " + file.path() + " failed.");
    case write_result::not_written: break;
    }
    return access_result::failed(problem);
}
