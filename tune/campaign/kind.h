// SPDX-License-Identifier: MIT
// What one kind of campaign (a sweep, a shmoo) gives the driver: its plan,
// the points it measures, and its report, what it makes of their results.
// The driver does the rest alike for every kind: the lock, the writes, the
// command, the journal, the watchdog, the progress line, stop signals, the
// put-back, the result files and the exit status.
#ifndef PADKIT_CAMPAIGN_KIND_H
#define PADKIT_CAMPAIGN_KIND_H

#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "properties/property.h"
#include "tune/board/board_io.h"
#include "tune/campaign/test_options.h"
#include "tune/sweep/command_run.h"
#include "tune/sweep/failing_bits.h"
#include "tune/sweep/journal.h"
#include "tune/sweep/window.h"

struct campaign_point {
    // In the order written. The first CARRIED are as the point before left
    // them: written again only by the first point of a run or after a put-back.
    std::vector<setting> settings;
    std::size_t carried = 0;
    // What it wrote goes back to the originals once it is measured: the end
    // of a sweep's row.
    bool puts_back = false;
    long long runs = 0;     // times the command runs; 0: as --runs says
    environment names;      // for the test command
    member_bits judged;     // its members' failing bits, when the command names them
    journal_point journal;  // what the journal's try record names
    std::string shown;      // on the progress line
    std::string named;      // in messages: "NAME: VALUE" for each setting
};

class campaign_kind {
public:
    // NAME: the subcommand and the journal's command word ("sweep"); STEP:
    // what one step is called ("value", "point"); RESTORED: what an
    // interrupted run says it put back ("both settings restored").
    campaign_kind(const char* name, const char* step, const char* restored)
        : name(name), step(step), restored(restored) {}
    virtual ~campaign_kind() = default;
    campaign_kind(const campaign_kind&) = delete;
    campaign_kind& operator=(const campaign_kind&) = delete;

    const char* const name;
    const char* const step;
    const char* const restored;

    // The plan.
    virtual const test_options& options() const = 0;
    // The properties it changes, in the order their originals are read,
    // journalled and put back.
    virtual std::vector<property*> properties() const = 0;
    // What the warning before the first write says it does: "This sweeps ...".
    virtual std::string description() const = 0;
    // The codes of properties() before the campaign; given before the first
    // step, read from the board or from a journal.
    virtual void begin(const std::vector<long long>& originals) = 0;
    // How many steps it plans, for the progress line.
    virtual std::size_t steps() const = 0;
    // The point of a step, which may depend on the results recorded before
    // it; none after the last.
    virtual std::optional<campaign_point> point(std::size_t step) const = 0;

    // The report.
    virtual void print_csv_header(std::FILE* out) const = 0;
    // The results of each step in turn, one per member its point judged, and
    // its lines into the CSV file when one is written.
    virtual void record(std::size_t step, const std::vector<outcome>& results, std::FILE* csv) = 0;
    // No more steps follow: what the results show is worked out, once,
    // before anything below is asked. PARTIAL: the steps stopped before the
    // last one, and results not fully measured sum up nothing.
    virtual void conclude(bool partial) = 0;
    // It found what it looks for.
    virtual bool found() const = 0;
    // What --keep centre leaves instead of the originals, in the order
    // written; nothing to keep when empty.
    virtual std::vector<setting> kept() const = 0;
    // Says what it kept, once written.
    virtual void report_kept() const = 0;
    // The chart of the results so far, COLUMNS wide (0: no limit).
    virtual void print_chart(std::FILE* out, std::size_t columns) const = 0;
    // After the chart at the end of a run (resume --restore shows the chart
    // alone): the lines that say what it found.
    virtual void print_summary(std::FILE* out) const = 0;
    // The end of the CSV file, after the last step's line.
    virtual void print_csv_summary(std::FILE* out) const = 0;
    virtual void print_svg(std::FILE* out) const = 0;
    // The profile of what it found, after the HEADER.
    virtual void print_profile(std::FILE* out, const std::string& header) const = 0;
};

#endif
