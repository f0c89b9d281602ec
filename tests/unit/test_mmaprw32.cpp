// SPDX-License-Identifier: MIT
#include <stdlib.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

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
        EXPECT_EQ(mmap_read(address), seed) << std::hex << address;
        EXPECT_EQ(mmap_write(address, written), 0);
        EXPECT_EQ(pread(fd, &word, 4, address), 4);
        EXPECT_EQ(word, written) << std::hex << address;
    }
    close(fd);
    ASSERT_EQ(truncate(path, 0xFFF000 + 8), 0);  // the last page is cut short: no map
    testing::internal::CaptureStderr();
    EXPECT_EQ(mmap_read(0xFFF000), 0u);
    unlink(path);
    const std::string gone = std::string(path) + "-gone";  // then no device
    fname = gone.c_str();
    EXPECT_EQ(mmap_write(0x540008, 1), 0);
    fname = "/dev/zeb_mem";
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "mmap " + std::string(path) + " failed.\nopen " + gone + " failed.\n");
}

}  // namespace
