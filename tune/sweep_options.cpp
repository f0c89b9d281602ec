// SPDX-License-Identifier: MIT
#include "tune/sweep_options.h"

#include <getopt.h>

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "properties/strict_value.h"
#include "tune/commands.h"

namespace {

// Seconds as digits with at most one decimal point; more than 0 and at most
// about eleven days.
bool parse_seconds(const char* text, double* out) {
    const std::size_t whole = std::strspn(text, "0123456789");
    const char* fraction = text + whole + (text[whole] == '.');
    const std::size_t fraction_digits = std::strspn(fraction, "0123456789");
    if (whole + fraction_digits == 0 || fraction[fraction_digits] != '\0')
        return false;
    *out = std::strtod(text, nullptr);
    return *out > 0 && *out <= 1e6;
}

bool parse_value(const char* what, const std::string& text, long long* out) {
    std::string problem;
    if (parse_signed_value(text, out, &problem))
        return true;
    usage_error(std::string(what) + ": " + problem);
    return false;
}

bool parse_nonzero(const char* what, const char* text, long long* out) {
    if (!parse_value(what, text, out))
        return false;
    if (*out == 0) {
        usage_error(std::string(what) + " must not be 0");
        return false;
    }
    return true;
}

bool parse_option(int option, const char* arg, sweep_options& options) {
    switch (option) {
    case 'y':
        options.assume_yes = true;
        return true;
    case 's':
        return parse_nonzero("--step", arg, &options.step);
    case 'r':
        if (!parse_value("--runs", arg, &options.runs))
            return false;
        if (options.runs >= 1)
            return true;
        usage_error("--runs must be at least 1");
        return false;
    case 't':
        if (parse_seconds(arg, &options.timeout_seconds))
            return true;
        usage_error(std::string("--timeout: '") + arg + "' is not a number of seconds above 0");
        return false;
    case 'k':
        options.keep_centre = !std::strcmp(arg, "centre") || !std::strcmp(arg, "center");
        if (options.keep_centre || !std::strcmp(arg, "original"))
            return true;
        usage_error(std::string("--keep: '") + arg + "' is neither original nor centre");
        return false;
    case 'c':
        options.csv_path = arg;
        return true;
    case 'g':
        options.svg_path = arg;
        return true;
    case 'p':
        options.profile_path = arg;
        return true;
    }
    return false;
}

}  // namespace

bool parse_signed_value(const std::string& text, long long* out, std::string* problem) {
    const bool sign = !text.empty() && (text[0] == '-' || text[0] == '+');
    uint32_t number = 0;
    if (!parse_strict_u32(text.substr(sign), &number, problem)) {
        if (sign)
            *problem = "'" + text + "' is not a number";
        return false;
    }
    *out = text[0] == '-' ? -static_cast<long long>(number) : number;
    return true;
}

sweep_request parse_sweep_options(int argc, char** argv, sweep_options& options) {
    // Only the words before "--" are ours; the rest is the command.
    int separator = 1;
    while (separator < argc && std::strcmp(argv[separator], "--") != 0)
        ++separator;
    static const option long_options[] = {
        {"step", required_argument, nullptr, 's'},    {"runs", required_argument, nullptr, 'r'},
        {"timeout", required_argument, nullptr, 't'}, {"keep", required_argument, nullptr, 'k'},
        {"csv", required_argument, nullptr, 'c'},     {"svg", required_argument, nullptr, 'g'},
        {"profile", required_argument, nullptr, 'p'}, {"help", no_argument, nullptr, 'h'},
        {nullptr, 0, nullptr, 0}};
    // Options end at NAME, whatever the environment says, so that FROM and TO may be negative.
    optind = 0;
    for (int option; (option = getopt_long(separator, argv, "+:yh", long_options, nullptr)) != -1;) {
        if (option == 'h')
            return sweep_request::help;
        else if (option == '?')
            return unknown_option(argv), sweep_request::bad;
        else if (option == ':')
            return usage_error(std::string(argv[optind - 1]) + " needs a value"), sweep_request::bad;
        else if (!parse_option(option, optarg, options))
            return sweep_request::bad;
    }
    const std::vector<std::string> operands(argv + optind, argv + separator);
    for (std::size_t at = 1; at < operands.size(); ++at) {
        const std::string& word = operands[at];
        if (word.size() > 1 && word[0] == '-' && !std::isdigit(static_cast<unsigned char>(word[1]))) {
            usage_error(word + ": options come before NAME");
            return sweep_request::bad;
        }
    }
    if (operands.size() != 3 || separator + 1 >= argc) {
        usage_error("sweep needs NAME FROM TO, then -- and the command");
        return sweep_request::bad;
    }
    options.name = operands[0];
    options.command.assign(argv + separator + 1, argv + argc);
    if (!parse_value("FROM", operands[1], &options.from) || !parse_value("TO", operands[2], &options.to))
        return sweep_request::bad;
    if (options.step < 0 && options.from < options.to) {
        usage_error("--step " + std::to_string(options.step) + " leads away from TO");
        return sweep_request::bad;
    }
    return sweep_request::run;
}
