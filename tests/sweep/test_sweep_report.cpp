// Windows, the text chart, the CSV and the SVG of a sweep's results.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tune/sweep_chart.h"
#include "tune/sweep_svg.h"

namespace {

// '#' pass, '.' fail, 'T' time-out, as in the chart.
std::vector<outcome> cells(const std::string& marks) {
    std::vector<outcome> results;
    for (char mark : marks)
        results.push_back(mark == '#' ? outcome::pass : mark == '.' ? outcome::fail : outcome::timeout);
    return results;
}

std::vector<long long> range(long long from, long long to) {
    std::vector<long long> values;
    for (long long v = from; v <= to; ++v)
        values.push_back(v);
    return values;
}

template <typename Print>
std::string printed(Print print) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* out = open_memstream(&text, &size);
    print(out);
    std::fclose(out);
    std::string result(text, size);
    std::free(text);
    return result;
}

const std::vector<long long> drive_keys = {34, 40, 48, 60, 80, 120};

}  // namespace

TEST(sweep_report, SummaryNamesTheWidestWindowAndItsCentre) {
    const struct { std::vector<long long> axis; const char* marks; const char* summary; } rows[] = {
        {range(0, 5), "", "p: no passing value"},
        {range(0, 5), "..T.T.", "p: no passing value"},
        {range(10, 15), "##.###", "p: window 13..15 (3 values), centre 14"},
        {range(10, 16), "###.###", "p: window 10..12 (3 values), centre 11"},  // a tie: the first
        {range(10, 16), "#.##T##", "p: window 12..13 (2 values), centre 12"},  // a time-out ends one
        {range(10, 13), "####", "p: window 10..13 (4 values), centre 11"},
        {range(10, 13), "...#", "p: window 13..13 (1 value), centre 13"},
        {drive_keys, "..###.", "p: window 48..80 (3 values), centre 60"},
        {{50, 40, 30, 20, 10}, ".####", "p: window 10..40 (4 values), centre 20"},  // falling
    };
    for (const auto& row : rows)
        EXPECT_EQ(window_summary({"p", cells(row.marks)}, row.axis), row.summary) << row.marks;
}

TEST(sweep_report, ChartLabelsTheAxisEndsAndDrawsEveryMeasuredCell) {
    const struct { sweep_results results; const char* chart; } rows[] = {
        {{range(8, 19), {{"tarnm-ddra-read0::dq0", cells("..####T#....")}, {"dq1", cells(".#.")}}},
         "                       8         19\n"
         "tarnm-ddra-read0::dq0  ..####T#....\n"
         "dq1                    .#.\n"
         "tarnm-ddra-read0::dq0: window 10..13 (4 values), centre 11\n"
         "dq1: window 9..9 (1 value), centre 9\n"},
        {{{100, 200}, {{"a", cells("#.")}}}, "   100 200\na  #.\na: window 100..100 (1 value), centre 100\n"},
        {{{7}, {{"a", cells("T")}}}, "   7\na  T\na: no passing value\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(printed([&](std::FILE* out) { print_chart(out, row.results); }), row.chart);
}

TEST(sweep_report, CsvHasAHeaderAndALinePerMeasuredCell) {
    const sweep_results results{{1100000, 1110000}, {{"cpu", cells("#T")}, {"core", cells(".")}}};
    EXPECT_EQ(printed([&](std::FILE* out) { print_csv(out, results); }),
              "name,value,result\ncpu,1100000,pass\ncpu,1110000,timeout\ncore,1100000,fail\n");
}

TEST(sweep_report, SvgParsesAndShowsCellsWindowsCentresAndLabels) {
    const sweep_results results{drive_keys, {{"a<b", cells(".###T#")}, {"c", cells("...")}}};
    char path[] = "/tmp/padkit-sweep-svg-XXXXXX";
    const int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    std::FILE* out = fdopen(fd, "w");
    print_svg(out, results);
    std::fclose(out);
    const std::string shown =
        printed([&](std::FILE* into) {
            std::FILE* script = popen((std::string(SVG_SHOWS) + " " + path + " 2>&1").c_str(), "r");
            for (int c; (c = std::fgetc(script)) != EOF;)
                std::fputc(c, into);
            EXPECT_EQ(pclose(script), 0);
        });
    std::remove(path);
    EXPECT_EQ(shown,
              "axis 34\naxis 120\nname a<b\n"
              "cell a<b = 34: fail\ncell a<b = 40: pass\ncell a<b = 48: pass\ncell a<b = 60: pass\n"
              "cell a<b = 80: timeout\ncell a<b = 120: pass\n"
              "window a<b = 40: pass .. a<b = 60: pass 3\ncentre a<b = 48: pass\n"
              "name c\ncell c = 34: fail\ncell c = 40: fail\ncell c = 48: fail\n"
              "summary a<b: window 40..60 (3 values), centre 48\nsummary c: no passing value\n");
}
