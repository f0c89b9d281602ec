// SPDX-License-Identifier: MIT
// A property's values as data, counted in codes as the hardware holds them:
// which values a profile may name, how a sweep walks them and how they are
// shown. padkit-tune and the completion know a property by its domain and
// its two typed accessors (property.h) alone.
#ifndef PADKIT_VALUE_DOMAIN_H
#define PADKIT_VALUE_DOMAIN_H

#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <vector>

// How a sweep walks a property: the range of its axis, in the property's own
// terms, which may differ from its codes (a DQ delay's).
struct sweep_axis {
    long long low = 0, high = -1;  // low > high: the property is not swept
    long long step = 1;            // the distance between two swept values unless told otherwise
    bool is_signed = false;        // values are shown with their sign: -3, 0, +5
    // What a value counts, in the plural: margins and pictures name it.
    const char* unit = "codes";

    bool sweepable() const { return low <= high; }
    bool holds(long long value) const { return value >= low && value <= high; }
};

struct value_domain {
    using value_table = std::map<uint32_t, uint32_t>;

    long long low = 0, high = -1;  // the codes; none (nothing to set) when low > high
    long long step = 1;            // the values are its multiples
    // Key to code: only a code that a key names is a value, and a profile
    // names it by its key (the smaller of two keys of one code).
    const value_table* table = nullptr;
    // A composite: the properties it stands for, in order. It has no code of
    // its own.
    const std::list<std::string>* members = nullptr;
    // Not 0: a delay in sign-magnitude, swept as a signed axis. The bit set
    // means +(code - bit), clear -code, so both 0 and the bit are delay 0.
    long long direction_bit = 0;
    bool hex = false;             // shown in hexadecimal when asked (dump -x)
    const char* range_name = "";  // messages say "in <range_name>LOW..HIGH"
    const char* unit = "";        // what a code counts, for messages
    // Why the range cannot be told now (a limit file unreadable); low and
    // high are then the widest the property can have.
    std::string unknown;

    // A value as a profile names it, read strictly (strict_value.h): its
    // code, or what is wrong with it.
    bool code_of(const std::string& text, long long* code, std::string* problem) const;
    // Whether the code is a value (in range, on the step, named by a key);
    // else why not, as "is not in 0..3".
    bool holds(long long code, std::string* why_not) const;

    // The value as a profile holds it: its key, or the number, in
    // hexadecimal when asked and the domain is; false for a code that no key
    // names.
    bool value_text(long long code, bool hex, std::string* text) const;
    // Any code the hardware may hold, as padkit-tune shows it: "code N"
    // where no key names it.
    std::string shown(long long code) const;
    // A DQ delay's code as a signed delay: "-1", "+3"; the two codes of
    // delay 0 as "-0" and "+0". Empty for any other domain or a code that
    // stands for no delay.
    std::string delay_text(long long code) const;
    // shown() for people, a DQ delay with its delay beside it: "1 (delay -1)".
    std::string told(long long code) const;
    // The code that shown() gives the text for, one of the domain's codes
    // low..high (a code that no key names, or off the step, is one the
    // hardware may hold); else what is wrong with the text.
    bool code_of_shown(const std::string& text, long long* code, std::string* problem) const;

    // The sweep's axis: the keys, the signed delays or the codes.
    sweep_axis axis() const;
    // The keys of the table, rising; none without a table.
    std::vector<long long> keys() const;
    // The code of a value on the axis (-1 for a value that is not), and the
    // axis value of a code (false when it stands for none).
    long long code_at(long long axis_value) const;
    bool axis_value_of(long long code, long long* axis_value) const;

private:
    // "in 2..255", "one of 0, 40, 60, 120".
    std::string range_text() const;
    // The key that names a code.
    const value_table::value_type* key_of(long long code) const;
    // The code of a value as people name it: a key of the table, or the code
    // itself; false for a number that is no key.
    bool code_named(long long value, long long* code) const;
};

#endif
