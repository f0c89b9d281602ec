// SPDX-License-Identifier: MIT
#include "registers/regctl.h"

#include <cerrno>
#include <cinttypes>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "properties/message.h"
#include "properties/strict_value.h"
#include "registers/mmaprw32.h"
#include "runtime/message.h"

namespace {

// Built on first use: the catalogue creates fields and registers during
// static initialisation, in whatever order the units are initialised. The
// owners live as long as the process: the catalogue is used until exit, and
// deleting its hundreds of objects one by one at exit costs a run more than
// the request it serves.
regctl_garbages<reg_subval*>& subval_garbages() {
    static auto* owner = new regctl_garbages<reg_subval*>;
    return *owner;
}

regctl_garbages<reg_info*>& reginfo_garbages() {
    static auto* owner = new regctl_garbages<reg_info*>;
    return *owner;
}

}  // namespace

long long saturating_add(long long a, long long b) {
    long long sum;
    if (__builtin_add_overflow(a, b, &sum))
        return b > 0 ? LLONG_MAX : LLONG_MIN;
    return sum;
}

long long saturating_sub(long long a, long long b) {
    long long difference;
    if (__builtin_sub_overflow(a, b, &difference))
        return b < 0 ? LLONG_MAX : LLONG_MIN;
    return difference;
}

reg_subval::reg_subval(const std::string& name, const std::string& desc, bool garbage)
    : name(name), desc(desc) {
    if (garbage)
        subval_garbages().items.push_back(this);
}

reg_subval::~reg_subval() = default;

const std::string& reg_subval::get_name() { return name; }

const std::string& reg_subval::get_desc() { return desc; }

void reg_subval::_warn_out_of_range(long long delta, uint32_t current, uint32_t min, uint32_t max,
                                    uint32_t limit) {
    say("warning! applying %lld to current value %" PRIu32 " is out of range (%" PRIu32
        " ~ %" PRIu32 "). adjusted to %" PRIu32,
        delta, current, min, max, limit);
}

bool reg_subval::accepts(uint32_t v) {
    uint32_t min = 0;
    uint32_t max = 0;
    get_limits(&min, &max);
    return v >= min && v <= max;
}

std::string reg_subval::valid_values() {
    uint32_t min = 0;
    uint32_t max = 0;
    get_limits(&min, &max);
    return "in " + std::to_string(min) + ".." + std::to_string(max);
}

sweep_axis reg_subval::axis() {
    uint32_t min = 0;
    uint32_t max = 0;
    get_limits(&min, &max);
    return {min, max, 1, false};
}

std::vector<long long> reg_subval::table_keys() { return {}; }

uint32_t reg_subval::setting_for(long long axis_value) { return static_cast<uint32_t>(axis_value); }

bool reg_subval::axis_value_of(uint32_t value, long long* axis_value) {
    *axis_value = value;
    return true;
}

uint32_t reg_subval::clamp(long long value, uint32_t current, long long delta) {
    uint32_t min = 0;
    uint32_t max = 0;
    get_limits(&min, &max);
    if (value >= static_cast<long long>(min) && value <= static_cast<long long>(max))
        return static_cast<uint32_t>(value);
    const uint32_t limit = value < static_cast<long long>(min) ? min : max;
    _warn_out_of_range(delta, current, min, max, limit);
    return limit;
}

bool reg_subval::adjust(reg_info* reg, long long delta) {
    uint32_t current = 0;
    if (!get(reg, &current))
        return false;
    const long long wanted = saturating_add(current, delta);
    return set(reg, clamp(wanted, current, delta));
}

bool reg_subval::get_code(reg_info*, uint32_t*) { return false; }

bool reg_subval::set_code(reg_info*, uint32_t) { return false; }

reg_bitmask::reg_bitmask(int msb, int lsb, const std::string& name, const std::string& desc) {
    init(name, desc, msb, lsb);
}

reg_bitmask::~reg_bitmask() = default;

