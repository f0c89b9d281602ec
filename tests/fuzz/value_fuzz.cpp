// Value texts of every property kind. Input: a byte choosing the property, a
// byte choosing the number mode, then the text. A text the property refuses
// must reach neither the hardware nor a file.
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>

#include "platform/platform.h"
#include "platform/system_paths.h"
#include "properties/property.h"
#include "tests/unit/fake_hw.h"

namespace {

const char* const names[] = {  // the first input byte picks one: '0'..'7' in the seeds
    "ehci0-phy::tx-vref", "tarnm-ddra0::scl", "tarnm-ddra::odt", "tarnm-ddra-read1::dq3",
    "tarnm-ddra-write0::dq", "mmc::rdqs", "cpu_regulator::microvolts", "i2c0-delay::sda-delay"};
const char* const files[] = {"/sys/kernel/debug/mmc0/rdqs",
                             "/sys/class/regulator/regulator.1/microvolts"};

// Files are backdated before each set, so that a write shows in their times.
bool files_written(bool backdate) {
    bool written = false;
    for (const char* file : files) {
        const std::string path = system_path(file);
        const timespec epoch[2] = {};
        struct stat st;
        if (backdate)
            utimensat(AT_FDCWD, path.c_str(), epoch, 0);
        else
            written |= stat(path.c_str(), &st) != 0 || st.st_mtim.tv_sec != 0;
    }
    return written;
}

// A composite may change members before one refuses its value; a brace list
// of the wrong length must change nothing.
bool refusal_writes_nothing(property* prop, const std::string& text) {
    auto* composite = dynamic_cast<property_set*>(prop);
    const size_t elements = std::count(text.begin(), text.end(), ',') + 1;
    return !composite || (text.size() >= 2 && text.front() == '{' && text.back() == '}' &&
                          elements != composite->members.size());
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    platform_register_properties();
    atexit([] { property_group::free_all(); property::free_all(); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    property* prop = property::get_property(names[data[0] % std::size(names)]);
    property::number_mode = data[1] & 1;
    const std::string text(reinterpret_cast<const char*>(data) + 2, size - 2);
    fake_hw::reset();
    files_written(true);
    if (!prop->set(text) && refusal_writes_nothing(prop, text) &&
        (!fake_hw::writes().empty() || files_written(false)))
        abort();
    return 0;
}
