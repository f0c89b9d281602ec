// SPDX-License-Identifier: MIT
// A campaign's journal read back into its kind: the steps it measured
// replayed in order, as resume does before it carries on, and as report does
// without the board.
#ifndef PADKIT_CAMPAIGN_REPLAY_H
#define PADKIT_CAMPAIGN_REPLAY_H

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tune/campaign/campaign.h"
#include "tune/campaign/kind.h"
#include "tune/sweep/journal.h"

// Whether the journal's step is the kind's point of STEP, with its RESULTS,
// one per member the point judges (a single outcome stands for every member:
// a hang); says where it is not, in the journal at PATH.
bool is_next_step(const campaign_kind& kind, std::size_t step, const journal_step& measured,
                  const std::string& path, std::vector<outcome>* results);

// The campaign of the journal at PATH: its kind planned from the command
// words, given the originals and every step measured (the one in flight as
// a hang), its CSV file as the campaign wrote it into CSV, and concluded.
// None, said why, when the journal does not fit the kind it names.
std::unique_ptr<campaign_kind> replay_journal(const journal_contents& journal,
                                              const std::string& path, kind_of_journal kind_of,
                                              std::FILE* csv);

#endif
