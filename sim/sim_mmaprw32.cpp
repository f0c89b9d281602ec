// SPDX-License-Identifier: MIT
// Register access of padkit-sim: the board's regs file stands for the memory device.
#include "registers/mmaprw32.h"

#include <cstdint>
#include <string>

#include "sim/register_file.h"

const char* fname = "/dev/zeb_mem";

namespace {

// What the real tool says when the device cannot be opened.
access_result unreachable() {
    return access_result::failed(std::string("open ") + fname + " failed.");
}

}  // namespace

access_result mmap_read(uint32_t address, uint32_t* word) {
    access_result result;
    if (!sim::read_word(address, word)) {
        result = unreachable();
        *word = 0;
    }
    sim::trace_access('R', address, *word);
    return result;
}

access_result mmap_write(uint32_t address, uint32_t value) {
    const access_result result = sim::write_word(address, value) ? access_result{} : unreachable();
    sim::trace_access('W', address, value);
    return result;
}
