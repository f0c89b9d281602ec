// SPDX-License-Identifier: MIT
#include "fileprops/property_regulator_voltage.h"

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "properties/strict_value.h"
#include "runtime/message.h"

namespace {

constexpr double step_uv = 10000;

// Rounded up to the step; negative results become 0 and results past 32
// bits the largest word.
uint32_t on_step(double microvolts) {
    const double target = std::ceil(microvolts / step_uv) * step_uv;
    if (!(target > 0))
        return 0;
    if (target >= 4294967295.0)
        return 4294967295u;
    return static_cast<uint32_t>(target);
}

// The leading number of the text as strtod reads it; false when the text
// does not begin with one or it is not finite.
bool parse_double(const std::string& text, double* out) {
    const char* begin = text.c_str();
    char* end = nullptr;
    *out = std::strtod(begin, &end);
    return end != begin && std::isfinite(*out);
}

// Microvolts as the file's first word. The word is read as a 64-bit number on
// every target, so that no value wraps; one that is not a decimal integer
// from 0 to what the driver takes (an int) is no usable reading.
bool read_microvolts(const kernel_file& file, int64_t* out) {
    std::string word;
    if (!file.read_first_word(&word))
        return false;
    const char* begin = word.c_str();
    char* end = nullptr;
    errno = 0;
    const long long number = std::strtoll(begin, &end, 10);
    if (end == begin || errno == ERANGE || number < 0 || number > INT32_MAX)
        return false;
    *out = number;
    return true;
}

}  // namespace

property_regulator_voltage::property_regulator_voltage(const std::string& name,
                                                       const std::string& path, double pct_min,
                                                       double pct_max)
    : property(name),
      microvolts_file(path + "/microvolts"),
      min_file(path + "/min_microvolts"),
      max_file(path + "/max_microvolts"),
      pct_min(pct_min),
      pct_max(pct_max) {}

property_regulator_voltage::~property_regulator_voltage() = default;

bool property_regulator_voltage::_load_limits() {
    if (!limits_loaded)
        limits_loaded = read_microvolts(min_file, &min_uv) && read_microvolts(max_file, &max_uv) &&
                        min_uv <= max_uv;
    return limits_loaded;
}

bool property_regulator_voltage::_load_base() {
    if (!base_loaded)
        base_loaded = read_microvolts(microvolts_file, &base_uv) && _load_limits();
    return base_loaded;
}

bool property_regulator_voltage::get(std::string& value) {
    long long microvolts = 0;
    if (!read_code(&microvolts).ok)
        return false;
    value = std::to_string(microvolts);
    return true;
}

bool property_regulator_voltage::set(const std::string& value) {
    if (!_load_base())
        return false;
    double number = 0;
    if (!parse_double(value, &number)) {
        say("failed to parse value %s", value.c_str());
        return false;
    }
    if (value.size() >= 2 && value.back() == '%') {
        if (number > pct_max || number < pct_min) {
            say("percentage %g%%: out of range", number);
            return false;
        }
        return write_target(on_step(base_uv * number / 100)).said();
    }
    return write_target(on_step(number)).said();
}

access_result property_regulator_voltage::write_target(uint32_t target) {
    if (target < min_uv || target > max_uv)
        return access_result::failed(std::to_string(target) + "mv: out of range(" +
                                     std::to_string(min_uv) + "-" + std::to_string(max_uv) + ")");
    std::string problem;
    switch (microvolts_file.write(std::to_string(target), &problem)) {
    case write_result::written: return {};
    case write_result::not_opened: return access_result::failed();
    case write_result::not_written: break;
    }
    return access_result::failed(problem);
}

void property_regulator_voltage::refresh() { limits_loaded = base_loaded = false; }

value_domain property_regulator_voltage::domain() {
    value_domain microvolts;
    microvolts.step = static_cast<long long>(step_uv);
    microvolts.unit = "microvolts";
    microvolts.range_name = "the regulator's limits ";
    if (_load_limits()) {
        microvolts.low = min_uv;
        microvolts.high = max_uv;
    } else {
        microvolts.high = INT32_MAX;
        microvolts.unknown = "cannot read the limits of " + name;
    }
    return microvolts;
}

access_result property_regulator_voltage::read_code(long long* code) {
    int64_t microvolts = 0;
    if (!_load_base() || !read_microvolts(microvolts_file, &microvolts))
        return access_result::failed();
    *code = microvolts;
    return {};
}

access_result property_regulator_voltage::write_code(long long code) {
    if (!_load_limits())
        return access_result::failed();
    return write_target(on_step(static_cast<double>(code)));
}
