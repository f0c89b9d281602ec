// SPDX-License-Identifier: MIT
// What a sweep will touch: the properties, one row each, and the values.
#ifndef PADKIT_SWEEP_PLAN_H
#define PADKIT_SWEEP_PLAN_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "properties/property.h"
#include "tune/board/board_io.h"
#include "tune/sweep/axis.h"
#include "tune/sweep_options.h"

struct sweep_plan {
    std::vector<property*> rows;  // a composite's members, or the property itself
    std::string group;            // the composite, if it is one
    value_axis axis;              // from FROM towards TO, which may be lower
    // Per row and axis value, the code written, and the value as padkit-tune
    // shows it (PADKIT_SWEEP_SETTING, the chart).
    std::vector<std::vector<long long>> codes;
    std::vector<std::vector<std::string>> settings;
    // Per row and axis value, a DQ delay's signed delay; empty otherwise.
    std::vector<std::vector<std::string>> delays;
    bool left_out = false;  // members of the composite not swept: it cannot be set whole
};

// Beyond this a range is a typing mistake rather than a sweep.
constexpr std::size_t max_sweep_values = 4096;

// An axis of the domain's kind, without values: its sign, unit and table keys.
value_axis axis_kind(const value_domain& domain);

// Per value of the axis, the value as padkit-tune shows it, and a DQ delay's
// signed delay (empty for other properties).
void axis_settings(const value_domain& domain, const value_axis& axis,
                   std::vector<std::string>* settings, std::vector<std::string>* delays);

// Finds the properties and the values on the first row's axis: every
// step-th value from FROM to TO, both on the axis, or for a table every
// step-th key between them, the step by default the property's own. Every
// value's code is checked against every row's domain, without touching the
// board. On failure says why and returns false.
bool plan_sweep(const swept_range& options, sweep_plan* plan);

// A row of one of several plans, all on one axis.
struct plan_row {
    std::size_t plan, row;
};

// Every row of PLANS, plan after plan.
std::vector<plan_row> rows_of(const std::vector<sweep_plan>& plans);
property* member_of(const std::vector<sweep_plan>& plans, const plan_row& at);
std::vector<property*> members_of(const std::vector<sweep_plan>& plans,
                                  const std::vector<plan_row>& rows);

// Per row, the position of its centre on the axis, where it has one: the
// settings --keep centre writes, and the messages that say so.
std::vector<setting> centre_settings(const std::vector<sweep_plan>& plans,
                                     const std::vector<plan_row>& rows,
                                     const std::vector<std::optional<std::size_t>>& centres);
void report_centres_kept(const std::vector<sweep_plan>& plans, const std::vector<plan_row>& rows,
                         const std::vector<std::optional<std::size_t>>& centres);

#endif
