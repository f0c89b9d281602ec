#include <cstdint>
#include <string>

#include "registers/regctl.h"
#include "tests/unit/fake_hw.h"

namespace {

using fake_hw::accesses;

TEST_F(unit_test, FieldsStageIntoOneFetchedWordUntilCommitReadsBack) {
    auto* high = new reg_bitmask(23, 20, "high", "");
    auto* low = new reg_bitmask(3, 0, "low", "");
    reg_info reg("r", 0x100, {new reg_bitmask(1, 0, "high", ""), high, low}, false);
    EXPECT_EQ(reg.subvals.at("high"), high);  // the later of two names
    fake_hw::words[0x100] = 0xffffffff;
    EXPECT_FALSE(high->set(&reg, 0x10));
    EXPECT_TRUE(fake_hw::log.empty());
    EXPECT_TRUE(high->set(&reg, 0xa) && low->set(&reg, 0x4));
    EXPECT_EQ(fake_hw::log.size(), 1u);  // one fetch, nothing written before the commit
    reg.commit();
    EXPECT_EQ(fake_hw::log, (accesses{{'r', 0x100, 0xffffffff}, {'w', 0x100, 0xffaffff4}, {'r', 0x100, 0xffaffff4}}));
}

TEST_F(unit_test, MappedFieldTranslatesKeysAndShowsTheSmallestKey) {
    static const reg_bitmask_map::value_table table{{30, 15}, {34, 14}, {40, 11}, {60, 8}, {70, 8}};
    auto* field = new reg_bitmask_map(7, 4, "m", "", &table);
    reg_info reg("r", 0x100, {field}, false);
    uint32_t v = 0;
    EXPECT_FALSE(field->set(&reg, 35));
    EXPECT_TRUE(fake_hw::log.empty());
    EXPECT_FALSE(field->get(&reg, &v));  // code 0 belongs to no key
    EXPECT_TRUE(field->set(&reg, 40));
    EXPECT_EQ(reg.value, 0xb0u);
    EXPECT_TRUE(field->set(&reg, 70) && field->get(&reg, &v));
    EXPECT_EQ(v, 60u);
    // Clamped on raw codes: 61 becomes 15, which is no key.
    EXPECT_EQ(stderr_of([&] { EXPECT_FALSE(field->adjust(&reg, 1)); }),
              "warning! applying 1 to current value 60 is out of range (0 ~ 15). adjusted to 15\n");
}

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
