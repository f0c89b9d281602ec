// SPDX-License-Identifier: MIT
// Which data bit of its controller's bus each swept DQ line carries, so that
// the test command's failing bits judge each line by its own.
#ifndef PADKIT_TUNE_DQ_BITS_H
#define PADKIT_TUNE_DQ_BITS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "properties/property.h"
#include "tune/sweep/command_run.h"
#include "tune/sweep/failing_bits.h"

// A DQ line's delay by its name: CONTROLLER-readK::dqI or CONTROLLER-writeK::dqI.
struct dq_line {
    std::string controller;
    bool write = false;
    unsigned lane = 0, dq = 0;
};

// A lane's lines that carry a data bit; a write lane's ninth, dq8, has none.
constexpr unsigned data_lines = 8;

// The line a name names; false for any other name.
bool parse_dq_line(const std::string& name, dq_line* line);

struct bus_bits {
    std::string bus;  // the controller, PADKIT_SWEEP_BUS; empty when the rows are no DQ lines
    unsigned width = 0;
    // Per row, its data bit; none for a write lane's dq8, which has none.
    std::vector<std::optional<unsigned>> bits;

    // What judges COUNT rows from FIRST written together: their bits, or
    // the exit status when the rows are no DQ lines or one has no data bit.
    member_bits judging(std::size_t first, std::size_t count) const;
    // PADKIT_SWEEP_BUS for the command, when the rows are DQ lines.
    void name_bus(environment* names) const;
};

// The bits of ROWS, DQ lines of one controller, or none when the first is
// no DQ line: DQ i of lane K is bit 8*K+i of a bus 8 bits wide per read lane,
// unless BITS_PATH names a map (bit_map.h), which must name every row that
// has a data bit exactly once, each within the bus. On failure says why.
bool plan_bits(const std::vector<property*>& rows, const std::string& bits_path, bus_bits* out);

#endif
