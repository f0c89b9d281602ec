// SPDX-License-Identifier: MIT
#include "tune/sweep/grid.h"

#include <algorithm>
#include <tuple>
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

namespace {

// Whether the ring of points at distance N around AT lies in the grid and passes.
bool ring_passes(const grid_results& results, grid_point at, std::size_t n) {
    if (at.x < n || at.y < n || at.y + n >= results.cells.size() ||
        at.x + n >= results.cells[at.y].size())
        return false;
    for (std::size_t d = 0; d <= 2 * n; ++d) {
        const std::size_t x = at.x - n + d, y = at.y - n + d;
        if (!results.passes({x, at.y - n}) || !results.passes({x, at.y + n}) ||
            !results.passes({at.x - n, y}) || !results.passes({at.x + n, y}))
            return false;
    }
    return true;
}

std::size_t distance(grid_point a, grid_point b) {
    return std::max(a.x > b.x ? a.x - b.x : b.x - a.x, a.y > b.y ? a.y - b.y : b.y - a.y);
}

}  // namespace

std::optional<std::size_t> margin_at(const grid_results& results, grid_point at) {
    if (!results.passes(at))
        return std::nullopt;
    std::size_t margin = 0;
    while (ring_passes(results, at, margin + 1))
        ++margin;
    return margin;
}

std::optional<safest_point> find_safest(const grid_results& results,
                                        std::optional<grid_point> near) {
    std::optional<safest_point> best;
    // Larger margin first, then nearer; rows and columns rise, so the first
    // found of otherwise equal points is the lower.
    auto rank = [&](const safest_point& p) {
        return std::make_tuple(p.margin,
                               near ? -static_cast<long long>(distance(p.at, *near)) : 0LL);
    };
    for (std::size_t row = 0; row < results.cells.size(); ++row)
        for (std::size_t column = 0; column < results.cells[row].size(); ++column) {
            const std::optional<std::size_t> margin = margin_at(results, {column, row});
            if (!margin)
                continue;
            const safest_point candidate{{column, row}, *margin};
            if (!best || rank(candidate) > rank(*best))
                best = candidate;
        }
    return best;
}
