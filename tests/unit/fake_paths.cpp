// SPDX-License-Identifier: MIT
// A fake of path resolution for the unit tests: every absolute path of the board lands in
// this process's temporary directory; any other path stops the tests at once,
// so no test can reach a file of the host.
#include <stdlib.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "paths/system_paths.h"

namespace {

char root[] = "/tmp/padkit-unit-XXXXXX";

const char* test_root() {
    static const bool made = mkdtemp(root) && std::atexit([] {
                                                  std::error_code ec;
                                                  std::filesystem::remove_all(root, ec);
                                              }) == 0;
    if (!made)
        std::abort();
    return root;
}

}  // namespace

std::string system_path(const std::string& path) {
    if (path.empty() || path[0] != '/' || path.find("/..") != std::string::npos) {
        std::fprintf(stderr, "a unit test opened %s, outside its temporary directory\n", path.c_str());
        std::abort();
    }
    return test_root() + path;
}
