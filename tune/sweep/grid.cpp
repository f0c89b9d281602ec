// SPDX-License-Identifier: MIT
#include "tune/sweep/grid.h"

#include <algorithm>
#include <utility>

grid_results::grid_results(grid_axis x_axis, grid_axis y_axis)
    : x(std::move(x_axis)),
      y(std::move(y_axis)),
      cells(y.values.size(), std::vector<std::optional<outcome>>(x.values.size())) {}

bool grid_results::passes(grid_point at) const {
    return at.y < cells.size() && at.x < cells[at.y].size() && cells[at.y][at.x] == outcome::pass;
}

std::size_t grid_results::passing_count() const {
    std::size_t count = 0;
    for (std::size_t row = 0; row < cells.size(); ++row)
        for (std::size_t column = 0; column < cells[row].size(); ++column)
            count += passes({column, row});
    return count;
}

std::size_t grid_results::measured_count() const {
    std::size_t count = 0;
    for (const auto& row : cells)
        count += static_cast<std::size_t>(std::count_if(
            row.begin(), row.end(), [](const std::optional<outcome>& cell) { return cell; }));
    return count;
}

namespace {

// -1, 0 or 1 as A/B is less than, equal to or greater than C/D, by their
// continued fractions, so that no product overflows.
int compare(long long a, long long b, long long c, long long d) {
    for (int sign = 1;; sign = -sign) {
        const long long whole_one = a / b, whole_other = c / d;
        if (whole_one != whole_other)
            return whole_one < whole_other ? -sign : sign;
        a %= b;
        c %= d;
        if (a == 0 || c == 0)
            return a == c ? 0 : a == 0 ? -sign : sign;
        // a/b against c/d, both below 1, as b/a against d/c the other way round.
        std::swap(a, b);
        std::swap(c, d);
    }
}

}  // namespace

bool operator<(const ratio& one, const ratio& other) {
    return compare(one.num, one.den, other.num, other.den) < 0;
}

bool operator==(const ratio& one, const ratio& other) {
    return compare(one.num, one.den, other.num, other.den) == 0;
}

namespace {

// The grid's passing points counted over every rectangle from the origin,
// so that a rectangle of any size is checked at once.
class passing_sums {
public:
    explicit passing_sums(const grid_results& results)
        : columns(results.x.size()), sums((results.y.size() + 1) * (columns + 1)) {
        for (std::size_t y = 0; y < results.y.size(); ++y)
            for (std::size_t x = 0; x < columns; ++x)
                sum(x + 1, y + 1) =
                    results.passes({x, y}) + sum(x, y + 1) + sum(x + 1, y) - sum(x, y);
    }

    // Whether every point within HALF_X columns and HALF_Y rows of AT lies
    // on the grid and passes.
    bool all_pass(grid_point at, std::size_t half_x, std::size_t half_y) const {
        const std::size_t rows = sums.size() / (columns + 1) - 1;
        if (at.x < half_x || at.y < half_y || at.x + half_x >= columns || at.y + half_y >= rows)
            return false;
        const std::size_t x0 = at.x - half_x, y0 = at.y - half_y, x1 = at.x + half_x + 1,
                          y1 = at.y + half_y + 1;
        return sum(x1, y1) - sum(x0, y1) - sum(x1, y0) + sum(x0, y0) ==
               static_cast<long long>((x1 - x0) * (y1 - y0));
    }

private:
    long long& sum(std::size_t x, std::size_t y) { return sums[y * (columns + 1) + x]; }
    long long sum(std::size_t x, std::size_t y) const { return sums[y * (columns + 1) + x]; }

    std::size_t columns;
    std::vector<long long> sums;
};

struct weights {
    long long x, y;
};

weights weights_of(const grid_results& results) {
    return {results.weigh_x ? results.weigh_x : results.x.step(),
            results.weigh_y ? results.weigh_y : results.y.step()};
}

// The rectangle grows in the order of its weighed half sides: a side takes
// its next step when no other step is shorter.
std::optional<point_margin> margin_with(const grid_results& results, const passing_sums& sums,
                                        grid_point at) {
    if (!results.passes(at))
        return std::nullopt;
    const weights weigh = weights_of(results);
    point_margin margin;
    for (;;) {
        const ratio next_x{static_cast<long long>(margin.x + 1) * results.x.step(), weigh.x},
            next_y{static_cast<long long>(margin.y + 1) * results.y.step(), weigh.y};
        const bool grow_x = !(next_y < next_x), grow_y = !(next_x < next_y);
        if (!sums.all_pass(at, margin.x + grow_x, margin.y + grow_y))
            return margin;
        margin.x += grow_x;
        margin.y += grow_y;
        margin.room = grow_x ? next_x : next_y;
    }
}

// The larger of the two weighed distances between two points.
ratio distance(const grid_results& results, grid_point a, grid_point b) {
    const weights weigh = weights_of(results);
    const auto apart = [](std::size_t one, std::size_t other) {
        return static_cast<long long>(one > other ? one - other : other - one);
    };
    const ratio x{apart(a.x, b.x) * results.x.step(), weigh.x},
        y{apart(a.y, b.y) * results.y.step(), weigh.y};
    return x < y ? y : x;
}

}  // namespace

std::optional<point_margin> margin_at(const grid_results& results, grid_point at) {
    return margin_with(results, passing_sums(results), at);
}

std::optional<safest_point> find_safest(const grid_results& results,
                                        std::optional<grid_point> near) {
    if (results.partial)
        return std::nullopt;
    const passing_sums sums(results);
    std::optional<safest_point> best;
    // More room first, then nearer; rows and columns rise, so the first
    // found of otherwise equal points is the lower.
    const auto better = [&](const safest_point& one, const safest_point& other) {
        if (!(one.margin.room == other.margin.room))
            return other.margin.room < one.margin.room;
        return near && distance(results, one.at, *near) < distance(results, other.at, *near);
    };
    for (std::size_t row = 0; row < results.cells.size(); ++row)
        for (std::size_t column = 0; column < results.cells[row].size(); ++column) {
            const std::optional<point_margin> margin = margin_with(results, sums, {column, row});
            if (!margin)
                continue;
            const safest_point candidate{{column, row}, *margin};
            if (!best || better(candidate, *best))
                best = candidate;
        }
    return best;
}
