// SPDX-License-Identifier: MIT
#include "tune/tune.h"

int main(int argc, char** argv) { return padkit_tune_main(argc, argv); }
