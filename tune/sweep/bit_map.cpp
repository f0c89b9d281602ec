// SPDX-License-Identifier: MIT
#include "tune/sweep/bit_map.h"

#include <set>
#include <sstream>
#include <vector>

namespace {

// The words of a line before its comment.
std::vector<std::string> words_of(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> words;
    for (std::string word; in >> word && word[0] != '#' && word[0] != ';';)
        words.push_back(word);
    return words;
}

// What is wrong with a line's words, or "".
std::string take_line(const std::vector<std::string>& words, std::map<std::string, unsigned>* bits,
                      std::set<unsigned>* taken) {
    if (words.size() != 2)
        return "expected a DQ line's name and its bit";
    const std::string& number = words[1];
    if (number.size() > 4 || number.find_first_not_of("0123456789") != std::string::npos)
        return "'" + number + "' is not the number of a data bit";
    const unsigned bit = static_cast<unsigned>(std::stoul(number));
    if (!bits->emplace(words[0], bit).second)
        return words[0] + " is named twice";
    if (!taken->insert(bit).second)
        return "bit " + number + " is given twice";
    return "";
}

}  // namespace

bool parse_bit_map(const std::string& text, std::map<std::string, unsigned>* bits,
                   std::string* problem) {
    std::istringstream lines(text);
    std::set<unsigned> taken;
    std::size_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        const std::vector<std::string> words = words_of(line);
        const std::string wrong = words.empty() ? "" : take_line(words, bits, &taken);
        if (!wrong.empty()) {
            *problem = std::to_string(number) + ": " + wrong;
            return false;
        }
    }
    return true;
}
