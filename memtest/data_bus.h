// SPDX-License-Identifier: MIT
// The data bus under the test's buffer, as each program sees it: one unit of
// each program defines it, board_bus.cpp for padkit-memtest and sim_bus.cpp
// for padkit-memtest-sim, chosen at link time.
#ifndef PADKIT_MEMTEST_DATA_BUS_H
#define PADKIT_MEMTEST_DATA_BUS_H

#include "memtest/comparison.h"

// The faults the comparison puts on a bus of WIDTH bits: none on a board,
// whose memory shows its own; on the simulated board, the bits of the DQ
// lines outside their eyes. False, said why, when the test cannot run.
bool data_bus_faults(unsigned width, bus_faults* faults);

#endif
