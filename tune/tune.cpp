// SPDX-License-Identifier: MIT
#include "tune/tune.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "runtime/run_lock.h"
#include "runtime/standard_streams.h"
#include "platform/platform.h"
#include "properties/property.h"
#include "tune/commands.h"
#include "runtime/report.h"

void print_usage(std::FILE* out) {
    const char* name = program_name();
    std::fprintf(out,
                 "usage: %s dump [-x] [--json] [NAME|GROUP ...]\n"
                 "       %s diff [--json] FILE ...\n"
                 "       %s apply [-n|--dry-run] [-v] FILE ...\n"
                 "       %s apply --system [-n|--dry-run] [-v]\n"
                 "       %s sweep [-y] [--step N] [--runs K] [--timeout SEC] [--keep original|centre]\n"
                 "             [--csv FILE] [--svg FILE] NAME FROM TO -- COMMAND [ARG ...]\n"
                 "       %s -h|--help|--version\n"
                 "A FILE of - is standard input.\n",
                 name, name, name, name, name, name);
}

int usage_error(const std::string& problem) {
    report("%s", problem.c_str());
    print_usage(stderr);
    return 2;
}

int unknown_option(char** argv) {
    return usage_error(std::string("unknown option ") + argv[optind - 1]);
}

namespace {

int serve(int argc, char** argv) {
    if (argc < 2)
        return usage_error("no subcommand");
    const std::string command = argv[1];
    if (command == "-h" || command == "--help") {
        print_usage(stdout);
        return 0;
    }
    if (command == "--version") {
        std::printf("%s %s\n", program_name(), PADKIT_VERSION);
        return 0;
    }
    opterr = 0;
    if (command == "dump")
        return dump_command(argc - 1, argv + 1);
    if (command == "diff")
        return diff_command(argc - 1, argv + 1);
    if (command == "apply")
        return apply_command(argc - 1, argv + 1);
    if (command == "sweep")
        return sweep_command(argc - 1, argv + 1);
    return usage_error("unknown subcommand " + command);
}

}  // namespace

int padkit_tune_main(int argc, char** argv) {
    set_program_name(argc > 0 ? argv[0] : nullptr);
    platform_register_properties();
    const int status = serve(argc, argv);
    property_group::free_all();
    property::free_all();
    release_run_lock();
    // Lost output is a failure even where the request itself went well.
    const bool output_written = standard_output_written();
    return status == 0 && !output_written ? 1 : status;
}
