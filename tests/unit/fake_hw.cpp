// SPDX-License-Identifier: MIT
#include "tests/unit/fake_hw.h"

#include "registers/mmaprw32.h"

const char* fname = "fake_hw";

namespace fake_hw {

std::map<uint32_t, uint32_t> words;
accesses log;

void reset() {
    words.clear();
    log.clear();
}

}  // namespace fake_hw

uint32_t mmap_read(uint32_t address) {
    fake_hw::log.emplace_back('r', address, fake_hw::words[address]);
    return fake_hw::words[address];
}

int mmap_write(uint32_t address, uint32_t value) {
    fake_hw::log.emplace_back('w', address, fake_hw::words[address] = value);
    return 0;
}
