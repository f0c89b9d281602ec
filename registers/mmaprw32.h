// SPDX-License-Identifier: MIT
// One 32-bit access to a physical address through the memory device.
#ifndef PADKIT_MMAPRW32_H
#define PADKIT_MMAPRW32_H

#include <cstdint>

extern "C" {

// Path of the memory device, read afresh at every access; the device stays
// open, and the pages it mapped stay mapped, until the path changes.
extern const char* fname;

// The word at a physical address; 0 when the device cannot be reached, which
// is said ("open /dev/zeb_mem failed.") and is the only thing it ever says.
uint32_t mmap_read(uint32_t address);

// Stores one word at a physical address. Always returns 0; a device that
// cannot be reached is said, and nothing is stored.
int mmap_write(uint32_t address, uint32_t value);
}

#endif
