// SPDX-License-Identifier: MIT
#include "tune/sweep_options.h"

#include <getopt.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "properties/strict_value.h"
#include "tune/commands.h"

namespace {

// getopt's value of the first step option; the others follow.
constexpr int first_step_option = 256;

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

// A value as a profile writes it; the property decides later whether it fits.
bool parse_value(const char* what, const char* text, long long* out) {
    uint32_t number = 0;
    std::string problem;
    if (!parse_strict_u32(text, &number, &problem)) {
        usage_error(std::string(what) + ": " + problem);
        return false;
    }
    *out = number;
    return true;
}

bool parse_positive(const char* what, const char* text, long long* out) {
    if (!parse_value(what, text, out))
        return false;
    if (*out == 0) {
        usage_error(std::string(what) + " must be at least 1");
        return false;
    }
    return true;
}

// The options that only one subcommand has: a step, by its long name.
struct step_option {
    const char* name;
    long long* step;
};

bool parse_option(int option, const char* arg, test_options& options, const std::vector<step_option>& steps) {
    switch (option) {
    case 'y':
        options.assume_yes = true;
        return true;
    case 'r':
        return parse_positive("--runs", arg, &options.runs);
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
    case 'j':
        options.journal_path = arg;
        return true;
    case 'w':
        options.watchdog_path = arg;
        return true;
    }
    const step_option& step = steps.at(static_cast<std::size_t>(option - first_step_option));
    return parse_positive((std::string("--") + step.name).c_str(), arg, step.step);
}

// Options until the first operand, so that a negative value is an operand;
// then exactly WANTED operands, "--" and the command.
sweep_request parse_words(int argc, char** argv, test_options& options, const std::vector<step_option>& steps,
                          std::size_t wanted, const char* needs, std::vector<const char*>* operands) {
    int separator = 1;
    while (separator < argc && std::strcmp(argv[separator], "--") != 0)
        ++separator;
    std::vector<option> long_options = {
        {"runs", required_argument, nullptr, 'r'}, {"timeout", required_argument, nullptr, 't'},
        {"keep", required_argument, nullptr, 'k'}, {"csv", required_argument, nullptr, 'c'},
        {"svg", required_argument, nullptr, 'g'},  {"journal", required_argument, nullptr, 'j'},
        {"watchdog", required_argument, nullptr, 'w'}, {"help", no_argument, nullptr, 'h'}};
    for (std::size_t at = 0; at < steps.size(); ++at)
        long_options.push_back({steps[at].name, required_argument, nullptr, first_step_option + static_cast<int>(at)});
    long_options.push_back({nullptr, 0, nullptr, 0});
    optind = 0;
    for (int option; (option = getopt_long(separator, argv, "+:yh", long_options.data(), nullptr)) != -1;) {
        if (option == 'h')
            return sweep_request::help;
        else if (option == '?')
            return unknown_option(argv), sweep_request::bad;
        else if (option == ':')
            return usage_error(std::string(argv[optind - 1]) + " needs a value"), sweep_request::bad;
        else if (!parse_option(option, optarg, options, steps))
            return sweep_request::bad;
    }
    operands->assign(argv + optind, argv + separator);
    if (operands->size() != wanted || separator + 1 >= argc) {
        usage_error(std::string(argv[0]) + " needs " + needs + ", then -- and the command");
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

bool parse_range(const char* name, const char* from, const char* to, swept_range* range) {
    range->name = name;
    return parse_value("FROM", from, &range->from) && parse_value("TO", to, &range->to);
}

}  // namespace

sweep_request parse_sweep_options(int argc, char** argv, sweep_options& options) {
    std::vector<const char*> operands;
    const sweep_request request =
        parse_words(argc, argv, options, {{"step", &options.step}}, 3, "NAME FROM TO", &operands);
    if (request != sweep_request::run)
        return request;
    return parse_range(operands[0], operands[1], operands[2], &options) ? sweep_request::run : sweep_request::bad;
}

sweep_request parse_shmoo_options(int argc, char** argv, shmoo_options& options) {
    std::vector<const char*> operands;
    const sweep_request request = parse_words(argc, argv, options, {{"xstep", &options.x.step}, {"ystep", &options.y.step}},
                                              6, "X XFROM XTO Y YFROM YTO", &operands);
    if (request != sweep_request::run)
        return request;
    return parse_range(operands[0], operands[1], operands[2], &options.x) &&
                   parse_range(operands[3], operands[4], operands[5], &options.y)
               ? sweep_request::run
               : sweep_request::bad;
}
