#include "registers/mmaprw32.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>

const char* fname = "/dev/zeb_mem";

namespace {

constexpr uint32_t page_size = 4096;
constexpr uint32_t page_offset_mask = page_size - 1;

int _mmap_read(volatile uint32_t* mapped, uint32_t* out) {
    *out = *mapped;
    return 0;
}

int _mmap_write(volatile uint32_t* mapped, uintptr_t value) {
    *mapped = static_cast<uint32_t>(value);
    return 0;
}

// A regular file standing in for the device (a fake board, a test image) must
// hold the whole page: touching a page past its end raises SIGBUS.
bool page_reachable(int fd, off_t page_base) {
    struct stat st;
    return fstat(fd, &st) == 0 && (!S_ISREG(st.st_mode) || st.st_size >= page_base + page_size);
}

// Opens the device, maps the page that holds the address and hands the
// word's location to access; nothing is touched when either step fails.
template <typename Access>
void with_mapped_word(uint32_t address, Access access) {
    const char* device = fname;
    int fd = open(device, O_RDWR | O_SYNC);
    if (fd < 0) {
        std::fprintf(stderr, "open %s failed.\n", device);
        return;
    }
    const off_t page_base = static_cast<off_t>(address & ~page_offset_mask);
    void* page = page_reachable(fd, page_base)
                     ? mmap(nullptr, page_size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, page_base)
                     : MAP_FAILED;
    if (page == MAP_FAILED) {
        std::fprintf(stderr, "mmap %s failed.\n", device);
        close(fd);
        return;
    }
    access(reinterpret_cast<volatile uint32_t*>(static_cast<char*>(page) +
                                                (address & page_offset_mask)));
    munmap(page, page_size);
    close(fd);
}

}  // namespace

uint32_t mmap_read(uint32_t address) {
    uint32_t word = 0;
    with_mapped_word(address, [&word](volatile uint32_t* mapped) { _mmap_read(mapped, &word); });
    return word;
}

int mmap_write(uint32_t address, uint32_t value) {
    with_mapped_word(address, [value](volatile uint32_t* mapped) { _mmap_write(mapped, value); });
    return 0;
}
