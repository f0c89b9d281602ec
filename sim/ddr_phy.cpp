// SPDX-License-Identifier: MIT
#include "sim/ddr_phy.h"

#include <string>
#include <vector>

namespace sim {

namespace {

// Offsets from a PHY's base.
constexpr uint32_t select_offset = 0x12c;
constexpr uint32_t lane_offset = 0x13c;
constexpr uint32_t read_dq_offset = 0x194;
constexpr uint32_t write_dq_offset = 0x1a0;

// The select value of a lane's DQ delays; the DQ's index goes above it.
constexpr uint32_t dq_lane_select_step = 7;
constexpr int dq_select_shift = 8;

constexpr uint32_t delay_direction_bit = 0x40;
constexpr uint32_t delay_magnitude = 0x3f;

}  // namespace

const ddr_phy* find_ddr_phy(const std::string& name) {
    for (const ddr_phy& phy : ddr_phys)
        if (name == phy.name)
            return &phy;
    return nullptr;
}

bool find_data_register(uint32_t address, phy_data_register* found) {
    for (const ddr_phy& phy : ddr_phys)
        for (uint32_t offset : {lane_offset, read_dq_offset, write_dq_offset})
            if (address == phy.base + offset) {
                *found = {address, phy.base + select_offset, offset != lane_offset};
                return true;
            }
    return false;
}

std::vector<dq_line> dq_lines(const ddr_phy& phy) {
    std::vector<dq_line> lines;
    for (bool write : {false, true})
        for (int lane = 0; lane < phy.lanes; ++lane)
            for (int dq = 0; dq < (write ? 9 : 8); ++dq)
                lines.push_back({&phy, write, lane, dq});
    return lines;
}

std::string line_name(const dq_line& line) {
    return std::string(line.phy->name) + (line.write ? "-write" : "-read") +
           std::to_string(line.lane) + "::dq" + std::to_string(line.dq);
}

int data_bit(const dq_line& line) { return line.dq < 8 ? 8 * line.lane + line.dq : -1; }

uint32_t delay_address(const dq_line& line) {
    return line.phy->base + (line.write ? write_dq_offset : read_dq_offset);
}

uint32_t delay_select(const dq_line& line) {
    return dq_lane_select_step * static_cast<uint32_t>(line.lane) | static_cast<uint32_t>(line.dq)
                                                                        << dq_select_shift;
}

int delay_of(uint32_t word) {
    const int magnitude = static_cast<int>(word & delay_magnitude);
    return word & delay_direction_bit ? magnitude : -magnitude;
}

}  // namespace sim
