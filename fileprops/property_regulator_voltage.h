// SPDX-License-Identifier: MIT
// The output voltage of a Linux regulator, through its sysfs directory.
#ifndef PADKIT_PROPERTY_REGULATOR_VOLTAGE_H
#define PADKIT_PROPERTY_REGULATOR_VOLTAGE_H

#include <cstdint>
#include <string>

#include "fileprops/kernel_file.h"
#include "properties/property.h"

// Reads microvolts; writes microvolts or a percentage of the voltage found at
// first use, rounded up to 10 mV and refused outside the regulator's limits.
// A file whose first word is not a decimal integer from 0 to INT32_MAX, or
// limits with min above max, make the regulator unreadable.
class property_regulator_voltage : public property {
public:
    property_regulator_voltage(const std::string& name, const std::string& path, double pct_min,
                               double pct_max);
    ~property_regulator_voltage() override;

    bool set(const std::string& value) override;
    bool get(std::string& value) override;
    // Reads the voltage found at first use and the limit files again at the
    // next use.
    void refresh() override;
    // Microvolts on the 10 mV step within the limit files: what set() writes
    // unchanged, since it rounds and refuses nothing else.
    value_domain domain() override;
    access_result read_code(long long* code) override;
    // Rounds up to the 10 mV step, as set() does.
    access_result write_code(long long code) override;

    const kernel_file microvolts_file;
    const kernel_file min_file;
    const kernel_file max_file;
    double pct_min;
    double pct_max;
    int64_t min_uv = 0;
    int64_t max_uv = 0;
    bool limits_loaded = false;
    int64_t base_uv = 0;
    bool base_loaded = false;

private:
    // The limit files, all that the domain and a code's write need.
    bool _load_limits();
    // The voltage found at first use, then the limits.
    bool _load_base();
    // Writes microvolts within the limits; says what refuses or fails.
    access_result write_target(uint32_t target);
};

#endif
