// SPDX-License-Identifier: MIT
// The JSON forms of names and property values.
#ifndef PADKIT_TUNE_JSON_H
#define PADKIT_TUNE_JSON_H

#include <string>

// A JSON string literal holding the text. A byte that is no UTF-8 (a file
// name may hold any) becomes the lone surrogate U+DC00 + byte, as Python
// decodes such names, so that the text stays JSON and the name can be had back.
std::string json_string(const std::string& text);

// A value as get() shows it in decimal: a number, or "{a,b}" as an array.
// nullptr (an unreadable property) is null, a code that no key names a
// string.
std::string json_value(const std::string* value);

#endif
