// SPDX-License-Identifier: MIT
// Named properties, their groups and the process-wide registries.
#ifndef PADKIT_PROPERTY_H
#define PADKIT_PROPERTY_H

#include <list>
#include <map>
#include <string>
#include <string_view>

#include "properties/access_result.h"
#include "properties/value_domain.h"

class property_group;

class property {
public:
    using property_map = std::map<std::string, property*>;
    // Keyed by the registered property's own name: an entry goes when its
    // property is freed.
    using registry_map = std::map<std::string_view, property*>;

    explicit property(std::string name, bool delete_on_unregister = true);
    virtual ~property();

    virtual bool set(const std::string& value) = 0;
    virtual bool get(std::string& value) = 0;
    virtual void get_help(std::string& help);
    virtual void on_unregister();

    // Forgets what the property remembers of the hardware, so that the next
    // access sees the hardware as it is now. A run that serves one request
    // never needs it.
    virtual void refresh();

    // Typed access, beside the text above, for a program that makes many
    // accesses: the values as data, and reads and writes of codes that hand
    // back what failed instead of saying it. The defaults fit a property
    // without values: nothing to set, nothing swept, no code to read.
    virtual value_domain domain();
    // The code as the hardware holds it now.
    virtual access_result read_code(long long* code);
    // Writes a value of the domain, or a code that read_code() gave; refuses,
    // touching nothing, a code that the property cannot hold.
    virtual access_result write_code(long long code);

    const std::string name;
    bool delete_on_unregister;

    // 0 decimal, 1 hexadecimal; only register-backed properties honour it.
    static int number_mode;

    // Every registered property under its name. Built on first use so that
    // static objects of other units may rely on it.
    static registry_map& properties();

    // Registers and returns the property of a name not registered yet, or
    // returns nullptr; lets a platform build only the properties a run names.
    using finder = property* (*)(const std::string& name);
    static finder find_unregistered;

    // The registered property of that name, else what find_unregistered makes.
    static property* get_property(const std::string& name);
    static property* register_property(property_group* group, property* prop);
    static property* register_property(const std::string& group_name, property* prop);
    static void free_all();
};

// Frees every registered group and property, at the end of a run.
void free_registered_properties();

class property_group {
public:
    using group_map = std::map<std::string, property_group*>;

    explicit property_group(const std::string& name);
    virtual ~property_group();

    property* add_property(property* prop);

    const std::string name;
    property::property_map properties;

    static group_map& property_groups();

    static property_group* register_property_group(const std::string& name);
    static property_group* get_property_group(const std::string& name);
    static group_map get_groups();
    static void free_all();
};

// A composite: one name standing for an ordered list of other properties,
// reached by name at every use.
class property_set : public property {
public:
    property_set(const std::string& name, std::list<std::string> members);

    bool set(const std::string& value) override;
    bool get(std::string& value) override;
    void refresh() override;
    // Its members; it has no code of its own.
    value_domain domain() override;

    const std::list<std::string> members;
};

#endif
