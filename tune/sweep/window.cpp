// SPDX-License-Identifier: MIT
#include "tune/sweep/window.h"

#include <algorithm>

bool fully_measured(const sweep_row& row, const value_axis& axis) {
    return row.results.size() >= axis.size();
}

sweep_window widest_window(const std::vector<outcome>& results) {
    sweep_window widest, current;
    for (std::size_t at = 0; at < results.size(); ++at) {
        if (results[at] != outcome::pass) {
            current.count = 0;
            continue;
        }
        if (current.count++ == 0)
            current.first = at;
        if (current.count > widest.count)
            widest = current;
    }
    return widest;
}

sweep_window window_at(const std::vector<outcome>& results, std::size_t at) {
    if (at >= results.size() || results[at] != outcome::pass)
        return {};
    std::size_t first = at, last = at;
    while (first > 0 && results[first - 1] == outcome::pass)
        --first;
    while (last + 1 < results.size() && results[last + 1] == outcome::pass)
        ++last;
    return {first, last - first + 1};
}

std::size_t window_centre(const sweep_window& window, const std::vector<long long>& axis) {
    const std::size_t middle = window.first + (window.count - 1) / 2;
    if (window.count % 2 == 1 || axis[middle] < axis[middle + 1])
        return middle;
    return middle + 1;
}

open_sides sides_not_found(const sweep_window& window, std::size_t measured,
                           const value_axis& axis) {
    const bool first = window.first == 0, last = window.last() + 1 >= measured;
    return axis.rising() ? open_sides{first, last} : open_sides{last, first};
}

margins margins_in(const sweep_window& window, long long value, std::size_t measured,
                   const value_axis& axis) {
    const long long one = axis.in_units(axis.values[window.first]),
                    other = axis.in_units(axis.values[window.last()]), at = axis.in_units(value);
    return {at - std::min(one, other), std::max(one, other) - at,
            sides_not_found(window, measured, axis)};
}

original_room room_of_original(const sweep_row& row, const value_axis& axis) {
    std::size_t below = 0, above = 0;
    if (!row.original)
        return {original_room::unknown, {}};
    if (!axis.positions_around(*row.original, &below, &above))
        return {original_room::off_axis, {}};
    if (above >= row.results.size())
        return {original_room::not_measured, {}};
    const sweep_window window = window_at(row.results, below);
    if (window.count == 0 || window.last() < above)
        return {original_room::outside, {}};
    return {original_room::inside, margins_in(window, *row.original, row.results.size(), axis)};
}

std::vector<outcome> common_results(const std::vector<sweep_row>& rows) {
    if (rows.empty())
        return {};
    std::size_t length = rows.front().results.size();
    for (const sweep_row& row : rows)
        length = std::min(length, row.results.size());
    std::vector<outcome> common(length, outcome::pass);
    for (const sweep_row& row : rows)
        for (std::size_t at = 0; at < length; ++at)
            if (row.results[at] != outcome::pass)
                common[at] = outcome::fail;
    return common;
}

bool complete(const sweep_results& results) {
    const auto whole = [&](const sweep_row& row) { return fully_measured(row, results.axis); };
    return !results.partial && std::all_of(results.rows.begin(), results.rows.end(), whole);
}

std::size_t common_centre(const sweep_results& results) {
    if (!complete(results))
        return results.axis.size();
    const sweep_window window = widest_window(common_results(results.rows));
    return window.count == 0 ? results.axis.size() : window_centre(window, results.axis.values);
}
