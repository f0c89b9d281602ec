#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>

#include "fileprops/property_file.h"
#include "fileprops/property_regulator_voltage.h"
#include "tests/unit/fake_hw.h"

namespace {

// A directory standing in for debugfs or sysfs, removed with the test.
struct temp_dir {
    std::string path = [] { char p[] = "/tmp/padkit-unit-XXXXXX"; return std::string(mkdtemp(p)); }();
    ~temp_dir() { std::filesystem::remove_all(path); }
    std::string put(const std::string& name, const std::string& text) const {
        std::ofstream(path + "/" + name) << text;
        return path + "/" + name;
    }
    std::string read(const std::string& name) const {
        std::ifstream in(path + "/" + name);
        return {std::istreambuf_iterator<char>(in), {}};
    }
};

TEST_F(unit_test, IntegerFileLimitsWritesToItsRange) {
    const struct { const char *text, *file, *bound = nullptr; } rows[] = {  // file " 10\n": untouched
        {"100", "100"}, {"+300", "255", "255"}, {"-20", "2", "2"}, {"-8", "2"}, {"+245", "255"},
        {"1000", "255", "255"}, {"0", "2", "2"}, {"-", "2", "2"}, {"12abc", "12"}, {"+-5", "5"},
        {"--5", "15"}, {"+-20", "2", "2"}, {"", " 10\n"}, {" \t", " 10\n"}, {"+ ", " 10\n"}};
    for (const auto& row : rows) {
        temp_dir dir;
        property_file<int> prop("mmc", dir.put("rdqs", " 10\n"), 2, 255);
        const bool ok = std::string(row.file) != " 10\n";
        const std::string text = row.text, err = !ok ? "failed to parse value " + text + "\n"
            : row.bound ? "apply current value 10 to " + text + "is limited to " + row.bound + "\n" : "";
        EXPECT_EQ(stderr_of([&] { EXPECT_EQ(prop.set(text), ok) << text; }), err);
        EXPECT_EQ(dir.read("rdqs"), row.file) << text;
    }
}

TEST_F(unit_test, IntegerFileIsUsableOnlyWhenTheStartUpReadIsInRange) {
    const struct { const char *content, *err; } rows[] = {  // content nullptr: no file
        {" 37\n", ""}, {"0x20", "current value 0 is not valid, valid range = 2 ~ 255\n"},
        {"256", "current value 256 is not valid, valid range = 2 ~ 255\n"}, {nullptr, "open"}};
    property::number_mode = 1;  // never applies to this property
    for (const auto& row : rows) {
        temp_dir dir;
        const std::string path = row.content ? dir.put("rdqs", row.content) : dir.path + "/rdqs";
        std::string value = "kept", err = row.content ? row.err : "open " + path + " failed.\n";
        EXPECT_EQ(stderr_of([&] {
            property_file<int> prop("mmc", path, 2, 255);
            EXPECT_EQ(prop.get(value) && prop.set("100"), !*row.err);
        }), err);
        EXPECT_EQ(value, *row.err ? "kept" : "37");
        EXPECT_EQ(dir.read("rdqs"), *row.err ? (row.content ? row.content : "") : "100");
    }
}

struct regulator : unit_test {
    void SetUp() override {
        dir.put("microvolts", " 1100000\n");
        dir.put("min_microvolts", "800000");
        dir.put("max_microvolts", "1300000");
    }
    temp_dir dir;
    property_regulator_voltage prop{"r", dir.path, 93.0, 107.0};
};

TEST_F(regulator, RoundsUpToTenMillivoltsAndRefusesOutsideTheLimits) {
    const std::string range = "mv: out of range(800000-1300000)\n", pct = "%: out of range\n";
    const std::string parse = "failed to parse value ";
    const struct { const char* text; const char* written; std::string err; } rows[] = {  // written nullptr: nothing
        {"95%", "1050000", ""}, {"93%", "1030000", ""}, {"107%", "1180000", ""}, {"92.9%", nullptr, "percentage 92.9" + pct},
        {"1%", nullptr, "percentage 1" + pct}, {"107.5%", nullptr, "percentage 107.5" + pct}, {"1234567", "1240000", ""},
        {"790001", "800000", ""}, {"1300000", "1300000", ""}, {"0x10c8e0", "1100000", ""},
        {"1300001", nullptr, "1310000" + range}, {"-5", nullptr, "0" + range}, {"1e300", nullptr, "4294967295" + range},
        {"%", nullptr, parse + "%\n"}, {"abc", nullptr, parse + "abc\n"}, {"inf", nullptr, parse + "inf\n"},
        {"nan%", nullptr, parse + "nan%\n"}, {"1e400", nullptr, parse + "1e400\n"}, {"", nullptr, parse + "\n"}};
    for (const auto& row : rows) {
        dir.put("microvolts", " 1100000\n");
        EXPECT_EQ(stderr_of([&] { EXPECT_EQ(prop.set(row.text), row.written != nullptr) << row.text; }), row.err);
        EXPECT_EQ(dir.read("microvolts"), row.written ? row.written : " 1100000\n") << row.text;
    }
}

TEST_F(regulator, ReadsLimitsAndBaseOnceAndTreatsUnusableWordsAsFailedReads) {
    for (const auto& bad :
         {std::pair{"microvolts", "abc"}, {"min_microvolts", ""}, {"max_microvolts", "99999999999999999999"}}) {
        const std::string good = dir.read(bad.first);
        dir.put(bad.first, bad.second);
        std::string value = "kept";
        EXPECT_EQ(stderr_of([&] { EXPECT_FALSE(prop.get(value) || prop.set("1100000")) << bad.second; }), "");
        EXPECT_EQ(value, "kept");
        dir.put(bad.first, good);
    }
    std::string first, later;
    EXPECT_TRUE(prop.get(first));
    dir.put("microvolts", "1000000");
    dir.put("max_microvolts", "0");
    EXPECT_TRUE(prop.get(later) && prop.set("100%"));  // of the voltage at first use, within the limits read then
    EXPECT_EQ(first + " " + later + " " + dir.read("microvolts"), "1100000 1000000 1100000");
}

}  // namespace
