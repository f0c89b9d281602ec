// SPDX-License-Identifier: MIT
#include "sim/board.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "runtime/message.h"
#include "sim/register_file.h"

namespace sim {

namespace {

std::string env(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

// Without any of the three the board would land in the root directory.
std::string choose_board_dir() {
    std::string dir = env("PADKIT_SIM_DIR");
    const std::string state = env("XDG_STATE_HOME"), home = env("HOME");
    if (dir.empty() && state.empty() && home.empty()) {
        say("No board directory: set PADKIT_SIM_DIR, XDG_STATE_HOME or HOME.");
        _exit(255);
    }
    if (dir.empty())
        dir = state.empty() ? home + "/.local/state/padkit-sim" : state + "/padkit-sim";
    // Paths are appended as "<board>/...": "/" itself becomes "".
    while (!dir.empty() && dir.back() == '/')
        dir.pop_back();
    return dir;
}

bool write_new_file(const std::string& path, const std::string& text) {
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0)
        return false;
    const bool written = write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    return close(fd) == 0 && written;
}

bool populate(const std::string& root) {
    const std::string files[][2] = {
        {"/sys/kernel/debug/mmc0/rdqs", "37\n"},
        {"/sys/class/regulator/regulator.1/microvolts", "1100000\n"},
        {"/sys/class/regulator/regulator.1/min_microvolts", "800000\n"},
        {"/sys/class/regulator/regulator.1/max_microvolts", "1300000\n"},
        {core_microvolts_path, std::to_string(nominal_core_microvolts) + "\n"},
        {"/sys/class/regulator/regulator.2/min_microvolts", "800000\n"},
        {"/sys/class/regulator/regulator.2/max_microvolts", "1000000\n"},
        {"/proc/sys/kernel/random/boot_id", "1\n"},
    };
    std::error_code ec;
    if (!std::filesystem::create_directory(root + "/tmp", ec) ||
        !write_new_file(root + "/regs", fresh_regs()))
        return false;
    for (const auto& file : files) {
        const std::filesystem::path path = root + file[0];
        std::filesystem::create_directories(path.parent_path(), ec);
        if (ec || !write_new_file(path, file[1]))
            return false;
    }
    return true;
}

// Built beside the target and renamed into place, so a run never sees half a
// board. A run that loses the race to create it uses the winner's board.
void create_fresh_board(const std::string& dir) {
    std::error_code ec;
    const std::filesystem::path parent = std::filesystem::path(dir).parent_path();
    if (!parent.empty())
        std::filesystem::create_directories(parent, ec);
    std::vector<char> name(dir.begin(), dir.end());
    const std::string suffix = ".new-XXXXXX";
    name.insert(name.end(), suffix.begin(), suffix.end());
    name.push_back('\0');
    if (!mkdtemp(name.data()))
        return;
    const std::string fresh = name.data();
    const mode_t mask = umask(0);
    umask(mask);
    if (chmod(fresh.c_str(), 0777 & ~mask) != 0 || !populate(fresh) ||
        rename(fresh.c_str(), dir.c_str()) != 0)
        std::filesystem::remove_all(fresh, ec);
}

std::string open_board() {
    std::string dir = choose_board_dir();
    struct stat st;
    if (!dir.empty() && stat(dir.c_str(), &st) != 0 && errno == ENOENT)
        create_fresh_board(dir);
    return dir;
}

}  // namespace

const std::string& board_dir() {
    static const std::string dir = open_board();
    return dir;
}

bool read_board_file(const std::string& path, std::string* text, mode_t* mode) {
    int fd = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return false;
    struct stat st;
    bool ok = fstat(fd, &st) == 0;
    if (ok && mode)
        *mode = st.st_mode & 07777;
    char buffer[4096];
    ssize_t got = 0;
    while (ok && (got = read(fd, buffer, sizeof buffer)) > 0)
        text->append(buffer, static_cast<std::string::size_type>(got));
    close(fd);
    return ok && got == 0;
}

}  // namespace sim
