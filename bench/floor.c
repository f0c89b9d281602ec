// SPDX-License-Identifier: MIT
/* The least a padkit get can do: open the memory device, map the page, load
 * one word and print a field of it (ehci0-phy::tx-vref, bits 18..15). */
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <sys/mman.h>
#include <unistd.h>

int main(void) {
    const uint32_t address = 0x540008;
    int fd = open("/dev/zeb_mem", O_RDWR | O_SYNC);
    if (fd < 0)
        return 1;
    void* page = mmap(NULL, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, fd, address & ~4095u);
    if (page == MAP_FAILED)
        return 1;
    const uint32_t word = *(volatile uint32_t*)((char*)page + (address & 4095u));
    printf("%u\n", (unsigned)(word >> 15) & 0xf);
    return 0;
}
