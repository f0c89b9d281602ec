// SPDX-License-Identifier: MIT
// A file that appears whole or not at all: written to a temporary file
// beside it and renamed into place once complete.
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
    // file gets); false, errno set, when it cannot.
    bool open(const std::string& path);
    std::FILE* stream() const { return file; }
    // Flushes, syncs and renames the temporary file into place; false, errno
    // set, when a step fails, and the temporary file is gone.
    bool commit();
    void discard();

private:
    std::string path, temporary;
    std::FILE* file = nullptr;
};

#endif
