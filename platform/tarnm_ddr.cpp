// SPDX-License-Identifier: MIT
#include "platform/tarnm_ddr.h"

namespace tarnm {

reg_bitmask_dq::reg_bitmask_dq(int msb, int lsb, const std::string& name, const std::string& desc,
                               uint32_t dq_select)
    : reg_bitmask(msb, lsb, name, desc), dq_select(dq_select) {}

bool reg_bitmask_dq::_before_set(uint32_t& v) {
    v |= mask + 1;
    return true;
}

// Direction bit S: set means +(code - S), clear means -code.
long long reg_bitmask_dq::direction_bit() const { return (static_cast<long long>(mask) + 1) / 2; }

value_domain reg_bitmask_dq::domain() {
    value_domain delays = reg_bitmask::domain();
    delays.direction_bit = direction_bit();
    return delays;
}

bool reg_bitmask_dq::adjust(reg_info* reg, long long delta) {
    uint32_t code = 0;
    if (!get(reg, &code))
        return false;
    const long long direction = direction_bit();
    const long long current = code;
    long long next = 0;
    bool below_most_negative = false;
    if (current & direction) {
        const long long t = saturating_add(current, delta);
        below_most_negative = t <= 0;
        next = t > direction ? t : direction - t;
    } else {
        const long long u = saturating_sub(current, delta);
        below_most_negative = u >= direction;
        next = u >= 0 ? u : saturating_sub(direction, u);
    }
    if (below_most_negative) {
        // The clamp knows only the code range; saturate the negative side here.
        uint32_t min = 0;
        uint32_t max = 0;
        get_limits(&min, &max);
        next = direction - 1;
        _warn_out_of_range(delta, code, min, max, static_cast<uint32_t>(next));
    }
    return set(reg, clamp(next, code, delta));
}

void reg_info_tarn_ddr::_read() {
    write_word(select_addr, select_val);
    value = read_word(address);
}

void reg_info_tarn_ddr::commit() {
    write_word(select_addr, select_val);
    write_word(address, value);
    _read();
}

reg_info_tarn_dq::reg_info_tarn_dq(std::string name, uint32_t select_val, uint32_t select_addr,
                                   uint32_t address, std::initializer_list<reg_bitmask_dq*> fields)
    : reg_info_tarn_ddr(std::move(name), select_val, select_addr, address, fields) {
    // The per-DQ entries start as the maps' defaults (0, not loaded, clean)
    // when first used. The inherited one-time fetch must never run: every DQ has its own word.
    loaded = true;
}

void reg_info_tarn_dq::store(reg_subval* sv, uint32_t word) {
    dq_values[sv] = word;
    dq_dirty[sv] = true;
}

uint32_t reg_info_tarn_dq::load(reg_subval* sv) {
    if (dq_loaded[sv])
        return dq_values[sv];
    auto* dq = dynamic_cast<reg_bitmask_dq*>(sv);
    if (!dq)
        return 0xFFFFFFFF;
    write_word(select_addr, select_val | dq->dq_select);
    value = read_word(address);
    dq_values[sv] = value;
    dq_loaded[sv] = true;
    return dq_values[sv];
}

void reg_info_tarn_dq::invalidate() {
    for (auto& entry : dq_loaded)
        entry.second = false;
    for (auto& entry : dq_dirty)
        entry.second = false;
}

void reg_info_tarn_dq::commit() {
    // Every field staged this run is written again: the marks are never cleared.
    for (const auto& entry : subvals) {
        auto* dq = dynamic_cast<reg_bitmask_dq*>(entry.second);
        if (!dq || !dq_dirty[dq])
            continue;
        const uint32_t word = dq_values[dq];
        write_word(select_addr, select_val | dq->dq_select);
        value = word;
        write_word(address, value);
        _read();
    }
}

}  // namespace tarnm
