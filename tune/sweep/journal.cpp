// SPDX-License-Identifier: MIT
#include "tune/sweep/journal.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "runtime/report.h"
#include "tune/sweep/outcome.h"

namespace {

// Far beyond the largest sweep's journal; a bigger file is something else.
constexpr off_t max_journal_bytes = 16 << 20;

std::string quoted(const std::string& field) {
    std::string out = "\"";
    for (unsigned char c : field) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c < 0x20 || c > 0x7e) {
            char hex[5];
            std::snprintf(hex, sizeof hex, "\\x%02x", c);
            out += hex;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out + '"';
}

std::string record(const char* keyword, const std::vector<std::string>& fields) {
    std::string line = keyword;
    for (const std::string& field : fields)
        line += ' ' + quoted(field);
    return line + '\n';
}

int hex_digit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

// A record split into its keyword, its quoted fields and at most one bare
// word after the keyword (a result's outcome).
struct parsed_line {
    std::string keyword, word;
    std::vector<std::string> fields;
};

// Fields and the bare word are each preceded by exactly one blank.
bool split_line(const std::string& line, parsed_line* out) {
    std::size_t at = line.find(' ');
    out->keyword = line.substr(0, at);
    while (at != std::string::npos && at < line.size()) {
        if (line[at] != ' ')
            return false;
        if (++at < line.size() && line[at] != '"') {
            const std::size_t end = std::min(line.find(' ', at), line.size());
            if (!out->word.empty() || !out->fields.empty())
                return false;
            out->word = line.substr(at, end - at);
            at = end;
            continue;
        }
        std::string& field = out->fields.emplace_back();
        for (++at;; ++at) {
            if (at >= line.size())
                return false;
            const unsigned char c = static_cast<unsigned char>(line[at]);
            if (c == '"')
                break;
            if (c < 0x20 || c > 0x7e)
                return false;
            if (c != '\\') {
                field += static_cast<char>(c);
            } else if (at + 1 < line.size() && (line[at + 1] == '"' || line[at + 1] == '\\')) {
                field += line[++at];
            } else if (at + 3 < line.size() && line[at + 1] == 'x' &&
                       hex_digit(line[at + 2]) >= 0 && hex_digit(line[at + 3]) >= 0) {
                field += static_cast<char>(hex_digit(line[at + 2]) * 16 + hex_digit(line[at + 3]));
                at += 3;
            } else {
                return false;
            }
        }
        ++at;
    }
    return true;
}

bool is(const parsed_line& line, const char* keyword, std::size_t fields) {
    return line.keyword == keyword && line.word.empty() && line.fields.size() == fields;
}

// Takes one record in order; returns what is wrong with it, or "".
std::string take_record(const parsed_line& line, std::size_t number, const std::string& version,
                        journal_contents* contents) {
    journal_header& head = contents->header;
    switch (number) {
    case 1:
        if (!is(line, "journal", 1))
            return "not a padkit-tune journal";
        if (line.fields[0] != version)
            return "written by padkit-tune " + quoted(line.fields[0]) + "; this is " + version;
        head.version = line.fields[0];
        return "";
    case 2:
        if (!is(line, "directory", 1))
            return "expected the directory record";
        head.directory = line.fields[0];
        return "";
    case 3:
        if (line.keyword != "command" || !line.word.empty() || line.fields.empty())
            return "expected the command record";
        head.command = line.fields;
        return "";
    }
    if (contents->ended)
        return "a record after the end";
    if (is(line, "original", 2)) {
        if (!contents->steps.empty())
            return "an original after the first try";
        head.originals.emplace_back(line.fields[0], line.fields[1]);
        return "";
    }
    if (is(line, "temporary", 1)) {
        contents->temporaries.push_back(line.fields[0]);
        return "";
    }
    if (is(line, "date", 1)) {
        if (!contents->steps.empty() || !head.date.empty())
            return "a date out of place";
        head.date = line.fields[0];
        return "";
    }
    if (contents->keeping && !is(line, "end", 0))
        return "a record after the keep";
    if (is(line, "keep", 0)) {
        if (contents->in_flight)
            return "the keep while a try has no result";
        contents->keeping = true;
        return "";
    }
    if (line.keyword == "try" && line.word.empty() && !line.fields.empty()) {
        if (contents->in_flight)
            return "a try while the one before has no result";
        contents->steps.push_back({line.fields, outcome::hang, {}, number});
        contents->in_flight = true;
        return "";
    }
    if (is(line, "end", 0)) {
        if (contents->in_flight)
            return "the end while a try has no result";
        contents->ended = true;
        return "";
    }
    const bool result = line.keyword == "result" && line.word.empty() != line.fields.empty() &&
                        line.fields.size() != 1;
    if (!result && !is(line, "stop", 0))
        return "garbled record";
    if (!contents->in_flight)
        return "a " + line.keyword + " without a try";
    contents->in_flight = false;
    if (!result) {
        contents->steps.pop_back();
        return "";
    }
    journal_step& step = contents->steps.back();
    if (line.fields.empty())
        return parse_outcome(line.word, &step.result) ? "" : "garbled record";
    step.result = outcome::pass;
    for (const std::string& field : line.fields) {
        if (!parse_outcome(field, &step.members.emplace_back()))
            return "garbled record";
        if (step.result == outcome::pass)
            step.result = step.members.back();
    }
    return "";
}

}  // namespace

