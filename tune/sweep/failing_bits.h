// SPDX-License-Identifier: MIT
// The failing-bits file of a test command: the command finds its name in
// PADKIT_FAILING_BITS, a file that does not exist when it starts, and may
// write into it the decimal numbers of the data bits of the bus
// (PADKIT_SWEEP_BUS) that failed, separated by blanks or new lines.
#ifndef PADKIT_FAILING_BITS_H
#define PADKIT_FAILING_BITS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tune/sweep/outcome.h"

struct failing_bits {
    enum kind {
        absent,   // not created: the exit status decides
        named,    // the bits that failed; none when the file is empty
        garbled,  // anything else: every bit fails
    };
    kind what;
    uint64_t bits;        // when named, bit N for data bit N of a bus of at most 64
    std::string problem;  // when garbled
};

// The data bits that judge a point's members, in order, on a bus WIDTH bits
// wide; none: the exit status judges the point as one.
struct member_bits {
    unsigned width = 0;
    std::vector<unsigned> bits;
    std::size_t members() const { return bits.empty() ? 1 : bits.size(); }
};

// The failing bits a file's text names on a bus WIDTH bits wide.
failing_bits parse_failing_bits(const std::string& text, unsigned width);

// The file at PATH, as the command left it.
failing_bits read_failing_bits(const std::string& path, unsigned width);

// Fails the members that one run of the command failed: each by its bit when
// the file names bits, every one when it is garbled, and when it is absent
// (or the members have no bits) every one unless the command PASSED.
void judge_run(bool passed, const failing_bits& file, const member_bits& judged,
               std::vector<outcome>* results);

// A private directory for the file, made when first asked for and removed,
// with what is in it, when it goes away or is removed.
class failing_bits_place {
public:
    failing_bits_place() = default;
    failing_bits_place(const failing_bits_place&) = delete;
    failing_bits_place& operator=(const failing_bits_place&) = delete;
    ~failing_bits_place() { remove(); }

    // The file's name, which does not exist on return; empty, said, when
    // the directory cannot be made or the file not removed.
    std::string fresh_file();
    void remove();

private:
    std::string directory;
};

#endif
