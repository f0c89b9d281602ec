// SPDX-License-Identifier: MIT
#include "tune/sweep/failing_bits.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>

#include "runtime/report.h"

namespace {

// Far more than every bit of the widest bus named many times over.
constexpr off_t max_file_bytes = 64 << 10;

constexpr const char* file_name = "/failing-bits";

failing_bits garbled(std::string problem) { return {failing_bits::garbled, 0, std::move(problem)}; }

}  // namespace

failing_bits parse_failing_bits(const std::string& text, unsigned width) {
    std::istringstream words(text);
    uint64_t bits = 0;
    for (std::string word; words >> word;) {
        if (word.find_first_not_of("0123456789") != std::string::npos)
            return garbled("'" + word + "' is not the number of a data bit");
        const unsigned long bit = word.size() > 9 ? width : std::stoul(word);
        if (bit >= width)
            return garbled("bit " + word + " is beyond the " + std::to_string(width) + "-bit bus");
        bits |= uint64_t{1} << bit;
    }
    return {failing_bits::named, bits, ""};
}

failing_bits read_failing_bits(const std::string& path, unsigned width) {
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0 && errno == ENOENT)
        return {failing_bits::absent, 0, ""};
    struct stat info {};
    std::string text, problem;
    if (fd < 0 || fstat(fd, &info) != 0) {
        problem = std::string("cannot read it: ") + std::strerror(errno);
    } else if (!S_ISREG(info.st_mode) || info.st_size > max_file_bytes) {
        problem = "not a regular file of at most 64 KiB";
    } else {
        text.resize(static_cast<std::size_t>(info.st_size));
        if (pread(fd, &text[0], text.size(), 0) != info.st_size)
            problem = std::string("cannot read it: ") + std::strerror(errno);
    }
    if (fd >= 0)
        close(fd);
    return problem.empty() ? parse_failing_bits(text, width) : garbled(problem);
}

void judge_run(bool passed, const failing_bits& file, const member_bits& judged,
               std::vector<outcome>* results) {
    for (std::size_t member = 0; member < results->size(); ++member) {
        const bool failed =
            judged.bits.empty() || file.what == failing_bits::absent
                ? !passed
                : file.what == failing_bits::garbled || (file.bits >> judged.bits[member] & 1) != 0;
        if (failed)
            (*results)[member] = outcome::fail;
    }
}

std::string failing_bits_place::fresh_file() {
    if (directory.empty()) {
        const char* tmp = std::getenv("TMPDIR");
        std::string name = std::string(tmp && *tmp ? tmp : "/tmp") + "/padkit-tune-XXXXXX";
        if (!mkdtemp(&name[0])) {
            report("cannot make a directory for the failing bits in %s: %s", name.c_str(),
                   std::strerror(errno));
            return "";
        }
        directory = name;
    }
    const std::string path = directory + file_name;
    if (unlink(path.c_str()) == 0 || errno == ENOENT)
        return path;
    report("cannot remove %s: %s", path.c_str(), std::strerror(errno));
    return "";
}

void failing_bits_place::remove() {
    if (directory.empty())
        return;
    // With whatever the command left beside the file.
    std::error_code ignored;
    std::filesystem::remove_all(directory, ignored);
    directory.clear();
}