bool parse_journal(const std::string& text, const std::string& version, journal_contents* contents,
                   std::string* problem) {
    *contents = journal_contents{};
    std::size_t number = 0;
    for (std::size_t start = 0, newline; (newline = text.find('\n', start)) != std::string::npos;
         start = newline + 1) {
        parsed_line line;
        ++number;
        const std::string wrong = split_line(text.substr(start, newline - start), &line)
                                      ? take_record(line, number, version, contents)
                                  : number == 1 ? "not a padkit-tune journal"
                                                : "garbled record";
        if (!wrong.empty()) {
            *problem = std::to_string(number) + ": " + wrong;
            return false;
        }
        contents->length = newline + 1;
    }
    if (number < 3) {
        *problem = std::to_string(number + 1) + ": the header is incomplete";
        return false;
    }
    return true;
}

journal_file::~journal_file() {
    if (fd >= 0)
        close(fd);
}

bool journal_file::create(const std::string& path, const journal_header& header) {
    fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, 0644);
    if (fd < 0) {
        report("cannot create the journal %s: %s; nothing written", path.c_str(),
               std::strerror(errno));
        return false;
    }
    path_ = path;
    flock(fd, LOCK_EX | LOCK_NB);
    std::string text = record("journal", {header.version}) +
                       record("directory", {header.directory}) + record("command", header.command);
    for (const auto& [name, value] : header.originals)
        text += record("original", {name, value});
    text += record("date", {header.date});
    // The new name is in its directory only once the directory is on disk.
    const std::string::size_type slash = path.rfind('/');
    const std::string directory = slash == std::string::npos ? "."
                                  : slash == 0               ? "/"
                                                             : path.substr(0, slash);
    bool durable = append(text);
    const int dir_fd = durable ? open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC) : -1;
    if (durable && (dir_fd < 0 || fsync(dir_fd) != 0)) {
        report("cannot write the journal's directory %s: %s", directory.c_str(),
               std::strerror(errno));
        durable = false;
    }
    if (dir_fd >= 0)
        close(dir_fd);
    if (durable)
        return true;
    unlink(path.c_str());
    close(fd);
    fd = -1;
    return false;
}

bool journal_file::resume(const std::string& path, const std::string& version,
                          journal_contents* contents) {
    path_ = path;
    // Not blocking on a FIFO or device named by mistake.
    fd = open(path.c_str(), O_RDWR | O_APPEND | O_NONBLOCK | O_CLOEXEC);
    struct stat info {};
    if (fd < 0 || fstat(fd, &info) != 0) {
        report("cannot open the journal %s: %s", path.c_str(), std::strerror(errno));
        return false;
    }
    if (!S_ISREG(info.st_mode) || info.st_size > max_journal_bytes) {
        report("%s: not a padkit-tune journal", path.c_str());
        return false;
    }
    if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
        report("%s: in use by another run", path.c_str());
        return false;
    }
    std::string text(static_cast<std::size_t>(info.st_size), '\0');
    if (pread(fd, &text[0], text.size(), 0) != static_cast<ssize_t>(text.size())) {
        report("cannot read the journal %s: %s", path.c_str(), std::strerror(errno));
        return false;
    }
    std::string problem;
    if (!parse_journal(text, version, contents, &problem)) {
        report("%s:%s", path.c_str(), problem.c_str());
        return false;
    }
    whole_length = contents->length;
    kept_before = contents->keeping;
    cut_pending = whole_length != text.size();
    return true;
}

bool journal_file::tried(const journal_point& point) { return append(record("try", point)); }

bool journal_file::finished(const std::vector<outcome>& results) {
    if (results.size() == 1)
        return append(std::string("result ") + outcome_name(results.front()) + '\n');
    std::vector<std::string> names;
    for (outcome each : results)
        names.push_back(outcome_name(each));
    return append(record("result", names));
}

bool journal_file::stopped() { return append("stop\n"); }

bool journal_file::temporary(const std::string& path) {
    return append(record("temporary", {path}));
}

bool journal_file::keeping() {
    if (!kept_before)
        return append("keep\n");
    report("%s: the run stopped while it kept the centre; put back instead", path_.c_str());
    return false;
}

bool journal_file::end() { return append("end\n"); }

bool journal_file::append(const std::string& text) {
    if (broken)
        return false;
    // A torn last line goes before the first record follows it.
    if (!cut_pending || ftruncate(fd, static_cast<off_t>(whole_length)) == 0) {
        cut_pending = false;
        const ssize_t written = write(fd, text.data(), text.size());
        if (written == static_cast<ssize_t>(text.size()) && fsync(fd) == 0)
            return true;
        if (written >= 0 && written != static_cast<ssize_t>(text.size()))
            errno = ENOSPC;
    }
    report("cannot write the journal %s: %s", path_.c_str(), std::strerror(errno));
    broken = true;
    return false;
}
