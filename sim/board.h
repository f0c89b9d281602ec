// SPDX-License-Identifier: MIT
// The simulated board: a directory that stands for the root of a tarnm system.
#ifndef PADKIT_SIM_BOARD_H
#define PADKIT_SIM_BOARD_H

#include <string>

namespace sim {

// The board directory, without a trailing slash. Chosen from the environment
// on first use; a board that does not exist yet is created fresh before this
// returns, since the catalogue reads the board during static initialisation.
// When PADKIT_SIM_DIR, XDG_STATE_HOME and HOME are all unset or empty, says
// so and ends the program with status 255.
const std::string& board_dir();

}  // namespace sim

#endif
