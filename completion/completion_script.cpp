// SPDX-License-Identifier: MIT
// Writes the bash completion script: the template with its line
// "@PADKIT_MAP_KEYS@" replaced by one case arm per table-mapped field, whose
// keys the listing does not show.
// Usage: padkit_completion_script TEMPLATE OUTPUT
#include <fstream>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "properties/property.h"

namespace {

void write_map_keys(std::ostream& out) {
    for (const auto& [name, prop] : property::properties()) {
        const std::vector<long long> keys = prop->domain().keys();
        if (keys.empty())
            continue;
        out << "        " << name << ") echo";
        for (long long key : keys)
            out << ' ' << key;
        out << " ;;\n";
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    std::ifstream in(argv[1]);
    std::ofstream out(argv[2]);
    platform_register_properties();
    for (std::string line; std::getline(in, line);) {
        if (line == "@PADKIT_MAP_KEYS@")
            write_map_keys(out);
        else
            out << line << '\n';
    }
    free_registered_properties();
    out.close();
    return in.eof() && out ? 0 : 1;
}
