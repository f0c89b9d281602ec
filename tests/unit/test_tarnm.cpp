// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "paths/system_paths.h"
#include "platform/platform.h"
#include "platform/tarnm.h"
#include "tests/unit/fake_hw.h"

namespace {

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

struct TarnmRegisters : unit_test {
    void SetUp() override {
        forget_caches();
        // Built once per process: they must outlive each test's registry.
        for (const auto& list : {tarnm::regulators, tarnm::mmc_rdqs})
            for (property* prop : list)
                prop->delete_on_unregister = false;
        platform_register_properties();
    }
    static property* at(const std::string& name) { return property::get_property(name); }
};

// A read shows the staged word without reading the hardware; each commit writes every staged word again.
TEST_F(TarnmRegisters, DqRelativeChangeIsSignMagnitudeAndSaturatesAtMinus63) {
    // clang-format off
    const struct { const char* name; uint32_t code; const char* delta; uint32_t result; bool warns = false; } rows[] = {
        {"+5 less 5 is -0", 0x45, "-5", 0x00},
        {"+5 less 7 is -2", 0x45, "-7", 0x02},
        {"-3 and 5 is +2", 0x03, "+5", 0x42},
        {"+62 and 1, onto the top", 0x7E, "+1", 0x7F},
        {"+62 and 2, past the top", 0x7E, "+2", 0x7F, true},
        {"+5 less 68, onto -63", 0x45, "-68", 0x3F},
        {"+5 less 69, past -63", 0x45, "-69", 0x3F, true},
        {"-3 less 60, onto -63", 0x03, "-60", 0x3F},
        {"-3 less 61, past -63", 0x03, "-61", 0x3F, true},
        {"least long long", 0x03, "-9223372036854775808", 0x3F, true},
        {"largest long long", 0x45, "+9223372036854775807", 0x7F, true}};
    // clang-format on
    const uint32_t data = 0xF181A0;
    const std::string dq0 = "tarnm-ddrb-write7::dq0", dq8 = "tarnm-ddrb-write7::dq8";
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        forget_caches();
        fake_hw::words[data] = 0xff00 | row.code;
        char warning[160] = "";
        if (row.warns)
            snprintf(warning, sizeof warning,
                     "warning! applying %s to current value %u is out of range (0 ~ 127). adjusted to %u\n",
                     row.delta + (row.delta[0] == '+'), row.code, row.result);
        EXPECT_EQ(stderr_of([&] { EXPECT_TRUE(at(dq8)->set(row.delta)); }), warning);
        fake_hw::reset();  // the data word reads 0 from now on
        std::string read0, read8;
        EXPECT_TRUE(at(dq0)->set("1") && at(dq0)->get(read0) && at(dq8)->get(read8));
        EXPECT_EQ(read0 + " " + read8, "1 " + std::to_string(row.result));
        const fake_hw::accesses::value_type staged{'w', data, 0xff80 | row.result};  // with the update bit
        EXPECT_EQ(std::count(fake_hw::log.begin(), fake_hw::log.end(), staged), 1);
    }
    fake_hw::reset();
    (*tarnm::tarnm_ddr_regs.begin())->commit();  // tarnm-ddra-read0: nothing staged
    EXPECT_FALSE(at(dq8)->set("0x80"));
    EXPECT_TRUE(fake_hw::log.empty());
}

TEST_F(TarnmRegisters, ReadingEveryPropertyReachesEveryCatalogueAddressThroughItsSelect) {
    std::set<std::tuple<char, uint32_t, uint32_t>> want;
    for (uint32_t address : {0x540008, 0x54001C, 0x540030, 0x540044, 0x140000, 0x190110, 0x190130, 0x190150, 0x190170,
                             0x190190, 0x1901B0, 0x1901D0, 0x1901F0, 0x191010, 0x191030, 0x191070, 0x191090})
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
    EXPECT_EQ(decltype(want)(fake_hw::log.begin(), fake_hw::log.end()), want);
}

void put_board_file(const std::string& path, const std::string& text) {
    std::filesystem::create_directories(std::filesystem::path(system_path(path)).parent_path());
    std::ofstream(system_path(path)) << text;
}

// Values a domain names, each with whether it is one of its values: both ends, the next one in, one between, just
// past each end and, where there is room, a number between the first two.
std::vector<std::pair<long long, bool>> samples(const value_domain& d) {
    std::vector<long long> in = d.keys();
    if (in.empty())
        in = {d.low, std::min(d.low + d.step, d.high), d.low + (d.high - d.low) / d.step / 2 * d.step, d.high};
    std::vector<std::pair<long long, bool>> values = {
        {in.front(), true}, {in[1], true}, {in[in.size() / 2], true}, {in.back(), true}, {in.back() + d.step, false}};
    if (in.front() - d.step >= 0)  // a text with a sign is a relative change
        values.emplace_back(in.front() - d.step, false);
    if (in[1] > in.front() + 1)
        values.emplace_back(in.front() + 1, false);
    return values;
}

// A profile's check and padkit's set take exactly the domain's values, with the code read back; the code written
// back is what get shows.
TEST_F(TarnmRegisters, EveryPropertyTakesItsDomainByCheckAndBySetAndNothingElse) {
    put_board_file("/sys/kernel/debug/mmc0/rdqs", "37");
    for (const char* regulator : {"/sys/class/regulator/regulator.1", "/sys/class/regulator/regulator.2"})
        for (const auto& [file, microvolts] :
             {std::pair{"/microvolts", "1100000"}, {"/min_microvolts", "800000"}, {"/max_microvolts", "1300000"}})
            put_board_file(regulator + std::string(file), microvolts);
    int composites = 0;
    for (const auto& entry : property::properties()) {
        const std::string name(entry.first);
        property* prop = entry.second;  // a lambda takes it: C++17 captures no structured binding
        prop->refresh();
        const value_domain d = prop->domain();
        ASSERT_TRUE(d.unknown.empty()) << name;
        if (d.members) {
            for (const std::string& member : *d.members)
                EXPECT_NE(at(member), nullptr) << member;
            ++composites;
            continue;
        }
        for (const auto& [value, held] : samples(d)) {
            const std::string text = std::to_string(value);
            SCOPED_TRACE(name + " = " + text);
            long long code = -1, now = -1;
            std::string problem, shown;
            EXPECT_EQ(d.code_of(text, &code, &problem), held) << problem;
            bool set = false;
            stderr_of([&] { set = prop->set(text); });
            prop->refresh();
            ASSERT_TRUE(prop->read_code(&now).ok);
            if (!held) {
                EXPECT_FALSE(set && now == value);
                continue;
            }
            EXPECT_TRUE(set);
            EXPECT_EQ(now, code);
            EXPECT_TRUE(prop->write_code(code).ok);
            prop->refresh();
            EXPECT_TRUE(prop->get(shown));
            EXPECT_EQ(shown, text);
        }
    }
    EXPECT_EQ(composites, 24);
}

}  // namespace
