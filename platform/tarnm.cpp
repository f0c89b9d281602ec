// SPDX-License-Identifier: MIT
#include "platform/tarnm.h"

#include <list>
#include <string>
#include <utility>

#include "fileprops/property_file.h"
#include "fileprops/property_regulator_voltage.h"
#include "platform/platform.h"
#include "properties/property.h"
#include "registers/regctl.h"

// The definitions below run in this order at start-up; every list is
// complete before a register refers to it.
namespace tarnm {

namespace {

reg_bitmask_dq* dq_field(int n) {
    return new reg_bitmask_dq(6, 0, "dq" + std::to_string(n), "no desc", n * 0x100u);
}

constexpr uint32_t phy_a_select = 0xF3812C;
constexpr uint32_t phy_b_select = 0xF1812C;

}  // namespace

const std::initializer_list<reg_bitmask_dq*> read_dq_subvals = {
    dq_field(0), dq_field(1), dq_field(2), dq_field(3),
    dq_field(4), dq_field(5), dq_field(6), dq_field(7),
};

const std::initializer_list<reg_bitmask_dq*> write_dq_subvals = {
    dq_field(0), dq_field(1), dq_field(2), dq_field(3), dq_field(4),
    dq_field(5), dq_field(6), dq_field(7), dq_field(8),
};

const std::initializer_list<reg_bitmask*> scl_subvals = {
    new reg_bitmask(31, 0, "scl", "no desc"),
};

const std::map<uint32_t, uint32_t> _drv_map = {{30, 15}, {34, 14}, {40, 11}, {60, 8}};
const std::map<uint32_t, uint32_t> _odt_map = {{40, 6}, {60, 4}, {120, 1}, {0, 0}};

const std::initializer_list<reg_bitmask_map*> ddr_subvals_strength = {
    new reg_bitmask_map(23, 20, "clkdrv", "clk strength", &_drv_map),
    new reg_bitmask_map(19, 16, "adrdrv", "addr strength", &_drv_map),
    new reg_bitmask_map(7, 4, "dqsdrv", "dqs/dq strength", &_drv_map),
    new reg_bitmask_map(3, 0, "odt", "on-die termination", &_odt_map),
};

namespace {

reg_info* read_dq(const char* name, uint32_t select_val, uint32_t select_addr, uint32_t data) {
    return new reg_info_tarn_dq(name, select_val, select_addr, data, read_dq_subvals);
}

reg_info* write_dq(const char* name, uint32_t select_val, uint32_t select_addr, uint32_t data) {
    return new reg_info_tarn_dq(name, select_val, select_addr, data, write_dq_subvals);
}

reg_info* lane(const char* name, uint32_t select_val, uint32_t select_addr, uint32_t data) {
    return new reg_info_tarn_ddr(name, select_val, select_addr, data, scl_subvals);
}

}  // namespace

const std::initializer_list<reg_info*> tarnm_ddr_regs = {
    read_dq("tarnm-ddra-read0", 0x00, phy_a_select, 0xF38194),
    read_dq("tarnm-ddra-read1", 0x07, phy_a_select, 0xF38194),
    read_dq("tarnm-ddra-read2", 0x0E, phy_a_select, 0xF38194),
    read_dq("tarnm-ddra-read3", 0x15, phy_a_select, 0xF38194),
    read_dq("tarnm-ddrb-read0", 0x00, phy_b_select, 0xF18194),
    read_dq("tarnm-ddrb-read1", 0x07, phy_b_select, 0xF18194),
    read_dq("tarnm-ddrb-read2", 0x0E, phy_b_select, 0xF18194),
    read_dq("tarnm-ddrb-read3", 0x15, phy_b_select, 0xF18194),
    read_dq("tarnm-ddrb-read4", 0x1C, phy_b_select, 0xF18194),
    read_dq("tarnm-ddrb-read5", 0x23, phy_b_select, 0xF18194),
    read_dq("tarnm-ddrb-read6", 0x2A, phy_b_select, 0xF18194),
    read_dq("tarnm-ddrb-read7", 0x31, phy_b_select, 0xF18194),
    write_dq("tarnm-ddra-write0", 0x00, phy_a_select, 0xF381A0),
    write_dq("tarnm-ddra-write1", 0x07, phy_a_select, 0xF381A0),
    write_dq("tarnm-ddra-write2", 0x0E, phy_a_select, 0xF381A0),
    write_dq("tarnm-ddra-write3", 0x15, phy_a_select, 0xF381A0),
    write_dq("tarnm-ddrb-write0", 0x00, phy_b_select, 0xF181A0),
    write_dq("tarnm-ddrb-write1", 0x07, phy_b_select, 0xF181A0),
    write_dq("tarnm-ddrb-write2", 0x0E, phy_b_select, 0xF181A0),
    write_dq("tarnm-ddrb-write3", 0x15, phy_b_select, 0xF181A0),
    write_dq("tarnm-ddrb-write4", 0x1C, phy_b_select, 0xF181A0),
    write_dq("tarnm-ddrb-write5", 0x23, phy_b_select, 0xF181A0),
    write_dq("tarnm-ddrb-write6", 0x2A, phy_b_select, 0xF181A0),
    write_dq("tarnm-ddrb-write7", 0x31, phy_b_select, 0xF181A0),
    lane("tarnm-ddra0", 0x00, phy_a_select, 0xF3813C),
    lane("tarnm-ddra1", 0x08, phy_a_select, 0xF3813C),
    lane("tarnm-ddra2", 0x10, phy_a_select, 0xF3813C),
    lane("tarnm-ddra3", 0x18, phy_a_select, 0xF3813C),
    lane("tarnm-ddrb0", 0x00, phy_b_select, 0xF1813C),
    lane("tarnm-ddrb1", 0x08, phy_b_select, 0xF1813C),
    lane("tarnm-ddrb2", 0x10, phy_b_select, 0xF1813C),
    lane("tarnm-ddrb3", 0x18, phy_b_select, 0xF1813C),
    lane("tarnm-ddrb4", 0x20, phy_b_select, 0xF1813C),
    lane("tarnm-ddrb5", 0x28, phy_b_select, 0xF1813C),
    lane("tarnm-ddrb6", 0x30, phy_b_select, 0xF1813C),
    lane("tarnm-ddrb7", 0x38, phy_b_select, 0xF1813C),
    new reg_info("tarnm-ddra", 0xF38120, ddr_subvals_strength, true),
    new reg_info("tarnm-ddrb", 0xF18120, ddr_subvals_strength, true),
};

const std::initializer_list<reg_bitmask*> ehci_phy_subvals = {
    new reg_bitmask(25, 25, "pre-emphasis-duration", "0=580ps*, 1=1160ps"),
    new reg_bitmask(24, 23, "pre-emphasis-current", "0=disable, 1=600uA*, 2=1200uA, 3=1800uA"),
    new reg_bitmask(22, 21, "tx-res-tune", "0=+1.5ohm, 1=0*, 2=-2, 3=-4"),
    new reg_bitmask(20, 19, "tx-rise", "0=+10%, 1=0*, 2=-15%, 3=-20%"),
    new reg_bitmask(18, 15, "tx-vref", "x=0~15 : 400mV + (-6 + 2x)%"),
    new reg_bitmask(14, 11, "tx-fsls", "x=0~15 : 45ohm + (5 - 2.5x)%"),
    new reg_bitmask(10, 9, "tx-crossover", "0=0mV*, 1=-15mV, 2=+15mV"),
    new reg_bitmask(8, 6, "vbus-valid", "x=0~7  : 5V + (-12 + 3x)%"),
    new reg_bitmask(5, 3, "squelch-threshold", "x=0~7  : 125mV + (15 - 5x)%"),
    new reg_bitmask(2, 0, "disconnect-threshold", "x=0~7  : 575mV + (-6 + 1.5x)%"),
};

const std::initializer_list<reg_info*> ehci_regs = {
    new reg_info("ehci0-phy", 0x540008, ehci_phy_subvals, true),
    new reg_info("ehci1-phy", 0x54001C, ehci_phy_subvals, true),
    new reg_info("ehci2-phy", 0x540030, ehci_phy_subvals, true),
    new reg_info("ehci3-phy", 0x540044, ehci_phy_subvals, true),
};

const std::initializer_list<reg_bitmask*> i2c_delay_subvals = {
    new reg_bitmask(3, 0, "sda-delay", "[0-15]cycles"),
    new reg_bitmask(7, 4, "scl-delay", "[0-15]cycles"),
};

const std::initializer_list<reg_info*> i2c_regs = {
    new reg_info("i2c0-delay", 0x190110, i2c_delay_subvals, true),
    new reg_info("i2c1-delay", 0x190130, i2c_delay_subvals, true),
    new reg_info("i2c2-delay", 0x190150, i2c_delay_subvals, true),
    new reg_info("i2c3-delay", 0x190170, i2c_delay_subvals, true),
    new reg_info("i2c4-delay", 0x190190, i2c_delay_subvals, true),
    new reg_info("i2c5-delay", 0x1901B0, i2c_delay_subvals, true),
    new reg_info("i2c6-delay", 0x1901D0, i2c_delay_subvals, true),
    new reg_info("i2c7-delay", 0x1901F0, i2c_delay_subvals, true),
    new reg_info("i2c8-delay", 0x191010, i2c_delay_subvals, true),
    new reg_info("i2c9-delay", 0x191030, i2c_delay_subvals, true),
    new reg_info("i2c10-delay", 0x191070, i2c_delay_subvals, true),
    new reg_info("i2c11-delay", 0x191090, i2c_delay_subvals, true),
};

// Read on every start, before the lock is taken, to say early when it is
// unusable; read again by every get and set.
const std::initializer_list<property*> mmc_rdqs = {
    new property_file<int>("mmc::rdqs", "/sys/kernel/debug/mmc0/rdqs", 2, 255),
};

const std::initializer_list<reg_bitmask*> mac_txdelay_subval = {
    new reg_bitmask(9, 8, "delay", "[0-3]cycles"),
};

const std::initializer_list<reg_bitmask*> mac_rxdelay_subval = {
    new reg_bitmask(11, 10, "delay", "[0-3]cycles"),
};

// Two views of one word: each register keeps its own cached copy.
const std::initializer_list<reg_info*> mac_regs = {
    new reg_info("mac-tx", 0x140000, mac_txdelay_subval, true),
    new reg_info("mac-rx", 0x140000, mac_rxdelay_subval, true),
};

const std::initializer_list<property*> regulators = {
    new property_regulator_voltage("cpu_regulator::microvolts", "/sys/class/regulator/regulator.1",
                                   93.0, 107.0),
    new property_regulator_voltage("core_regulator::microvolts", "/sys/class/regulator/regulator.2",
                                   93.0, 107.0),
};

}  // namespace tarnm

