// SPDX-License-Identifier: MIT
// What became of one access of the hardware or of a driver file, handed back
// to the caller instead of said: padkit says it at once, padkit-tune names the
// setting it concerns.
#ifndef PADKIT_ACCESS_RESULT_H
#define PADKIT_ACCESS_RESULT_H

#include <string>
#include <vector>

struct access_result {
    bool ok = true;
    // What the layers below have to say about a failure, a line each; none
    // when it was said already (a register word whose read failed before).
    std::vector<std::string> lines;

    static access_result failed(std::string line = "");
    // Takes on another access's failure, if any.
    void add(const access_result& other);
    // Says the lines (runtime/message.h); gives ok.
    bool said() const;
};

#endif
