// SPDX-License-Identifier: MIT
// A property kept as one decimal integer in a kernel text file.
#ifndef PADKIT_PROPERTY_FILE_H
#define PADKIT_PROPERTY_FILE_H

#include <string>

#include "fileprops/kernel_file.h"
#include "properties/property.h"

template <typename T>
class property_file;

// The file is read at construction, which says what makes it unusable, and
// read again by every get and set, so that a run holding the lock works on
// what the file holds then; every accepted write rewrites it.
template <>
class property_file<int> : public property {
public:
    property_file(const std::string& name, const std::string& path, int min, int max);
    ~property_file() override;

    bool set(const std::string& value) override;
    bool get(std::string& value) override;
    bool check(const std::string& value, std::string* canonical, std::string* problem) override;
    // Every integer from min to max.
    sweep_axis axis() const override;

    virtual bool read_update();
    virtual bool commit();
    virtual void warn_about_range(const std::string& text, int bound);

    kernel_file file;
    int value = 0;
    int min;
    int max;
    bool valid = false;

private:
    // Prints the message unless it is the one given last: a file that stays
    // unusable is reported once, however often it is read.
    void report(const std::string& message);

    std::string last_report;
};

#endif
