// SPDX-License-Identifier: MIT
#include <string>

#include "properties/property.h"
#include "tests/unit/fake_hw.h"

namespace {

// A member that keeps what it is given, or refuses it.
struct stub : property {
    stub(const std::string& name, bool refuse) : property(name), value(name), refuse(refuse) {}
    bool set(const std::string& text) override { return !refuse && (value = text, true); }
    bool get(std::string& text) override { return text = value, true; }
    std::string value;
    bool refuse;
};

using PropertySet = unit_test;

// A composite's members are its own members' values, in order.
TEST_F(PropertySet, SplitsChecksCountFirstAndNeverRollsBack) {
    // clang-format off
    const struct { const char *name, *text, *refuser, *err, *after; } rows[] = {
        {"blanks and an empty last member", "{1, 2,}", "", "", "{1, 2,}"},
        {"inner braces are text", "{1,{2},3}", "", "", "{1,{2},3}"},
        {"one value for all", "7", "", "", "{7,7,7}"},
        {"no closing brace: one value", "{1,2,3", "", "", "{{1,2,3,{1,2,3,{1,2,3}"},
        {"count checked first", "{,,,}", "", "4 != 3\n", "{a,b,c}"},
        {"empty list", "{}", "b", "1 != 3\n", "{a,b,c}"},
        {"a refusal stops, no rollback", "{1,2,3}", "b", "set failed\n", "{1,b,c}"}};
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        for (const char* name : {"a", "b", "c"})
            property::register_property("g", new stub(name, row.refuser == std::string(name)));
        property_set composite("s", {"a", "b", "c"});
        std::string after;
        EXPECT_EQ(stderr_of([&] { EXPECT_EQ(composite.set(row.text), !*row.err); }), row.err);
        EXPECT_TRUE(composite.get(after));
        EXPECT_EQ(after, row.after);
        property::free_all();
    }
}

}  // namespace
