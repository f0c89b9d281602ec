// SPDX-License-Identifier: MIT
// What result files and pictures say about how their results came about:
// what was swept, on which host, when and with which test; in a CSV file as
// comment lines "# key: value", before the results and after them.
#ifndef PADKIT_SWEEP_FACTS_H
#define PADKIT_SWEEP_FACTS_H

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

using fact = std::pair<std::string, std::string>;  // key, value
using facts = std::vector<fact>;

// The words as a shell would take them back, on one line.
std::string shell_words(const std::vector<std::string>& words);

// The words with a blank between each two, as they are.
std::string joined(const std::vector<std::string>& words);

// The time now, as "YYYY-MM-DD HH:MM:SS +ZZZZ".
std::string local_time_text();

// When the campaign this run measures started, as local_time_text() gives
// it: the time of the first call, unless a run that carries on a campaign
// set it first.
const std::string& campaign_date();
// DATE: a campaign's own start, or empty for now.
void set_campaign_date(const std::string& date);

// A run of KIND ("sweep", "shmoo") over WHAT (the names, ranges and steps),
// on this host, at the campaign's date, with the test COMMAND.
facts run_facts(const std::string& kind, const std::string& what,
                const std::vector<std::string>& command);

// The value of KEY; empty when there is none.
std::string fact_value(const facts& about, const std::string& key);

// A line "# key: value" for each fact.
void print_fact_lines(std::FILE* out, const facts& about);

// A line "# key: value" as a fact; false for any other line.
bool parse_fact_line(const std::string& line, fact* out);

// The end of a CSV file: "# partial: ..." when not every value was
// measured, then each summary line as "# summary: LINE".
void print_summary_facts(std::FILE* out, bool partial, const std::vector<std::string>& summary);

// The key of the fact that marks a CSV file as partial.
extern const char* const partial_key;

// The lines a picture begins with: the first fact (what ran), the others
// but the test, the test.
std::vector<std::string> title_lines(const facts& about);

#endif
