// SPDX-License-Identifier: MIT
#include "memtest/options.h"

#include <getopt.h>

#include <cstdint>
#include <cstdio>
#include <sstream>
#include <string>

#include "properties/strict_value.h"
#include "runtime/report.h"
#include "tune/usage/usage.h"

namespace {

// Enough words for every pattern to give every bit of the widest bus both
// values many times over.
constexpr uint64_t least_size = 4096;

// Days of testing, and the steps of all passes still count on 32 bits.
constexpr uint32_t most_passes = 1000000;

enum long_only { size_option = 256, bus_width_option, patterns_option, passes_option };

// clang-format off
const option long_options[] = {
    {"size",      required_argument, nullptr, size_option},
    {"bus-width", required_argument, nullptr, bus_width_option},
    {"patterns",  required_argument, nullptr, patterns_option},
    {"passes",    required_argument, nullptr, passes_option},
    {"help",      no_argument,       nullptr, 'h'},
    {"version",   no_argument,       nullptr, 'V'},
    {nullptr,     0,                 nullptr, 0},
};
// clang-format on

// Bytes, or K, M or G of them (1024-based).
bool parse_size(const std::string& text, uint64_t* size) {
    static const std::string units = "KMG";
    const std::string::size_type unit = text.empty() ? 0 : units.find(text.back());
    const std::string digits = unit == std::string::npos ? text : text.substr(0, text.size() - 1);
    uint32_t number = 0;
    std::string problem;
    if (!parse_strict_u32(digits, &number, &problem)) {
        usage_error("--size: " + problem);
        return false;
    }
    *size = static_cast<uint64_t>(number) << (unit == std::string::npos ? 0 : 10 * (unit + 1));
    if (*size >= least_size)
        return true;
    usage_error("--size: at least " + size_text(least_size));
    return false;
}

bool parse_width(const std::string& text, unsigned* width) {
    if (text != "16" && text != "32" && text != "64") {
        usage_error("--bus-width: 16, 32 or 64, not " + text);
        return false;
    }
    *width = static_cast<unsigned>(std::stoul(text));
    return true;
}

bool parse_patterns(const std::string& text, std::vector<const pattern*>* chosen) {
    std::istringstream names(text);
    chosen->clear();
    for (std::string name; std::getline(names, name, ',');) {
        const pattern* found = find_pattern(name);
        if (!found) {
            usage_error("--patterns: no pattern '" + name + "'");
            return false;
        }
        chosen->push_back(found);
    }
    if (!chosen->empty())
        return true;
    usage_error("--patterns: no pattern named");
    return false;
}

bool parse_passes(const std::string& text, uint32_t* passes) {
    std::string problem;
    if (!parse_strict_u32(text, passes, &problem) || *passes == 0 || *passes > most_passes) {
        usage_error("--passes: " +
                    (problem.empty() ? "1 to " + std::to_string(most_passes) : problem));
        return false;
    }
    return true;
}

bool parse_option(int option, const std::string& value, memtest_options* options) {
    switch (option) {
    case size_option: return parse_size(value, &options->size);
    case bus_width_option: return parse_width(value, &options->width);
    case patterns_option: return parse_patterns(value, &options->patterns);
    case passes_option: return parse_passes(value, &options->passes);
    }
    return false;
}

}  // namespace

memtest_request parse_memtest_options(int argc, char** argv, memtest_options* options) {
    for (const pattern& p : patterns)
        options->patterns.push_back(&p);
    opterr = 0;
    int option = 0;
    while ((option = getopt_long(argc, argv, "+h", long_options, nullptr)) != -1) {
        if (option == 'h')
            return memtest_request::help;
        if (option == 'V')
            return memtest_request::version;
        if (option == '?') {
            unknown_option(argv);
            return memtest_request::bad;
        }
        if (!parse_option(option, optarg, options))
            return memtest_request::bad;
    }
    if (optind == argc)
        return memtest_request::run;
    usage_error(std::string("unexpected argument ") + argv[optind]);
    return memtest_request::bad;
}

void print_memtest_usage(std::FILE* out) {
    const char* name = program_name();
    std::fprintf(out,
                 "usage: %s [--size SIZE] [--bus-width 16|32|64] [--patterns NAME[,NAME...]]\n"
                 "       %*s [--passes N]\n"
                 "       %s -h|--help|--version\n"
                 "SIZE in bytes, or with K, M or G (default 64M); the bus 32 bits wide by "
                 "default.\nPatterns, all by default, in this order:\n",
                 name, static_cast<int>(std::string(name).size()), "", name);
    for (const pattern& p : patterns)
        std::fprintf(out, "  %-14s %s\n", p.name, p.what);
}

std::string size_text(uint64_t bytes) {
    static const char* const units[] = {"bytes", "KiB", "MiB", "GiB"};
    int unit = 0;
    while (unit < 3 && bytes >= 1024 && bytes % 1024 == 0) {
        bytes /= 1024;
        ++unit;
    }
    return std::to_string(bytes) + " " + units[unit];
}
