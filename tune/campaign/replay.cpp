// SPDX-License-Identifier: MIT
#include "tune/campaign/replay.h"

#include <vector>

#include "runtime/report.h"
#include "tune/campaign/start.h"

bool is_next_step(const campaign_kind& kind, std::size_t step, const journal_step& measured,
                  const std::string& path, std::vector<outcome>* results) {
    const std::optional<campaign_point> point = kind.point(step);
    const std::size_t members = point ? point->judged.members() : 0;
    if (point && point->journal == measured.point &&
        (measured.members.empty() || measured.members.size() == members)) {
        *results = measured.members.empty() ? std::vector<outcome>(members, measured.result)
                                            : measured.members;
        return true;
    }
    report("%s:%zu: not the next %s of this %s; nothing written", path.c_str(), measured.line,
           kind.step, kind.name);
    return false;
}

std::unique_ptr<campaign_kind> replay_journal(const journal_contents& journal,
                                              const std::string& path, kind_of_journal kind_of,
                                              std::FILE* csv) {
    std::unique_ptr<campaign_kind> kind = kind_of(journal.header.command, path);
    std::vector<long long> originals;
    if (!kind || !journal_matches(path, journal, kind->properties(), &originals))
        return nullptr;
    kind->begin(originals);
    kind->print_csv_header(csv);
    for (std::size_t step = 0; step < journal.steps.size(); ++step) {
        std::vector<outcome> results;
        if (!is_next_step(*kind, step, journal.steps[step], path, &results))
            return nullptr;
        kind->record(step, results, csv);
    }
    kind->conclude(kind->point(journal.steps.size()).has_value());
    kind->print_csv_summary(csv);
    return kind;
}
