// SPDX-License-Identifier: MIT
#include "tune/sweep_options.h"

#include <getopt.h>

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "properties/strict_value.h"
#include "tune/usage/usage.h"

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

bool take_file_name(const char* option, const char* value, std::string* path) {
    if (*value == '\0') {
        usage_error(std::string(option) + ": the file name is empty");
        return false;
    }
    *path = value;
    return true;
}

namespace {

// getopt's value of the first option of one subcommand; the others follow.
constexpr int first_own_option = 256;

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

// An option that only one subcommand has, by its long name, and what takes its
// value (nullptr for a switch).
struct own_option {
    const char* name;
    std::function<bool(const char*)> take;
    int has_arg = required_argument;
};

// A step: a number other than 0.
own_option step_option(const char* name, long long* step) {
    return {name, [name, step](const char* arg) {
                return parse_nonzero((std::string("--") + name).c_str(), arg, step);
            }};
}

// Weights "X:Y", two whole numbers above 0.
bool parse_weights(const char* text, long long* x, long long* y) {
    const char* colon = std::strchr(text, ':');
    uint32_t parts[2] = {0, 0};
    std::string problem;
    if (colon && parse_strict_u32(std::string(text, colon), &parts[0], &problem) &&
        parse_strict_u32(colon + 1, &parts[1], &problem) && parts[0] > 0 && parts[1] > 0) {
        *x = parts[0];
        *y = parts[1];
        return true;
    }
    usage_error(std::string("--weigh: '") + text + "' is not X:Y, two whole numbers above 0");
    return false;
}

bool parse_option(int option, const char* arg, test_options& options,
                  const std::vector<own_option>& own) {
    switch (option) {
    case 'y': options.assume_yes = true; return true;
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
    case 'c': return take_file_name("--csv", arg, &options.csv_path);
    case 'g': return take_file_name("--svg", arg, &options.svg_path);
    case 'p': return take_file_name("--profile", arg, &options.profile_path);
    case 'j': return take_file_name("--journal", arg, &options.journal_path);
    case 'w': return take_file_name("--watchdog", arg, &options.watchdog_path);
    case 'l': return take_file_name("--log", arg, &options.log_dir);
    }
    return own.at(static_cast<std::size_t>(option - first_own_option)).take(arg);
}

// Options end at the first operand, whatever the environment says, so that
// a range may be negative; then exactly as many operands as NEEDS names (or
// more of the first, once the options set *MANY), "--" and the command.
sweep_request parse_words(int argc, char** argv, test_options& options,
                          const std::vector<own_option>& own, const std::vector<const char*>& needs,
                          std::vector<std::string>* operands, const bool* many = nullptr) {
    int separator = 1;
    while (separator < argc && std::strcmp(argv[separator], "--") != 0)
        ++separator;
    std::vector<option> long_options = {
        {"runs", required_argument, nullptr, 'r'},    {"timeout", required_argument, nullptr, 't'},
        {"keep", required_argument, nullptr, 'k'},    {"csv", required_argument, nullptr, 'c'},
        {"svg", required_argument, nullptr, 'g'},     {"profile", required_argument, nullptr, 'p'},
        {"journal", required_argument, nullptr, 'j'}, {"watchdog", required_argument, nullptr, 'w'},
        {"log", required_argument, nullptr, 'l'},     {"help", no_argument, nullptr, 'h'}};
    for (std::size_t at = 0; at < own.size(); ++at)
        long_options.push_back(
            {own[at].name, own[at].has_arg, nullptr, first_own_option + static_cast<int>(at)});
    long_options.push_back({nullptr, 0, nullptr, 0});
    optind = 0;
    for (int option;
         (option = getopt_long(separator, argv, "+:yh", long_options.data(), nullptr)) != -1;) {
        if (option == 'h')
            return sweep_request::help;
        else if (option == '?')
            return unknown_option(argv), sweep_request::bad;
        else if (option == ':')
            return usage_error(std::string(argv[optind - 1]) + " needs a value"),
                   sweep_request::bad;
        else if (!parse_option(option, optarg, options, own))
            return sweep_request::bad;
    }
    operands->assign(argv + optind, argv + separator);
    for (std::size_t at = 1; at < operands->size(); ++at) {
        const std::string& word = (*operands)[at];
        if (word.size() > 1 && word[0] == '-' &&
            !std::isdigit(static_cast<unsigned char>(word[1]))) {
            usage_error(word + ": options come before " + needs.front());
            return sweep_request::bad;
        }
    }
    const bool repeated = many && *many && operands->size() > needs.size();
    if ((operands->size() != needs.size() && !repeated) || separator + 1 >= argc) {
        std::string names;
        for (const char* name : needs)
            names += std::string(names.empty() ? "" : " ") + name +
                     (many && *many && names.empty() ? "..." : "");
        usage_error(std::string(argv[0]) + " needs " + names + ", then -- and the command");
        return sweep_request::bad;
    }
    if (!options.watchdog_path.empty() && options.journal_path.empty()) {
        usage_error("--watchdog needs --journal: a reset without a journal loses the whole run");
        return sweep_request::bad;
    }
    options.command.assign(argv + separator + 1, argv + argc);
    options.words.assign(argv, argv + argc);
    return sweep_request::run;
}

// A word that can only be a number, not a name.
bool is_number(const std::string& word) {
    const std::size_t digit = word.size() > 1 && (word[0] == '-' || word[0] == '+');
    return digit < word.size() && std::isdigit(static_cast<unsigned char>(word[digit]));
}

// --bits FILE, as sweep and deskew take it.
own_option bits_option(std::string* path) {
    return {"bits", [path](const char* arg) { return take_file_name("--bits", arg, path); }};
}

// NAME FROM TO at FIRST of the operands.
bool parse_range(const std::vector<std::string>& operands, std::size_t first, swept_range* range) {
    range->name = operands[first];
    if (!parse_value("FROM", operands[first + 1], &range->from) ||
        !parse_value("TO", operands[first + 2], &range->to))
        return false;
    if (range->step < 0 && range->from < range->to) {
        usage_error("--step " + std::to_string(range->step) + " leads away from TO");
        return false;
    }
    return true;
}

}  // namespace

