// SPDX-License-Identifier: MIT
// The shmoo's safest point at the grid's edges, around holes and on ties.
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "tune/sweep/grid.h"

namespace {

// Rows from the lowest Y up: '#' passes, '.' fails, 'T' timed out, ' ' not measured; both axes 0, 1, 2, ...
grid_results grid(const std::vector<std::string>& rows, long long weigh_x = 0, long long weigh_y = 0) {
    grid_axis x, y;
    for (std::size_t at = 0; at < rows.front().size(); ++at)
        x.values.push_back(static_cast<long long>(at));
    for (std::size_t at = 0; at < rows.size(); ++at)
        y.values.push_back(static_cast<long long>(at));
    grid_results results(x, y);
    results.weigh_x = weigh_x;
    results.weigh_y = weigh_y;
    for (std::size_t y = 0; y < rows.size(); ++y)
        for (std::size_t x = 0; x < rows[y].size(); ++x)
            if (const char mark = rows[y][x]; mark != ' ')
                results.cells[y][x] = mark == '#' ? outcome::pass : mark == '.' ? outcome::fail : outcome::timeout;
    return results;
}

}  // namespace

// Square and tall: the square rule takes the middle of the 5x5 square, one X unit weighed like two Y
// units the middle of the band three wide and seven high.
const std::vector<std::string> square_and_tall = {"#####.###", "#####.###", "#####.###", "#####.###",
                                                  "#####.###", "......###", "......###"};

TEST(Grid, SafestPointAtEdgesAroundHolesOnTiesAndWeighed) {
    // clang-format off
    const struct { const char* name; std::vector<std::string> rows; std::optional<grid_point> near;
                   long long weigh_x, weigh_y; std::size_t x, y, margin_x, margin_y; } cases[] = {
        {"diamond", {"..#..", ".###.", "#####", ".###.", "..#.."}, std::nullopt, 0, 0, 2, 2, 1, 1},
        {"edge moves inward", {"###..", "###..", "###..", "###.."}, std::nullopt, 0, 0, 1, 1, 1, 1},
        {"whole grid, tie to lower", {"####", "####", "####", "####"}, std::nullopt, 0, 0, 1, 1, 1, 1},
        {"whole grid, tie to nearest", {"####", "####", "####", "####"}, grid_point{3, 3}, 0, 0, 2, 2, 1, 1},
        {"hole", {"#######", "#.#####", "#######", "#######", "#######", "#######", "#######"}, std::nullopt,
            0, 0, 4, 2, 2, 2},
        {"lone point", {"...", ".#T", "..."}, std::nullopt, 0, 0, 1, 1, 0, 0},
        {"not measured is not passing", {"###", "###", "## "}, std::nullopt, 0, 0, 0, 0, 0, 0},
        {"tie to lower Y", {"#", ".", "#"}, grid_point{0, 1}, 0, 0, 0, 0, 0, 0},
        {"tie to lower X", {"#.#"}, grid_point{1, 0}, 0, 0, 0, 0, 0, 0},
        {"nearest by the larger distance", {"...#", ".#..", "....", "...."}, grid_point{3, 3}, 0, 0, 1, 1, 0, 0},
        {"square rule", square_and_tall, std::nullopt, 0, 0, 2, 2, 2, 2},
        {"weighed 1:2", square_and_tall, std::nullopt, 1, 2, 7, 3, 1, 3},
        {"weighed 2:1, Y's room counts for half", square_and_tall, std::nullopt, 2, 1, 2, 1, 2, 1},
        {"nearest by weighed distance: 2 X steps nearer than 1 Y step", {"..#", "#.."}, grid_point{0, 0},
            3, 1, 2, 0, 0, 0},
    };
    // clang-format on
    for (const auto& c : cases) {
        const std::optional<safest_point> got = find_safest(grid(c.rows, c.weigh_x, c.weigh_y), c.near);
        ASSERT_TRUE(got) << c.name;
        EXPECT_EQ(std::tie(got->at.x, got->at.y, got->margin.x, got->margin.y),
                  std::tie(c.x, c.y, c.margin_x, c.margin_y))
            << c.name;
    }
    EXPECT_FALSE(find_safest(grid({"..", "T."}), grid_point{0, 0})) << "no passing point";
    grid_results partial = grid({"###", "###", "## "});
    partial.partial = true;
    EXPECT_FALSE(find_safest(partial, std::nullopt)) << "partial results name no safest point";
}
