// SPDX-License-Identifier: MIT
#include "sim/eye.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "runtime/message.h"
#include "sim/board.h"
#include "sim/ddr_phy.h"
#include "sim/register_file.h"

namespace sim {

namespace {

// The passing delays of a line at the nominal core voltage.
struct eye {
    long low, high;
};

struct eye_file {
    long noise = 0;  // steps on either side of an edge where a delay passes at random
    std::map<std::string, eye> eyes;
};

// Each edge of every eye moves in by a step per this much below nominal.
constexpr long microvolts_per_step = 5000;
// Fresh eyes reach from -(edge_least + 0..edge_spread) to +(edge_least + 0..edge_spread):
// they hold 0, the delay of a fresh board, down to 845000 uV.
constexpr unsigned edge_least = 12, edge_spread = 18;
constexpr long most_delay = 63;

std::string eye_path() { return board_dir() + "/eye"; }

// A decimal integer in low..high, nothing around it.
template <typename number>
bool parse_number(const std::string& text, long long low, long long high, number* out) {
    char* end = nullptr;
    errno = 0;
    const long long value = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || *end || errno || value < low || value > high)
        return false;
    *out = static_cast<number>(value);
    return true;
}

bool seed_of_board(uint32_t* seed) {
    const char* text = std::getenv("PADKIT_SIM_EYE_SEED");
    if (!text || !*text) {
        *seed = std::random_device()();
        return true;
    }
    if (parse_number(text, 0, UINT32_MAX, seed))
        return true;
    say("PADKIT_SIM_EYE_SEED=%s: not a seed (0 to %u)", text, UINT32_MAX);
    return false;
}

std::string fresh_eyes(uint32_t seed) {
    char header[512];
    std::snprintf(header, sizeof header,
                  "# The eyes of this simulated board's DQ lines, made from seed %u.\n"
                  "# A line carries data at the delays from its first number to its\n"
                  "# second at the nominal core voltage, %ld uV; each edge moves in by\n"
                  "# one step per %ld uV below it. noise N: a delay less than N steps\n"
                  "# from an edge passes or fails at random, at each run.\n"
                  "noise 0\n",
                  static_cast<unsigned>(seed), nominal_core_microvolts, microvolts_per_step);
    std::ostringstream text;
    text << header;
    std::mt19937 draw(seed);
    for (const ddr_phy& phy : ddr_phys)
        for (const dq_line& line : dq_lines(phy)) {
            const unsigned below = edge_least + draw() % (edge_spread + 1);
            const unsigned above = edge_least + draw() % (edge_spread + 1);
            text << line_name(line) << " -" << below << " " << above << "\n";
        }
    return text.str();
}

// Written beside it and linked into place: a reader never sees half of it,
// and of two runs that make it at once, the first one's stays.
bool make_eye_file() {
    uint32_t seed = 0;
    if (!seed_of_board(&seed))
        return false;
    const std::string text = fresh_eyes(seed);
    std::string temporary = board_dir() + "/.eye-XXXXXX";
    const int fd = mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0)
        return false;
    const mode_t mask = umask(0);
    umask(mask);
    bool made = fchmod(fd, 0666 & ~mask) == 0 &&
                write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    made = close(fd) == 0 && made;
    made = made && (link(temporary.c_str(), eye_path().c_str()) == 0 || errno == EEXIST);
    unlink(temporary.c_str());
    return made;
}

bool parse_entry(const std::string& line, eye_file* eyes) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::string name, first, second, extra;
    words >> name >> first >> second >> extra;
    if (name.empty())
        return true;
    if (name == "noise")
        return second.empty() && parse_number(first, 0, most_delay, &eyes->noise);
    eye found{};
    if (!extra.empty() || !parse_number(first, -most_delay, most_delay, &found.low) ||
        !parse_number(second, -most_delay, most_delay, &found.high))
        return false;
    eyes->eyes[name] = found;
    return true;
}

bool read_eyes(eye_file* eyes) {
    const std::string path = eye_path();
    std::string text;
    if (!read_board_file(path, &text) &&
        (errno != ENOENT || !make_eye_file() || !read_board_file(path, &text))) {
        say("cannot read %s; every data bit fails", path.c_str());
        return false;
    }
    std::istringstream lines(text);
    int number = 1;
    for (std::string line; std::getline(lines, line); ++number)
        if (!parse_entry(line, eyes)) {
            say("%s:%d: bad eye entry; every data bit fails", path.c_str(), number);
            return false;
        }
    return true;
}

bool read_core_microvolts(long* microvolts) {
    const std::string path = board_dir() + core_microvolts_path;
    std::string text;
    std::istringstream words;
    std::string word;
    if (read_board_file(path, &text)) {
        words.str(text);
        words >> word;
    }
    if (parse_number(word, 0, INT32_MAX, microvolts))
        return true;
    say("cannot read the core voltage in %s; every data bit fails", path.c_str());
    return false;
}

bool read_delays(const std::vector<dq_line>& lines, std::vector<long>* delays) {
    std::vector<selected_word> wanted;
    for (const dq_line& line : lines)
        wanted.push_back({delay_address(line), delay_select(line)});
    std::vector<uint32_t> words;
    if (!read_selected_words(wanted, &words)) {
        say("cannot read the DQ delays in %s/regs; every data bit fails", board_dir().c_str());
        return false;
    }
    for (uint32_t word : words)
        delays->push_back(delay_of(word));
    return true;
}

class judge {
public:
    judge(long microvolts, long noise)
        : narrowed(microvolts < nominal_core_microvolts
                       ? (nominal_core_microvolts - microvolts) / microvolts_per_step
                       : 0),
          noise(noise) {}

    bool passes(const eye& at_nominal, long delay) {
        const long low = at_nominal.low + narrowed, high = at_nominal.high - narrowed;
        if ((delay >= low - noise && delay < low + noise) ||
            (delay > high - noise && delay <= high + noise))
            return coin() % 2 == 0;
        return delay >= low && delay <= high;
    }

private:
    const long narrowed, noise;
    std::mt19937 coin{noise > 0 ? std::random_device()() : 0};
};

}  // namespace

uint64_t failing_data_bits(const ddr_phy& phy) {
    const uint64_t every_bit = phy.lanes >= 8 ? ~0ull : (1ull << 8 * phy.lanes) - 1;
    const std::vector<dq_line> lines = dq_lines(phy);
    eye_file eyes;
    long microvolts = 0;
    std::vector<long> delays;
    if (!read_eyes(&eyes) || !read_core_microvolts(&microvolts) || !read_delays(lines, &delays))
        return every_bit;
    judge at_voltage(microvolts, eyes.noise);
    uint64_t failing = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const int bit = data_bit(lines[i]);
        const auto found = eyes.eyes.find(line_name(lines[i]));
        if (bit < 0)
            continue;
        if (found == eyes.eyes.end())
            say("%s: no eye in %s; its data bit fails", line_name(lines[i]).c_str(),
                eye_path().c_str());
        if (found == eyes.eyes.end() || !at_voltage.passes(found->second, delays[i]))
            failing |= 1ull << bit;
    }
    return failing;
}

}  // namespace sim
