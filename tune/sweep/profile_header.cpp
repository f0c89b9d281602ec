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

std::string delay_comment(const std::vector<std::string>& delays) {
    std::string list;
    for (const std::string& delay : delays) {
        if (delay.empty())
            return "";
        list += " " + delay;
    }
    if (list.empty())
        return "";
    return (delays.size() == 1 ? "# delay:" : "# delays:") + list + "\n";
}
