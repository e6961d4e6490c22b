// Runs the fuzz target on files, for the normal test run: replay PATH...
#include "target.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

int main(int argc, char** argv) {
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i])) {
            if (entry.is_regular_file()) {
                std::ifstream in(entry.path(), std::ios::binary);
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