sweep_request parse_sweep_options(int argc, char** argv, sweep_options& options) {
    std::vector<std::string> operands;
    const sweep_request request = parse_words(
        argc, argv, options,
        {step_option("step", &options.step),
         {"parallel", [&](const char*) { return options.parallel = true; }, no_argument},
         bits_option(&options.bits_path)},
        {"NAME", "FROM", "TO"}, &operands, &options.parallel);
    if (request != sweep_request::run)
        return request;
    options.names.assign(operands.begin(), operands.end() - 2);
    operands.erase(operands.begin() + 1, operands.end() - 2);
    return parse_range(operands, 0, &options) ? sweep_request::run : sweep_request::bad;
}

sweep_request parse_shmoo_options(int argc, char** argv, shmoo_options& options) {
    std::vector<std::string> operands;
    const sweep_request request = parse_words(
        argc, argv, options,
        {step_option("xstep", &options.x.step),
         step_option("ystep", &options.y.step),
         {"weigh",
          [&](const char* arg) { return parse_weights(arg, &options.weigh_x, &options.weigh_y); }}},
        {"X", "XFROM", "XTO", "Y", "YFROM", "YTO"}, &operands);
    if (request != sweep_request::run)
        return request;
    return parse_range(operands, 0, &options.x) && parse_range(operands, 3, &options.y)
               ? sweep_request::run
               : sweep_request::bad;
}

sweep_request parse_deskew_options(int argc, char** argv, deskew_options& options) {
    options.runs = 2;
    options.range.from = -63;
    options.range.to = 63;
    const bool many = true;
    const sweep_request request =
        parse_words(argc, argv, options,
                    {{"full", [&](const char*) { return options.full = true; }, no_argument},
                     bits_option(&options.bits_path)},
                    {"WHAT"}, &options.whats, &many);
    if (request != sweep_request::run)
        return request;
    const std::size_t count = options.whats.size();
    if (count < 3 || !is_number(options.whats[count - 2]) || !is_number(options.whats[count - 1]))
        return sweep_request::run;
    if (!parse_value("FROM", options.whats[count - 2], &options.range.from) ||
        !parse_value("TO", options.whats[count - 1], &options.range.to))
        return sweep_request::bad;
    options.whats.resize(count - 2);
    return sweep_request::run;
}
