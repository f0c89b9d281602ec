// The small kernel text files behind the file-backed properties.
#ifndef PADKIT_TEXT_FILE_H
#define PADKIT_TEXT_FILE_H

#include <string>

// The first whitespace-delimited word of the file ("" for an empty file);
// false when the file cannot be opened.
bool read_first_word(const std::string& path, std::string* word);

// Replaces the file's content with the text, no newline added. The file is
// never created: a driver file that is missing stays missing.
bool write_text(const std::string& path, const std::string& text);

#endif
