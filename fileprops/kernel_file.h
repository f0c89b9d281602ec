// SPDX-License-Identifier: MIT
// The small kernel text files behind the file-backed properties.
#ifndef PADKIT_KERNEL_FILE_H
#define PADKIT_KERNEL_FILE_H

#include <string>

enum class write_result { written, not_opened, not_written };

// A kernel text file, named by its absolute path on the board. The name is
// resolved once, at the first use, to the file the program opens, so every
// property built on this class opens the system's file and not the board
// path as written; building one touches nothing.
class kernel_file {
public:
    explicit kernel_file(const std::string& board_path);

    // The file that is opened, as messages name it.
    const std::string& path() const;

    // The first whitespace-delimited word of the file ("" for an empty file,
    // and for one longer than a page, which no driver writes); false when the
    // file cannot be opened. A link in the last component is never followed.
    bool read_first_word(std::string* word) const;

    // Replaces the content with the text, no newline added, in one write. The
    // file is never created: a driver file that is missing stays missing.
    // A failed or short write, or a failed close, is said in *problem with
    // the file's name; a failed open is left to the caller.
    write_result write(const std::string& text, std::string* problem) const;

private:
    std::string board_path_;
    mutable std::string path_;
};

#endif
