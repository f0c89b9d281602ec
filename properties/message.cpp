// SPDX-License-Identifier: MIT
#include "properties/message.h"

#include <cstdarg>

#include "runtime/message.h"

namespace {

unsigned long failures = 0;

}  // namespace

void say_failed(const char* format, ...) {
    ++failures;
    va_list args;
    va_start(args, format);
    vsay(format, args);
    va_end(args);
}

void note_failed_access() { ++failures; }

unsigned long failed_accesses() { return failures; }
