// SPDX-License-Identifier: MIT
// The register state of the simulated board, kept in the text file <board>/regs.
#ifndef PADKIT_SIM_REGISTER_FILE_H
#define PADKIT_SIM_REGISTER_FILE_H

#include <cstdint>
#include <string>
#include <vector>

namespace sim {

// The contents of regs on a fresh board: the reset values.
std::string fresh_regs();

// One register access on the board, resolving the DDR PHY data registers
// through their select register. False when regs cannot be read, parsed or
// (for a write) replaced; a bad line has already been reported then.
bool read_word(uint32_t address, uint32_t* word);
bool write_word(uint32_t address, uint32_t value);

// A word behind a DDR PHY select register value.
struct selected_word {
    uint32_t address;
    uint32_t select;
};

// The words, in order, from one reading of regs and without a select write:
// for a reader that holds no lock and changes nothing. False as read_word.
bool read_selected_words(const std::vector<selected_word>& wanted, std::vector<uint32_t>* words);

// Appends "R|W 0x<address> 0x<word>" to $PADKIT_SIM_TRACE, when it is set.
void trace_access(char kind, uint32_t address, uint32_t word);

}  // namespace sim

#endif
