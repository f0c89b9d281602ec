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

// A composite's members are its own members' values, in order.
TEST_F(unit_test, PropertySetSplitsChecksCountFirstAndNeverRollsBack) {
    const struct { const char *text, *refuser, *err, *after; } rows[] = {
        {"{1, 2,}", "", "", "{1, 2,}"}, {"{1,{2},3}", "", "", "{1,{2},3}"}, {"7", "", "", "{7,7,7}"},
        {"{1,2,3", "", "", "{{1,2,3,{1,2,3,{1,2,3}"}, {"{,,,}", "", "4 != 3\n", "{a,b,c}"},
        {"{}", "b", "1 != 3\n", "{a,b,c}"}, {"{1,2,3}", "b", "set failed\n", "{1,b,c}"}};
    for (const auto& row : rows) {
        for (const char* name : {"a", "b", "c"})
            property::register_property("g", new stub(name, row.refuser == std::string(name)));
        property_set composite("s", {"a", "b", "c"});
        std::string after;
        EXPECT_EQ(stderr_of([&] { EXPECT_EQ(composite.set(row.text), !*row.err) << row.text; }), row.err);
        EXPECT_TRUE(composite.get(after));
        EXPECT_EQ(after, row.after) << row.text;
        property::free_all();
    }
}

}  // namespace
