#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>

#include "fileprops/property_file.h"
#include "fileprops/property_regulator_voltage.h"
#include "platform/system_paths.h"
#include "tests/unit/fake_hw.h"

namespace {

const std::string rdqs = "/sys/kernel/debug/mmc0/rdqs", regulator_dir = "/sys/class/regulator/regulator.1";

// Kernel files of the board, in the tests' temporary directory; removed with the test.
struct board_files {
    ~board_files() { std::filesystem::remove_all(test_root() + std::string("/sys")); }
    void put(const std::string& path, const std::string& text) const {
        std::filesystem::create_directories(std::filesystem::path(system_path(path)).parent_path());
        std::ofstream(system_path(path)) << text;
    }
    std::string read(const std::string& path) const {
        std::ifstream in(system_path(path));
        return {std::istreambuf_iterator<char>(in), {}};
    }
};

TEST_F(unit_test, IntegerFileLimitsWritesToItsRange) {
    const struct { const char *text, *file, *bound = nullptr; } rows[] = {  // file " 10\n": untouched
        {"100", "100"}, {"+300", "255", "255"}, {"-20", "2", "2"}, {"-8", "2"}, {"+245", "255"},
        {"1000", "255", "255"}, {"0", "2", "2"}, {"-", "2", "2"}, {"12abc", "12"}, {"+-5", "5"},
        {"--5", "15"}, {"+-20", "2", "2"}, {"", " 10\n"}, {" \t", " 10\n"}, {"+ ", " 10\n"}};
    for (const auto& row : rows) {
        board_files dir;
        dir.put(rdqs, " 10\n");
        property_file<int> prop("mmc", rdqs, 2, 255);
        const bool ok = std::string(row.file) != " 10\n";
        const std::string text = row.text, err = !ok ? "failed to parse value " + text + "\n"
            : row.bound ? "apply current value 10 to " + text + "is limited to " + row.bound + "\n" : "";
        EXPECT_EQ(stderr_of([&] { EXPECT_EQ(prop.set(text), ok) << text; }), err);
        EXPECT_EQ(dir.read(rdqs), row.file) << text;
    }
}

// Each message once, from the start-up read, however often the file is read after.
TEST_F(unit_test, IntegerFileIsUsableOnlyWhenItsContentIsInRange) {
    const std::string page = "37" + std::string(4094, ' '), invalid = "current value 0 is not valid, valid range = 2 ~ 255\n";
    const struct { std::string content; const char* err; } rows[] = {  // content "-": no file
        {" 37\n", ""}, {page, ""}, {"0x20", invalid.c_str()}, {page + " ", invalid.c_str()},
        {"256", "current value 256 is not valid, valid range = 2 ~ 255\n"}, {"-", "open"}};
    property::number_mode = 1;  // never applies to this property
    for (const auto& row : rows) {
        board_files dir;
        const bool file = row.content != "-";
        if (file)
            dir.put(rdqs, row.content);
        std::string value = "kept", err = file ? row.err : "open " + system_path(rdqs) + " failed.\n";
        EXPECT_EQ(stderr_of([&] {
            property_file<int> prop("mmc", rdqs, 2, 255);
            EXPECT_EQ(prop.get(value) && prop.set("100") && prop.get(value), !*row.err);
            EXPECT_EQ(prop.set("+1") || prop.get(value), !*row.err);
        }), err);
        EXPECT_EQ(value, *row.err ? "kept" : "100");
        EXPECT_EQ(dir.read(rdqs), *row.err ? (file ? row.content : "") : "101");
    }
}

// Reads see the file as it is now, and trouble is reported again once it
// went away (a stale set is caught by the concurrency test).
TEST_F(unit_test, IntegerFileReadsTheContentOfEachAccessAndReportsEachNewTrouble) {
    board_files dir;
    dir.put(rdqs, "37");
    property_file<int> prop("mmc", rdqs, 2, 255);
    std::string value;
    for (const auto& [content, err] : {std::pair{"50", ""}, {"1", "current value 1 is not valid, valid range = 2 ~ 255\n"},
                                       {"3", ""}, {"1", "current value 1 is not valid, valid range = 2 ~ 255\n"}}) {
        dir.put(rdqs, content);
        EXPECT_EQ(stderr_of([&] { EXPECT_EQ(prop.get(value), !*err); }), err);
        EXPECT_TRUE(*err || value == content) << content;
    }
}

struct regulator : unit_test {
    void SetUp() override {
        dir.put(uv, " 1100000\n");
        dir.put(min_uv, "800000");
        dir.put(max_uv, "1300000");
    }
    board_files dir;
    const std::string uv = regulator_dir + "/microvolts", min_uv = regulator_dir + "/min_microvolts",
                      max_uv = regulator_dir + "/max_microvolts";
    property_regulator_voltage prop{"r", regulator_dir, 93.0, 107.0};
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
        dir.put(uv, " 1100000\n");
        EXPECT_EQ(stderr_of([&] { EXPECT_EQ(prop.set(row.text), row.written != nullptr) << row.text; }), row.err);
        EXPECT_EQ(dir.read(uv), row.written ? row.written : " 1100000\n") << row.text;
    }
}

// Numbers are 64-bit on every target: none wraps into a usable limit.
TEST_F(regulator, ReadsLimitsAndBaseOnceAndTreatsUnusableWordsAsFailedReads) {
    const std::string page = "1300000" + std::string(4090, ' ');  // longer than a page
    for (const auto& bad : {std::pair{uv, "abc"}, {min_uv, ""}, {max_uv, "99999999999999999999"}, {max_uv, "-1"},
                            {max_uv, "4294967295"}, {max_uv, "4294967296"}, {uv, "2147483648"}, {uv, "-1"},
                            {min_uv, "1300001"}, {max_uv, page.c_str()}}) {
        const std::string good = dir.read(bad.first);
        dir.put(bad.first, bad.second);
        std::string value = "kept";
        EXPECT_EQ(stderr_of([&] { EXPECT_FALSE(prop.get(value) || prop.set("1100000")) << bad.second; }), "");
        EXPECT_EQ(value, "kept");
        dir.put(bad.first, good);
    }
    std::string first, later;
    EXPECT_TRUE(prop.get(first));
    dir.put(uv, "1000000");
    dir.put(max_uv, "0");
    EXPECT_TRUE(prop.get(later) && prop.set("100%"));  // of the voltage at first use, within the limits read then
    EXPECT_EQ(first + " " + later + " " + dir.read(uv), "1100000 1000000 1100000");
}

}  // namespace
