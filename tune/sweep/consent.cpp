// SPDX-License-Identifier: MIT
#include "tune/sweep/consent.h"

#include <cctype>
#include <cstdlib>

consent ask_consent(const std::string& warning, std::FILE* in, bool in_is_terminal,
                    std::FILE* err) {
    std::fprintf(err, "%s\n", warning.c_str());
    if (!in_is_terminal)
        return consent::no_terminal;
    std::fprintf(err, "Continue? [y/N] ");
    std::fflush(err);
    char* line = nullptr;
    std::size_t size = 0;
    std::string answer;
    if (getline(&line, &size, in) > 0)
        for (const char* c = line; *c; ++c)
            if (!std::isspace(static_cast<unsigned char>(*c)))
                answer += static_cast<char>(std::tolower(static_cast<unsigned char>(*c)));
    std::free(line);
    return answer == "y" || answer == "yes" ? consent::given : consent::refused;
}
