// SPDX-License-Identifier: MIT
#include "tune/profile/profile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <list>
#include <string>
#include <vector>

#include "paths/system_paths.h"
#include "properties/strict_value.h"
#include "runtime/report.h"
#include "runtime/standard_streams.h"
#include "tune/profile/input_text.h"

namespace {

const char* const standard_input = "-";

// Far beyond any profile: a larger file is a mistake (or a link to /dev/zero).
constexpr std::size_t max_profile_size = 1024 * 1024;

// Past this many, bad lines are counted and not listed.
constexpr int max_listed_problems = 100;

// Longer names and values are no property's, and are shown cut.
constexpr std::size_t max_word_size = 256;
constexpr std::size_t shown_word_size = 40;

// A file of the system directory is opened without blocking (a FIFO put in
// its place must not stop the boot) and read only when it is a regular
// file; *skipped says when it is not.
bool read_file(const std::string& path, bool system_file, std::string* text, bool* skipped) {
    if (path == standard_input) {
        if (!standard_input_was_closed())
            return read_bounded(STDIN_FILENO, "(standard input)", max_profile_size, text);
        report("standard input is closed");
        return false;
    }
    const int flags = O_RDONLY | O_CLOEXEC | (system_file ? O_NONBLOCK : 0) |
                      (system_file && !system_link_followed(path) ? O_NOFOLLOW : 0);
    const int fd = open(path.c_str(), flags);
    struct stat st {};
    if (fd < 0 || fstat(fd, &st) != 0) {
        report("%s: %s", path.c_str(), std::strerror(errno));
        if (fd >= 0)
            close(fd);
        return false;
    }
    *skipped = system_file && !S_ISREG(st.st_mode);
    const bool read = *skipped || read_bounded(fd, path, max_profile_size, text);
    if (*skipped)
        report("%s: not a regular file; skipped", path.c_str());
    close(fd);
    return read;
}

void add(std::vector<setting>* settings, const setting& added) {
    settings->erase(std::remove_if(settings->begin(), settings->end(),
                                   [&added](const setting& s) { return s.prop == added.prop; }),
                    settings->end());
    settings->push_back(added);
}

bool settings_of(property* prop, const std::string& value, std::vector<setting>* taken,
                 std::string* problem);

// A composite's value: a brace list with one value per member, blanks around
// each allowed, each checked by its member.
bool member_settings(const std::list<std::string>& members, const std::string& value,
                     std::vector<setting>* taken, std::string* problem) {
    const std::string count = std::to_string(members.size());
    std::vector<std::string> values;
    if (!brace_elements(value, &values)) {
        *problem = "expected a brace list of " + count + " values";
        return false;
    }
    if (values.size() != members.size()) {
        *problem = "expected " + count + " values, found " + std::to_string(values.size());
        return false;
    }
    auto next_value = values.begin();
    for (const std::string& member_name : members) {
        property* member = property::get_property(member_name);
        if (!member) {
            *problem = "no member " + member_name;
            return false;
        }
        if (!settings_of(member, trimmed(*next_value++), taken, problem)) {
            *problem = member_name + ": " + *problem;
            return false;
        }
    }
    return true;
}

// The value's text up to a comment after it: a '#' or ';' with a blank
// before it.
std::string without_comment(const std::string& text) {
    for (std::string::size_type at = 1; at < text.size(); ++at)
        if ((text[at] == '#' || text[at] == ';') && (text[at - 1] == ' ' || text[at - 1] == '\t'))
            return text.substr(0, at);
    return text;
}

// The settings that a property's value stands for: its own code, or one per
// member of a composite.
bool settings_of(property* prop, const std::string& value, std::vector<setting>* taken,
                 std::string* problem) {
    const value_domain domain = prop->domain();
    if (domain.members)
        return member_settings(*domain.members, value, taken, problem);
    long long code = 0;
    if (!domain.code_of(value, &code, problem))
        return false;
    taken->push_back({prop, code});
    return true;
}

// One line into the settings; false with *problem for a bad one.
bool take_line(const std::string& raw, std::vector<setting>* settings, std::string* problem) {
    const std::string line = trimmed(raw);
    if (line.empty() || line[0] == '#' || line[0] == ';')
        return true;
    const std::string::size_type equals = line.find('=');
    if (equals == std::string::npos) {
        *problem = "expected NAME = VALUE";
        return false;
    }
    const std::string name = trimmed(line.substr(0, equals));
    const std::string value = trimmed(without_comment(line.substr(equals + 1)));
    for (const std::string* word : {&name, &value}) {
        if (word->size() > max_word_size) {
            *problem = "'" + shown(*word, shown_word_size) + "' is too long";
            return false;
        }
    }
    property* prop = property::get_property(name);
    if (!prop) {
        *problem = name.empty() ? "missing name" : "no property " + name;
        return false;
    }
    std::vector<setting> taken;
    if (!settings_of(prop, value, &taken, problem)) {
        *problem = name + ": " + *problem;
        return false;
    }
    for (const setting& s : taken)
        add(settings, s);
    return true;
}

}  // namespace

bool load_profiles(const std::vector<std::string>& files, std::vector<setting>* settings,
                   bool system_files) {
    if (std::count(files.begin(), files.end(), standard_input) > 1) {
        report("standard input given twice; it can be read once");
        return false;
    }
    bool good = true;
    int problems = 0;
    for (const std::string& file : files) {
        std::string text;
        bool skipped = false;
        if (!read_file(file, system_files, &text, &skipped)) {
            good = false;
            continue;
        }
        std::string::size_type start = after_byte_order_mark(text);
        const std::string name = file == standard_input ? "(standard input)" : shown(file);
        for (int number = 1; start < text.size(); ++number) {
            std::string::size_type end = text.find('\n', start);
            if (end == std::string::npos)
                end = text.size();
            std::string problem;
            if (!take_line(text.substr(start, end - start), settings, &problem)) {
                if (++problems <= max_listed_problems)
                    report("%s:%d: %s", name.c_str(), number, shown(problem).c_str());
                good = false;
            }
            start = end + 1;
        }
    }
    if (problems > max_listed_problems)
        report("%d more bad lines not listed", problems - max_listed_problems);
    return good;
}

bool system_profiles(std::vector<std::string>* files, bool quiet) {
    const std::string dir = system_path("/etc/padkit.d");
    DIR* listing = opendir(dir.c_str());
    if (!listing) {
        if (errno == ENOENT)
            return true;
        report("%s: %s", dir.c_str(), std::strerror(errno));
        return false;
    }
    const std::string suffix = ".conf";
    std::vector<std::string> names;
    while (const dirent* entry = readdir(listing)) {
        const std::string name = entry->d_name;
        // Hidden files are an editor's or a package manager's, not profiles.
        if (name[0] != '.' && name.size() > suffix.size() &&
            name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
            names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) {
        struct stat st {};
        const bool found =
            fstatat(dirfd(listing), name.c_str(), &st,
                    system_link_followed(dir + "/" + name) ? 0 : AT_SYMLINK_NOFOLLOW) == 0;
        if (found && S_ISREG(st.st_mode))
            files->push_back(dir + "/" + name);
        else if (!quiet)
            report("%s/%s: %s; skipped", dir.c_str(), shown(name).c_str(),
                   found ? "not a regular file" : std::strerror(errno));
    }
    closedir(listing);
    return true;
}
