// SPDX-License-Identifier: MIT
// Registers as cached 32-bit words, their bit fields as shared stateless
// descriptors, and the property that presents one field of one register.
#ifndef PADKIT_REGCTL_H
#define PADKIT_REGCTL_H

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "properties/property.h"

class reg_info;

// Relative changes may come from any 64-bit text; keep their arithmetic defined.
long long saturating_add(long long a, long long b);
long long saturating_sub(long long a, long long b);

class reg_subval {
public:
    explicit reg_subval(const std::string& name = "value", const std::string& desc = "no desc",
                        bool garbage = true);
    virtual ~reg_subval();

    // User value into the register's cache; nothing reaches hardware.
    virtual bool set(reg_info* reg, uint32_t v) = 0;
    virtual bool get(reg_info* reg, uint32_t* out) = 0;
    virtual void get_limits(uint32_t* min, uint32_t* max) = 0;
    // Whether set() takes the user value, and the values it takes, in words.
    virtual bool accepts(uint32_t v);
    virtual std::string valid_values();
    virtual uint32_t clamp(long long value, uint32_t current, long long delta);
    virtual bool adjust(reg_info* reg, long long delta);
    virtual const std::string& get_name();
    virtual const std::string& get_desc();
    // The field's answers to the sweep questions of its property (property.h):
    // by default its limits, every value in them, each written as it is.
    virtual sweep_axis axis();
    virtual std::vector<long long> table_keys();
    virtual uint32_t setting_for(long long axis_value);
    virtual bool axis_value_of(uint32_t value, long long* axis_value);

    std::string name;
    std::string desc;

protected:
    static void _warn_out_of_range(long long delta, uint32_t current, uint32_t min, uint32_t max,
                                   uint32_t limit);
};

class reg_bitmask : public reg_subval {
public:
    reg_bitmask(int msb, int lsb, const std::string& name, const std::string& desc);
    ~reg_bitmask() override;

    bool set(reg_info* reg, uint32_t v) override;
    bool get(reg_info* reg, uint32_t* out) override;
    void get_limits(uint32_t* min, uint32_t* max) override;
    bool accepts(uint32_t v) override;

    virtual void init(const std::string& name, const std::string& desc, int msb, int lsb);
    virtual bool check_subval(uint32_t v);
    virtual uint32_t apply_subval(uint32_t word, uint32_t v);
    virtual bool _before_set(uint32_t& v);
    virtual bool _after_read(uint32_t& v);

    uint32_t mask = 0;
    int shift = 0;
};

// A field whose user values are translated to field codes through a table.
class reg_bitmask_map : public reg_bitmask {
public:
    using value_table = std::map<uint32_t, uint32_t>;

    reg_bitmask_map(int msb, int lsb, const std::string& name, const std::string& desc,
                    const value_table* value_map);
    ~reg_bitmask_map() override;

    bool check_subval(uint32_t v) override;
    bool _before_set(uint32_t& v) override;
    bool _after_read(uint32_t& v) override;
    std::string valid_values() override;
    // Swept over the keys of its table.
    sweep_axis axis() override;
    std::vector<long long> table_keys() override;

    const value_table* value_map;
};

class reg_info {
public:
    template <typename T>
    reg_info(std::string name, uint32_t address, std::initializer_list<T*> fields, bool garbage)
        : name(std::move(name)), address(address) {
        // Catalogue lists mostly come in name order: the hint makes that cheap.
        for (T* field : fields)
            subvals.insert_or_assign(subvals.end(), field->get_name(), field);
        if (garbage)
            add_garbage();
    }
    reg_info(const reg_info&) = delete;
    reg_info& operator=(const reg_info&) = delete;

    virtual void _read();
    virtual ~reg_info();
    virtual void commit();
    virtual uint32_t load(reg_subval* sv);
    virtual void store(reg_subval* sv, uint32_t word);
    // Drops the cached word: the next load reads the hardware again.
    virtual void invalidate();

    void add_garbage();

    std::string name;
    uint32_t address;
    std::atomic<uint32_t> value{0};
    std::map<std::string, reg_subval*> subvals;
    bool loaded = false;
};

// Owns heap objects and deletes them, in insertion order, when it goes.
template <typename T>
class regctl_garbages;

template <typename T>
class regctl_garbages<T*> {
public:
    regctl_garbages() = default;
    regctl_garbages(const regctl_garbages&) = delete;
    regctl_garbages& operator=(const regctl_garbages&) = delete;
    virtual ~regctl_garbages() {
        for (T* item : items)
            delete item;
    }

    std::vector<T*> items;
};

class property_register : public property {
public:
    property_register(std::string name, reg_info* reg, reg_subval* subval);
    ~property_register() override;

    bool set(const std::string& value) override;
    bool get(std::string& value) override;
    void get_help(std::string& help) override;
    bool check(const std::string& value, std::string* canonical, std::string* problem) override;
    void refresh() override;
    std::vector<long long> table_keys() const override;
    sweep_axis axis() const override;
    std::string setting_for(long long axis_value) const override;
    bool axis_value_of(const std::string& setting, long long* axis_value) const override;

    // One property "<register>::<field>" per field, in field-name order.
    static void register_as_property(property_group* group, reg_info* reg);
    // The property of one of the register's fields; nullptr when its name is taken.
    static property* register_as_property(property_group* group, reg_info* reg,
                                          const std::string& field_name, reg_subval* field);

    reg_info* reg;
    reg_subval* subval;
};

#endif
