// SPDX-License-Identifier: MIT
#include "tune/sweep/outcome.h"

#include <string>

namespace {

// In the order of the enumeration.
const struct {
    char mark;
    const char* name;
} outcome_texts[] = {{'#', "pass"}, {'.', "fail"}, {'T', "timeout"}, {'H', "hang"}};

}  // namespace

const char* outcome_name(outcome result) { return outcome_texts[static_cast<int>(result)].name; }

bool parse_outcome(const std::string& name, outcome* result) {
    for (outcome each : {outcome::pass, outcome::fail, outcome::timeout, outcome::hang}) {
        if (name == outcome_name(each)) {
            *result = each;
            return true;
        }
    }
    return false;
}

char outcome_mark(outcome result) { return outcome_texts[static_cast<int>(result)].mark; }
