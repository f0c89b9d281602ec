// SPDX-License-Identifier: MIT
#include "tune/sweep_plan.h"

#include <algorithm>
#include <string>

#include "fileprops/property_regulator_voltage.h"
#include "registers/regctl.h"
#include "runtime/report.h"

namespace {

// Regulators move in 10 mV steps.
constexpr long long regulator_step = 10000;

const reg_bitmask_map::value_table* table_of(property* prop) {
    auto* field = dynamic_cast<property_register*>(prop);
    auto* mapped = field ? dynamic_cast<reg_bitmask_map*>(field->subval) : nullptr;
    return mapped ? mapped->value_map : nullptr;
}

bool resolve_rows(const std::string& name, std::vector<property*>* rows) {
    property* prop = property::get_property(name);
    if (!prop) {
        report("no property %s", name.c_str());
        return false;
    }
    auto* composite = dynamic_cast<property_set*>(prop);
    if (!composite) {
        rows->push_back(prop);
        return true;
    }
    for (const std::string& member_name : composite->members) {
        property* member = property::get_property(member_name);
        if (!member) {
            report("%s: no member %s", name.c_str(), member_name.c_str());
            return false;
        }
        rows->push_back(member);
    }
    return true;
}

// The values in visiting order: every step-th key of a table, or every
// step-th integer.
bool build_axis(const swept_range& options, property* first_row, std::vector<long long>* axis) {
    const long long low = std::min(options.from, options.to), high = std::max(options.from, options.to);
    const long long direction = options.from > options.to ? -1 : 1;
    if (const auto* table = table_of(first_row)) {
        std::vector<long long> keys;
        for (const auto& entry : *table)
            if (entry.first >= low && entry.first <= high)
                keys.push_back(entry.first);
        if (direction < 0)
            std::reverse(keys.begin(), keys.end());
        for (std::size_t at = 0; at < keys.size(); at += static_cast<std::size_t>(std::max(options.step, 1LL)))
            axis->push_back(keys[at]);
    } else {
        const long long step = options.step                                              ? options.step
                               : dynamic_cast<property_regulator_voltage*>(first_row) ? regulator_step
                                                                                      : 1;
        const long long count = (high - low) / step + 1;
        if (count > static_cast<long long>(max_sweep_values)) {
            report("%lld values from %lld to %lld; a sweep takes at most %zu", count, options.from, options.to,
                   max_sweep_values);
            return false;
        }
        for (long long i = 0; i < count; ++i)
            axis->push_back(options.from + direction * i * step);
    }
    if (axis->empty()) {
        report("%s: no key of its table from %lld to %lld", first_row->name.c_str(), options.from, options.to);
        return false;
    }
    return true;
}

}  // namespace

bool plan_sweep(const swept_range& options, sweep_plan* plan) {
    if (!resolve_rows(options.name, &plan->rows) || plan->rows.empty() ||
        !build_axis(options, plan->rows.front(), &plan->axis))
        return false;
    bool good = true;
    for (property* row : plan->rows) {
        for (long long value : plan->axis) {
            const std::string text = std::to_string(value);
            std::string canonical, problem;
            if (!row->check(text, &canonical, &problem)) {
                report("%s: %s; nothing written", row->name.c_str(), problem.c_str());
                good = false;
                break;  // one bad value says enough about a row
            }
        }
    }
    return good;
}
