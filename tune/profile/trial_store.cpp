// SPDX-License-Identifier: MIT
#include "tune/profile/trial_store.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "paths/system_paths.h"
#include "runtime/report.h"
#include "tune/profile/profile.h"

namespace {

const std::string source_prefix = "# trial of ";

// Reads what NAME holds at *at: the literal text, or a decimal number of one
// to four digits.
bool take(const std::string& name, std::size_t* at, const char* text) {
    const std::size_t length = std::strlen(text);
    if (name.compare(*at, length, text) != 0)
        return false;
    *at += length;
    return true;
}

bool take(const std::string& name, std::size_t* at, int* number) {
    const std::size_t start = *at;
    *number = 0;
    while (*at < name.size() && *at - start < 4 && name[*at] >= '0' && name[*at] <= '9')
        *number = *number * 10 + (name[(*at)++] - '0');
    return *at > start;
}

// A pending or bad trial's name into *t; BOOT is this boot's id.
bool parse_trial(const std::string& name, const std::string& boot, trial* t) {
    std::size_t at = 0;
    if (!take(name, &at, "trial-") || !take(name, &at, &t->number) || !take(name, &at, "+") ||
        !take(name, &at, &t->left) || !take(name, &at, "-") || !take(name, &at, &t->done))
        return false;
    const std::string rest = name.substr(at);
    const bool marked =
        rest.size() > 6 && rest[0] == '@' && rest.compare(rest.size() - 5, 5, ".conf") == 0;
    t->applied = marked && !boot.empty() && rest == "@" + boot + ".conf";
    t->state = rest == ".conf" || marked        ? trial_state::pending
               : rest == ".bad" && t->left == 0 ? trial_state::bad
                                                : trial_state::none;
    return t->state != trial_state::none;
}

// A FIFO or a directory in a trial's place is no profile to count, apply or bless.
void check_regular(trial* t) {
    struct stat st {};
    t->regular = lstat(t->path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
    if (!t->regular) {
        t->state = trial_state::bad;
        t->applied = false;
    }
}

bool parse_blessed(const std::string& name, trial* t) {
    std::size_t at = 0;
    t->state = trial_state::good;
    return take(name, &at, "~trial-") && take(name, &at, &t->number) && name.substr(at) == ".conf";
}

// The names in DIR, or none when it is missing.
bool list_dir(const std::string& dir, std::vector<std::string>* names) {
    std::error_code ec;
    for (std::filesystem::directory_iterator entry(dir, ec), end; !ec && entry != end;
         entry.increment(ec))
        names->push_back(entry->path().filename());
    if (ec && ec != std::errc::no_such_file_or_directory) {
        report("%s: %s", dir.c_str(), ec.message().c_str());
        return false;
    }
    return true;
}

// A rename or an unlink lasts only once its directory is on disk.
bool sync_dir(const std::string& dir) {
    const int fd = open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0 || fsync(fd) != 0) {
        report("%s: %s", dir.c_str(), std::strerror(errno));
        if (fd >= 0)
            close(fd);
        return false;
    }
    close(fd);
    return true;
}

std::string dir_of(const std::string& path) { return path.substr(0, path.rfind('/')); }

bool write_all(int fd, const std::string& text) {
    for (std::size_t at = 0; at < text.size();) {
        const ssize_t written = write(fd, text.data() + at, text.size() - at);
        if (written < 0 && errno != EINTR)
            return false;
        at += written > 0 ? static_cast<std::size_t>(written) : 0;
    }
    return true;
}

}  // namespace

std::string trial_dir() { return system_path("/var/lib/padkit"); }
std::string known_good_dir() { return system_path("/etc/padkit.d"); }

