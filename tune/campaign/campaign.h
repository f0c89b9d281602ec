// SPDX-License-Identifier: MIT
// The campaign driver: the points of a kind (kind.h) measured one after
// another on the running board, carried over a hang by the journal and the
// watchdog, and ended alike for every kind: what it changed put back or
// kept, the result files and the chart written, and one exit status.
#ifndef PADKIT_CAMPAIGN_CAMPAIGN_H
#define PADKIT_CAMPAIGN_CAMPAIGN_H

#include <memory>
#include <string>
#include <vector>

#include "tune/campaign/kind.h"

// A new campaign of a planned kind: asks first (unless -y was given),
// creates the result files, reads the originals, arms the watchdog and
// creates the journal (when asked), then measures. Returns the exit status,
// unless a stop signal ends the program.
int run_campaign(std::unique_ptr<campaign_kind> kind);

// The planned kind of the campaign that a journal's command WORDS started;
// none, said why, when they name no kind or its plan is refused. PATH is the
// journal's, for messages.
using kind_of_journal = std::unique_ptr<campaign_kind> (*)(const std::vector<std::string>& words,
                                                           const std::string& path);

enum class resume_mode {
    carry_on,    // the step in flight counted as a hang
    retry_hang,  // the step in flight measured again
    restore,     // the originals put back, nothing measured
};

// Carries on with the campaign of the journal at PATH, of the kind KIND_OF
// gives: the steps it measured replayed, the one in flight named and counted
// as a hang (or measured again), the originals put back, then the rest
// measured. With resume_mode::restore, only puts back the originals, writes
// the result files of what was measured and ends the journal. Returns the
// exit status, unless a stop signal ends the program.
int resume_campaign(const std::string& path, resume_mode mode, kind_of_journal kind_of);

#endif
