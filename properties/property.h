// SPDX-License-Identifier: MIT
// Named properties, their groups and the process-wide registries.
#ifndef PADKIT_PROPERTY_H
#define PADKIT_PROPERTY_H

#include <list>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class property_group;

// How a sweep walks a property: the range of its axis, in the property's own
// terms, which may differ from the values set() takes (see setting_for).
struct sweep_axis {
    long long low = 0, high = -1;  // low > high: the property is not swept
    long long step = 1;            // the distance between two swept values unless told otherwise
    bool is_signed = false;        // values are shown with their sign: -3, 0, +5
    // What a value counts, in the plural: margins and pictures name it.
    const char* unit = "codes";

    bool sweepable() const { return low <= high; }
    bool holds(long long value) const { return value >= low && value <= high; }
};

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

    // Whether set() would take the value exactly as written, decided without
    // touching the hardware. The value is read strictly (see strict_value.h)
    // and never clamped. Gives the value as get() shows it in decimal, or
    // says what is wrong with it. Properties that cannot be set refuse all.
    virtual bool check(const std::string& value, std::string* canonical, std::string* problem);

    // The value as the hardware holds it, in the form restore() puts back:
    // what get() shows, or where get() has no name for it (a field code that
    // no key of its table names), a form that only restore() takes. A
    // snapshot made of these can put back any state of the board.
    virtual bool save(std::string* value);
    virtual bool restore(const std::string& value);

    // Forgets what the property remembers of the hardware, so that the next
    // get or set sees the hardware as it is now. A run that serves one
    // request never needs it.
    virtual void refresh();

    // What the layers above ask of a property, whatever its kind; none of it
    // touches the hardware.
    //
    // The names of the properties this one stands for, in order; none for a
    // property of its own.
    virtual std::vector<std::string> member_names() const;
    // The keys of the table its values come from, rising; none when any value
    // of its range will do.
    virtual std::vector<long long> table_keys() const;
    // Its sweep axis; with table keys, only those keys are on it.
    virtual sweep_axis axis() const;
    // The value set() takes for a value of the axis, in decimal.
    virtual std::string setting_for(long long axis_value) const;
    // The axis value that a setting (decimal, as get() shows it) stands for;
    // false when it stands for none.
    virtual bool axis_value_of(const std::string& setting, long long* axis_value) const;

    // A brace list with one value per member, blanks around each allowed,
    // checked by each member: the members' canonical values in order.
    bool check_members(const std::string& value, std::vector<std::string>* canonical,
                       std::string* problem);

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
    bool check(const std::string& value, std::string* canonical, std::string* problem) override;
    void refresh() override;
    std::vector<std::string> member_names() const override;

    const std::list<std::string> members;
};

#endif
