// SPDX-License-Identifier: MIT
#include "tune/profile/profile.h"

#include <dirent.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "platform/system_paths.h"
#include "properties/strict_value.h"
#include "runtime/report.h"

namespace {

const char* const standard_input = "-";

bool read_all(const std::string& path, std::string* text) {
    const bool from_stdin = path == standard_input;
    std::FILE* in = from_stdin ? stdin : std::fopen(path.c_str(), "rb");
    if (!in) {
        report("%s: %s", path.c_str(), std::strerror(errno));
        return false;
    }
    char buffer[4096];
    std::size_t got = 0;
    while ((got = std::fread(buffer, 1, sizeof buffer, in)) > 0)
        text->append(buffer, got);
    const bool failed = std::ferror(in) != 0;
    if (failed)
        report("%s: %s", path.c_str(), std::strerror(errno));
    if (!from_stdin)
        std::fclose(in);
    return !failed;
}


void add(std::vector<setting>* settings, property* prop, const std::string& value) {
    settings->erase(std::remove_if(settings->begin(), settings->end(),
                                   [prop](const setting& s) { return s.prop == prop; }),
                    settings->end());
    settings->push_back({prop, value});
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
    const std::string value = trimmed(line.substr(equals + 1));
    property* prop = property::get_property(name);
    if (!prop) {
        *problem = name.empty() ? "missing name" : "no property " + name;
        return false;
    }
    std::string canonical;
    const std::vector<std::string> members = prop->member_names();
    if (!members.empty()) {
        std::vector<std::string> values;
        if (!prop->check_members(value, &values, problem)) {
            *problem = name + ": " + *problem;
            return false;
        }
        auto next_value = values.begin();
        for (const std::string& member : members)
            add(settings, property::get_property(member), *next_value++);
        return true;
    }
    if (!prop->check(value, &canonical, problem)) {
        *problem = name + ": " + *problem;
        return false;
    }
    add(settings, prop, canonical);
    return true;
}

}  // namespace

std::vector<property*> properties_of(const std::vector<setting>& settings) {
    std::vector<property*> props;
    for (const setting& s : settings)
        props.push_back(s.prop);
    return props;
}

bool load_profiles(const std::vector<std::string>& files, std::vector<setting>* settings) {
    bool good = true;
    for (const std::string& file : files) {
        std::string text;
        if (!read_all(file, &text)) {
            good = false;
            continue;
        }
        const std::string shown = file == standard_input ? "(standard input)" : file;
        std::string::size_type start = 0;
        for (int number = 1; start < text.size(); ++number) {
            std::string::size_type end = text.find('\n', start);
            if (end == std::string::npos)
                end = text.size();
            std::string problem;
            if (!take_line(text.substr(start, end - start), settings, &problem)) {
                std::fprintf(stderr, "%s:%d: %s\n", shown.c_str(), number, problem.c_str());
                good = false;
            }
            start = end + 1;
        }
    }
    return good;
}

bool system_profiles(std::vector<std::string>* files) {
    const std::string dir = system_path("/etc/padkit.d");
    DIR* listing = opendir(dir.c_str());
    if (!listing) {
        if (errno == ENOENT)
            return true;
        report("%s: %s", dir.c_str(), std::strerror(errno));
        return false;
    }
    const std::string suffix = ".conf";
    while (const dirent* entry = readdir(listing)) {
        const std::string name = entry->d_name;
        if (name.size() > suffix.size() &&
            name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
            files->push_back(dir + "/" + name);
    }
    closedir(listing);
    std::sort(files->begin(), files->end());
    return true;
}
