#include <cstdint>
#include <cstdio>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/platform.h"
#include "platform/tarnm.h"
#include "tests/unit/fake_hw.h"

namespace {

using fake_hw::accesses;

// Back to a fresh run: no register fetched, no DQ word staged.
void forget_caches() {
    for (const auto& list : {tarnm::tarnm_ddr_regs, tarnm::ehci_regs, tarnm::i2c_regs, tarnm::mac_regs})
        for (reg_info* reg : list) {
            auto* dq = dynamic_cast<tarnm::reg_info_tarn_dq*>(reg);
            reg->loaded = dq != nullptr;
            if (dq)
                dq->dq_values.clear(), dq->dq_loaded.clear(), dq->dq_dirty.clear();
        }
    fake_hw::reset();
}

struct catalogue : unit_test {
    void SetUp() override {
        forget_caches();
        // Built once per process: they must outlive each test's registry.
        for (const auto& list : {tarnm::regulators, tarnm::mmc_rdqs})
            for (property* prop : list)
                prop->delete_on_unregister = false;
        platform_register_properties();
    }
    static property* at(const std::string& name) { return property::get_property(name); }
    static bool set(const std::string& name, const std::string& text) { return at(name)->set(text); }
    static std::string get(const std::string& name) {
        std::string value;
        EXPECT_TRUE(at(name)->get(value)) << name;
        return value;
    }
};

TEST_F(catalogue, DqWriteSelectsItsWordAndEveryCommitRewritesAllStagedFields) {
    const uint32_t sel = 0xF3812C, data = 0xF38194;
    fake_hw::words[data] = 0xabcdef12;
    EXPECT_TRUE(set("tarnm-ddra-read1::dq3", "5"));
    EXPECT_EQ(fake_hw::log, (accesses{{'w', sel, 0x307}, {'r', data, 0xabcdef12}, {'w', sel, 0x307},
                                      {'w', data, 0xabcdef85}, {'w', sel, 0x7}, {'r', data, 0xabcdef85}}));
    fake_hw::reset();
    fake_hw::words[data] = 0x11;
    EXPECT_TRUE(set("tarnm-ddra-read1::dq0", "1"));
    EXPECT_EQ(fake_hw::log, (accesses{{'w', sel, 0x7}, {'r', data, 0x11}, {'w', sel, 0x7}, {'w', data, 0x81},
                                      {'w', sel, 0x7}, {'r', data, 0x81}, {'w', sel, 0x307},
                                      {'w', data, 0xabcdef85}, {'w', sel, 0x7}, {'r', data, 0xabcdef85}}));
    fake_hw::reset();
    EXPECT_EQ(get("tarnm-ddra-read1::dq3"), "5");  // the staged word, not the read-back
    (*tarnm::tarnm_ddr_regs.begin())->commit();    // tarnm-ddra-read0: nothing staged
    EXPECT_FALSE(set("tarnm-ddra-read1::dq3", "0x80"));
    EXPECT_TRUE(fake_hw::log.empty());
}

TEST_F(catalogue, DqWordsAreKeptPerRegisterAndField) {
    for (const auto& [name, word, text] : {std::tuple{"tarnm-ddra-read0::dq0", 3, "3"}, {"tarnm-ddra-read1::dq0", 4, "4"},
                                          {"tarnm-ddra-read1::dq7", 5, "5"}, {"tarnm-ddra-read0::dq0", 6, "3"}}) {
        fake_hw::words[0xF38194] = word;
        EXPECT_EQ(get(name), text) << name;
    }
    EXPECT_EQ(fake_hw::log, (accesses{{'w', 0xF3812C, 0x0}, {'r', 0xF38194, 3}, {'w', 0xF3812C, 0x7},
                                      {'r', 0xF38194, 4}, {'w', 0xF3812C, 0x707}, {'r', 0xF38194, 5}}));
}

TEST_F(catalogue, DqRelativeChangeIsSignMagnitudeAndSaturatesAtMinus63) {
    const struct { uint32_t code; const char* delta; uint32_t result; bool warns = false; } rows[] = {
        {0x45, "-3", 0x42}, {0x45, "-5", 0x00}, {0x45, "-7", 0x02}, {0x03, "+5", 0x42}, {0x03, "+3", 0x00},
        {0x03, "-10", 0x0D}, {0x7E, "+5", 0x7F, true}, {0x45, "-68", 0x3F}, {0x45, "-69", 0x3F, true},
        {0x03, "-60", 0x3F}, {0x03, "-61", 0x3F, true}, {0x03, "-9223372036854775808", 0x3F, true},
        {0x45, "+9223372036854775807", 0x7F, true}};
    for (const auto& row : rows) {
        forget_caches();
        fake_hw::words[0xF181A0] = 0xff00 | row.code;
        char warning[160] = "";
        if (row.warns)
            snprintf(warning, sizeof warning,
                     "warning! applying %s to current value %u is out of range (0 ~ 127). adjusted to %u\n",
                     row.delta + (row.delta[0] == '+'), row.code, row.result);
        EXPECT_EQ(stderr_of([&] { EXPECT_TRUE(set("tarnm-ddrb-write7::dq8", row.delta)); }), warning) << row.delta;
        const uint32_t staged = 0xff80 | row.result;  // with the update bit
        EXPECT_EQ(fake_hw::log, (accesses{{'w', 0xF1812C, 0x831}, {'r', 0xF181A0, 0xff00 | row.code}, {'w', 0xF1812C, 0x831},
                                          {'w', 0xF181A0, staged}, {'w', 0xF1812C, 0x31}, {'r', 0xF181A0, staged}}))
            << row.delta;
    }
}

// One property per field of each register, and one composite per DQ register.
TEST_F(catalogue, SixGroupsOfEveryFieldAndACompositePerDqRegister) {
    const auto properties_of = [](std::initializer_list<reg_info*> registers) {
        size_t count = 0;
        for (reg_info* reg : registers)
            count += reg->subvals.size() + (dynamic_cast<tarnm::reg_info_tarn_dq*>(reg) != nullptr);
        return count;
    };
    std::vector<std::pair<std::string, size_t>> groups;
    for (const auto& [name, group] : property_group::get_groups())
        groups.emplace_back(name, group->properties.size());
    EXPECT_EQ(groups, (decltype(groups){{"ehci", properties_of(tarnm::ehci_regs)},
                                        {"i2c", properties_of(tarnm::i2c_regs)},
                                        {"mac", properties_of(tarnm::mac_regs)},
                                        {"mmc", 1},
                                        {"regulator", 2},
                                        {"tarnm-ddr", properties_of(tarnm::tarnm_ddr_regs)}}));
}

TEST_F(catalogue, ReadingEveryPropertyReachesEveryCatalogueAddressThroughItsSelect) {
    using access_set = std::set<std::tuple<char, uint32_t, uint32_t>>;
    access_set want = {{'r', 0x140000, 0}};
    for (uint32_t n = 0; n < 4; ++n)
        want.emplace('r', 0x540008 + 0x14 * n, 0);
    for (uint32_t address : {0x190110, 0x190130, 0x190150, 0x190170, 0x190190, 0x1901B0, 0x1901D0, 0x1901F0,
                             0x191010, 0x191030, 0x191070, 0x191090})
        want.emplace('r', address, 0);
    // Lane N selects 8 N; DQ register N, field dqK selects 7 N | K << 8.
    for (const auto& [lanes, sel, block] : {std::tuple{4u, 0xF3812Cu, 0xF38000u}, {8u, 0xF1812Cu, 0xF18000u}}) {
        for (uint32_t offset : {0x120u, 0x13Cu, 0x194u, 0x1A0u})
            want.emplace('r', block | offset, 0);
        for (uint32_t n = 0; n < lanes; ++n)
            for (uint32_t k = 0; k < 9; ++k)
                want.emplace('w', sel, 7 * n | k << 8), want.emplace('w', sel, 8 * n);
    }
    std::string value;
    for (const auto& entry : property::properties())
        entry.second->get(value);  // strength code 0 is no table key: the read happens all the same
    EXPECT_EQ(access_set(fake_hw::log.begin(), fake_hw::log.end()), want);
}

}  // namespace
