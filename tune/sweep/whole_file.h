// SPDX-License-Identifier: MIT
// A result file (CSV, SVG, profile): what its name holds decides how it is
// written. A new or regular file appears whole or not at all: written to a
// temporary file beside it, .NAME.padkit-XXXXXX, and renamed into place once
// complete. A character device, a FIFO or a link to standard output is
// written through, never replaced. Anything else (a directory, a block
// device) is refused.
#ifndef PADKIT_WHOLE_FILE_H
#define PADKIT_WHOLE_FILE_H

#include <cstdio>
#include <functional>
#include <string>

class whole_file {
public:
    whole_file() = default;
    whole_file(const whole_file&) = delete;
    whole_file& operator=(const whole_file&) = delete;
    // Removes the temporary file unless it was committed.
    ~whole_file();

    // Checks the name and removes the temporary files that runs killed before
    // left beside it; opens what is written through. False, errno set, when
    // the name is refused or names a file that cannot be written.
    bool prepare(const std::string& path);
    // Creates the temporary file (close-on-exec, with the permissions a new
    // file gets), its name handed to NOTE first when given; nothing to do
    // for what is written through. False, errno set, when it cannot.
    bool create(const std::function<void(const std::string&)>& note = nullptr);
    bool open(const std::string& path) { return prepare(path) && create(); }
    std::FILE* stream() const { return file; }
    // Flushes, syncs and renames the temporary file into place (flushes what
    // is written through); false, errno set, when a step fails, and the
    // temporary file is gone.
    bool commit();
    void discard();

private:
    std::string path, temporary;
    std::FILE* file = nullptr;
};

// A result file written as a run goes, in place: refused, errno set, as
// whole_file refuses it; standard output shared where it links there;
// otherwise opened close-on-exec and emptied.
std::FILE* open_in_place(const std::string& path);

// The result file a temporary file at PATH stands for; empty when its name
// is not a temporary file's.
std::string result_of_temporary(const std::string& path);

// Removes the regular files beside the result file at PATH that are named as
// its temporary files; links are not followed.
void remove_temporaries(const std::string& path);

#endif
