// SPDX-License-Identifier: MIT
#include "tune/dq_bits.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <map>

#include "runtime/report.h"
#include "tune/profile/input_text.h"
#include "tune/sweep/bit_map.h"

namespace {

// The whole of a decimal number, at most four digits.
bool take_number(const std::string& text, unsigned* number) {
    if (text.empty() || text.size() > 4 ||
        text.find_first_not_of("0123456789") != std::string::npos)
        return false;
    *number = static_cast<unsigned>(std::stoul(text));
    return true;
}

// 8 bits per read lane of the controller in the catalogue.
unsigned bus_width(const std::string& controller) {
    unsigned lanes = 0;
    while (property::get_property(controller + "-read" + std::to_string(lanes) + "::dq0"))
        ++lanes;
    return lanes * data_lines;
}

// Far beyond the lines of every DQ line of a board.
constexpr std::size_t max_map_size = 1 << 20;

// Not blocking on a FIFO named by mistake.
bool read_map(const std::string& path, std::map<std::string, unsigned>* map) {
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        report("%s: %s; nothing written", shown(path).c_str(), std::strerror(errno));
        return false;
    }
    std::string text, problem;
    const bool read = read_bounded(fd, shown(path), max_map_size, &text);
    close(fd);
    if (read && !parse_bit_map(text, map, &problem))
        report("%s:%s; nothing written", shown(path).c_str(), problem.c_str());
    return read && problem.empty();
}

}  // namespace

member_bits bus_bits::judging(std::size_t first, std::size_t count) const {
    member_bits judged{width, {}};
    for (std::size_t row = first; row < first + count && row < bits.size() && bits[row]; ++row)
        judged.bits.push_back(*bits[row]);
    return judged.bits.size() == count ? judged : member_bits{};
}

void bus_bits::name_bus(environment* names) const {
    if (!bus.empty())
        names->emplace_back("PADKIT_SWEEP_BUS", bus);
}

bool parse_dq_line(const std::string& name, dq_line* line) {
    const std::string::size_type colons = name.find("::dq");
    for (const char* direction : {"-read", "-write"}) {
        const std::string::size_type at = name.rfind(direction, colons);
        if (colons == std::string::npos || at == std::string::npos || at == 0)
            continue;
        const std::string::size_type lane = at + std::char_traits<char>::length(direction);
        if (take_number(name.substr(lane, colons - lane), &line->lane) &&
            take_number(name.substr(colons + 4), &line->dq)) {
            line->controller = name.substr(0, at);
            line->write = direction[1] == 'w';
            return true;
        }
    }
    return false;
}

bool plan_bits(const std::vector<property*>& rows, const std::string& bits_path, bus_bits* out) {
    dq_line line;
    if (rows.empty() || !parse_dq_line(rows.front()->name, &line)) {
        if (bits_path.empty())
            return true;
        report("--bits: %s is no DQ line; nothing written", rows.front()->name.c_str());
        return false;
    }
    out->bus = line.controller;
    out->width = bus_width(line.controller);
    std::map<std::string, unsigned> map;
    if (!bits_path.empty() && !read_map(bits_path, &map))
        return false;
    for (property* row : rows) {
        if (!parse_dq_line(row->name, &line) || line.controller != out->bus) {
            report("%s is no DQ line of %s; nothing written", row->name.c_str(), out->bus.c_str());
            return false;
        }
        std::optional<unsigned>& bit = out->bits.emplace_back();
        if (line.dq >= data_lines)
            continue;
        bit = line.lane * data_lines + line.dq;
        if (bits_path.empty())
            continue;
        const auto named = map.find(row->name);
        if (named == map.end()) {
            report("%s: no bit for %s; nothing written", bits_path.c_str(), row->name.c_str());
            return false;
        }
        bit = named->second;
        if (*bit >= out->width) {
            report("%s: bit %u of %s is beyond the %u-bit bus of %s; nothing written",
                   bits_path.c_str(), *bit, row->name.c_str(), out->width, out->bus.c_str());
            return false;
        }
    }
    return true;
}