bool list_trials(trial_listing* listing) {
    std::vector<std::string> trials, known_good;
    if (!list_dir(trial_dir(), &trials) || !system_profiles(&known_good, true))
        return false;
    const std::string boot = boot_id();
    trial newest;
    for (const std::string& name : trials) {
        trial t;
        if (!parse_trial(name, boot, &t))
            continue;
        t.path = trial_dir() + "/" + name;
        check_regular(&t);
        listing->trial_files.push_back(t.path);
        if (t.number >= newest.number)
            newest = t;
    }
    trial blessed;
    for (const std::string& path : known_good) {
        trial t;
        if (parse_blessed(path.substr(path.rfind('/') + 1), &t) && t.number >= blessed.number) {
            t.path = path;
            blessed = t;
        }
    }
    // Oldest first: removing them in this order never brings back an older trial.
    std::sort(listing->trial_files.begin(), listing->trial_files.end());
    listing->highest = std::max(newest.number, blessed.number);
    // Numbers only grow: a trial file older than a blessed trial is a leftover.
    listing->current = newest.number > blessed.number ? newest : blessed;
    return true;
}

std::string pending_name(int number, int left, int done, const std::string& boot) {
    char name[64];
    std::snprintf(name, sizeof name, "trial-%04d+%d-%d", number, left, done);
    return name + (boot.empty() ? "" : "@" + boot) + ".conf";
}

std::string boot_id() {
    std::ifstream in(system_path("/proc/sys/kernel/random/boot_id"));
    std::string id;
    // A name holds it: no slash, no dot, nothing long.
    if (!std::getline(in, id) || id.empty() || id.size() > 64 ||
        id.find_first_not_of("0123456789abcdefABCDEF-") != std::string::npos)
        return "";
    return id;
}

std::string bad_name(int number, int done) {
    char name[64];
    std::snprintf(name, sizeof name, "trial-%04d+0-%d.bad", number, done);
    return name;
}

std::string blessed_name(int number) {
    char name[64];
    std::snprintf(name, sizeof name, "~trial-%04d.conf", number);
    return name;
}

bool make_dir(const std::string& dir) {
    std::error_code ec;
    std::filesystem::create_directories(dir, ec);
    if (ec)
        report("%s: %s", dir.c_str(), ec.message().c_str());
    return !ec;
}

std::string source_line(const std::string& source) { return source_prefix + source + "\n"; }

std::string source_of(const std::string& path) {
    // A FIFO in a trial's place would block the read.
    std::error_code error;
    if (!std::filesystem::is_regular_file(std::filesystem::symlink_status(path, error)))
        return "";
    std::ifstream in(path, std::ios::binary);
    std::string line;
    if (!std::getline(in, line) || line.compare(0, source_prefix.size(), source_prefix) != 0)
        return "";
    return line.substr(source_prefix.size());
}

bool install_trial_file(const std::string& text, const std::string& name) {
    const std::string dir = trial_dir();
    // A dotfile is no state: one left by a cut-short run is overwritten by the next.
    const std::string temporary = dir + "/.trial.new";
    if (!make_dir(dir))
        return false;
    const int fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    bool written = fd >= 0 && write_all(fd, text) && fsync(fd) == 0;
    if (fd >= 0)
        written = close(fd) == 0 && written;
    if (!written) {
        report("%s: %s", temporary.c_str(), std::strerror(errno));
        unlink(temporary.c_str());
        return false;
    }
    return move_synced(temporary, dir + "/" + name);
}

bool move_synced(const std::string& from, const std::string& to) {
    if (rename(from.c_str(), to.c_str()) != 0) {
        report("cannot rename %s to %s: %s", from.c_str(), to.c_str(), std::strerror(errno));
        return false;
    }
    const bool synced = sync_dir(dir_of(to));
    return dir_of(from) == dir_of(to) ? synced : sync_dir(dir_of(from)) && synced;
}

bool remove_synced(const std::vector<std::string>& files) {
    bool removed = true;
    for (const std::string& file : files)
        if (unlink(file.c_str()) != 0 && errno != ENOENT) {
            report("cannot remove %s: %s", file.c_str(), std::strerror(errno));
            removed = false;
        }
    return sync_dir(trial_dir()) && removed;
}
