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

#include "properties/access_result.h"
#include "properties/property.h"
#include "properties/value_domain.h"

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
    virtual uint32_t clamp(long long value, uint32_t current, long long delta);
    virtual bool adjust(reg_info* reg, long long delta);
    // The field's code as the hardware holds it, past any table, into the
    // register's cache and out of it. By default the user value is the code.
    virtual bool get_code(reg_info* reg, uint32_t* code);
    virtual bool set_code(reg_info* reg, uint32_t code);
    virtual const std::string& get_name();
    virtual const std::string& get_desc();
    // The values of its property (value_domain.h): by default every code
    // within its limits, shown in hexadecimal when asked.
    virtual value_domain domain();

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
    bool get_code(reg_info* reg, uint32_t* code) override;

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
    // Any code of its width, past the table.
    bool set_code(reg_info* reg, uint32_t code) override;
    // The keys of its table are its values.
    value_domain domain() override;

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

    // One word of the hardware, for _read, commit and load. A failure is said
    // at once, or kept in *kept_failures while a typed access has it there
    // (property_register), and a failed read sets read_failed.
    uint32_t read_word(uint32_t address);
    void write_word(uint32_t address, uint32_t word);

    std::string name;
    uint32_t address;
    std::atomic<uint32_t> value{0};
    std::map<std::string, reg_subval*> subvals;
    bool loaded = false;
    // The cached word stands for a read that failed.
    bool read_failed = false;
    access_result* kept_failures = nullptr;

private:
    void note(const access_result& result);
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
    void refresh() override;
    value_domain domain() override;
    // The field's code, past any table; a write commits the register.
    access_result read_code(long long* code) override;
    access_result write_code(long long code) override;

    // One property "<register>::<field>" per field, in field-name order.
    static void register_as_property(property_group* group, reg_info* reg);
    // The property of one of the register's fields; nullptr when its name is taken.
    static property* register_as_property(property_group* group, reg_info* reg,
                                          const std::string& field_name, reg_subval* field);

    reg_info* reg;
    reg_subval* subval;
};

#endif
