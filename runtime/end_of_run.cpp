// SPDX-License-Identifier: MIT
#include "runtime/end_of_run.h"

#include <cstdio>

#include "runtime/run_lock.h"
#include "runtime/standard_streams.h"

int end_of_run(int status, const output_check& check) {
    release_run_lock();
    bool written = standard_output_written();
    if (check.standard_error)
        written = !std::ferror(stderr) && written;
    return status == 0 && !written ? check.lost_status : status;
}
