// SPDX-License-Identifier: MIT
#include "cli/padkit.h"

int main(int argc, char** argv) { return padkit_main(argc, argv); }
