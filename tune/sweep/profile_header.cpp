// SPDX-License-Identifier: MIT
#include "tune/sweep/profile_header.h"

#include <algorithm>
#include <ctime>
#include <string>

#include "runtime/report.h"

namespace {

// A word as a shell would take it back; on one line, since it ends up in a comment.
std::string shell_word(std::string word) {
    std::replace(word.begin(), word.end(), '\n', ' ');
    if (!word.empty() &&
        word.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
                               "_-+=.,:/@%") == std::string::npos)
        return word;
    std::string quoted = "'";
    for (char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

}  // namespace

std::string profile_header(int argc, char** argv) {
    std::string line = std::string("# ") + program_name();
    for (int i = 0; i < argc; ++i)
        line += " " + shell_word(argv[i]);
    char when[64] = "";
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    if (localtime_r(&now, &local))
        std::strftime(when, sizeof when, "%Y-%m-%d %H:%M:%S %z", &local);
    return line + "\n# " + when + "\n";
}
