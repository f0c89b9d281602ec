// SPDX-License-Identifier: MIT
// dump: every readable property as a profile, in the order of the listing.
#include <getopt.h>

#include <cstddef>
#include <cstdio>
#include <list>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "properties/property.h"
#include "runtime/exit_status.h"
#include "runtime/report.h"
#include "runtime/run_lock.h"
#include "tune/board/board_io.h"
#include "tune/profile/commands.h"
#include "tune/profile/json.h"
#include "tune/sweep/profile_header.h"
#include "tune/usage/usage.h"

namespace {

// The properties the names and groups stand for (all when there are none),
// in listing order.
bool choose(int count, char** names, std::vector<property*>* chosen) {
    std::set<property*> wanted;
    for (int i = 0; i < count; ++i) {
        if (property* prop = property::get_property(names[i])) {
            wanted.insert(prop);
        } else if (property_group* group = property_group::get_property_group(names[i])) {
            for (const auto& entry : group->properties)
                wanted.insert(entry.second);
        } else {
            usage_error(std::string("no property or group ") + names[i]);
            return false;
        }
    }
    for (const auto& group : property_group::property_groups())
        for (const auto& entry : group.second->properties)
            if (count == 0 || wanted.count(entry.second))
                chosen->push_back(entry.second);
    return true;
}

// Members of a chosen composite are left to it. Asks the domains, which may
// read the board, so the caller holds the lock.
void leave_members_out(std::vector<property*>* chosen) {
    std::set<std::string> members;
    for (property* prop : *chosen)
        if (const std::list<std::string>* names = prop->domain().members)
            members.insert(names->begin(), names->end());
    std::vector<property*> kept;
    for (property* prop : *chosen)
        if (!members.count(prop->name))
            kept.push_back(prop);
    chosen->swap(kept);
}

// The value as a profile holds it, "{a,b,...}" for a composite, and the
// delays of its codes; false for a code that no key names.
bool profile_text(property* prop, const board_value& codes, bool hex, std::string* text,
                  std::vector<std::string>* delays) {
    const value_domain domain = prop->domain();
    if (!domain.members) {
        delays->push_back(domain.delay_text(codes.front()));
        return domain.value_text(codes.front(), hex, text);
    }
    auto code = codes.begin();
    *text = "{";
    for (const std::string& name : *domain.members) {
        const value_domain member = property::get_property(name)->domain();
        std::string member_text;
        delays->push_back(member.delay_text(*code));
        if (!member.value_text(*code++, hex, &member_text))
            return false;
        *text += (text->size() > 1 ? "," : "") + member_text;
    }
    *text += "}";
    return true;
}

}  // namespace

int dump_command(int argc, char** argv) {
    static const option options[] = {
        {"json", no_argument, nullptr, 'j'}, {"help", no_argument, nullptr, 'h'}, {}};
    bool hex = false;
    bool json = false;
    for (int opt; (opt = getopt_long(argc, argv, "xh", options, nullptr)) != -1;) {
        switch (opt) {
        case 'x': hex = true; break;
        case 'j': json = true; break;
        case 'h': print_usage(stdout); return tune_status::ok;
        default: return unknown_option(argv);
        }
    }
    std::vector<property*> chosen;
    if (!choose(argc - optind, argv + optind, &chosen))
        return tune_status::bad_input;
    if (!take_run_lock())
        return tune_status::not_done;
    leave_members_out(&chosen);
    int status = 0;
    const char* separator = "\n";
    if (json)
        std::fputs("{", stdout);
    const std::vector<std::optional<board_value>> values = read_all_now(chosen);
    for (std::size_t i = 0; i < chosen.size(); ++i) {
        property* prop = chosen[i];
        std::string text;
        std::vector<std::string> delays;
        const std::string* value =
            values[i] && profile_text(prop, *values[i], hex && !json, &text, &delays) ? &text
                                                                                      : nullptr;
        if (!value)
            status = tune_status::not_done;
        if (json) {
            std::printf("%s  %s: %s", separator, json_string(prop->name).c_str(),
                        json_value(value).c_str());
            separator = ",\n";
        } else if (value) {
            std::printf("%s%s = %s\n", delay_comment(delays).c_str(), prop->name.c_str(),
                        value->c_str());
        } else {
            std::printf("# %s: unreadable\n", prop->name.c_str());
        }
    }
    if (json)
        std::fputs(chosen.empty() ? "}\n" : "\n}\n", stdout);
    return status;
}
