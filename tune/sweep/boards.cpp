// SPDX-License-Identifier: MIT
#include "tune/sweep/boards.h"

#include <algorithm>
#include <cstddef>
#include <map>

#include "tune/sweep/chart.h"
#include "tune/sweep/outcome.h"

sweep_results line_up(const std::string& name, const value_axis& kind,
                      const std::vector<board_cells>& boards) {
    sweep_results merged;
    merged.group = name;
    merged.axis = kind;
    merged.axis.values.clear();
    // Per board, the position of each value it measured.
    std::vector<std::map<long long, std::size_t>> positions(boards.size());
    for (std::size_t board = 0; board < boards.size(); ++board)
        for (std::size_t at = 0; at < boards[board].values.size(); ++at)
            positions[board][boards[board].values[at]] = at;
    const auto everywhere = [&](long long value) {
        return std::all_of(positions.begin(), positions.end(),
                           [&](const auto& board) { return board.count(value); });
    };
    // In the order of the axis, whatever order a board's file has.
    if (!boards.empty())
        for (const auto& [value, at] : positions.front())
            if (everywhere(value))
                merged.axis.values.push_back(value);
    for (std::size_t board = 0; board < boards.size(); ++board) {
        merged.rows.push_back({boards[board].board, {}, {}, {}, {}});
        for (long long value : merged.axis.values)
            merged.rows.back().results.push_back(boards[board].results[positions[board][value]]);
    }
    return merged;
}

facts merged_facts(const std::vector<sweep_results>& merged,
                   const std::vector<facts>& board_facts) {
    std::string what, boards;
    for (const sweep_results& property : merged)
        what += (what.empty() ? "" : "; ") + property.group + " " + property.axis.swept_text();
    const std::string test = board_facts.empty() ? "" : fact_value(board_facts.front(), "test");
    bool same_test = !test.empty();
    for (std::size_t board = 0; board < board_facts.size(); ++board) {
        const std::string host = fact_value(board_facts[board], "host");
        boards += (boards.empty() ? "" : ", ") + merged.front().rows[board].name +
                  (host.empty() ? "" : " on " + host);
        same_test = same_test && fact_value(board_facts[board], "test") == test;
    }
    facts about = {{"merge", what}, {"boards", boards}, {"date", local_time_text()}};
    if (same_test)
        about.emplace_back("test", test);
    return about;
}

void print_merged_csv(std::FILE* out, const std::vector<sweep_results>& merged,
                      const facts& about) {
    print_fact_lines(out, about);
    std::fprintf(out, "name,value,boards_passing,boards,result\n");
    bool partial = false;
    std::vector<std::string> summary;
    for (const sweep_results& property : merged) {
        const std::vector<outcome> common = common_results(property.rows);
        for (std::size_t at = 0; at < property.axis.size(); ++at) {
            const auto passing = std::count_if(
                property.rows.begin(), property.rows.end(),
                [at](const sweep_row& row) { return row.results[at] == outcome::pass; });
            std::fprintf(out, "%s,%s,%zu,%zu,%s\n", property.group.c_str(),
                         property.axis.text_at(at).c_str(), static_cast<std::size_t>(passing),
                         property.rows.size(), outcome_name(common[at]));
        }
        partial = partial || property.partial;
        const std::vector<std::string> lines = summary_lines(property);
        summary.insert(summary.end(), lines.begin(), lines.end());
    }
    print_summary_facts(out, partial, summary);
}
