// SPDX-License-Identifier: MIT
#include "registers/regctl.h"

#include <cerrno>
#include <cinttypes>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

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

value_domain reg_subval::domain() {
    uint32_t min = 0;
    uint32_t max = 0;
    get_limits(&min, &max);
    value_domain codes;
    codes.low = min;
    codes.high = max;
    codes.hex = true;
    return codes;
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

bool reg_subval::get_code(reg_info* reg, uint32_t* code) { return get(reg, code); }

bool reg_subval::set_code(reg_info* reg, uint32_t code) { return set(reg, code); }

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
    return get_code(reg, out) && _after_read(*out);
}

bool reg_bitmask::get_code(reg_info* reg, uint32_t* code) {
    *code = (reg->load(this) >> shift) & mask;
    return true;
}

reg_bitmask_map::reg_bitmask_map(int msb, int lsb, const std::string& name, const std::string& desc,
                                 const value_table* value_map)
    : reg_bitmask(msb, lsb, name, desc), value_map(value_map) {}

reg_bitmask_map::~reg_bitmask_map() = default;

bool reg_bitmask_map::check_subval(uint32_t v) { return value_map->count(v) != 0; }

value_domain reg_bitmask_map::domain() {
    value_domain keys = reg_bitmask::domain();
    keys.table = value_map;
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

bool reg_bitmask_map::set_code(reg_info* reg, uint32_t code) {
    if ((code & mask) != code)
        return false;
    reg->store(this, apply_subval(reg->load(this), code));
    return true;
}

void reg_info::_read() { value = read_word(address); }

reg_info::~reg_info() = default;

void reg_info::commit() {
    write_word(address, value);
    _read();
}

uint32_t reg_info::load(reg_subval*) {
    if (!loaded) {
        _read();
        loaded = true;
    } else if (read_failed) {
        // Every field of the word is as unknown as the word itself, which
        // has been said.
        note(access_result::failed());
    }
    return value;
}

void reg_info::store(reg_subval*, uint32_t word) { value = word; }

void reg_info::invalidate() { loaded = false; }

void reg_info::add_garbage() { reginfo_garbages().items.push_back(this); }

namespace {

// The memory unit has no error value: all it ever says is that an access
// failed, so what it says during one access is that access's failure.
access_result* heard = nullptr;

void hear(const std::string& line) { heard->add(access_result::failed(line)); }

template <typename Access>
access_result heard_during(Access access) {
    access_result result;
    heard = &result;
    const message_sink before = set_message_sink(hear);
    access();
    set_message_sink(before);
    heard = nullptr;
    return result;
}

}  // namespace

uint32_t reg_info::read_word(uint32_t address) {
    uint32_t word = 0;
    const access_result result = heard_during([&] { word = mmap_read(address); });
    read_failed = !result.ok;
    note(result);
    return word;
}

void reg_info::write_word(uint32_t address, uint32_t word) {
    note(heard_during([&] { mmap_write(address, word); }));
}

void reg_info::note(const access_result& result) {
    if (result.ok)
        return;
    if (kept_failures)
        kept_failures->add(result);
    else
        result.said();
}

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

void property_register::refresh() { reg->invalidate(); }

value_domain property_register::domain() { return subval->domain(); }

namespace {

// While it lives, what fails in the register's hardware accesses is kept for
// the typed access under way instead of said.
class kept_failures {
public:
    explicit kept_failures(reg_info* reg) : reg(reg) { reg->kept_failures = &result; }
    ~kept_failures() { reg->kept_failures = nullptr; }
    kept_failures(const kept_failures&) = delete;
    kept_failures& operator=(const kept_failures&) = delete;

    access_result result;

private:
    reg_info* reg;
};

}  // namespace

access_result property_register::read_code(long long* code) {
    kept_failures kept(reg);
    uint32_t field = 0;
    if (!subval->get_code(reg, &field))
        kept.result.add(access_result::failed());
    *code = field;
    return kept.result;
}

access_result property_register::write_code(long long code) {
    uint32_t min = 0;
    uint32_t max = 0;
    subval->get_limits(&min, &max);
    if (code < min || code > max)
        return access_result::failed();
    kept_failures kept(reg);
    if (subval->set_code(reg, static_cast<uint32_t>(code)))
        reg->commit();
    else
        kept.result.add(access_result::failed());
    return kept.result;
}
