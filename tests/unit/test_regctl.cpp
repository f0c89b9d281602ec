#include <gtest/gtest.h>

#include <cstdint>

#include "registers/regctl.h"

namespace {

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

}  // namespace
