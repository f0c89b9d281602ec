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

access_result mmap_read(uint32_t address, uint32_t* word) {
    fake_hw::log.emplace_back('r', address, *word = fake_hw::words[address]);
    return {};
}

access_result mmap_write(uint32_t address, uint32_t value) {
    fake_hw::log.emplace_back('w', address, fake_hw::words[address] = value);
    return {};
}
