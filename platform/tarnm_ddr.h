// SPDX-License-Identifier: MIT
// DDR PHY registers of the tarnm SoC, reached through a select register.
#ifndef PADKIT_TARNM_DDR_H
#define PADKIT_TARNM_DDR_H

#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <utility>

#include "registers/regctl.h"

namespace tarnm {

// A per-DQ delay: sign-magnitude code with an update bit just above it.
class reg_bitmask_dq : public reg_bitmask {
public:
    reg_bitmask_dq(int msb, int lsb, const std::string& name, const std::string& desc,
                   uint32_t dq_select);

    bool adjust(reg_info* reg, long long delta) override;
    bool _before_set(uint32_t& v) override;
    // Swept as the signed delay, -(S-1)..+(S-1) for direction bit S; a delay
    // of 0 is written as code 0, as a relative change writes it.
    value_domain domain() override;

    // Bits OR'd into the register's select value to reach this DQ's word.
    uint32_t dq_select;

private:
    long long direction_bit() const;
};

// A register behind the PHY select register: the select value is written
// before every access of the data register.
class reg_info_tarn_ddr : public reg_info {
public:
    template <typename T>
    reg_info_tarn_ddr(std::string name, uint32_t select_val, uint32_t select_addr, uint32_t address,
                      std::initializer_list<T*> fields)
        : reg_info(std::move(name), address, fields, true),
          select_addr(select_addr),
          select_val(select_val) {}

    void _read() override;
    void commit() override;

    uint32_t select_addr;
    uint32_t select_val;
};

// One data word per DQ field, kept here because the field objects are shared
// by every DQ register.
class reg_info_tarn_dq : public reg_info_tarn_ddr {
public:
    reg_info_tarn_dq(std::string name, uint32_t select_val, uint32_t select_addr, uint32_t address,
                     std::initializer_list<reg_bitmask_dq*> fields);

    void commit() override;
    uint32_t load(reg_subval* sv) override;
    void store(reg_subval* sv, uint32_t word) override;
    // Forgets every DQ word and every staged field.
    void invalidate() override;

    std::map<reg_subval*, uint32_t> dq_values;
    std::map<reg_subval*, bool> dq_loaded;
    std::map<reg_subval*, bool> dq_dirty;
};

}  // namespace tarnm

#endif
