// SPDX-License-Identifier: MIT
// The kinds of campaign padkit-tune runs, each under one word: its
// subcommand, and the command word of its journal.
#ifndef PADKIT_TUNE_KINDS_H
#define PADKIT_TUNE_KINDS_H

#include <memory>
#include <string>
#include <vector>

#include "tune/campaign/kind.h"
#include "tune/sweep_options.h"

// Plans a kind from its subcommand's words (argv[0] is its word): the options
// read and everything checked that can be without touching the board. On
// bad input says what is wrong.
using kind_planner = sweep_request (*)(int argc, char** argv, std::unique_ptr<campaign_kind>* kind);

sweep_request plan_sweep_campaign(int argc, char** argv, std::unique_ptr<campaign_kind>* kind);
sweep_request plan_shmoo_campaign(int argc, char** argv, std::unique_ptr<campaign_kind>* kind);
sweep_request plan_deskew_campaign(int argc, char** argv, std::unique_ptr<campaign_kind>* kind);

// The planned kind of the campaign that a journal's command words started
// (a kind_of_journal for resume_campaign); none, said why, when they name no
// kind or its plan is refused.
std::unique_ptr<campaign_kind> resumed_kind(const std::vector<std::string>& words,
                                            const std::string& path);

#endif
