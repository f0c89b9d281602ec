// SPDX-License-Identifier: MIT
// The end of every run of every program.
#ifndef PADKIT_END_OF_RUN_H
#define PADKIT_END_OF_RUN_H

struct output_check {
    bool standard_error;  // a failed write to it is lost output too
    int lost_status;      // what a status of 0 becomes when output was lost
};

// Releases the run lock and checks that the output was written (see
// standard_output_written). Returns the run's status: a result that was not
// 0 keeps its own.
int end_of_run(int status, const output_check& check);

#endif
