// SPDX-License-Identifier: MIT
#include "tune/sweep/axis.h"

#include <algorithm>
#include <cstdlib>

std::string value_axis::text(long long value) const {
    return (is_signed && value > 0 ? "+" : "") + std::to_string(value);
}

std::string value_axis::range_text(std::size_t one, std::size_t other) const {
    const long long ends[] = {values[one], values[other]};
    return text(std::min(ends[0], ends[1])) + ".." + text(std::max(ends[0], ends[1]));
}

std::size_t value_axis::position_of(long long value) const {
    return static_cast<std::size_t>(std::find(values.begin(), values.end(), value) -
                                    values.begin());
}

bool value_axis::positions_around(long long value, std::size_t* one, std::size_t* other) const {
    for (std::size_t at = 0; at < size(); ++at) {
        const long long here = values[at];
        if (here == value) {
            *one = *other = at;
            return true;
        }
        if (at + 1 < size() && std::min(here, values[at + 1]) < value &&
            value < std::max(here, values[at + 1])) {
            *one = at;
            *other = at + 1;
            return true;
        }
    }
    return false;
}

value_axis value_axis::part(std::size_t first, std::size_t count) const {
    value_axis part = *this;
    const auto begin = values.begin() + static_cast<std::ptrdiff_t>(first);
    part.values.assign(begin, begin + static_cast<std::ptrdiff_t>(count));
    return part;
}

long long value_axis::in_units(long long value) const {
    if (keys.empty())
        return value;
    return std::lower_bound(keys.begin(), keys.end(), value) - keys.begin();
}

long long value_axis::step() const {
    return size() < 2 ? 1 : std::llabs(in_units(values[1]) - in_units(values[0]));
}

std::string value_axis::swept_text() const {
    if (values.empty())
        return "";
    return text(values.front()) + ".." + text(values.back()) + ", step " +
           amount_text(step(), unit);
}

namespace {

// Every unit a picture shows otherwise, and how many of the axis's make one of it.
const struct {
    const char* unit;
    const char* shown;
    long long per_shown;
} picture_units[] = {{"microvolts", "mV", 1000}};

}  // namespace

std::string value_axis::picture_unit() const {
    for (const auto& each : picture_units)
        if (unit == each.unit)
            return each.shown;
    return unit;
}

std::string value_axis::picture_text(long long value) const {
    for (const auto& each : picture_units) {
        if (unit != each.unit)
            continue;
        std::string fraction = std::to_string(std::llabs(value % each.per_shown) + each.per_shown);
        fraction.erase(fraction.find_last_not_of('0') + 1);
        fraction[0] = '.';  // the leading 1 that kept the zeros in front
        return text(value / each.per_shown) + (fraction == "." ? "" : fraction);
    }
    return text(value);
}

std::vector<std::string> value_axis::texts(bool in_picture) const {
    std::vector<std::string> all;
    for (long long value : values)
        all.push_back(in_picture ? picture_text(value) : text(value));
    return all;
}

std::string amount_text(long long amount, const std::string& unit) {
    const bool one = amount == 1 && !unit.empty() && unit.back() == 's';
    return std::to_string(amount) + " " + (one ? unit.substr(0, unit.size() - 1) : unit);
}

namespace {

bool apart(const label_place& one, const label_place& other) {
    return one.to + 1 <= other.from || other.to + 1 <= one.from;
}

bool apart_from_all(const label_place& label, const std::vector<label_place>& labels) {
    return std::all_of(labels.begin(), labels.end(),
                       [&](const label_place& other) { return apart(label, other); });
}

// The grid steps 1, 2, 5, 10, 20, 50, ... by their index.
long long round_step(int index) {
    long long step = index % 3 == 0 ? 1 : index % 3 == 1 ? 2 : 5;
    for (int i = 0; i < index / 3; ++i)
        step *= 10;
    return step;
}

// The positions labelled whatever the room: the first, the last, and 0 on
// a signed axis; in position order, each once.
std::vector<std::size_t> fixed_labels(const value_axis& axis) {
    std::vector<std::size_t> at = {0, axis.size() - 1};
    const std::size_t zero = axis.position_of(0);
    if (axis.is_signed && zero < axis.size())
        at.push_back(zero);
    std::sort(at.begin(), at.end());
    at.erase(std::unique(at.begin(), at.end()), at.end());
    return at;
}

}  // namespace

std::vector<label_place> axis_labels(const value_axis& axis, const std::vector<std::string>& texts,
                                     double cell_width, bool centred) {
    const std::size_t count = axis.size();
    if (count == 0)
        return {};
    const auto place = [&](std::size_t at) {
        const double length = static_cast<double>(texts[at].size());
        if (centred) {
            const double middle = (static_cast<double>(at) + 0.5) * cell_width;
            return label_place{at, middle - length / 2, middle + length / 2};
        }
        if (at + 1 == count && at > 0)
            return label_place{at, (at + 1) * cell_width - length, (at + 1) * cell_width};
        return label_place{at, at * cell_width, at * cell_width + length};
    };
    std::vector<label_place> labels = {place(0)};
    if (count > 1)
        labels.push_back(place(count - 1));
    const std::size_t zero = axis.position_of(0);
    if (axis.is_signed && zero < count && apart_from_all(place(zero), labels))
        labels.push_back(place(zero));

    const auto [low, high] = std::minmax_element(axis.values.begin(), axis.values.end());
    const long long spread = *high - *low;
    for (int index = 0; round_step(index) <= spread; ++index) {
        const long long grid = round_step(index);
        std::vector<label_place> on_grid;
        bool fits = true;
        for (std::size_t at = 1; at + 1 < count && fits; ++at) {
            if (axis.values[at] % grid != 0 || at == zero)
                continue;
            const label_place label = place(at);
            fits = on_grid.empty() || apart(on_grid.back(), label);
            on_grid.push_back(label);
        }
        if (!fits)
            continue;
        for (const label_place& label : on_grid)
            if (apart_from_all(label, labels))
                labels.push_back(label);
        break;
    }
    std::sort(labels.begin(), labels.end(),
              [](const label_place& one, const label_place& other) { return one.at < other.at; });
    return labels;
}

double cell_width_for_labels(const value_axis& axis, const std::vector<std::string>& texts) {
    if (axis.size() == 0)
        return 0;
    const std::vector<std::size_t> at = fixed_labels(axis);
    double width = 0;
    for (std::size_t i = 1; i < at.size(); ++i) {
        // Centres (at[i] - at[i-1]) cells apart, half of each label and a character between.
        const double room =
            static_cast<double>(texts[at[i - 1]].size() + texts[at[i]].size()) / 2 + 1;
        width = std::max(width, room / static_cast<double>(at[i] - at[i - 1]));
    }
    return width;
}