namespace {

struct register_family {
    const char* group;
    const std::initializer_list<reg_info*>& registers;
};

const register_family register_families[] = {
    {"tarnm-ddr", tarnm::tarnm_ddr_regs},
    {"ehci", tarnm::ehci_regs},
    {"i2c", tarnm::i2c_regs},
    {"mac", tarnm::mac_regs},
};

struct file_family {
    const char* group;
    const std::initializer_list<property*>& properties;
};

const file_family file_families[] = {
    {"regulator", tarnm::regulators},
    {"mmc", tarnm::mmc_rdqs},
};

// The composite "<register>::dq" of a DQ register: all its DQ fields, in order.
property* register_dq_composite(property_group* group, reg_info* reg) {
    std::list<std::string> members;
    for (const auto& field : reg->subvals)
        members.push_back(reg->name + "::" + field.first);
    auto* composite = new property_set(reg->name + "::dq", std::move(members));
    if (property::register_property(group, composite))
        return composite;
    delete composite;
    return nullptr;
}

bool is_dq_register(reg_info* reg) {
    return dynamic_cast<tarnm::reg_info_tarn_dq*>(reg) != nullptr;
}

}  // namespace

void platform_register_properties() {
    for (const register_family& family : register_families) {
        property_group* group = property_group::register_property_group(family.group);
        for (reg_info* reg : family.registers)
            property_register::register_as_property(group, reg);
    }
    for (const file_family& family : file_families)
        for (property* prop : family.properties)
            property::register_property(family.group, prop);
    for (const register_family& family : register_families) {
        property_group* group = property_group::register_property_group(family.group);
        for (reg_info* reg : family.registers)
            if (is_dq_register(reg))
                register_dq_composite(group, reg);
    }
}

property* platform_register_property(const std::string& name) {
    for (const file_family& family : file_families)
        for (property* prop : family.properties)
            if (prop->name == name)
                return property::register_property(family.group, prop);
    const std::string::size_type separator = name.find("::");
    if (separator == std::string::npos)
        return nullptr;
    const std::string register_name = name.substr(0, separator);
    const std::string field_name = name.substr(separator + 2);
    for (const register_family& family : register_families)
        for (reg_info* reg : family.registers) {
            if (reg->name != register_name)
                continue;
            property_group* group = property_group::register_property_group(family.group);
            if (field_name == "dq" && is_dq_register(reg))
                return register_dq_composite(group, reg);
            const auto field = reg->subvals.find(field_name);
            if (field == reg->subvals.end())
                return nullptr;
            return property_register::register_as_property(group, reg, field->first, field->second);
        }
    return nullptr;
}
