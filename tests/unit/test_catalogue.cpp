// SPDX-License-Identifier: MIT
// The catalogue checked against itself: bit ranges, table codes and the
// ranges its help texts promise.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>

#include "platform/tarnm.h"

namespace {

uint64_t bits_of(const reg_bitmask* field) { return static_cast<uint64_t>(field->mask) << field->shift; }

// The highest value a help text names: "x=0~15 : ...", "[0-15]cycles" or the
// last of "0=..., 1=..., 2=...".
bool highest_named(const std::string& help, unsigned* high) {
    const std::string::size_type comma = help.rfind(", ");
    unsigned low = 0;
    char equals = 0;
    return std::sscanf(help.c_str(), "x=%u~%u", &low, high) == 2 ||
           std::sscanf(help.c_str(), "[%u-%u]", &low, high) == 2 ||
           (comma != std::string::npos && std::sscanf(help.c_str() + comma + 2, "%u%c", high, &equals) == 2 &&
            equals == '=');
}

TEST(CatalogueSelfCheck, FieldsFitTheirWordWithoutOverlapTablesFitTheirFieldsAndHelpStatesTheRange) {
    int stated = 0;
    for (const auto& list : {tarnm::tarnm_ddr_regs, tarnm::ehci_regs, tarnm::i2c_regs, tarnm::mac_regs})
        for (const reg_info* reg : list) {
            uint64_t used = 0;
            for (const auto& [name, subval] : reg->subvals) {
                SCOPED_TRACE(reg->name + "::" + name);
                const auto* field = dynamic_cast<const reg_bitmask*>(subval);
                ASSERT_NE(field, nullptr);
                EXPECT_LT(bits_of(field), uint64_t{1} << 32);
                if (const auto* dq = dynamic_cast<const tarnm::reg_bitmask_dq*>(field)) {
                    // A word of its own, with the update bit just above the code.
                    EXPECT_LT(bits_of(dq) * 2 + 1, uint64_t{1} << 32);
                } else {
                    EXPECT_EQ(used & bits_of(field), 0u);
                    used |= bits_of(field);
                }
                if (const auto* mapped = dynamic_cast<const reg_bitmask_map*>(field)) {
                    for (const auto& [key, code] : *mapped->value_map)
                        EXPECT_EQ(code & field->mask, code) << "key " << key;
                }
                unsigned high = 0;
                if (highest_named(field->desc, &high)) {
                    ++stated;
                    uint32_t needed = 0;  // as wide as the highest value needs
                    while (needed < high)
                        needed = needed * 2 + 1;
                    EXPECT_EQ(field->mask, needed);
                }
            }
        }
    EXPECT_GT(stated, 0);  // the help parser still recognises the catalogue's texts
}

TEST(CatalogueSelfCheck, DriveStrengthAndTerminationCodesAreTheHardwareOnes) {
    using table = std::map<uint32_t, uint32_t>;
    EXPECT_EQ(tarnm::_drv_map, (table{{30, 15}, {34, 14}, {40, 11}, {60, 8}}));
    EXPECT_EQ(tarnm::_odt_map, (table{{0, 0}, {40, 6}, {60, 4}, {120, 1}}));
}

}  // namespace
