// SPDX-License-Identifier: MIT
// resume: carry on with a sweep or a shmoo from its journal.
#include "tune/resume.h"

#include <getopt.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "tune/board/board_io.h"
#include "tune/commands.h"
#include "tune/test_run.h"
#include "tune/usage/usage.h"

bool arm_watchdog(const test_options& options, hang_guard& guard) {
    return options.watchdog_path.empty() || guard.watchdog.open(options.watchdog_path);
}

bool start_guard(const test_options& options, const std::vector<property*>& props,
                 std::vector<long long>* originals, hang_guard& guard) {
    if (!read_locked(props, originals) || !arm_watchdog(options, guard))
        return false;
    if (options.journal_path.empty())
        return true;
    const std::unique_ptr<char, void (*)(void*)> directory(getcwd(nullptr, 0), std::free);
    if (!directory) {
        report("cannot tell the current directory: %s; nothing written", std::strerror(errno));
        return false;
    }
    journal_header header{PADKIT_VERSION, directory.get(), options.words, {}};
    for (std::size_t at = 0; at < props.size(); ++at)
        header.originals.emplace_back(props[at]->name, code_text(props[at], (*originals)[at]));
    return guard.journal.create(options.journal_path, header);
}

bool journal_matches(const std::string& path, const journal_contents& journal,
                     const std::vector<property*>& props, std::vector<long long>* originals) {
    bool same = journal.header.originals.size() == props.size();
    originals->assign(props.size(), 0);
    for (std::size_t at = 0; same && at < props.size(); ++at)
        same = journal.header.originals[at].first == props[at]->name &&
               props[at]->domain().code_of_shown(journal.header.originals[at].second,
                                                 &(*originals)[at]);
    if (!same)
        report("%s: its originals are not those of the properties it sweeps; nothing written",
               path.c_str());
    return same;
}

std::vector<char*> argv_of(std::vector<std::string>& words) {
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(&word[0]);
    argv.push_back(nullptr);
    return argv;
}

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
    const std::string path = argv[optind];
    hang_guard guard;
    journal_contents journal;
    if (!guard.journal.resume(path, PADKIT_VERSION, &journal))
        return tune_status::bad_input;
    if (journal.ended) {
        report("%s: the %s it records has ended; nothing written", path.c_str(),
               journal.header.command[0].c_str());
        return tune_status::bad_input;
    }
    // Relative names in its command line mean what they meant then.
    if (chdir(journal.header.directory.c_str()) != 0) {
        report("cannot enter %s, where the %s ran: %s; nothing written",
               journal.header.directory.c_str(), journal.header.command[0].c_str(),
               std::strerror(errno));
        return tune_status::bad_input;
    }
    const std::string& kind = journal.header.command[0];
    if (kind == "sweep")
        return resume_sweep(guard, journal, restore);
    if (kind == "shmoo")
        return resume_shmoo(guard, journal, restore);
    report("%s:3: not a sweep or a shmoo; nothing written", path.c_str());
    return tune_status::bad_input;
}
