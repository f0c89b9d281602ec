// SPDX-License-Identifier: MIT
// The sweep's confirmation, on a terminal and without one.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "tests/unit/fake_hw.h"
#include "tune/sweep/consent.h"

TEST(Consent, OnlyYOrYesOnATerminalProceeds) {
    // clang-format off
    const struct { const char* name; bool terminal; const char* input; consent answer; } rows[] = {
        {"y", true, "y\n", consent::given},
        {"YES in blanks", true, " YES \n", consent::given},
        {"yess", true, "yess\n", consent::refused},
        {"end of input", true, "", consent::refused},
        {"only the first line counts", true, "n\ny\n", consent::refused},
        {"no terminal", false, "y\n", consent::no_terminal},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::string input = row.input;
        std::FILE* in = fmemopen(input.data(), input.size() + 1, "r");
        consent answer = consent::given;
        const std::string err = stderr_of([&] { answer = ask_consent("WARNING! x", in, row.terminal, stderr); });
        std::fclose(in);
        EXPECT_EQ(answer, row.answer);
        EXPECT_EQ(err, row.terminal ? "WARNING! x\nContinue? [y/N] " : "WARNING! x\n");
    }
}
