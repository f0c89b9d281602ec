// SPDX-License-Identifier: MIT
// What a sweep measured, and the passing window it found in each row.
#ifndef PADKIT_SWEEP_WINDOW_H
#define PADKIT_SWEEP_WINDOW_H

#include <cstddef>
#include <string>
#include <vector>

// hang: the value a journal shows in flight when the sweep stopped, most
// likely because it hung the board.
enum class outcome { pass, fail, timeout, hang };

// One swept property: a result for each value of the axis measured so far,
// in axis order (an interrupted sweep leaves a row shorter than its axis).
struct sweep_row {
    std::string name;
    std::vector<outcome> results;
};

struct sweep_results {
    std::vector<long long> axis;  // the values in the order visited, rising or falling
    std::vector<sweep_row> rows;
};

// A run of consecutive passing values, as positions on the axis.
struct sweep_window {
    std::size_t first = 0;
    std::size_t count = 0;  // 0: no passing value

    std::size_t last() const { return first + count - 1; }
};

// The widest run of passing values; of equally wide ones the first, that is
// the one at the lowest values.
sweep_window widest_window(const std::vector<outcome>& results);

// The position of the window's middle value; of two middle values, the lower.
std::size_t window_centre(const sweep_window& window, const std::vector<long long>& axis);

#endif
