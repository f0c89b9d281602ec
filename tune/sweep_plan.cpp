// SPDX-License-Identifier: MIT
#include "tune/sweep_plan.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <list>
#include <string>

#include "runtime/report.h"
#include "tune/sweep/chart.h"

namespace {

bool resolve_rows(const std::string& name, sweep_plan* plan) {
    property* prop = property::get_property(name);
    if (!prop) {
        report("no property %s", name.c_str());
        return false;
    }
    const std::list<std::string>* members = prop->domain().members;
    if (!members) {
        plan->rows.push_back(prop);
        return true;
    }
    plan->group = name;
    for (const std::string& member_name : *members) {
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

// Every step-th value from FROM to TO, both on the axis, which RANGE_NAME
// names in messages.
bool values_between(const swept_range& options, const sweep_axis& range, const char* range_name,
                    value_axis* axis) {
    for (long long end : {options.from, options.to}) {
        if (!range.holds(end)) {
            report("%s: %s is not in %s%s..%s; nothing written", options.name.c_str(),
                   axis->text(end).c_str(), range_name, axis->text(range.low).c_str(),
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

bool build_axis(const swept_range& options, const value_domain& domain, value_axis* axis) {
    if (!domain.unknown.empty()) {
        report("%s: %s; nothing written", options.name.c_str(), domain.unknown.c_str());
        return false;
    }
    const sweep_axis range = domain.axis();
    if (!range.sweepable()) {
        report("%s: cannot be swept; nothing written", options.name.c_str());
        return false;
    }
    *axis = axis_kind(domain);
    return axis->keys.empty() ? values_between(options, range, domain.range_name, axis)
                              : keys_between(options, axis->keys, axis);
}

// The codes of the axis values for one row, each one of the row's values.
bool row_codes(property* row, const value_axis& axis, sweep_plan* plan) {
    const value_domain domain = row->domain();
    plan->codes.emplace_back();
    plan->settings.emplace_back();
    plan->delays.emplace_back();
    for (long long value : axis.values) {
        const long long code = domain.code_at(value);
        std::string why_not;
        if (!domain.holds(code, &why_not)) {
            report("%s: %s %s; nothing written", row->name.c_str(), domain.shown(code).c_str(),
                   why_not.c_str());
            return false;  // one bad value says enough about a row
        }
        plan->codes.back().push_back(code);
        plan->settings.back().push_back(domain.shown(code));
        plan->delays.back().push_back(domain.delay_text(code));
    }
    return true;
}

}  // namespace

value_axis axis_kind(const value_domain& domain) {
    const sweep_axis range = domain.axis();
    value_axis kind;
    kind.is_signed = range.is_signed;
    kind.unit = range.unit;
    kind.keys = domain.keys();
    return kind;
}

void axis_settings(const value_domain& domain, const value_axis& axis,
                   std::vector<std::string>* settings, std::vector<std::string>* delays) {
    settings->clear();
    delays->clear();
    for (long long value : axis.values) {
        settings->push_back(domain.shown(domain.code_at(value)));
        delays->push_back(domain.delay_text(domain.code_at(value)));
    }
}

bool plan_sweep(const swept_range& options, sweep_plan* plan) {
    if (!resolve_rows(options.name, plan) || plan->rows.empty() ||
        !build_axis(options, plan->rows.front()->domain(), &plan->axis))
        return false;
    bool good = true;
    for (property* row : plan->rows)
        good = row_codes(row, plan->axis, plan) && good;
    return good;
}

std::vector<plan_row> rows_of(const std::vector<sweep_plan>& plans) {
    std::vector<plan_row> rows;
    for (std::size_t plan = 0; plan < plans.size(); ++plan)
        for (std::size_t row = 0; row < plans[plan].rows.size(); ++row)
            rows.push_back({plan, row});
    return rows;
}

property* member_of(const std::vector<sweep_plan>& plans, const plan_row& at) {
    return plans[at.plan].rows[at.row];
}

std::vector<property*> members_of(const std::vector<sweep_plan>& plans,
                                  const std::vector<plan_row>& rows) {
    std::vector<property*> members;
    for (const plan_row& at : rows)
        members.push_back(member_of(plans, at));
    return members;
}

std::vector<setting> centre_settings(const std::vector<sweep_plan>& plans,
                                     const std::vector<plan_row>& rows,
                                     const std::vector<std::optional<std::size_t>>& centres) {
    std::vector<setting> settings;
    for (std::size_t row = 0; row < centres.size(); ++row)
        if (centres[row])
            settings.push_back({member_of(plans, rows[row]),
                                plans[rows[row].plan].codes[rows[row].row][*centres[row]]});
    return settings;
}

void report_centres_kept(const std::vector<sweep_plan>& plans, const std::vector<plan_row>& rows,
                         const std::vector<std::optional<std::size_t>>& centres) {
    for (std::size_t row = 0; row < centres.size(); ++row) {
        if (!centres[row])
            continue;
        const sweep_plan& plan = plans[rows[row].plan];
        report("%s: kept at the centre, %s", member_of(plans, rows[row])->name.c_str(),
               value_with_setting(plan.axis, *centres[row],
                                  plan.settings[rows[row].row][*centres[row]])
                   .c_str());
    }
}