void reg_bitmask::init(const std::string& name, const std::string& desc, int msb, int lsb) {
    this->name = name;
    this->desc = desc;
    shift = lsb;
    const int width = msb - lsb + 1;
    mask = width >= 32 ? 0xffffffffu : (1u << width) - 1;
}

bool reg_bitmask::check_subval(uint32_t v) { return (v & mask) == v; }

uint32_t reg_bitmask::apply_subval(uint32_t word, uint32_t v) {
    // v is not masked again: the DQ field relies on its update bit passing through.
    return (word & ~(mask << shift)) | (v << shift);
}

bool reg_bitmask::accepts(uint32_t v) { return check_subval(v); }

bool reg_bitmask::_before_set(uint32_t&) { return true; }

bool reg_bitmask::_after_read(uint32_t&) { return true; }

void reg_bitmask::get_limits(uint32_t* min, uint32_t* max) {
    *min = 0;
    *max = mask;
}

bool reg_bitmask::set(reg_info* reg, uint32_t v) {
    if (!check_subval(v) || !_before_set(v))
        return false;
    const uint32_t word = reg->load(this);
    reg->store(this, apply_subval(word, v));
    return true;
}

bool reg_bitmask::get(reg_info* reg, uint32_t* out) {
    const uint32_t word = reg->load(this);
    *out = (word >> shift) & mask;
    return _after_read(*out);
}

reg_bitmask_map::reg_bitmask_map(int msb, int lsb, const std::string& name, const std::string& desc,
                                 const value_table* value_map)
    : reg_bitmask(msb, lsb, name, desc), value_map(value_map) {}

reg_bitmask_map::~reg_bitmask_map() = default;

bool reg_bitmask_map::check_subval(uint32_t v) { return value_map->count(v) != 0; }

std::string reg_bitmask_map::valid_values() {
    std::string keys;
    for (const auto& entry : *value_map)
        keys += (keys.empty() ? "one of " : ", ") + std::to_string(entry.first);
    return keys;
}

sweep_axis reg_bitmask_map::axis() {
    if (value_map->empty())
        return {};
    return {value_map->begin()->first, value_map->rbegin()->first, 1, false, "keys"};
}

std::vector<long long> reg_bitmask_map::table_keys() {
    std::vector<long long> keys;
    for (const auto& entry : *value_map)
        keys.push_back(entry.first);
    return keys;
}

bool reg_bitmask_map::_before_set(uint32_t& v) {
    auto found = value_map->find(v);
    if (found == value_map->end())
        return false;
    v = found->second;
    return true;
}

bool reg_bitmask_map::_after_read(uint32_t& v) {
    // Ascending key order: when two keys share a code the smaller one is shown.
    for (const auto& entry : *value_map) {
        if (entry.second == v) {
            v = entry.first;
            return true;
        }
    }
    return false;
}

bool reg_bitmask_map::get_code(reg_info* reg, uint32_t* code) {
    *code = (reg->load(this) >> shift) & mask;
    return true;
}

bool reg_bitmask_map::set_code(reg_info* reg, uint32_t code) {
    if ((code & mask) != code)
        return false;
    reg->store(this, apply_subval(reg->load(this), code));
    return true;
}

void reg_info::_read() { value = mmap_read(address); }

reg_info::~reg_info() = default;

void reg_info::commit() {
    mmap_write(address, value);
    _read();
}

uint32_t reg_info::load(reg_subval*) {
    if (!loaded) {
        const unsigned long failures = failed_accesses();
        _read();
        loaded = true;
        read_failed = failed_accesses() != failures;
    } else if (read_failed) {
        // Every field of the word is as unknown as the word itself.
        note_failed_access();
    }
    return value;
}

void reg_info::store(reg_subval*, uint32_t word) { value = word; }

void reg_info::invalidate() { loaded = false; }

void reg_info::add_garbage() { reginfo_garbages().items.push_back(this); }

property_register::property_register(std::string name, reg_info* reg, reg_subval* subval)
    : property(std::move(name)), reg(reg), subval(subval) {}

property_register::~property_register() = default;

void property_register::register_as_property(property_group* group, reg_info* reg) {
    for (const auto& entry : reg->subvals)
        register_as_property(group, reg, entry.first, entry.second);
}

