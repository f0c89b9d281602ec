// SPDX-License-Identifier: MIT
#include "tune/sweep/profile_header.h"

#include <string>
#include <vector>

#include "runtime/report.h"
#include "tune/sweep/facts.h"

std::string profile_header(int argc, char** argv) {
    std::vector<std::string> words = {program_name()};
    words.insert(words.end(), argv, argv + argc);
    return "# " + shell_words(words) + "\n# " + local_time_text() + "\n";
}
