// SPDX-License-Identifier: MIT
// Path resolution of padkit-sim: every absolute path lives under the board directory.
#include "paths/system_paths.h"

#include <string>

#include "sim/board.h"

std::string system_path(const std::string& path) { return sim::board_dir() + path; }

const bool system_links_followed = false;
