// SPDX-License-Identifier: MIT
// Register access of padkit-sim: the board's regs file stands for the memory device.
#include "registers/mmaprw32.h"

#include <cstdint>
#include <cstdio>

#include "runtime/message.h"
#include "sim/register_file.h"

const char* fname = "/dev/zeb_mem";

namespace {

// What the real tool says when the device cannot be opened.
void report_unreachable() { say("open %s failed.", fname); }

}  // namespace

uint32_t mmap_read(uint32_t address) {
    uint32_t word = 0;
    if (!sim::read_word(address, &word)) {
        report_unreachable();
        word = 0;
    }
    sim::trace_access('R', address, word);
    return word;
}

int mmap_write(uint32_t address, uint32_t value) {
    if (!sim::write_word(address, value))
        report_unreachable();
    sim::trace_access('W', address, value);
    return 0;
}
