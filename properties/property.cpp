// SPDX-License-Identifier: MIT
#include "properties/property.h"

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

void property::refresh() {}

value_domain property::domain() { return {}; }

access_result property::read_code(long long*) { return access_result::failed(); }

access_result property::write_code(long long) { return access_result::failed(); }

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

bool property_set::set(const std::string& value) {
    std::vector<std::string> values;
    if (brace_elements(value, &values)) {
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

value_domain property_set::domain() {
    value_domain members_only;
    members_only.members = &members;
    return members_only;
}

void property_set::refresh() {
    for (const std::string& member_name : members)
        if (property* member = property::get_property(member_name))
            member->refresh();
}
