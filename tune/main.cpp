// SPDX-License-Identifier: MIT
#include "fileprops/property_file.h"
#include "tune/tune.h"

namespace {

// Before the catalogue is built: padkit-tune reads a driver file only when a
// subcommand needs it, so that -h and --version need no board, and what
// makes the file unusable is said when the setting is read.
__attribute__((constructor(102))) void read_driver_files_when_used() {
    property_file<int>::read_at_construction = false;
}

}  // namespace

int main(int argc, char** argv) { return padkit_tune_main(argc, argv); }
