// SPDX-License-Identifier: MIT
// The strict reading of a value that a profile, not a person at a prompt,
// hands to a property: nothing guessed, nothing clamped.
#ifndef PADKIT_STRICT_VALUE_H
#define PADKIT_STRICT_VALUE_H

#include <cstdint>
#include <string>
#include <vector>

// A decimal or "0x" hexadecimal number without sign, blanks or trailing
// characters that fits 32 bits. On failure says why in *problem.
bool parse_strict_u32(const std::string& text, uint32_t* out, std::string* problem);

// The elements of a brace list "{a,b,...}", split at every comma and each
// kept as it is, blanks and empty ones included; false when the text is no
// brace list.
bool brace_elements(const std::string& text, std::vector<std::string>* elements);

// The text without the blanks (spaces, tabs, carriage returns) around it.
std::string trimmed(const std::string& text);

#endif
