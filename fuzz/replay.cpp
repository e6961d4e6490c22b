// Runs the fuzz target on files: replay FOLDER... Says in which of them it failed.
#include "target.h"

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sanitizer/common_interface_defs.h>
#include <vector>

#pragma weak __sanitizer_set_death_callback // missing in a build without sanitizers

namespace {

std::filesystem::path current;

void name_file() {
    std::fprintf(stderr, "in %s\n", current.c_str());
}

} // namespace

int main(int argc, char** argv) {
    std::signal(SIGABRT, [](int) { name_file(); });
    if (__sanitizer_set_death_callback != nullptr) {
        __sanitizer_set_death_callback(name_file);
    }
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i])) {
            if (entry.is_regular_file()) {
                current = entry.path();
                std::ifstream in(current, std::ios::binary);
                const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
                LLVMFuzzerTestOneInput(
                    reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
                ++count;
            }
        }
    }
    std::printf("%d files replayed\n", count);
    return count == 0 ? 1 : 0;
}
