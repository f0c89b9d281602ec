// SPDX-License-Identifier: MIT
// The journal's reader at its edges, and arguments that must come back byte for byte.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "paths/system_paths.h"
#include "tune/sweep/chart.h"
#include "tune/sweep/journal.h"

namespace {

const std::string head = "journal \"1.0\"\ndirectory \"/root\"\ncommand \"sweep\" \"x\"\noriginal \"x\" \"7\"\n";

// Steps as VALUE:RESULT, then what the reader noticed.
std::string shown(const journal_contents& c) {
    std::string out;
    for (const journal_step& step : c.steps)
        out += step.point.back() + ":" + outcome_name(step.result) + " ";
    return out + (c.in_flight ? "in-flight " : "") + (c.keeping ? "keeping " : "") + (c.ended ? "ended " : "") +
           std::to_string(c.length);
}

}  // namespace

TEST(Journal, ReaderAtItsEdges) {
    // clang-format off
    const struct { const char* name; std::string text, expected; } rows[] = {
        {"steps", head + "try \"x\" \"1\"\nresult pass\ntry \"x\" \"2\"\nstop\ntry \"x\" \"2\"\nresult timeout\n",
            "1:pass 2:timeout 137"},
        {"in flight", head + "try \"x\" \"1\"\nresult fail\ntry \"x\" \"2\"\n", "1:fail 2:hang in-flight 105"},
        {"torn last line", head + "try \"x\" \"1\"\nresult pa", "1:hang in-flight 81"},
        {"hang recorded", head + "try \"x\" \"1\"\nresult hang\nend\n", "1:hang ended 97"},
        {"no step yet", head, "69"},
        {"kept and ended", head + "try \"x\" \"1\"\nresult pass\nkeep\nend\n", "1:pass keeping ended 102"},
        {"try after keep", head + "keep\ntry \"x\" \"1\"\n", "no: 6: a record after the keep"},
        {"keep in flight", head + "try \"x\" \"1\"\nkeep\n", "no: 6: the keep while a try has no result"},
        {"not a journal", "hello\n", "no: 1: not a padkit-tune journal"},
        {"other version", "journal \"0.9\"\n", "no: 1: written by padkit-tune \"0.9\"; this is 1.0"},
        {"header order", "journal \"1.0\"\ncommand \"sweep\"\n", "no: 2: expected the directory record"},
        {"torn header", "journal \"1.0\"\ndirectory \"/\"\ncomm", "no: 3: the header is incomplete"},
        {"open quote", head + "try \"x\" \"1\n", "no: 5: garbled record"},
        {"bad escape", head + "try \"x\\q\"\n", "no: 5: garbled record"},
        {"two blanks", head + "try \"x\"  \"1\"\n", "no: 5: garbled record"},
        {"unknown outcome", head + "try \"x\" \"1\"\nresult maybe\n", "no: 6: garbled record"},
        {"an outcome per line", head + "try \"x\" \"1\"\nresult \"pass\" \"timeout\"\n", "1:timeout 105"},
        {"one line's outcome quoted", head + "try \"x\" \"1\"\nresult \"pass\"\n", "no: 6: garbled record"},
        {"a word and lines' outcomes", head + "try \"x\" \"1\"\nresult fail \"pass\" \"fail\"\n",
            "no: 6: garbled record"},
        {"an unknown line's outcome", head + "try \"x\" \"1\"\nresult \"pass\" \"maybe\"\n", "no: 6: garbled record"},
        {"unknown record", head + "retry \"x\"\n", "no: 5: garbled record"},
        {"result alone", head + "result pass\n", "no: 5: a result without a try"},
        {"two tries", head + "try \"x\" \"1\"\ntry \"x\" \"2\"\n", "no: 6: a try while the one before has no result"},
        {"after the end", head + "end\ntry \"x\" \"1\"\n", "no: 6: a record after the end"},
        {"end in flight", head + "try \"x\" \"1\"\nend\n", "no: 6: the end while a try has no result"},
        {"temporary after keep", head + "keep\ntemporary \"t\"\nend\n", "keeping ended 92"},
        {"late date", head + "try \"x\" \"1\"\nresult pass\ndate \"d\"\n", "no: 7: a date out of place"},
        {"late original", head + "try \"x\" \"1\"\nresult pass\noriginal \"y\" \"1\"\n",
            "no: 7: an original after the first try"},
    };
    // clang-format on
    for (const auto& row : rows) {
        journal_contents c;
        std::string problem;
        EXPECT_EQ(parse_journal(row.text, "1.0", &c, &problem) ? shown(c) : "no: " + problem, row.expected) << row.name;
    }
}

TEST(Journal, WrittenAndReadBackByteForByte) {
    const std::string path = system_path("/journal");
    std::remove(path.c_str());
    const journal_header header{"1.0",
                                "/a dir",
                                {"sweep", "", "a \"b\" \\c", "line\nnext", "\xff\xfe\x7f"},
                                {{"x", "7"}},
                                "2026-11-25 01:02:03 +0000"};
    journal_contents contents;
    {
        journal_file file;
        ASSERT_TRUE(file.create(path, header));
        EXPECT_FALSE(journal_file().create(path, header)) << "an existing journal is never replaced";
        ASSERT_TRUE(file.tried({"x", "1 2"}) && file.finished({outcome::pass}) && file.tried({"x", "3"}));
    }
    journal_file again;
    ASSERT_TRUE(again.resume(path, "1.0", &contents));
    EXPECT_EQ(contents.header.command, header.command);
    EXPECT_EQ(contents.header.directory, header.directory);
    EXPECT_EQ(contents.header.date, header.date);
    EXPECT_EQ(shown(contents), "1 2:pass 3:hang in-flight 184");
    EXPECT_FALSE(journal_file().resume(path, "1.0", &contents)) << "one run at a time";
}
