// SPDX-License-Identifier: MIT
// The simulated board's data bus: the DQ lines of the controller a sweep
// names, judged by their eyes; a line outside its eye flips its bit.
#include <cstdlib>
#include <string>

#include "memtest/data_bus.h"
#include "runtime/report.h"
#include "sim/ddr_phy.h"
#include "sim/eye.h"

bool data_bus_faults(unsigned width, bus_faults* faults) {
    const char* name = std::getenv("PADKIT_SWEEP_BUS");
    const sim::ddr_phy* phy = sim::find_ddr_phy(name ? name : "");
    if (!phy) {
        std::string names;
        for (const sim::ddr_phy& each : sim::ddr_phys)
            names += names.empty() ? each.name : std::string(" or ") + each.name;
        report("PADKIT_SWEEP_BUS must name the controller of the bus: %s", names.c_str());
        return false;
    }
    const unsigned phy_width = 8 * static_cast<unsigned>(phy->lanes);
    if (width != phy_width) {
        report("%s has a %u-bit bus; give --bus-width %u", phy->name, phy_width, phy_width);
        return false;
    }
    *faults = {};
    faults->flipped = sim::failing_data_bits(*phy);
    return true;
}
