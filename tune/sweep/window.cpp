// SPDX-License-Identifier: MIT
#include "tune/sweep/window.h"

sweep_window widest_window(const std::vector<outcome>& results) {
    sweep_window widest, current;
    for (std::size_t at = 0; at < results.size(); ++at) {
        if (results[at] != outcome::pass) {
            current.count = 0;
            continue;
        }
        if (current.count++ == 0)
            current.first = at;
        if (current.count > widest.count)
            widest = current;
    }
    return widest;
}

std::size_t window_centre(const sweep_window& window, const std::vector<long long>& axis) {
    const std::size_t middle = window.first + (window.count - 1) / 2;
    if (window.count % 2 == 1 || axis[middle] < axis[middle + 1])
        return middle;
    return middle + 1;
}
