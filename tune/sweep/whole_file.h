// SPDX-License-Identifier: MIT
// A result file (CSV, SVG, profile): what its name holds decides how it is
// written. A new or regular file appears whole or not at all: written to a
// temporary file beside it and renamed into place once complete. A
// character device, a FIFO or a link to standard output is written through,
// never replaced. Anything else (a directory, a block device) is refused.
#ifndef PADKIT_WHOLE_FILE_H
#define PADKIT_WHOLE_FILE_H

#include <cstdio>
#include <string>

class whole_file {
public:
    whole_file() = default;
    whole_file(const whole_file&) = delete;
    whole_file& operator=(const whole_file&) = delete;
    // Removes the temporary file unless it was committed.
    ~whole_file();

    // Creates the temporary file (close-on-exec, with the permissions a new
    // file gets), or opens what is written through; false, errno set, when
    // it cannot, the name is refused or names a file that cannot be written.
    bool open(const std::string& path);
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

#endif
