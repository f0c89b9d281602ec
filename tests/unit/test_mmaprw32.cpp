#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "registers/mmaprw32.h"

namespace {

// A sparse file standing in for the memory device, up to the catalogue's top;
// every word is checked through ordinary file reads and writes.
TEST(Mmaprw32, AccessesWordsOfTheMappedPageInPlaceAndReportsAMissingDevice) {
    char path[] = "/tmp/padkit-mem-XXXXXX";
    const int fd = mkstemp(path);
    ASSERT_EQ(ftruncate(fd, 16 << 20), 0);
    fname = path;
    for (uint32_t address : {0x540008u, 0x540ffcu, 0xF381A0u, 0xFFFFFCu}) {
        const uint32_t seed = 0xdeadbeef, written = address ^ 0x5a5a5a5a;
        uint32_t word = 0, before = 1;
        ASSERT_EQ(pwrite(fd, &seed, 4, address), 4);
        EXPECT_EQ(mmap_read(address), seed) << std::hex << address;
        EXPECT_EQ(mmap_write(address, written), 0);
        EXPECT_TRUE(pread(fd, &word, 4, address) == 4 && pread(fd, &before, 4, address - 4) == 4);
        EXPECT_EQ(word, written) << std::hex << address;
        EXPECT_EQ(before, 0u) << std::hex << address;
    }
    close(fd);
    testing::internal::CaptureStderr();
    EXPECT_EQ(mmap_read(0x1000000), 0u);  // past the image: no page to map
    ASSERT_EQ(truncate(path, 0xFFF000 + 8), 0);  // the last page is cut short
    EXPECT_EQ(mmap_read(0xFFF000), 0u);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "mmap " + std::string(path) + " failed.\n" + "mmap " + path + " failed.\n");
    unlink(path);
    fname = "/nonexistent/zeb_mem";
    testing::internal::CaptureStderr();
    EXPECT_EQ(mmap_read(0x540008), 0u);
    EXPECT_EQ(mmap_write(0x540008, 1), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "open /nonexistent/zeb_mem failed.\nopen /nonexistent/zeb_mem failed.\n");
    fname = "/dev/zeb_mem";
}

}  // namespace
