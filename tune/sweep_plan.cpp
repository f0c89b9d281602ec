// SPDX-License-Identifier: MIT
#include "tune/sweep_plan.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string>

#include "runtime/report.h"

namespace {

bool resolve_rows(const std::string& name, sweep_plan* plan) {
    property* prop = property::get_property(name);
    if (!prop) {
        report("no property %s", name.c_str());
        return false;
    }
    const std::vector<std::string> members = prop->member_names();
    if (members.empty()) {
        plan->rows.push_back(prop);
        return true;
    }
    plan->group = name;
    for (const std::string& member_name : members) {
        property* member = property::get_property(member_name);
        if (!member) {
            report("%s: no member %s", name.c_str(), member_name.c_str());
            return false;
        }
        plan->rows.push_back(member);
    }
    return true;
}

// Every step-th of the table's keys from FROM to TO.
bool keys_between(const swept_range& options, const std::vector<long long>& table,
                  value_axis* axis) {
    const long long low = std::min(options.from, options.to),
                    high = std::max(options.from, options.to);
    std::vector<long long> keys;
    std::copy_if(table.begin(), table.end(), std::back_inserter(keys),
                 [&](long long key) { return key >= low && key <= high; });
    if (options.from > options.to)
        std::reverse(keys.begin(), keys.end());
    const std::size_t step = static_cast<std::size_t>(options.step ? std::llabs(options.step) : 1);
    for (std::size_t at = 0; at < keys.size(); at += step)
        axis->values.push_back(keys[at]);
    if (axis->values.empty()) {
        report("%s: no key of its table from %lld to %lld", options.name.c_str(), options.from,
               options.to);
        return false;
    }
    return true;
}

// Every step-th value from FROM to TO, both on the axis.
bool values_between(const swept_range& options, const sweep_axis& range, value_axis* axis) {
    for (long long end : {options.from, options.to}) {
        if (!range.holds(end)) {
            report("%s: %s is not in %s..%s; nothing written", options.name.c_str(),
                   axis->text(end).c_str(), axis->text(range.low).c_str(),
                   axis->text(range.high).c_str());
            return false;
        }
    }
    const long long step = options.step ? std::llabs(options.step) : range.step;
    const long long count = std::llabs(options.to - options.from) / step + 1;
    if (count > static_cast<long long>(max_sweep_values)) {
        report("%lld values from %lld to %lld; a sweep takes at most %zu", count, options.from,
               options.to, max_sweep_values);
        return false;
    }
    const long long direction = options.from > options.to ? -1 : 1;
    for (long long i = 0; i < count; ++i)
        axis->values.push_back(options.from + direction * i * step);
    return true;
}

bool build_axis(const swept_range& options, property* first_row, value_axis* axis) {
    const sweep_axis range = first_row->axis();
    if (!range.sweepable()) {
        report("%s: cannot be swept; nothing written", options.name.c_str());
        return false;
    }
    *axis = axis_kind(*first_row);
    return axis->keys.empty() ? values_between(options, range, axis)
                              : keys_between(options, axis->keys, axis);
}

}  // namespace

value_axis axis_kind(const property& prop) {
    const sweep_axis range = prop.axis();
    value_axis kind;
    kind.is_signed = range.is_signed;
    kind.unit = range.unit;
    kind.keys = prop.table_keys();
    return kind;
}

bool plan_sweep(const swept_range& options, sweep_plan* plan) {
    if (!resolve_rows(options.name, plan) || plan->rows.empty() ||
        !build_axis(options, plan->rows.front(), &plan->axis))
        return false;
    bool good = true;
    for (property* row : plan->rows) {
        plan->settings.emplace_back();
        for (long long value : plan->axis.values) {
            const std::string setting = row->setting_for(value);
            std::string canonical, problem;
            if (!row->check(setting, &canonical, &problem)) {
                report("%s: %s; nothing written", row->name.c_str(), problem.c_str());
                good = false;
                break;  // one bad value says enough about a row
            }
            plan->settings.back().push_back(setting);
        }
    }
    return good;
}
