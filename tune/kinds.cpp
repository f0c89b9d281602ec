// SPDX-License-Identifier: MIT
#include "tune/kinds.h"

#include <cstdio>

#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "tune/campaign/campaign.h"
#include "tune/commands.h"
#include "tune/usage/usage.h"

namespace {

struct kind_row {
    const char* word;
    kind_planner plan;
};

// clang-format off
const kind_row kinds[] = {
    {"sweep", plan_sweep_campaign},
    {"shmoo", plan_shmoo_campaign},
    {"deskew", plan_deskew_campaign},
};
// clang-format on

const kind_row* kind_named(const std::string& word) {
    for (const kind_row& row : kinds)
        if (word == row.word)
            return &row;
    return nullptr;
}

}  // namespace

// The subcommand's word names a row of kinds.
int campaign_command(int argc, char** argv) {
    std::unique_ptr<campaign_kind> kind;
    switch (kind_named(argv[0])->plan(argc, argv, &kind)) {
    case sweep_request::help: print_usage(stdout); return tune_status::ok;
    case sweep_request::bad: return tune_status::bad_input;
    case sweep_request::run: break;
    }
    return run_campaign(std::move(kind));
}

std::unique_ptr<campaign_kind> resumed_kind(const std::vector<std::string>& words,
                                            const std::string& path) {
    const kind_row* row = kind_named(words[0]);
    if (!row) {
        std::string names;
        for (const kind_row& each : kinds)
            names += std::string(names.empty() ? "a " : " or a ") + each.word;
        report("%s:3: not %s; nothing written", path.c_str(), names.c_str());
        return nullptr;
    }
    std::vector<std::string> copy = words;
    std::unique_ptr<campaign_kind> kind;
    if (row->plan(static_cast<int>(copy.size()), argv_of(copy).data(), &kind) != sweep_request::run)
        return nullptr;
    return kind;
}
