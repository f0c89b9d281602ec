// The driver's whole argument vector: one run per input, the words separated
// by newlines.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "cli/padkit.h"
#include "platform/tarnm.h"
#include "tests/unit/fake_hw.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Built once before the first run: a run's end must not delete them.
    for (auto* list : {&tarnm::regulators, &tarnm::mmc_rdqs})
        for (property* prop : *list)
            prop->delete_on_unregister = false;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::istringstream input(std::string(reinterpret_cast<const char*>(data), size));
    std::vector<std::string> words{"padkit"};
    for (std::string word; words.size() < 8 && std::getline(input, word);)
        words.push_back(word);
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    optind = 0;  // glibc: start getopt afresh
    property::number_mode = 0;
    fake_hw::reset();
    const int status = padkit_main(static_cast<int>(words.size()), argv.data());
    if (status != 0 && status != -2 && status != -3 && status != -10 && status != -11)
        abort();  // not even -1: the board's lock can always be taken here
    return 0;
}
