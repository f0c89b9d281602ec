#include <string>
#include <utility>
#include <vector>

#include "tests/unit/fake_hw.h"

namespace {

// A member that keeps what it is given, or refuses reading and writing.
struct stub : property {
    stub(const std::string& name, std::string value = "", bool refuse = false, int* deaths = nullptr)
        : property(name), value(std::move(value)), refuse(refuse), deaths(deaths) {}
    ~stub() override { if (deaths) ++*deaths; }
    bool set(const std::string& v) override { return !refuse && (value = v, true); }
    bool get(std::string& v) override { return !refuse && (v = value, true); }
    std::string value;
    bool refuse;
    int* deaths;
};

TEST_F(unit_test, RegistryRefusesATakenNameAndFreesWhatItOwnsOnce) {
    int deaths = 0;
    for (const char* name : {"a", "b"})
        property::register_property("g", new stub(name, "", false, &deaths));
    stub taken("a"), kept("k", "", false, &deaths);
    EXPECT_EQ(property::register_property("h", &taken), nullptr);
    EXPECT_TRUE(property_group::get_property_group("h")->properties.empty());
    kept.delete_on_unregister = false;
    property::register_property("h", &kept);
    property_group::free_all();
    property::free_all();
    property::free_all();
    EXPECT_EQ(deaths, 2);
    EXPECT_TRUE(property::properties().empty() && property_group::property_groups().empty());
    std::string help = "old";
    kept.get_help(help);
    EXPECT_EQ(help, "no help.");
}

TEST_F(unit_test, PropertySetJoinsSplitsChecksCountFirstAndNeverRollsBack) {
    const struct { const char *text, *refuser, *err; std::vector<std::string> after; } rows[] = {
        {"{1, 2,}", "", "", {"1", " 2", ""}}, {"{1,{2},3}", "", "", {"1", "{2}", "3"}}, {"7", "", "", {"7", "7", "7"}},
        {"{", "", "", {"{", "{", "{"}}, {"{1,2,3", "", "", {"{1,2,3", "{1,2,3", "{1,2,3"}},
        {"{,,,}", "", "4 != 3\n", {"a", "b", "c"}}, {"{7}", "", "1 != 3\n", {"a", "b", "c"}},
        {"{}", "b", "1 != 3\n", {"a", "b", "c"}}, {"{1,2,3}", "b", "set failed\n", {"1", "b", "c"}}};
    for (const auto& row : rows) {
        for (const char* name : {"a", "b", "c"})
            property::register_property("g", new stub(name, name, row.refuser == std::string(name)));
        EXPECT_EQ(stderr_of([&] { EXPECT_EQ(property_set("s", {"a", "b", "c"}).set(row.text), !*row.err); }), row.err)
            << row.text;
        std::vector<std::string> after;
        for (const char* name : {"a", "b", "c"})
            after.push_back(static_cast<stub*>(property::get_property(name))->value);
        EXPECT_EQ(after, row.after) << row.text;
        property::free_all();
    }
    property::register_property("g", new stub("a", "5"));
    property::register_property("g", new stub("bad", "", true));
    std::string value;
    EXPECT_TRUE(property_set("s", {"a", "a"}).get(value));
    EXPECT_EQ(value, "{5,5}");
    for (const char* missing : {"bad", "ghost"})
        EXPECT_EQ(stderr_of([&] { EXPECT_FALSE(property_set("s", {"a", missing}).get(value)); }), "");
    EXPECT_EQ(stderr_of([] { EXPECT_FALSE(property_set("s", {"a", "ghost"}).set("{2,3}")); }), "set failed\n");
    EXPECT_TRUE(property_set("e", {}).get(value));
    EXPECT_EQ(value, "{}");
}

}  // namespace
