// SPDX-License-Identifier: MIT
#include "tune/result_csv.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "properties/property.h"
#include "properties/strict_value.h"
#include "runtime/report.h"
#include "tune/profile/input_text.h"
#include "tune/sweep_options.h"
#include "tune/sweep_plan.h"

namespace {

// Far beyond the CSV of any sweep: a larger file is a mistake (or /dev/zero).
constexpr std::size_t max_csv_size = 16 * 1024 * 1024;
// Longer fields are no property's, value or result, and are shown cut.
constexpr std::size_t max_field_size = 256;
constexpr std::size_t shown_field_size = 40;

}  // namespace

fact values_fact(const std::string& name, const value_axis& axis) {
    std::string values = name;
    for (const std::string& text : axis.texts())
        values += " " + text;
    return {"values", values};
}

fact original_fact(property* prop, long long code) {
    return {"original", prop->name + " = " + prop->domain().told(code)};
}

bool read_csv_file(const std::string& path, std::string* text, struct stat* identity) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0 || fstat(fd, identity) != 0) {
        report("%s: %s", shown(path).c_str(), std::strerror(errno));
        if (fd >= 0)
            close(fd);
        return false;
    }
    const bool read = read_bounded(fd, shown(path), max_csv_size, text);
    close(fd);
    return read;
}

bool read_csv_lines(const std::string& text, const std::string& path, facts* about,
                    const csv_line_taker& take) {
    std::string::size_type start = after_byte_order_mark(text);
    bool header = true;
    for (int number = 1; start < text.size(); ++number) {
        std::string::size_type end = text.find('\n', start);
        if (end == std::string::npos)
            end = text.size();
        const std::string line = trimmed(text.substr(start, end - start));
        start = end + 1;
        std::string problem;
        fact each;
        if (parse_fact_line(line, &each))
            about->push_back(each);
        else if ((header || !line.empty()) && !take(line, header, &problem)) {
            report("%s:%d: %s", path.c_str(), number, problem.c_str());
            return false;
        } else
            header = false;
    }
    return true;
}

bool csv_fields(const std::string& line, std::size_t count, const char* expected,
                std::vector<std::string>* fields, std::string* problem) {
    fields->clear();
    for (std::string::size_type start = 0;;) {
        const std::string::size_type comma = line.find(',', start);
        fields->push_back(line.substr(start, comma - start));
        if (comma == std::string::npos)
            break;
        start = comma + 1;
    }
    if (fields->size() != count)
        return *problem = std::string("expected ") + expected, false;
    for (const std::string& field : *fields)
        if (field.size() > max_field_size)
            return *problem = "'" + shown(field, shown_field_size) + "' is too long", false;
    return true;
}

bool axis_value(const std::string& name, const std::string& text, value_domain* domain,
                long long* value, std::string* problem) {
    property* prop = name.empty() ? nullptr : property::get_property(name);
    if (!prop)
        return *problem = name.empty() ? "missing name" : "no property " + shown(name), false;
    *domain = prop->domain();
    if (!domain->axis().sweepable())
        return *problem = name + ": cannot be swept", false;
    if (!parse_signed_value(text, value, problem))
        return *problem = name + ": " + shown(*problem), false;
    const std::vector<long long> keys = domain->keys();
    if (keys.empty() ? !domain->axis().holds(*value)
                     : !std::binary_search(keys.begin(), keys.end(), *value))
        return *problem = name + ": " + text + " is not on its axis", false;
    return true;
}

bool csv_outcome(const std::string& text, outcome* result, std::string* problem) {
    if (parse_outcome(text, result))
        return true;
    *problem = "'" + shown(text) + "' is not pass, fail, timeout or hang";
    return false;
}

bool take_sweep_row(const std::string& line, swept_cells* cells, std::string* problem) {
    std::vector<std::string> fields;
    value_domain domain;
    long long value = 0;
    outcome result = outcome::pass;
    if (!csv_fields(line, 3, "NAME,VALUE,RESULT", &fields, problem) ||
        !axis_value(fields[0], fields[1], &domain, &value, problem) ||
        !csv_outcome(fields[2], &result, problem))
        return false;
    const std::string& name = fields[0];
    board_cells& row = cells->cells[name];
    if (row.values.empty())
        cells->names.push_back(name);
    if (!cells->seen[name].insert(value).second)
        return *problem = name + ": " + fields[1] + " given twice", false;
    if (row.values.size() == max_sweep_values)
        return *problem = name + ": more than " + std::to_string(max_sweep_values) + " values",
               false;
    row.values.push_back(value);
    row.results.push_back(result);
    return true;
}
