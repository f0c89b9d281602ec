// SPDX-License-Identifier: MIT
#include "tune/campaign/start.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "runtime/report.h"
#include "tune/board/board_io.h"
#include "tune/sweep/command_run.h"
#include "tune/sweep/consent.h"
#include "tune/sweep/facts.h"
#include "tune/sweep/run_log.h"

namespace {

// After the journal's version, directory and command.
constexpr std::size_t first_original_line = 4;

}  // namespace

bool command_ready(const test_options& options) {
    if (!command_exists(options.command.front())) {
        report("%s: no such command, or not executable; nothing written",
               options.command.front().c_str());
        return false;
    }
    return options.log_dir.empty() || log_dir_usable(options.log_dir);
}

bool confirmed(const test_options& options, const std::string& does, const char* what) {
    if (options.assume_yes)
        return true;
    const std::string warning = "WARNING! " + does +
                                " on the running board. A value outside its working window can "
                                "hang the system or corrupt memory and storage.";
    switch (ask_consent(warning, stdin, isatty(STDIN_FILENO), stderr)) {
    case consent::given: return true;
    case consent::refused: report("%s cancelled; nothing written", what); return false;
    case consent::no_terminal:
        report("standard input is not a terminal; give -y to %s without asking", what);
        return false;
    }
    return false;
}

bool arm_watchdog(const test_options& options, hang_guard& guard) {
    return options.watchdog_path.empty() || guard.watchdog.open(options.watchdog_path);
}

bool start_guard(const test_options& options, const std::vector<property*>& props,
                 const std::vector<long long>& originals, hang_guard& guard) {
    if (!arm_watchdog(options, guard))
        return false;
    if (options.journal_path.empty())
        return true;
    const std::unique_ptr<char, void (*)(void*)> directory(getcwd(nullptr, 0), std::free);
    if (!directory) {
        report("cannot tell the current directory: %s; nothing written", std::strerror(errno));
        return false;
    }
    journal_header header{PADKIT_VERSION, directory.get(), options.words, {}, campaign_date()};
    for (std::size_t at = 0; at < props.size(); ++at)
        header.originals.emplace_back(props[at]->name, props[at]->domain().shown(originals[at]));
    return guard.journal.create(options.journal_path, header);
}

bool open_journal(const std::string& path, journal_file& journal, journal_contents* contents) {
    if (!journal.resume(path, PADKIT_VERSION, contents))
        return false;
    const journal_header& header = contents->header;
    if (contents->ended) {
        report("%s: the %s it records has ended; nothing written", path.c_str(),
               header.command[0].c_str());
        return false;
    }
    if (chdir(header.directory.c_str()) != 0) {
        report("cannot enter %s, where the %s ran: %s; nothing written", header.directory.c_str(),
               header.command[0].c_str(), std::strerror(errno));
        return false;
    }
    return true;
}

bool journal_matches(const std::string& path, const journal_contents& journal,
                     const std::vector<property*>& props, std::vector<long long>* originals) {
    const auto& given = journal.header.originals;
    bool same = given.size() == props.size();
    for (std::size_t at = 0; same && at < props.size(); ++at)
        same = given[at].first == props[at]->name;
    if (!same) {
        report("%s: its originals are not those of the properties it sweeps; nothing written",
               path.c_str());
        return false;
    }
    originals->assign(props.size(), 0);
    for (std::size_t at = 0; at < props.size(); ++at) {
        std::string problem;
        if (!props[at]->domain().code_of_shown(given[at].second, &(*originals)[at], &problem)) {
            report("%s:%zu: %s: %s; nothing written", path.c_str(), first_original_line + at,
                   props[at]->name.c_str(), problem.c_str());
            return false;
        }
    }
    return true;
}
