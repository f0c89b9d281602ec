// SPDX-License-Identifier: MIT
// Value texts of every property kind. Input: a byte choosing the property, a
// byte choosing the number mode, then the text. A text the property refuses
// must reach neither the hardware nor a file; a composite's members get its elements.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <tuple>
#include <vector>

#include "paths/system_paths.h"
#include "platform/platform.h"
#include "properties/property.h"
#include "tests/unit/fake_hw.h"

namespace {

const char* const names[] = {  // the first input byte picks one: '0'..'7' in the seeds
    "ehci0-phy::tx-vref",    "tarnm-ddra0::scl", "tarnm-ddra::odt",           "tarnm-ddra-read1::dq3",
    "tarnm-ddra-write0::dq", "mmc::rdqs",        "cpu_regulator::microvolts", "i2c0-delay::sda-delay"};
const char* const files[] = {"/sys/kernel/debug/mmc0/rdqs", "/sys/class/regulator/regulator.1/microvolts"};

std::string files_text() {
    std::string text;
    for (const char* file : files) {
        std::ifstream in(system_path(file));
        text.append(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()) += '\n';
    }
    return text;
}

// Members of a composite of its own: each records its name and what it is
// given, and refuses an empty value.
std::vector<std::string> order, given;
struct recorder : property {
    using property::property;
    bool set(const std::string& value) override {
        order.push_back(name), given.push_back(value);
        return !value.empty();
    }
    bool get(std::string&) override { return false; }
};
const char* const members[] = {"fuzz0", "fuzz1", "fuzz2"};

// Members take their values in list order until one refuses; each got either
// the whole text or its element: the values given, joined by commas, begin the
// brace list up to a comma or its end. Checked without splitting the text.
bool members_took_their_elements(const std::string& text, bool accepted) {
    std::string joined = "{";
    bool whole = true, elements = true;
    for (size_t n = 0; n < given.size(); ++n) {
        joined += (n ? "," : "") + given[n];
        whole &= given[n] == text;
        elements &= order[n] == members[n] && given[n].find(',') == std::string::npos;
    }
    const bool refused = !given.empty() && given.back().empty();
    if (accepted ? given.size() != std::size(members) || refused : !refused && !given.empty())
        return false;
    const char after = joined.size() < text.size() ? text[joined.size()] : 0;
    return whole || (elements && text.compare(0, joined.size(), joined) == 0 &&
                     (accepted ? text == joined + "}" : after == ',' || after == '}'));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    platform_register_properties();
    for (const char* name : members)
        property::register_property("fuzz", new recorder(name));
    atexit([] {
        property_group::free_all();
        property::free_all();
    });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    property* prop = property::get_property(names[data[0] % std::size(names)]);
    property::number_mode = data[1] & 1;
    const std::string text(reinterpret_cast<const char*>(data) + 2, size - 2);
    fake_hw::reset();
    const std::string files_before = files_text();
    // A composite may change members before one refuses its value.
    const auto written = [](const auto& access) { return std::get<0>(access) == 'w'; };
    if (!prop->set(text) && !dynamic_cast<property_set*>(prop) &&
        (std::any_of(fake_hw::log.begin(), fake_hw::log.end(), written) || files_text() != files_before))
        abort();
    order.clear(), given.clear();
    property_set composite("fuzz", {std::begin(members), std::end(members)});
    if (!members_took_their_elements(text, composite.set(text)))
        abort();
    return 0;
}
