// SPDX-License-Identifier: MIT
// The simulated board: a directory that stands for the root of a tarnm system.
#ifndef PADKIT_SIM_BOARD_H
#define PADKIT_SIM_BOARD_H

#include <sys/types.h>

#include <string>

namespace sim {

// The board directory, without a trailing slash. Chosen from the environment
// on first use; a board that does not exist yet is created fresh before this
// returns, since the catalogue reads the board during static initialisation.
// When PADKIT_SIM_DIR, XDG_STATE_HOME and HOME are all unset or empty, says
// so and ends the program with status 255.
const std::string& board_dir();

// The core regulator's voltage file, below the board directory, and the
// voltage a fresh board holds.
constexpr const char* core_microvolts_path = "/sys/class/regulator/regulator.2/microvolts";
constexpr long nominal_core_microvolts = 900000;

// Reads a file of the board whole, and its permissions when MODE is given.
// A symbolic link reads as a missing file: a link in the board would make
// root read, and then replace, what it names.
bool read_board_file(const std::string& path, std::string* text, mode_t* mode = nullptr);

}  // namespace sim

#endif
