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
    // Every integer from min to max.
    value_domain domain() override;
    access_result read_code(long long* code) override;
    // Refuses a code outside min..max.
    access_result write_code(long long code) override;

    virtual bool read_update();
    virtual bool commit();
    virtual void warn_about_range(const std::string& text, int bound);

    // padkit reads the file when the catalogue is built, to say at start-up
    // what makes it unusable. A program that says so at the first access
    // instead, and may need no board at all, clears this before static
    // objects are built.
    static bool read_at_construction;

    kernel_file file;
    int value = 0;
    int min;
    int max;
    bool valid = false;

private:
    // What read_update and commit do, handing back what they have to say.
    access_result fetch();
    access_result store();
    // A failure that says the message unless it is the one given last: a
    // file that stays unusable is reported once, however often it is read.
    access_result failure(const std::string& message);

    std::string last_report;
};

#endif
