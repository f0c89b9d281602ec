// SPDX-License-Identifier: MIT
// The files a campaign leaves: the CSV file, written a step at a time so
// that a campaign cut short keeps what it measured, and ended with what the
// results show, and the SVG picture and the profile, written at the end.
#ifndef PADKIT_CAMPAIGN_RESULT_FILES_H
#define PADKIT_CAMPAIGN_RESULT_FILES_H

#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include "tune/campaign/test_options.h"
#include "tune/sweep/journal.h"
#include "tune/sweep/whole_file.h"

class result_files {
public:
    using printer = std::function<void(std::FILE*)>;
    using file_ptr = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

    // Creates the files the options name, the CSV file with its header,
    // before anything is written to the board, so that a bad path costs
    // nothing. The profile's temporary file waits for the end, recorded in
    // JOURNAL first when it is open. Says why it cannot.
    bool open(const test_options& options, const printer& csv_header, journal_file* journal);

    // Where a step's line goes; none when no CSV file is written.
    std::FILE* csv() const { return csv_file.get(); }
    // After a line: the CSV file flushed; the first failure is said.
    void csv_line_written();

    // At the end: the CSV file's last lines, the SVG picture, and the
    // profile when the campaign FINISHED (otherwise it says that the campaign
    // named WHAT did not). Whether every file is written whole.
    bool finish(bool finished, const char* what, const printer& csv_end, const printer& svg,
                const printer& profile);

private:
    std::string csv_path, svg_path, profile_path;
    file_ptr csv_file{nullptr, std::fclose};
    file_ptr svg_file{nullptr, std::fclose};
    whole_file profile_file;
    journal_file* journal = nullptr;
    bool csv_good = true;
};

#endif
