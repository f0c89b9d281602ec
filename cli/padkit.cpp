// SPDX-License-Identifier: MIT
// padkit: read or change one hardware tuning property per run.
#include "cli/padkit.h"

#include <unistd.h>

#include <cstdio>
#include <initializer_list>
#include <string>

#include "platform/platform.h"
#include "properties/property.h"
#include "runtime/end_of_run.h"
#include "runtime/exit_status.h"
#include "runtime/run_lock.h"

namespace {

// One line of the pieces on standard output.
void put_line(std::initializer_list<const char*> pieces) {
    for (const char* piece : pieces)
        std::fputs(piece, stdout);
    std::putchar('\n');
}

// The line flushed at once, so that it keeps its place among the messages on
// standard error, also through a pipe.
void print_line(std::initializer_list<const char*> pieces) {
    put_line(pieces);
    std::fflush(stdout);
}

void report_unknown_property() { std::fputs("No such property registered.\n", stderr); }

void print_usage() {
    print_line({"padkit [options] [<property> [value if write]]"});
    print_line({"options:"});
    print_line({"\t-h            : help"});
    print_line({"\t-i            : interactive mode"});
    print_line({"\t-l            : list all properties"});
    print_line({"\t-x            : show hex value (default decimal)"});
}

// Nothing goes to standard error meanwhile, so the lines are flushed together
// at the end of the run: one write instead of one per property.
void list_properties() {
    platform_register_properties();
    for (const auto& group : property_group::get_groups()) {
        put_line({group.first.c_str(), " :"});
        for (const auto& member : group.second->properties) {
            std::string help;
            member.second->get_help(help);
            put_line({"\t", member.second->name.c_str(), " : ", help.c_str()});
        }
    }
}

void raw_read(const std::string& name) {
    property* prop = property::get_property(name);
    std::string value;
    if (prop && prop->get(value))
        print_line({value.c_str()});
    else
        report_unknown_property();
}

// Get or set the property named at argv[first]; a following word is the value.
int access_property(int argc, char** argv, int first) {
    if (argc - first <= 0) {
        print_line({"..", std::to_string(first).c_str()});
        print_usage();
        return 0;
    }
    const std::string name = argv[first];
    const bool set_mode = first < argc - 1;
    std::string value = set_mode ? argv[first + 1] : "";

    property* prop = property::get_property(name);
    if (!prop) {
        report_unknown_property();
        return 0;
    }
    if (set_mode) {
        const bool done = prop->set(value);
        std::fprintf(stderr, "PADKIT: set %s := %s%s\n", name.c_str(), value.c_str(),
                     done ? "" : " failed.");
        return done ? padkit_status::ok : padkit_status::set_failed;
    }
    const bool done = prop->get(value);
    print_line({value.c_str()});
    if (done)
        std::fprintf(stderr, "PADKIT: get %s := %s\n", name.c_str(), value.c_str());
    else
        std::fprintf(stderr, "PADKIT: get %sfailed.\n", name.c_str());
    return done ? padkit_status::ok : padkit_status::get_failed;
}

// Only the first option found is acted upon.
int serve_request(int argc, char** argv) {
    if (argc <= 1) {
        print_usage();
        return padkit_status::usage;
    }
    switch (getopt(argc, argv, ":xhilr:")) {
    case 'h': print_usage(); return padkit_status::usage;
    case 'i': print_line({"Not supported yet."}); return padkit_status::not_supported;
    case 'l': list_properties(); return 0;
    case 'r': raw_read(optarg); return 0;
    case 'x': property::number_mode = 1; return access_property(argc, argv, optind);
    default: optind = 1; return access_property(argc, argv, optind);
    }
}

}  // namespace

int padkit_main(int argc, char** argv) {
    if (!take_run_lock())
        return padkit_status::lock_failed;

    // Other requests register only the properties they name.
    property::find_unregistered = platform_register_property;
    const int status = serve_request(argc, argv);
    free_registered_properties();
    return end_of_run(status, {false, padkit_status::output_failed});
}
