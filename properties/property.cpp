// SPDX-License-Identifier: MIT
#include "properties/property.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

#include "properties/strict_value.h"
#include "runtime/message.h"

int property::number_mode = 0;

property::finder property::find_unregistered = nullptr;

property::property(std::string name, bool delete_on_unregister)
    : name(std::move(name)), delete_on_unregister(delete_on_unregister) {}

property::~property() = default;

void property::get_help(std::string& help) { help = "no help."; }

bool property::check(const std::string&, std::string*, std::string* problem) {
    *problem = "cannot be set";
    return false;
}

bool property::save(std::string* value) { return get(*value); }

bool property::restore(const std::string& value) { return set(value); }

void property::refresh() {}

std::vector<std::string> property::member_names() const { return {}; }

std::vector<long long> property::table_keys() const { return {}; }

sweep_axis property::axis() const { return {}; }

std::string property::setting_for(long long axis_value) const { return std::to_string(axis_value); }

bool property::axis_value_of(const std::string& setting, long long* axis_value) const {
    char* end = nullptr;
    errno = 0;
    *axis_value = std::strtoll(setting.c_str(), &end, 10);
    return !setting.empty() && *end == '\0' && errno == 0;
}

void property::on_unregister() {
    if (delete_on_unregister)
        delete this;
}

property::registry_map& property::properties() {
    static registry_map registry;
    return registry;
}

property* property::get_property(const std::string& name) {
    auto found = properties().find(name);
    if (found != properties().end())
        return found->second;
    return find_unregistered ? find_unregistered(name) : nullptr;
}

property* property::register_property(property_group* group, property* prop) {
    if (!properties().emplace(prop->name, prop).second)
        return nullptr;
    group->add_property(prop);
    return prop;
}

property* property::register_property(const std::string& group_name, property* prop) {
    return register_property(property_group::register_property_group(group_name), prop);
}

void property::free_all() {
    for (auto& entry : properties())
        entry.second->on_unregister();
    properties().clear();
}

property_group::property_group(const std::string& name) : name(name) {}

property_group::~property_group() = default;

property* property_group::add_property(property* prop) {
    properties[prop->name] = prop;
    return prop;
}

property_group::group_map& property_group::property_groups() {
    static group_map registry;
    return registry;
}

property_group* property_group::register_property_group(const std::string& name) {
    if (property_group* group = get_property_group(name))
        return group;
    auto* group = new property_group(name);
    property_groups()[name] = group;
    return group;
}

property_group* property_group::get_property_group(const std::string& name) {
    auto found = property_groups().find(name);
    return found == property_groups().end() ? nullptr : found->second;
}

property_group::group_map property_group::get_groups() { return property_groups(); }

void property_group::free_all() {
    for (auto& entry : property_groups())
        delete entry.second;
    property_groups().clear();
}

void free_registered_properties() {
    property_group::free_all();
    property::free_all();
}

property_set::property_set(const std::string& name, std::list<std::string> members)
    : property(name), members(std::move(members)) {}

bool property_set::get(std::string& value) {
    std::string joined;
    const char* separator = "";
    for (const std::string& member_name : members) {
        property* member = property::get_property(member_name);
        if (!member)
            return false;
        std::string text;
        if (!member->get(text))
            return false;
        joined += separator + text;
        separator = ",";
    }
    value = "{" + joined + "}";
    return true;
}

// Splits the inside of a brace list at every comma, keeping empty elements.
static std::vector<std::string> split_elements(const std::string& inner) {
    std::vector<std::string> elements;
    std::string::size_type start = 0;
    for (;;) {
        std::string::size_type comma = inner.find(',', start);
        if (comma == std::string::npos) {
            elements.push_back(inner.substr(start));
            return elements;
        }
        elements.push_back(inner.substr(start, comma - start));
        start = comma + 1;
    }
}

bool property_set::set(const std::string& value) {
    std::vector<std::string> values;
    if (value.size() >= 2 && value.front() == '{' && value.back() == '}') {
        values = split_elements(value.substr(1, value.size() - 2));
        if (values.size() != members.size()) {
            say("%zu != %zu", values.size(), members.size());
            return false;
        }
    } else {
        values.assign(members.size(), value);
    }

    auto next_value = values.begin();
    for (const std::string& member_name : members) {
        property* member = property::get_property(member_name);
        if (!member || !member->set(*next_value++)) {
            say("set failed");
            return false;
        }
    }
    return true;
}

std::vector<std::string> property_set::member_names() const {
    return {members.begin(), members.end()};
}

bool property::check_members(const std::string& value, std::vector<std::string>* canonical,
                             std::string* problem) {
    const std::vector<std::string> members = member_names();
    const std::string count = std::to_string(members.size());
    if (value.size() < 2 || value.front() != '{' || value.back() != '}') {
        *problem = "expected a brace list of " + count + " values";
        return false;
    }
    const std::vector<std::string> values = split_elements(value.substr(1, value.size() - 2));
    if (values.size() != members.size()) {
        *problem = "expected " + count + " values, found " + std::to_string(values.size());
        return false;
    }
    canonical->clear();
    auto next_value = values.begin();
    for (const std::string& member_name : members) {
        property* member = property::get_property(member_name);
        std::string member_value;
        if (!member) {
            *problem = "no member " + member_name;
            return false;
        }
        if (!member->check(trimmed(*next_value++), &member_value, problem)) {
            *problem = member_name + ": " + *problem;
            return false;
        }
        canonical->push_back(member_value);
    }
    return true;
}

bool property_set::check(const std::string& value, std::string* canonical, std::string* problem) {
    std::vector<std::string> values;
    if (!check_members(value, &values, problem))
        return false;
    std::string joined;
    for (const std::string& member_value : values)
        joined += (joined.empty() ? "{" : ",") + member_value;
    *canonical = joined + "}";
    return true;
}

void property_set::refresh() {
    for (const std::string& member_name : members)
        if (property* member = property::get_property(member_name))
            member->refresh();
}
