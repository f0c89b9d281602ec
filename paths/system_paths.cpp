// SPDX-License-Identifier: MIT
#include "paths/system_paths.h"

std::string system_path(const std::string& path) { return path; }

const bool system_links_followed = true;
