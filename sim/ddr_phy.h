// SPDX-License-Identifier: MIT
// The DDR PHYs of the simulated board, as the SoC's documentation describes
// them: a select register chooses which internal register a data register
// reaches; the per-DQ delay registers hold one word per DQ line of a lane.
#ifndef PADKIT_SIM_DDR_PHY_H
#define PADKIT_SIM_DDR_PHY_H

#include <cstdint>
#include <string>
#include <vector>

namespace sim {

struct ddr_phy {
    const char* name;  // the controller whose data bus it drives
    uint32_t base;
    int lanes;  // byte lanes, each with a read and a write lane of DQ delays
};

// clang-format off
constexpr ddr_phy ddr_phys[] = {
    {"tarnm-ddra", 0x00f38000, 4},
    {"tarnm-ddrb", 0x00f18000, 8},
};
// clang-format on

// The PHY named, or nullptr.
const ddr_phy* find_ddr_phy(const std::string& name);

// A data register, reached through its PHY's select register.
struct phy_data_register {
    uint32_t address;
    uint32_t select_address;
    bool per_dq;  // DQ delays: the PHY takes the update bit and clears it
};

// The data register at the address; false for any other address.
bool find_data_register(uint32_t address, phy_data_register* found);

constexpr uint32_t dq_update_bit = 0x80;

// A DQ line: DQ dq of the read or write lane of a byte lane. Write lanes
// have a ninth line, dq8, which carries no data bit.
struct dq_line {
    const ddr_phy* phy;
    bool write;
    int lane;
    int dq;
};

// Every DQ line of the PHY, read lanes first.
std::vector<dq_line> dq_lines(const ddr_phy& phy);

// Its name as padkit knows the delay: tarnm-ddra-read1::dq3.
std::string line_name(const dq_line& line);

// The bit of the controller's data bus the line carries (8 per lane), or -1.
int data_bit(const dq_line& line);

// Where its delay word is: the data register and the select value.
uint32_t delay_address(const dq_line& line);
uint32_t delay_select(const dq_line& line);

// The signed delay a delay word holds: sign-magnitude in bits 6..0, bit 6
// set for the positive side.
int delay_of(uint32_t word);

}  // namespace sim

#endif
