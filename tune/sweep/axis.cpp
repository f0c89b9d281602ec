// SPDX-License-Identifier: MIT
#include "tune/sweep/axis.h"

#include <algorithm>

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

value_axis value_axis::part(std::size_t first, std::size_t count) const {
    const auto begin = values.begin() + static_cast<std::ptrdiff_t>(first);
    return {{begin, begin + static_cast<std::ptrdiff_t>(count)}, is_signed};
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

}  // namespace

std::vector<label_place> axis_labels(const value_axis& axis, double cell_width) {
    const std::size_t count = axis.size();
    if (count == 0)
        return {};
    const auto place = [&](std::size_t at) {
        const double length = static_cast<double>(axis.text_at(at).size());
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
