// SPDX-License-Identifier: MIT
// What every campaign does before its first write, new or carried on from
// its journal.
#ifndef PADKIT_CAMPAIGN_START_H
#define PADKIT_CAMPAIGN_START_H

#include <string>
#include <vector>

#include "properties/property.h"
#include "tune/campaign/test_options.h"
#include "tune/sweep/hang_guard.h"
#include "tune/sweep/journal.h"

// Whether the test command can be started, and its output kept where --log
// says; says so when not.
bool command_ready(const test_options& options);

// Asks before the first write, unless -y was given: "WARNING! " and what the
// campaign DOES on standard error, the question on a terminal. WHAT names the
// campaign in the refusal: "sweep", "shmoo".
bool confirmed(const test_options& options, const std::string& does, const char* what);

// Opens the watchdog the options name, if any. Says why it cannot.
bool arm_watchdog(const test_options& options, hang_guard& guard);

// A new campaign, once the ORIGINALS of the properties are read: the
// watchdog armed and the journal created with them, when the options ask for
// them. Says why it cannot.
bool start_guard(const test_options& options, const std::vector<property*>& props,
                 const std::vector<long long>& originals, hang_guard& guard);

// A campaign carried on: its journal at PATH read, refused when it has
// ended, and the current directory made the one the campaign ran in, so that
// relative names in its command line mean what they meant then. Says why it
// cannot.
bool open_journal(const std::string& path, journal_file& journal, journal_contents* contents);

// Whether the journal's originals are those of the properties, by name, each
// a code its property may hold (value_domain::code_of_shown); gives the
// codes, or says why not.
bool journal_matches(const std::string& path, const journal_contents& journal,
                     const std::vector<property*>& props, std::vector<long long>* originals);

#endif
