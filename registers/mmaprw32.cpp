// SPDX-License-Identifier: MIT
#include "registers/mmaprw32.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>

#include "runtime/message.h"

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
bool page_in_file(int fd, off_t page_base) {
    struct stat st;
    return fstat(fd, &st) == 0 && st.st_size >= page_base + page_size;
}

// The device stays open and every page it has mapped stays mapped for the
// rest of the process, so a run of many accesses opens and maps once. A
// change of fname starts afresh on the new path.
struct device {
    std::string path;
    int fd = -1;
    bool regular_file = false;
    std::map<off_t, char*> pages;

    void forget() {
        for (const auto& page : pages)
            munmap(page.second, page_size);
        pages.clear();
        if (fd >= 0)
            close(fd);
        fd = -1;
    }
};

device opened;

// The page that holds the address, mapped; nullptr, said, when the device
// cannot be opened or the page cannot be mapped.
char* mapped_page(uint32_t address) {
    const char* path = fname;
    if (opened.fd < 0 || opened.path != path) {
        opened.forget();
        opened.fd = open(path, O_RDWR | O_SYNC);
        if (opened.fd < 0) {
            say("open %s failed.", path);
            return nullptr;
        }
        opened.path = path;
        struct stat st;
        opened.regular_file = fstat(opened.fd, &st) == 0 && S_ISREG(st.st_mode);
    }
    // A file is checked at every access: it may have shrunk since the page was mapped.
    const off_t page_base = static_cast<off_t>(address & ~page_offset_mask);
    const auto known = opened.pages.find(page_base);
    const bool reachable = !opened.regular_file || page_in_file(opened.fd, page_base);
    if (reachable && known != opened.pages.end())
        return known->second;
    void* page = reachable ? mmap(nullptr, page_size, PROT_READ | PROT_WRITE, MAP_SHARED, opened.fd,
                                  page_base)
                           : MAP_FAILED;
    if (page == MAP_FAILED) {
        say("mmap %s failed.", path);
        return nullptr;
    }
    return opened.pages[page_base] = static_cast<char*>(page);
}

// Hands the word's location to access; nothing is touched when it cannot be reached.
template <typename Access>
void with_mapped_word(uint32_t address, Access access) {
    if (char* page = mapped_page(address))
        access(reinterpret_cast<volatile uint32_t*>(page + (address & page_offset_mask)));
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
