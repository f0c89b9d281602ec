// SPDX-License-Identifier: MIT
// The shmoo's safest point at the grid's edges, around holes and on ties.
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "tune/sweep/grid.h"

namespace {

// Rows from the lowest Y up: '#' passes, '.' fails, 'T' timed out, ' ' not measured.
grid_results grid(const std::vector<std::string>& rows) {
    grid_axis x, y;
    x.values.resize(rows.front().size());
    y.values.resize(rows.size());
    grid_results results(x, y);
    for (std::size_t y = 0; y < rows.size(); ++y)
        for (std::size_t x = 0; x < rows[y].size(); ++x)
            if (const char mark = rows[y][x]; mark != ' ')
                results.cells[y][x] = mark == '#' ? outcome::pass : mark == '.' ? outcome::fail : outcome::timeout;
    return results;
}

}  // namespace

TEST(Grid, SafestPointAtEdgesAroundHolesAndOnTies) {
    // clang-format off
    const struct { const char* name; std::vector<std::string> rows; std::optional<grid_point> near;
                   std::size_t x, y, margin; } cases[] = {
        {"diamond", {"..#..", ".###.", "#####", ".###.", "..#.."}, std::nullopt, 2, 2, 1},
        {"edge moves inward", {"###..", "###..", "###..", "###.."}, std::nullopt, 1, 1, 1},
        {"whole grid, tie to lower", {"####", "####", "####", "####"}, std::nullopt, 1, 1, 1},
        {"whole grid, tie to nearest", {"####", "####", "####", "####"}, grid_point{3, 3}, 2, 2, 1},
        {"hole", {"#######", "#.#####", "#######", "#######", "#######", "#######", "#######"}, std::nullopt, 4, 2, 2},
        {"lone point", {"...", ".#T", "..."}, std::nullopt, 1, 1, 0},
        {"not measured is not passing", {"###", "###", "## "}, std::nullopt, 0, 0, 0},
        {"tie to lower Y", {"#", ".", "#"}, grid_point{0, 1}, 0, 0, 0},
        {"tie to lower X", {"#.#"}, grid_point{1, 0}, 0, 0, 0},
        {"nearest by the larger distance", {"...#", ".#..", "....", "...."}, grid_point{3, 3}, 1, 1, 0},
    };
    // clang-format on
    for (const auto& c : cases) {
        const std::optional<safest_point> got = find_safest(grid(c.rows), c.near);
        ASSERT_TRUE(got) << c.name;
        EXPECT_EQ(std::tie(got->at.x, got->at.y, got->margin), std::tie(c.x, c.y, c.margin)) << c.name;
    }
    EXPECT_FALSE(find_safest(grid({"..", "T."}), grid_point{0, 0})) << "no passing point";
}
