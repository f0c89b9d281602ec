// SPDX-License-Identifier: MIT
// The journal of a sweep on disk: enough to carry on after the board hung
// and was reset, and to tell which value it was trying when it did.
//
// One record a line: a keyword, then fields, each in double quotes with
// \\, \" and \xHH for every byte below 0x20 or above 0x7e, so that any
// argument comes back byte for byte. The header comes first:
//   journal "VERSION"
//   directory "DIR"                  where the sweep was started
//   command "sweep" "-y" ...         the subcommand's words
//   original "NAME" "VALUE"          one per swept property
//   date "YYYY-MM-DD HH:MM:SS +ZZZZ" when it started; older journals have none
// then per step:
//   try "FIELD" ...                  before the value is written
//   result pass|fail|timeout|hang    after the command
//   result "pass" "fail" ...         instead, for a point of several members
//                                    judged each by its own failing bit
//   stop                             instead of a result: a signal ended the sweep,
//                                    or a resume measures the value again
// and, at any time, before a result file's temporary file is created:
//   temporary "PATH"
// then, before --keep centre writes what it keeps:
//   keep
// and at the very end:
//   end
// A last line without its newline was cut by a power failure and is ignored.
#ifndef PADKIT_JOURNAL_H
#define PADKIT_JOURNAL_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "tune/sweep/outcome.h"

using journal_point = std::vector<std::string>;

struct journal_step {
    journal_point point;           // what was tried: a sweep's name and value
    outcome result;                // of several members, the first that did not pass, else pass
    std::vector<outcome> members;  // per member, when the point judged several
    std::size_t line;              // of its try record, for messages
};

struct journal_header {
    std::string version, directory;
    std::vector<std::string> command;
    std::vector<std::pair<std::string, std::string>> originals;  // name, value
    std::string date;                                            // empty when not recorded
};

struct journal_contents {
    journal_header header;
    // Measured, in order. A try left without a result is the last step, a hang.
    std::vector<journal_step> steps;
    bool in_flight = false;  // the last step is such a hang, not yet recorded as one
    bool keeping = false;    // a keep record: the run was keeping the centre
    bool ended = false;
    std::vector<std::string> temporaries;  // the paths of temporary files, as recorded
    std::size_t length = 0;                // up to the end of the last whole line
};

// Reads a journal's text. Refuses garbled records, records out of order and
// a journal of another VERSION; the problem is "LINE: what".
bool parse_journal(const std::string& text, const std::string& version, journal_contents* contents,
                   std::string* problem);

// A journal being written. Every record is on disk before its call returns;
// on failure each call says why on standard error and returns false.
class journal_file {
public:
    journal_file() = default;
    journal_file(const journal_file&) = delete;
    journal_file& operator=(const journal_file&) = delete;
    ~journal_file();

    // Creates PATH, which must not exist yet, with the header, and makes the
    // new name durable too.
    bool create(const std::string& path, const journal_header& header);
    // Opens PATH to carry on and reads it; nothing is written yet. Another
    // run carrying on with the same journal is refused.
    bool resume(const std::string& path, const std::string& version, journal_contents* contents);

    bool tried(const journal_point& point);
    // One outcome per member the point judged.
    bool finished(const std::vector<outcome>& results);
    bool stopped();
    bool temporary(const std::string& path);
    // The keep record; false without one when the journal has it already: the
    // run carried on here stopped while it kept, most likely hung by it.
    bool keeping();
    bool end();

    bool is_open() const { return fd >= 0; }
    // Whether a record could not be written; no more are tried after that.
    bool failed() const { return broken; }
    const std::string& path() const { return path_; }

private:
    bool append(const std::string& record);

    int fd = -1;
    std::string path_;
    std::size_t whole_length = 0;  // what to keep of the file before the first append
    bool cut_pending = false;
    bool kept_before = false;
    bool broken = false;
};

#endif
