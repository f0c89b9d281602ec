// SPDX-License-Identifier: MIT
// The edges of the passing windows of many lines found together: every line
// has its own setting, so in one run each line sits at its own value. A
// coarse pass over the axis with every line at the same value, a finer look
// for a line that passed nowhere, then a bisection of each line's two edges
// between its last failing and first passing value, and each edge value run
// until it has passed RUNS times. A value that failed once fails. Each
// line's eye is taken to be one interval: a value between two passing ones
// is not run.
#ifndef PADKIT_SWEEP_EDGE_SEARCH_H
#define PADKIT_SWEEP_EDGE_SEARCH_H

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

#include "tune/sweep/outcome.h"
#include "tune/sweep/window.h"

// One run of the command, RUNS times: each line at its position on the
// axis, or left at its original (none).
struct probe_round {
    std::vector<std::optional<std::size_t>> at;
    long long runs = 1;
};

class edge_search {
public:
    // LINES lines over VALUES positions of an axis, the coarse pass every
    // STRIDE-th (1: every value).
    edge_search(std::size_t lines, std::size_t values, std::size_t stride, long long runs);

    // The next round; none once every edge is confirmed.
    std::optional<probe_round> next() const;
    // The results of ROUND, one per line.
    void record(const probe_round& round, const std::vector<outcome>& results);
    // About how many rounds are left.
    std::size_t rounds_left() const;
    // The line's window of positions as far as it is known; count 0: none.
    sweep_window window(std::size_t line) const;
    // Whether the line's result at position AT passed (every run), failed
    // (some run), or it was not run.
    std::optional<bool> passed(std::size_t line, std::size_t at) const;

private:
    struct tried {
        long long runs = 0;
        bool failed = false;
    };
    // What a line tries next: a value to learn from, run once, or an edge
    // value to confirm.
    struct task {
        std::size_t at;
        bool confirm;
    };
    std::optional<task> task_of(std::size_t line) const;
    std::vector<std::size_t> coarse() const;
    std::size_t coarse_left() const;

    const std::size_t values, stride;
    const long long runs;
    std::vector<std::map<std::size_t, tried>> measured;  // per line, by position
};

#endif
