// SPDX-License-Identifier: MIT
#include "tune/shmoo_plan.h"

#include <algorithm>
#include <list>

#include "runtime/report.h"
#include "tune/sweep/profile_header.h"
#include "tune/sweep_plan.h"

std::size_t shmoo_axis::other_order(std::size_t at) const {
    return visits.values.front() <= visits.values.back() ? at : visits.size() - 1 - at;
}

const std::string& shmoo_axis::setting_at(std::size_t position) const {
    return settings[other_order(position)];
}

long long shmoo_axis::code_at(std::size_t position) const { return codes[other_order(position)]; }

grid_axis shmoo_axis::rising() const {
    grid_axis axis;
    axis.name = prop->name;
    static_cast<value_axis&>(axis) = visits;
    std::sort(axis.values.begin(), axis.values.end());
    return axis;
}

std::string shmoo_axis::value_text(std::size_t position) const {
    const std::size_t visit = other_order(position);
    const std::string& setting = settings[visit];
    return visits.text_at(visit) +
           (setting == std::to_string(visits.values[visit]) ? "" : " (setting " + setting + ")");
}

std::string shmoo_axis::profile_line(std::size_t position) const {
    return delay_comment({prop->domain().delay_text(code_at(position))}) + prop->name + " = " +
           setting_at(position) + "\n";
}

std::string shmoo_axis::range_text() const {
    return prop->name + " over " + visits.range_text(0, visits.size() - 1) + " (" +
           std::to_string(visits.size()) + (visits.size() == 1 ? " value)" : " values)");
}

std::optional<std::size_t> shmoo_axis::original_position() const {
    const grid_axis axis = rising();
    long long value = 0;
    if (!prop->domain().axis_value_of(original, &value) || axis.position_of(value) == axis.size())
        return std::nullopt;
    return axis.position_of(value);
}

namespace {

bool plan_axis(const swept_range& range, shmoo_axis* axis) {
    property* prop = property::get_property(range.name);
    const std::list<std::string>* members = prop ? prop->domain().members : nullptr;
    if (members) {
        std::string list;
        for (const std::string& member : *members)
            list += (list.empty() ? "" : ", ") + member;
        report("%s is a composite of %s; a shmoo takes one of them; nothing written",
               range.name.c_str(), list.c_str());
        return false;
    }
    sweep_plan plan;
    if (!plan_sweep(range, &plan))
        return false;
    axis->prop = plan.rows.front();
    axis->visits = plan.axis;
    axis->codes = plan.codes.front();
    axis->settings = plan.settings.front();
    return true;
}

}  // namespace

bool plan_shmoo(const shmoo_options& options, shmoo_axis* x, shmoo_axis* y) {
    if (!plan_axis(options.x, x) || !plan_axis(options.y, y))
        return false;
    if (x->prop == y->prop) {
        report("X and Y are both %s; a shmoo takes two different properties",
               x->prop->name.c_str());
        return false;
    }
    const std::size_t points = x->visits.size() * y->visits.size();
    if (points > max_shmoo_points) {
        report("%zu points (%zu by %zu); a shmoo takes at most %zu", points, x->visits.size(),
               y->visits.size(), max_shmoo_points);
        return false;
    }
    return true;
}

facts shmoo_facts(const shmoo_options& options, const shmoo_axis& x, const shmoo_axis& y) {
    std::string what = x.prop->name + " " + x.visits.swept_text() + " against " + y.prop->name +
                       " " + y.visits.swept_text();
    if (options.weigh_x)
        what +=
            ", weighed " + std::to_string(options.weigh_x) + ":" + std::to_string(options.weigh_y);
    return run_facts("shmoo", what, options.command);
}
