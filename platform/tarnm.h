// SPDX-License-Identifier: MIT
// The catalogue of the tarnm SoC: every tunable register, field, value table,
// regulator and debug file, built once during static initialisation.
#ifndef PADKIT_TARNM_H
#define PADKIT_TARNM_H

#include <cstdint>
#include <initializer_list>
#include <map>

#include "platform/tarnm_ddr.h"
#include "properties/property.h"
#include "registers/regctl.h"

namespace tarnm {

extern const std::initializer_list<reg_info*> tarnm_ddr_regs;
extern const std::initializer_list<reg_info*> ehci_regs;
extern const std::initializer_list<reg_info*> i2c_regs;
extern const std::initializer_list<reg_info*> mac_regs;
extern const std::initializer_list<property*> regulators;
extern const std::initializer_list<property*> mmc_rdqs;
extern const std::initializer_list<reg_bitmask_dq*> read_dq_subvals;
extern const std::initializer_list<reg_bitmask_dq*> write_dq_subvals;
extern const std::initializer_list<reg_bitmask*> scl_subvals;
extern const std::initializer_list<reg_bitmask_map*> ddr_subvals_strength;
extern const std::initializer_list<reg_bitmask*> ehci_phy_subvals;
extern const std::initializer_list<reg_bitmask*> i2c_delay_subvals;
extern const std::initializer_list<reg_bitmask*> mac_txdelay_subval;
extern const std::initializer_list<reg_bitmask*> mac_rxdelay_subval;

// User value to field code of the DDR drive-strength and ODT fields.
extern const std::map<uint32_t, uint32_t> _drv_map;
extern const std::map<uint32_t, uint32_t> _odt_map;

}  // namespace tarnm

#endif
