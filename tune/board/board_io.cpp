// SPDX-License-Identifier: MIT
#include "tune/board/board_io.h"

#include <string>
#include <vector>

#include "properties/message.h"
#include "runtime/report.h"

namespace {

// get() or save(), counting as unreadable a value made of a failed access:
// padkit shows such a value, padkit-tune never does.
bool get_now(property* prop, std::string* value, bool restorable = false) {
    const about_setting about(prop->name);
    const unsigned long failures = failed_accesses();
    return (restorable ? prop->save(value) : prop->get(*value)) && failed_accesses() == failures;
}

}  // namespace

bool read_now(property* prop, std::string* value) {
    prop->refresh();
    return get_now(prop, value, true);
}

std::vector<std::optional<std::string>> read_all_now(const std::vector<property*>& props) {
    for (property* prop : props)
        prop->refresh();
    std::vector<std::optional<std::string>> values;
    for (property* prop : props) {
        std::string value;
        values.push_back(get_now(prop, &value) ? std::optional<std::string>(value) : std::nullopt);
    }
    return values;
}

bool write_checked(property* prop, const std::string& value, std::string* problem) {
    prop->refresh();
    {
        const about_setting about(prop->name);
        const unsigned long failures = failed_accesses();
        if (!prop->restore(value) || failed_accesses() != failures) {
            *problem = "writing " + value + " failed";
            return false;
        }
    }
    std::string now;
    if (!read_now(prop, &now)) {
        *problem = "wrote " + value + ", cannot read it back";
        return false;
    }
    if (now != value) {
        *problem = "wrote " + value + ", reads back " + now;
        return false;
    }
    return true;
}

std::vector<change> compare_with_board(const std::vector<setting>& settings,
                                       std::vector<property*>* unreadable) {
    // Every property is forgotten first, so that each register is read once.
    for (const setting& s : settings)
        s.prop->refresh();
    std::vector<change> differences;
    for (const setting& s : settings) {
        std::string board;
        if (!get_now(s.prop, &board, true))
            unreadable->push_back(s.prop);
        else if (board != s.value)
            differences.push_back({s.prop, board, s.value});
    }
    return differences;
}

std::vector<std::string> undo(const std::vector<change>& changes) {
    std::vector<std::string> left;
    for (auto c = changes.rbegin(); c != changes.rend(); ++c) {
        std::string now;
        if (read_now(c->prop, &now) && now == c->before)
            continue;
        std::string problem;
        if (write_checked(c->prop, c->before, &problem)) {
            report("%s: restored to %s", c->prop->name.c_str(), c->before.c_str());
        } else {
            report("%s: not restored to %s: %s", c->prop->name.c_str(), c->before.c_str(),
                   problem.c_str());
            left.push_back(c->prop->name);
        }
    }
    return left;
}
