// SPDX-License-Identifier: MIT
// The eyes of the simulated board's DQ lines, kept in the text file
// <board>/eye: the delays at which each line carries data, narrowing as the
// core voltage drops below its nominal value.
#ifndef PADKIT_SIM_EYE_H
#define PADKIT_SIM_EYE_H

#include <cstdint>

#include "sim/ddr_phy.h"

namespace sim {

// The data bits of the PHY's bus that fail on the board as it is: a bit
// fails when the delay of its read or its write line lies outside the line's
// eye at the core voltage. A bit that cannot be judged fails too (the eye,
// the voltage or a delay that cannot be read, said through the message
// sink). A board without an eye gets one first, from $PADKIT_SIM_EYE_SEED or
// a random seed.
uint64_t failing_data_bits(const ddr_phy& phy);

}  // namespace sim

#endif
