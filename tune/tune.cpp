// SPDX-License-Identifier: MIT
#include "tune/tune.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "platform/platform.h"
#include "properties/property.h"
#include "runtime/end_of_run.h"
#include "runtime/exit_status.h"
#include "runtime/message.h"
#include "runtime/report.h"
#include "runtime/stop_signals.h"
#include "tune/commands.h"
#include "tune/profile/commands.h"
#include "tune/usage/usage.h"

namespace {

struct subcommand {
    const char* name;
    // Lines of usage, split by '\n'; each names the program first, except a
    // line that begins with a blank, which continues the one before.
    const char* usage;
    int (*run)(int argc, char** argv);
};

// Dispatch and the usage text both come from this table.
const subcommand subcommands[] = {
    {"dump", "dump [-x] [--json] [NAME|GROUP ...]", dump_command},
    {"diff", "diff [--json] FILE ...", diff_command},
    {"apply",
     "apply [-n|--dry-run] [-v] FILE ...\n"
     "apply --system [-n|--dry-run] [-v]",
     apply_command},
    {"sweep",
     "sweep [-y] [--step N] [--runs K] [--timeout SEC] [--keep original|centre]\n"
     "      [--csv FILE] [--svg FILE] [--profile FILE] [--bits FILE]\n"
     "      [--journal FILE [--watchdog DEVICE]] [--log DIR] NAME FROM TO -- COMMAND [ARG ...]\n"
     "sweep --parallel [OPTIONS] LANE... FROM TO -- COMMAND [ARG ...]\n"
     "      (options before NAME; FROM, TO and N may be negative)",
     campaign_command},
    {"shmoo",
     "shmoo [-y] [--xstep N] [--ystep N] [--weigh X:Y] [--runs K] [--timeout SEC]\n"
     "      [--keep original|centre] [--csv FILE] [--svg FILE] [--profile FILE]\n"
     "      [--journal FILE [--watchdog DEVICE]] [--log DIR]\n"
     "      X XFROM XTO Y YFROM YTO -- COMMAND [ARG ...]",
     campaign_command},
    {"deskew",
     "deskew [-y] [--full] [--runs K] [--timeout SEC] [--keep original|centre]\n"
     "       [--csv FILE] [--profile FILE] [--bits FILE]\n"
     "       [--journal FILE [--watchdog DEVICE]] [--log DIR]\n"
     "       CONTROLLER|LANE|all ... [FROM TO] -- COMMAND [ARG ...]",
     campaign_command},
    {"resume", "resume [--restore | --retry-hang] FILE", resume_command},
    {"trial",
     "trial [--tries N] [--now] FILE\n"
     "trial --status [--json]\n"
     "trial --remove",
     trial_command},
    {"bless", "bless", bless_command},
    {"merge", "merge [--csv FILE] [--svg FILE] [--profile FILE] SWEEP.csv ...", merge_command},
    {"report", "report [--json|--svg] FILE", report_command},
};

void print_subcommand_usage(std::FILE* out) {
    const char* name = program_name();
    const char* lead = "usage: ";
    for (const subcommand& command : subcommands) {
        for (const char* line = command.usage; *line;) {
            const std::size_t length = std::strcspn(line, "\n");
            if (*line == ' ')
                std::fprintf(out, "       %.*s\n", static_cast<int>(length), line);
            else
                std::fprintf(out, "%s%s %.*s\n", lead, name, static_cast<int>(length), line);
            lead = "       ";
            line += length + (line[length] == '\n');
        }
    }
    std::fprintf(out,
                 "       %s -h|--help|--version\n"
                 "A FILE of - is standard input.\n",
                 name);
}

int serve(int argc, char** argv) {
    if (argc < 2)
        return usage_error("no subcommand");
    const std::string command = argv[1];
    if (command == "-h" || command == "--help") {
        print_usage(stdout);
        return tune_status::ok;
    }
    if (command == "--version") {
        std::printf("%s %s\n", program_name(), PADKIT_VERSION);
        return tune_status::ok;
    }
    opterr = 0;
    for (const subcommand& entry : subcommands)
        if (command == entry.name)
            return entry.run(argc - 1, argv + 1);
    return usage_error("unknown subcommand " + command);
}

}  // namespace

int padkit_tune_main(int argc, char** argv) {
    set_program_name(argc > 0 ? argv[0] : nullptr);
    set_message_sink(report_line);
    set_usage_printer(print_subcommand_usage);
    // A reader that goes away (| head) must not end a run half-way through
    // its writes: lost output is noted and the work finished.
    ignore_broken_pipe();
    platform_register_properties();
    const int status = serve(argc, argv);
    free_registered_properties();
    return end_of_run(status, {true, tune_status::output_lost});
}
