// SPDX-License-Identifier: MIT
#include "sim/register_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "runtime/message.h"
#include "sim/board.h"
#include "sim/ddr_phy.h"

namespace sim {

namespace {

// An ordinary word, or a word behind a DDR PHY select register value.
struct word_key {
    uint32_t address = 0;
    bool selected = false;
    uint32_t select = 0;
    bool operator<(const word_key& other) const {
        return std::tie(address, selected, select) <
               std::tie(other.address, other.selected, other.select);
    }
};

// A word with the user's comments: the comment lines above its entry and the
// comment at the end of its line stay with it when the file is rewritten.
struct board_word {
    uint32_t value = 0;
    std::string comment_lines;  // whole lines, each with its newline
    std::string line_comment;   // from its '#', without the newline
};
using board_words = std::map<word_key, board_word>;

struct regs_file {
    board_words words;
    std::string closing_comments;  // comment lines after the last entry
    mode_t mode = 0;
};

std::string regs_path() { return board_dir() + "/regs"; }

// "0x" or "0X" and hexadecimal digits whose value fits 32 bits.
bool parse_hex(const std::string& text, uint32_t* out) {
    if (text.size() < 3 || text[0] != '0' || (text[1] != 'x' && text[1] != 'X'))
        return false;
    uint64_t value = 0;
    for (std::string::size_type i = 2; i < text.size(); ++i) {
        const char c = text[i];
        const int digit = c >= '0' && c <= '9'   ? c - '0'
                          : c >= 'a' && c <= 'f' ? c - 'a' + 10
                          : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                 : -1;
        if (digit < 0)
            return false;
        value = value * 16 + static_cast<uint64_t>(digit);
        if (value > UINT32_MAX)
            return false;
    }
    *out = static_cast<uint32_t>(value);
    return true;
}

// The next blank-delimited word of text from *at on ("" at the end).
std::string next_word(const std::string& text, std::string::size_type* at) {
    static const char blanks[] = " \t\n\v\f\r";
    const std::string::size_type start = std::min(text.find_first_not_of(blanks, *at), text.size());
    *at = std::min(text.find_first_of(blanks, start), text.size());
    return text.substr(start, *at - start);
}

// A later line for the same word replaces an earlier one; comment lines wait
// in *comments for the entry they stand above.
bool parse_line(const std::string& line, std::string* comments, board_words* words) {
    const std::string::size_type hash = line.find('#');
    const std::string entry = line.substr(0, hash);
    std::string::size_type next = 0;
    const std::string where = next_word(entry, &next);
    if (where.empty()) {
        if (hash != std::string::npos)
            *comments += line + "\n";
        return true;
    }
    const std::string value_text = next_word(entry, &next);
    const std::string extra = next_word(entry, &next);
    word_key key;
    uint32_t value = 0;
    const std::string::size_type at = where.find('@');
    key.selected = at != std::string::npos;
    if (!extra.empty() || !parse_hex(where.substr(0, at), &key.address) ||
        (key.selected && !parse_hex(where.substr(at + 1), &key.select)) ||
        !parse_hex(value_text, &value))
        return false;
    board_word& word = (*words)[key];
    word.value = value;
    word.comment_lines += *comments;
    comments->clear();
    if (hash != std::string::npos)
        word.line_comment = line.substr(hash);
    return true;
}

// Temporary files of a run killed while it replaced regs; only a run that
// holds the lock reaches here, so none of them is still being written.
void remove_stale_temporaries() {
    static bool done = false;
    DIR* dir = done ? nullptr : opendir(board_dir().c_str());
    done = true;
    if (!dir)
        return;
    while (const dirent* entry = readdir(dir))
        if (std::strncmp(entry->d_name, ".regs-", 6) == 0 && std::strlen(entry->d_name) == 12)
            unlinkat(dirfd(dir), entry->d_name, 0);
    closedir(dir);
}

// Without the clean-up of load: for a reader that holds no lock.
bool read_regs(regs_file* regs) {
    const std::string path = regs_path();
    std::string text;
    if (!read_board_file(path, &text, &regs->mode))
        return false;
    std::string comments;
    std::string::size_type start = 0;
    for (int number = 1; start < text.size(); ++number) {
        const std::string::size_type end = std::min(text.find('\n', start), text.size());
        if (!parse_line(text.substr(start, end - start), &comments, &regs->words)) {
            say("%s:%d: bad register entry", path.c_str(), number);
            return false;
        }
        start = end + 1;
    }
    regs->closing_comments = comments;
    return true;
}

bool load(regs_file* regs) {
    remove_stale_temporaries();
    return read_regs(regs);
}

std::string format(const board_words& words, const std::string& closing_comments = "") {
    std::string text;
    char line[64];
    for (const auto& entry : words) {
        const word_key& key = entry.first;
        const board_word& word = entry.second;
        if (key.selected)
            std::snprintf(line, sizeof line, "0x%08x@0x%08x 0x%08x", key.address, key.select,
                          word.value);
        else
            std::snprintf(line, sizeof line, "0x%08x 0x%08x", key.address, word.value);
        text += word.comment_lines + line;
        text += (word.line_comment.empty() ? "" : " " + word.line_comment) + "\n";
    }
    return text + closing_comments;
}

// A reader (or a user's editor) sees the old file or the new one, never a mix.
bool save(const regs_file& regs) {
    const std::string text = format(regs.words, regs.closing_comments);
    std::string name = board_dir() + "/.regs-XXXXXX";
    std::vector<char> temp(name.begin(), name.end());
    temp.push_back('\0');
    int fd = mkostemp(temp.data(), O_CLOEXEC);
    if (fd < 0)
        return false;
    bool ok = fchmod(fd, regs.mode) == 0 &&
              write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    ok = close(fd) == 0 && ok;
    ok = ok && rename(temp.data(), regs_path().c_str()) == 0;
    if (!ok)
        unlink(temp.data());
    return ok;
}

// The word an access to the address reaches, given the PHY select registers.
word_key key_for(const board_words& words, uint32_t address, bool* per_dq) {
    phy_data_register data{};
    *per_dq = false;
    if (!find_data_register(address, &data))
        return {address, false, 0};
    *per_dq = data.per_dq;
    const auto select = words.find(word_key{data.select_address, false, 0});
    return {address, true, select == words.end() ? 0 : select->second.value};
}

uint32_t word_at(const board_words& words, const word_key& key) {
    const auto found = words.find(key);
    return found == words.end() ? 0 : found->second.value;
}

}  // namespace

std::string fresh_regs() {
    board_words words;
    for (uint32_t ehci_phy : {0x00540008u, 0x0054001cu, 0x00540030u, 0x00540044u})
        words[{ehci_phy, false, 0}].value = 0x00ac111c;
    for (uint32_t ddr_strength : {0x00f38120u, 0x00f18120u})
        words[{ddr_strength, false, 0}].value = 0x00bb00b4;
    return format(words);
}

bool read_word(uint32_t address, uint32_t* word) {
    regs_file regs;
    if (!load(&regs))
        return false;
    bool per_dq = false;
    *word = word_at(regs.words, key_for(regs.words, address, &per_dq));
    return true;
}

bool read_selected_words(const std::vector<selected_word>& wanted, std::vector<uint32_t>* words) {
    regs_file regs;
    if (!read_regs(&regs))
        return false;
    words->clear();
    for (const selected_word& word : wanted)
        words->push_back(word_at(regs.words, {word.address, true, word.select}));
    return true;
}

bool write_word(uint32_t address, uint32_t value) {
    regs_file regs;
    if (!load(&regs))
        return false;
    bool per_dq = false;
    const word_key key = key_for(regs.words, address, &per_dq);
    regs.words[key].value = per_dq ? value & ~dq_update_bit : value;
    return save(regs);
}

void trace_access(char kind, uint32_t address, uint32_t word) {
    const char* path = std::getenv("PADKIT_SIM_TRACE");
    if (!path || !*path)
        return;
    char line[32];
    const int length = std::snprintf(line, sizeof line, "%c 0x%08x 0x%08x\n", kind, address, word);
    int fd = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (fd < 0)
        return;
    // One write per line: the trace is what the program asked, not a log that can fail it.
    const ssize_t written = write(fd, line, static_cast<size_t>(length));
    (void)written;
    close(fd);
}

}  // namespace sim
