#include <cstdint>
#include <string>

#include "registers/regctl.h"
#include "tests/unit/fake_hw.h"

namespace {

using fake_hw::accesses;

// A field outside the global owner list that counts its deletions.
struct counted : reg_subval {
    explicit counted(int* deaths) : reg_subval("c", "", false), deaths(deaths) {}
    ~counted() override { ++*deaths; }
    bool set(reg_info*, uint32_t) override { return false; }
    bool get(reg_info*, uint32_t*) override { return false; }
    void get_limits(uint32_t*, uint32_t*) override {}
    int* deaths;
};

TEST(OwnerLists, DeleteSharedFieldsOnceAndOnlyThroughTheFieldList) {
    int deaths = 0;
    {
        regctl_garbages<reg_subval*> fields;
        auto* shared = new counted(&deaths);
        fields.items = {shared, nullptr, new counted(&deaths)};
        // A register list that goes at once: registers never delete their fields.
        regctl_garbages<reg_info*>().items = {new reg_info("a", 0, {shared}, false), new reg_info("b", 4, {shared}, false)};
        EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, 2);
}

TEST_F(unit_test, RegisterPropertyParsesValueTextsAndWritesOnlyAcceptedOnes) {
    auto* wide = new reg_bitmask(31, 0, "wide", "");
    auto* nibble = new reg_bitmask(7, 4, "nibble", "");  // holds 5
    const struct {
        int mode;
        bool on_wide;
        const char* text;
        long long written;  // committed field value; -1 nothing written, -2 also unparsable
        const char *delta = nullptr, *limit = nullptr;  // a clamping warning, when given
    } rows[] = {
        {0, false, "7", 7}, {0, true, "0X1F", 31}, {0, true, "12abc", 12}, {0, true, " -3", 0xfffffffd},
        {0, false, " -3", -1}, {0, false, "-3", 2}, {0, false, "+0x10", 5}, {0, true, "4294967297", 1},
        {0, false, "16", -1}, {0, false, "", -1}, {0, false, "+10", 15}, {0, false, "+11", 15, "11", "15"},
        {0, false, "-20", 0, "-20", "0"}, {0, false, "+9223372036854775807", 15, "9223372036854775807", "15"},
        {0, true, "abc", -2}, {0, false, "+", -2}, {0, true, "99999999999999999999", -2}, {1, true, "1f", 31},
        {1, true, "0x1f", 31}, {1, true, "ffffffffffffffff", 0xffffffff}, {1, false, "-10", 0, "-16", "0"},
        {1, false, "", -1}, {1, true, "xyz", -2}, {1, true, "10000000000000000", -2}, {1, false, "+10000000000000000", -2}};
    for (const auto& row : rows) {
        fake_hw::reset();
        fake_hw::words = {{0x100, 0x10}, {0x104, 0x50}};
        reg_info wide_reg("w", 0x100, {wide}, false), nibble_reg("n", 0x104, {nibble}, false);
        property_register prop("p", row.on_wide ? &wide_reg : &nibble_reg, row.on_wide ? wide : nibble);
        property::number_mode = row.mode;
        std::string err = row.written == -2 ? "failed to parse value " + std::string(row.text) + "\n" : "";
        if (row.delta)
            err = "warning! applying " + std::string(row.delta) + " to current value 5 is out of range (0 ~ 15). " +
                  "adjusted to " + row.limit + "\n";
        EXPECT_EQ(stderr_of([&] { EXPECT_EQ(prop.set(row.text), row.written >= 0) << row.text; }), err);
        accesses want;
        if (row.written >= 0)
            want.emplace_back('w', row.on_wide ? 0x100 : 0x104, uint32_t(row.written) << (row.on_wide ? 0 : 4));
        EXPECT_EQ(fake_hw::writes(), want) << row.text;
    }
}

}  // namespace