property* property_register::register_as_property(property_group* group, reg_info* reg,
                                                  const std::string& field_name,
                                                  reg_subval* field) {
    std::string name;
    name.reserve(reg->name.size() + 2 + field_name.size());
    name.append(reg->name).append("::").append(field_name);
    auto* prop = new property_register(std::move(name), reg, field);
    if (property::register_property(group, prop))
        return prop;
    say("property %s is already registered.", prop->name.c_str());
    delete prop;
    return nullptr;
}

bool property_register::get(std::string& value) {
    uint32_t field = 0;
    if (!subval->get(reg, &field))
        return false;
    char text[16];
    std::snprintf(text, sizeof text, number_mode == 1 ? "0x%" PRIx32 : "%" PRIu32, field);
    value = text;
    return true;
}

namespace {

// strtoll/strtoull on the text; false when it holds no digit or the number
// is beyond 64 bits. An unsigned result is carried in the signed word as is.
bool parse_number(const std::string& text, int base, bool as_unsigned, long long* out) {
    const char* begin = text.c_str();
    char* end = nullptr;
    errno = 0;
    if (as_unsigned)
        *out = static_cast<long long>(std::strtoull(begin, &end, base));
    else
        *out = std::strtoll(begin, &end, base);
    return end != begin && errno != ERANGE;
}

bool report_unparsable(const std::string& text) {
    say("failed to parse value %s", text.c_str());
    return false;
}

}  // namespace

bool property_register::set(const std::string& value) {
    const bool hex_mode = number_mode == 1;
    if (!value.empty() && (value[0] == '-' || value[0] == '+')) {
        long long delta = 0;
        if (!parse_number(value, hex_mode ? 16 : 10, hex_mode, &delta))
            return report_unparsable(value);
        if (!subval->adjust(reg, delta))
            return false;
        reg->commit();
        return true;
    }
    if (value.empty())
        return false;
    const bool hex_prefix =
        value.size() >= 2 && value[0] == '0' && (value[1] == 'x' || value[1] == 'X');
    const bool base16 = hex_mode || hex_prefix;
    long long number = 0;
    if (!parse_number(value, base16 ? 16 : 10, base16, &number))
        return report_unparsable(value);
    if (!subval->set(reg, static_cast<uint32_t>(number)))
        return false;
    reg->commit();
    return true;
}

void property_register::get_help(std::string& help) { help = subval->get_desc(); }

bool property_register::check(const std::string& value, std::string* canonical,
                              std::string* problem) {
    uint32_t number = 0;
    if (!parse_strict_u32(value, &number, problem))
        return false;
    if (!subval->accepts(number)) {
        *problem = value + " is not " + subval->valid_values();
        return false;
    }
    *canonical = std::to_string(number);
    return true;
}

namespace {

const char code_prefix[] = "code ";

}  // namespace

bool property_register::save(std::string* value) {
    uint32_t code = 0;
    if (get(*value))
        return true;
    if (!subval->get_code(reg, &code))
        return false;
    *value = code_prefix + std::to_string(code);
    return true;
}

bool property_register::restore(const std::string& value) {
    if (value.compare(0, sizeof code_prefix - 1, code_prefix) != 0)
        return set(value);
    uint32_t code = 0;
    std::string problem;
    if (!parse_strict_u32(value.substr(sizeof code_prefix - 1), &code, &problem) ||
        !subval->set_code(reg, code))
        return false;
    reg->commit();
    return true;
}

void property_register::refresh() { reg->invalidate(); }

std::vector<long long> property_register::table_keys() const { return subval->table_keys(); }

sweep_axis property_register::axis() const { return subval->axis(); }

std::string property_register::setting_for(long long axis_value) const {
    return std::to_string(subval->setting_for(axis_value));
}

bool property_register::axis_value_of(const std::string& setting, long long* axis_value) const {
    uint32_t value = 0;
    std::string problem;
    return parse_strict_u32(setting, &value, &problem) && subval->axis_value_of(value, axis_value);
}
