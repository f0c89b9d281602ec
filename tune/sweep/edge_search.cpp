// SPDX-License-Identifier: MIT
#include "tune/sweep/edge_search.h"

#include <algorithm>

edge_search::edge_search(std::size_t lines, std::size_t values, std::size_t stride, long long runs)
    : values(values), stride(stride), runs(runs), measured(lines) {}

// Every STRIDE-th position and the last one, in order; every line takes
// them together.
std::vector<std::size_t> edge_search::coarse() const {
    std::vector<std::size_t> positions;
    for (std::size_t at = 0; at < values; at += stride)
        positions.push_back(at);
    if (positions.back() != values - 1)
        positions.push_back(values - 1);
    return positions;
}

std::size_t edge_search::coarse_left() const {
    std::size_t left = 0;
    for (std::size_t at : coarse())
        left += !measured.front().count(at);
    return left;
}

std::optional<bool> edge_search::passed(std::size_t line, std::size_t at) const {
    const auto found = measured[line].find(at);
    if (found == measured[line].end())
        return std::nullopt;
    return !found->second.failed;
}

sweep_window edge_search::window(std::size_t line) const {
    // The widest run of passing values with no failing one between them.
    sweep_window widest, current;
    bool in_run = false;
    for (const auto& [at, result] : measured[line]) {
        if (result.failed) {
            in_run = false;
            continue;
        }
        if (!in_run)
            current = {at, 0};
        in_run = true;
        current.count = at - current.first + 1;
        if (current.count > widest.count)
            widest = current;
    }
    return widest;
}

std::optional<edge_search::task> edge_search::task_of(std::size_t line) const {
    const std::map<std::size_t, tried>& tries = measured[line];
    const sweep_window found = window(line);
    if (found.count == 0) {
        // A window narrower than the coarse stride may lie between its values.
        for (std::size_t at = stride / 2; stride > 1 && at < values; at += stride)
            if (!tries.count(at))
                return task{at, false};
        return std::nullopt;
    }
    // The failing values beyond each end; one past the axis when none.
    auto below = tries.find(found.first);
    const long long lower = below == tries.begin() ? -1 : static_cast<long long>((--below)->first);
    const auto above = tries.upper_bound(found.last());
    const std::size_t upper = above == tries.end() ? values : above->first;
    if (static_cast<long long>(found.first) - lower > 1)
        return task{static_cast<std::size_t>((lower + static_cast<long long>(found.first)) / 2),
                    false};
    if (tries.at(found.first).runs < runs)
        return task{found.first, true};
    if (upper - found.last() > 1)
        return task{(found.last() + upper) / 2, false};
    if (tries.at(found.last()).runs < runs)
        return task{found.last(), true};
    return std::nullopt;
}

std::optional<probe_round> edge_search::next() const {
    probe_round round;
    if (coarse_left()) {
        for (std::size_t at : coarse())
            if (!measured.front().count(at)) {
                round.at.assign(measured.size(), at);
                return round;
            }
    }
    // Values to learn from go first, once each; edge values wait for a
    // round of their own, run as often as they still need.
    std::vector<std::optional<task>> tasks;
    bool learning = false;
    for (std::size_t line = 0; line < measured.size(); ++line) {
        tasks.push_back(task_of(line));
        learning = learning || (tasks.back() && !tasks.back()->confirm);
    }
    round.runs = learning ? 1 : 0;
    for (std::size_t line = 0; line < tasks.size(); ++line) {
        const bool taken = tasks[line] && tasks[line]->confirm != learning;
        round.at.push_back(taken ? std::optional(tasks[line]->at) : std::nullopt);
        if (taken && !learning)
            round.runs = std::max(round.runs, runs - measured[line].at(tasks[line]->at).runs);
    }
    if (std::none_of(round.at.begin(), round.at.end(),
                     [](const std::optional<std::size_t>& at) { return at.has_value(); }))
        return std::nullopt;
    return round;
}

void edge_search::record(const probe_round& round, const std::vector<outcome>& results) {
    for (std::size_t line = 0; line < measured.size(); ++line) {
        if (!round.at[line])
            continue;
        tried& at = measured[line][*round.at[line]];
        at.runs += round.runs;
        at.failed = at.failed || results[line] != outcome::pass;
    }
}

std::size_t edge_search::rounds_left() const {
    std::size_t bisections = 0;
    for (std::size_t span = stride; span > 1; span /= 2)
        ++bisections;
    return next() ? coarse_left() + 2 * bisections + (runs > 1 ? 2 : 0) : 0;
}
