// SPDX-License-Identifier: MIT
#include "tune/board/board_io.h"

#include <string>
#include <vector>

#include "runtime/report.h"

namespace {

// Reports what the access has to say, naming the property it was about.
bool reported(const access_result& result, const std::string& about) {
    for (const std::string& line : result.lines)
        report("%s: %s", about.c_str(), line.c_str());
    return result.ok;
}

// The codes of a property of its own, or of every member of a composite.
bool read_value(property* prop, board_value* codes) {
    const value_domain domain = prop->domain();
    if (!domain.members) {
        codes->emplace_back();
        return reported(prop->read_code(&codes->back()), prop->name);
    }
    bool readable = true;
    for (const std::string& name : *domain.members) {
        property* member = property::get_property(name);
        codes->emplace_back();
        readable = member && reported(member->read_code(&codes->back()), prop->name) && readable;
    }
    return readable;
}

}  // namespace

bool read_now(property* prop, long long* code) {
    prop->refresh();
    return reported(prop->read_code(code), prop->name);
}

std::vector<std::optional<board_value>> read_all_now(const std::vector<property*>& props) {
    for (property* prop : props)
        prop->refresh();
    std::vector<std::optional<board_value>> values;
    for (property* prop : props) {
        board_value codes;
        values.push_back(read_value(prop, &codes) ? std::optional<board_value>(std::move(codes))
                                                  : std::nullopt);
    }
    return values;
}

bool write_checked(property* prop, long long code, std::string* problem) {
    prop->refresh();
    if (!reported(prop->write_code(code), prop->name)) {
        *problem = "writing " + code_text(prop, code) + " failed";
        return false;
    }
    long long now = 0;
    if (!read_now(prop, &now)) {
        *problem = "wrote " + code_text(prop, code) + ", cannot read it back";
        return false;
    }
    if (now != code) {
        *problem = "wrote " + code_text(prop, code) + ", reads back " + code_text(prop, now);
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
        long long board = 0;
        if (!reported(s.prop->read_code(&board), s.prop->name))
            unreadable->push_back(s.prop);
        else if (board != s.code)
            differences.push_back({s.prop, board, s.code});
    }
    return differences;
}

std::vector<std::string> undo(const std::vector<change>& changes) {
    std::vector<std::string> left;
    for (auto c = changes.rbegin(); c != changes.rend(); ++c) {
        long long now = 0;
        if (read_now(c->prop, &now) && now == c->before)
            continue;
        const std::string before = code_text(c->prop, c->before);
        std::string problem;
        if (write_checked(c->prop, c->before, &problem)) {
            report("%s: restored to %s", c->prop->name.c_str(), before.c_str());
        } else {
            report("%s: not restored to %s: %s", c->prop->name.c_str(), before.c_str(),
                   problem.c_str());
            left.push_back(c->prop->name);
        }
    }
    return left;
}

std::string code_text(property* prop, long long code) { return prop->domain().told(code); }
