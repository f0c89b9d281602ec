#include "fileprops/property_regulator_voltage.h"

#include <cerrno>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "fileprops/text_file.h"
#include "properties/strict_value.h"

namespace {

constexpr double step_uv = 10000;

// Negative results become 0 and results past 32 bits the largest word.
uint32_t to_microvolts(double target) {
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

}  // namespace

property_regulator_voltage::property_regulator_voltage(const std::string& name,
                                                       const std::string& path, double pct_min,
                                                       double pct_max)
    : property(name), path(path), pct_min(pct_min), pct_max(pct_max) {}

property_regulator_voltage::~property_regulator_voltage() = default;

bool property_regulator_voltage::_fileintread(const std::string& file, int* out) {
    std::string word;
    if (!read_first_word(file, &word))
        return false;
    const char* begin = word.c_str();
    char* end = nullptr;
    errno = 0;
    const long number = std::strtol(begin, &end, 10);
    // A word that holds no number, or one beyond long, is no usable reading.
    if (end == begin || errno == ERANGE)
        return false;
    *out = static_cast<int>(number);
    return true;
}

bool property_regulator_voltage::_fileintwrite(const std::string& file, int n) {
    return write_text(file, std::to_string(n));
}

bool property_regulator_voltage::_load_limits() {
    if (limits_loaded)
        return true;
    int microvolts = 0;
    int lowest = 0;
    int highest = 0;
    if (!_fileintread(path + "/microvolts", &microvolts) || microvolts < 0)
        return false;
    base_uv = static_cast<uint32_t>(microvolts);
    if (!_fileintread(path + "/min_microvolts", &lowest))
        return false;
    min_uv = static_cast<uint32_t>(lowest);
    if (!_fileintread(path + "/max_microvolts", &highest))
        return false;
    max_uv = static_cast<uint32_t>(highest);
    limits_loaded = true;
    return true;
}

bool property_regulator_voltage::get(std::string& value) {
    int microvolts = 0;
    if (!_load_limits() || !_fileintread(path + "/microvolts", &microvolts) || microvolts < 0)
        return false;
    value = std::to_string(static_cast<uint32_t>(microvolts));
    return true;
}

bool property_regulator_voltage::set(const std::string& value) {
    if (!_load_limits())
        return false;
    double number = 0;
    if (!parse_double(value, &number)) {
        std::fprintf(stderr, "failed to parse value %s\n", value.c_str());
        return false;
    }
    uint32_t target = 0;
    if (value.size() >= 2 && value.back() == '%') {
        if (number > pct_max || number < pct_min) {
            std::fprintf(stderr, "percentage %g%%: out of range\n", number);
            return false;
        }
        target = to_microvolts(std::ceil(base_uv * number / 100 / step_uv) * step_uv);
    } else {
        target = to_microvolts(std::ceil(number / step_uv) * step_uv);
    }
    if (target < min_uv || target > max_uv) {
        std::fprintf(stderr, "%" PRIu32 "mv: out of range(%" PRIu32 "-%" PRIu32 ")\n", target,
                     min_uv, max_uv);
        return false;
    }
    return _fileintwrite(path + "/microvolts", static_cast<int>(target));
}

bool property_regulator_voltage::check(const std::string& value, std::string* canonical,
                                       std::string* problem) {
    uint32_t microvolts = 0;
    if (!parse_strict_u32(value, &microvolts, problem))
        return false;
    if (!_load_limits()) {
        *problem = "cannot read the limits of " + path;
        return false;
    }
    if (microvolts < min_uv || microvolts > max_uv) {
        *problem = value + " is not in the regulator's limits " + std::to_string(min_uv) + ".." +
                   std::to_string(max_uv);
        return false;
    }
    if (microvolts % static_cast<uint32_t>(step_uv) != 0) {
        *problem = value + " is not a multiple of " + std::to_string(static_cast<uint32_t>(step_uv)) +
                   " microvolts";
        return false;
    }
    *canonical = std::to_string(microvolts);
    return true;
}

void property_regulator_voltage::refresh() { limits_loaded = false; }
