// SPDX-License-Identifier: MIT
#include "properties/value_domain.h"

#include <cstdio>

#include "properties/strict_value.h"

namespace {

const char code_prefix[] = "code ";

}  // namespace

std::string value_domain::range_text() const {
    if (!table)
        return std::string("in ") + range_name + std::to_string(low) + ".." + std::to_string(high);
    std::string keys;
    for (const auto& entry : *table)
        keys += (keys.empty() ? "one of " : ", ") + std::to_string(entry.first);
    return keys;
}

// Ascending key order: of two keys of one code the smaller names it.
const value_domain::value_table::value_type* value_domain::key_of(long long code) const {
    for (const auto& entry : *table)
        if (entry.second == code)
            return &entry;
    return nullptr;
}

bool value_domain::holds(long long code, std::string* why_not) const {
    if (code < low || code > high || (table && !key_of(code))) {
        *why_not = "is not " + range_text();
        return false;
    }
    if (code % step != 0) {
        *why_not = "is not a multiple of " + std::to_string(step) + " " + unit;
        return false;
    }
    return true;
}

bool value_domain::code_named(long long value, long long* code) const {
    if (!table) {
        *code = value;
        return true;
    }
    const auto key = table->find(static_cast<uint32_t>(value));
    if (key == table->end() || key->first != value)
        return false;
    *code = key->second;
    return true;
}

bool value_domain::code_of(const std::string& text, long long* code, std::string* problem) const {
    if (low > high) {
        *problem = "cannot be set";
        return false;
    }
    uint32_t number = 0;
    if (!parse_strict_u32(text, &number, problem))
        return false;
    if (!unknown.empty()) {
        *problem = unknown;
        return false;
    }
    if (!code_named(number, code)) {
        *problem = text + " is not " + range_text();
        return false;
    }
    if (holds(*code, problem))
        return true;
    *problem = text + " " + *problem;
    return false;
}

bool value_domain::value_text(long long code, bool in_hex, std::string* text) const {
    long long value = code;
    if (table) {
        const value_table::value_type* key = key_of(code);
        if (!key)
            return false;
        value = key->first;
    }
    if (!in_hex || !hex) {
        *text = std::to_string(value);
        return true;
    }
    char digits[24];
    std::snprintf(digits, sizeof digits, "0x%llx", static_cast<unsigned long long>(value));
    *text = digits;
    return true;
}

std::string value_domain::shown(long long code) const {
    std::string text;
    return value_text(code, false, &text) ? text : code_prefix + std::to_string(code);
}

std::string value_domain::delay_text(long long code) const {
    long long delay = 0;
    if (!direction_bit || !axis_value_of(code, &delay))
        return "";
    return (code & direction_bit ? "+" : "-") + std::to_string(delay < 0 ? -delay : delay);
}

std::string value_domain::told(long long code) const {
    const std::string delay = delay_text(code);
    return delay.empty() ? shown(code) : shown(code) + " (delay " + delay + ")";
}

bool value_domain::code_of_shown(const std::string& text, long long* code,
                                 std::string* problem) const {
    const std::string::size_type prefix = sizeof code_prefix - 1;
    const bool without_key = text.compare(0, prefix, code_prefix) == 0;
    uint32_t number = 0;
    if (!parse_strict_u32(without_key ? text.substr(prefix) : text, &number, problem))
        return false;
    *code = number;
    if (!without_key && !code_named(number, code)) {
        *problem = text + " is not " + range_text();
        return false;
    }
    if (*code >= low && *code <= high)
        return true;
    *problem =
        text + " is not in " + range_name + std::to_string(low) + ".." + std::to_string(high);
    return false;
}

sweep_axis value_domain::axis() const {
    if (table)
        return table->empty()
                   ? sweep_axis{}
                   : sweep_axis{table->begin()->first, table->rbegin()->first, 1, false, "keys"};
    if (direction_bit)
        return {1 - direction_bit, direction_bit - 1, 1, true, "delay steps"};
    return {low, high, step, false, *unit ? unit : sweep_axis{}.unit};
}

std::vector<long long> value_domain::keys() const {
    std::vector<long long> keys;
    if (table)
        for (const auto& entry : *table)
            keys.push_back(entry.first);
    return keys;
}

long long value_domain::code_at(long long axis_value) const {
    long long code = -1;
    if (direction_bit)
        return axis_value > 0 ? direction_bit + axis_value : -axis_value;
    return code_named(axis_value, &code) ? code : -1;
}

bool value_domain::axis_value_of(long long code, long long* axis_value) const {
    if (table) {
        const value_table::value_type* key = key_of(code);
        if (key)
            *axis_value = key->first;
        return key != nullptr;
    }
    if (direction_bit && (code < 0 || code >= 2 * direction_bit))
        return false;
    *axis_value = direction_bit && code & direction_bit ? code - direction_bit
                  : direction_bit                       ? -code
                                                        : code;
    return true;
}
