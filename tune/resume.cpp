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
                                          {"retry-hang", no_argument, nullptr, 'R'},
                                          {"help", no_argument, nullptr, 'h'},
                                          {nullptr, 0, nullptr, 0}};
    bool restore = false, retry = false;
    optind = 0;
    for (int option; (option = getopt_long(argc, argv, "+h", long_options, nullptr)) != -1;) {
        if (option == 'h') {
            print_usage(stdout);
            return tune_status::ok;
        }
        if (option != 'r' && option != 'R')
            return unknown_option(argv);
        (option == 'r' ? restore : retry) = true;
    }
    if (restore && retry)
        return usage_error("resume takes --restore or --retry-hang, not both");
    if (argc - optind != 1)
        return usage_error("resume needs the journal FILE");
    const resume_mode mode = restore ? resume_mode::restore
                             : retry ? resume_mode::retry_hang
                                     : resume_mode::carry_on;
    return resume_campaign(argv[optind], mode, resumed_kind);
}
