// SPDX-License-Identifier: MIT
// --log DIR: each run of the test command keeps its output in a file of its
// own, named after the point's values and the run.
#ifndef PADKIT_SWEEP_RUN_LOG_H
#define PADKIT_SWEEP_RUN_LOG_H

#include <string>

// Whether DIR is a directory this process may create files in; says why not.
bool log_dir_usable(const std::string& dir);

// DIR/NAME.RUN.log, NAME the point as the progress line shows it
// ("NAME = V, ..."), blanks left out and every other byte outside
// [A-Za-z0-9._,:=+-] as '_'; RUN counts from 1.
std::string run_log_path(const std::string& dir, const std::string& point, long long run);

#endif
