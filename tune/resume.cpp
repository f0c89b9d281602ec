// SPDX-License-Identifier: MIT
// resume: carry on with a campaign from its journal.
#include <getopt.h>

#include <cstdio>
#include <string>

#include "runtime/exit_status.h"
#include "tune/campaign/campaign.h"
#include "tune/commands.h"
#include "tune/kinds.h"
#include "tune/usage/usage.h"

int resume_command(int argc, char** argv) {
    static const option long_options[] = {{"restore", no_argument, nullptr, 'r'},
                                          {"help", no_argument, nullptr, 'h'},
                                          {nullptr, 0, nullptr, 0}};
    bool restore = false;
    optind = 0;
    for (int option; (option = getopt_long(argc, argv, "+h", long_options, nullptr)) != -1;) {
        if (option == 'h') {
            print_usage(stdout);
            return tune_status::ok;
        }
        if (option != 'r')
            return unknown_option(argv);
        restore = true;
    }
    if (argc - optind != 1)
        return usage_error("resume needs the journal FILE");
    return resume_campaign(argv[optind], restore, resumed_kind);
}
