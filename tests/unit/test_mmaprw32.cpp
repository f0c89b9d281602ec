// SPDX-License-Identifier: MIT
#include <stdlib.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "registers/mmaprw32.h"

namespace {

// A sparse file standing in for the memory device, up to the catalogue's top;
// every word is checked through ordinary file reads and writes.
TEST(Mmaprw32, AccessesWordsOfTheMappedPageInPlaceAndReportsWhatCannotBeMapped) {
    char path[] = "/tmp/padkit-mem-XXXXXX";
    const int fd = mkstemp(path);
    ASSERT_EQ(ftruncate(fd, 16 << 20), 0);
    fname = path;
    for (uint32_t address : {0x540ffcu, 0xF381A0u, 0xFFFFFCu}) {
        const uint32_t seed = 0xdeadbeef, written = address ^ 0x5a5a5a5a;
        uint32_t word = 1;
        ASSERT_EQ(pwrite(fd, &seed, 4, address), 4);
        EXPECT_TRUE(mmap_read(address, &word).ok);
        EXPECT_EQ(word, seed) << std::hex << address;
        EXPECT_TRUE(mmap_write(address, written).ok);
        EXPECT_EQ(pread(fd, &word, 4, address), 4);
        EXPECT_EQ(word, written) << std::hex << address;
    }
    close(fd);
    ASSERT_EQ(truncate(path, 0xFFF000 + 8), 0);  // the last page is cut short: no map
    uint32_t word = 1;
    const access_result unmapped = mmap_read(0xFFF000, &word);
    EXPECT_EQ(word, 0u);
    unlink(path);
    const std::string gone = std::string(path) + "-gone";  // then no device
    fname = gone.c_str();
    const access_result unopened = mmap_write(0x540008, 1);
    fname = "/dev/zeb_mem";
    EXPECT_FALSE(unmapped.ok || unopened.ok);
    EXPECT_EQ(unmapped.lines, std::vector<std::string>{"mmap " + std::string(path) + " failed."});
    EXPECT_EQ(unopened.lines, std::vector<std::string>{"open " + gone + " failed."});
}

}  // namespace
