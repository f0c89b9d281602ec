// SPDX-License-Identifier: MIT
// One 32-bit access to a physical address through the memory device.
#ifndef PADKIT_MMAPRW32_H
#define PADKIT_MMAPRW32_H

#include <cstdint>

#include "properties/access_result.h"

extern "C" {

// Path of the memory device, read afresh at every access; the device stays
// open, and the pages it mapped stay mapped, until the path changes.
extern const char* fname;
}

// The word at a physical address. When the device cannot be reached the word
// is 0, and the result says so ("open /dev/zeb_mem failed.").
access_result mmap_read(uint32_t address, uint32_t* word);

// Stores one word at a physical address; when the device cannot be reached,
// nothing, and the result says so.
access_result mmap_write(uint32_t address, uint32_t value);

#endif
