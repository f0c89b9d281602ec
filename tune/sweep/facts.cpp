// SPDX-License-Identifier: MIT
#include "tune/sweep/facts.h"

#include <unistd.h>

#include <algorithm>
#include <ctime>

const char* const partial_key = "partial";

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

std::string& started() {
    static std::string date;
    return date;
}

std::string host_name() {
    char name[256] = "";
    if (gethostname(name, sizeof name - 1) != 0)
        return "unknown";
    return name;
}

}  // namespace

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

std::string shell_words(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words)
        line += (line.empty() ? "" : " ") + shell_word(word);
    return line;
}

std::string local_time_text() {
    char when[64] = "";
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    if (localtime_r(&now, &local))
        std::strftime(when, sizeof when, "%Y-%m-%d %H:%M:%S %z", &local);
    return when;
}

const std::string& campaign_date() {
    if (started().empty())
        started() = local_time_text();
    return started();
}

void set_campaign_date(const std::string& date) { started() = date; }

facts run_facts(const std::string& kind, const std::string& what,
                const std::vector<std::string>& command) {
    return {{kind, what},
            {"host", host_name()},
            {"date", campaign_date()},
            {"test", shell_words(command)}};
}

std::string fact_value(const facts& about, const std::string& key) {
    for (const fact& each : about)
        if (each.first == key)
            return each.second;
    return "";
}

void print_fact_lines(std::FILE* out, const facts& about) {
    for (const fact& each : about)
        std::fprintf(out, "# %s: %s\n", each.first.c_str(), each.second.c_str());
}

bool parse_fact_line(const std::string& line, fact* out) {
    const std::string::size_type colon = line.find(": ");
    if (line.compare(0, 2, "# ") != 0 || colon == std::string::npos || colon == 2)
        return false;
    *out = {line.substr(2, colon - 2), line.substr(colon + 2)};
    return true;
}

void print_summary_facts(std::FILE* out, bool partial, const std::vector<std::string>& summary) {
    facts lines;
    if (partial)
        lines.emplace_back(partial_key, "not every value was measured");
    for (const std::string& line : summary)
        lines.emplace_back("summary", line);
    print_fact_lines(out, lines);
}

std::vector<std::string> title_lines(const facts& about) {
    std::vector<std::string> lines;
    std::string middle;
    for (const fact& each : about) {
        const std::string text = each.first + ": " + each.second;
        if (&each == &about.front() || each.first == "test")
            lines.push_back(text);
        else
            middle += (middle.empty() ? "" : "; ") + text;
    }
    if (!middle.empty())
        lines.insert(lines.begin() + (lines.empty() ? 0 : 1), middle);
    return lines;
}
