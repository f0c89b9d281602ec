// padkit: read or change one hardware tuning property per run.
#include "cli/padkit.h"

#include <unistd.h>

#include <iostream>
#include <string>

#include "cli/run_lock.h"
#include "cli/standard_streams.h"
#include "platform/platform.h"
#include "properties/property.h"

namespace {

// Status of a run whose request was served but whose output was lost.
constexpr int output_failed = -12;

void print_usage() {
    std::cout << "padkit [options] [<property> [value if write]]" << std::endl;
    std::cout << "options:" << std::endl;
    std::cout << "\t-h            : help" << std::endl;
    std::cout << "\t-i            : interactive mode" << std::endl;
    std::cout << "\t-l            : list all properties" << std::endl;
    std::cout << "\t-x            : show hex value (default decimal)" << std::endl;
}

void list_properties() {
    for (const auto& group : property_group::get_groups()) {
        std::cout << group.first << " :" << std::endl;
        for (const auto& member : group.second->properties) {
            std::string help;
            member.second->get_help(help);
            std::cout << "\t" << member.second->name << " : " << help << std::endl;
        }
    }
}

void raw_read(const std::string& name) {
    property* prop = property::get_property(name);
    std::string value;
    if (prop && prop->get(value))
        std::cout << value << std::endl;
    else
        std::cerr << "No such property registered." << std::endl;
}

// Get or set the property named at argv[first]; a following word is the value.
int access_property(int argc, char** argv, int first) {
    if (argc - first <= 0) {
        std::cout << ".." << first << std::endl;
        print_usage();
        return 0;
    }
    const std::string name = argv[first];
    const bool set_mode = first < argc - 1;
    std::string value = set_mode ? argv[first + 1] : "";

    property* prop = property::get_property(name);
    if (!prop) {
        std::cerr << "No such property registered." << std::endl;
        return 0;
    }
    if (set_mode) {
        const bool done = prop->set(value);
        std::cerr << "PADKIT: set " << name << " := " << value << (done ? "" : " failed.")
                  << std::endl;
        return done ? 0 : -11;
    }
    const bool done = prop->get(value);
    std::cout << value << std::endl;
    if (done)
        std::cerr << "PADKIT: get " << name << " := " << value << std::endl;
    else
        std::cerr << "PADKIT: get " << name << "failed." << std::endl;
    return done ? 0 : -10;
}

// Only the first option found is acted upon.
int serve_request(int argc, char** argv) {
    if (argc <= 1) {
        print_usage();
        return -2;
    }
    switch (getopt(argc, argv, ":xhilr:")) {
    case 'h':
        print_usage();
        return -2;
    case 'i':
        std::cout << "Not supported yet." << std::endl;
        return -3;
    case 'l':
        list_properties();
        return 0;
    case 'r':
        raw_read(optarg);
        return 0;
    case 'x':
        property::number_mode = 1;
        return access_property(argc, argv, optind);
    default:
        optind = 1;
        return access_property(argc, argv, optind);
    }
}

}  // namespace

int padkit_main(int argc, char** argv) {
    if (!take_run_lock())
        return -1;

    platform_register_properties();
    const int status = serve_request(argc, argv);

    property_group::free_all();
    property::free_all();
    release_run_lock();
    const bool output_written = standard_output_written();
    return status == 0 && !output_written ? output_failed : status;
}
