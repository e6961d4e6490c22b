#include "memory_input.h"

#include "input_file.h"
#include "memory_file_access.h"
#include "zat/zat.h"

#include <fstream>
#include <string>
#include <vector>

namespace zat::test {

namespace {

// The first entries of every section: a search through all of them costs more than most files do.
std::vector<uint8_t> short_catalogue() {
    constexpr int kept = 5;
    SetPath(ZAT_CATALOGUE);
    std::ifstream in(ZAT_CATALOGUE "zat-codec.ini", std::ios::binary);
    std::vector<uint8_t> catalogue;
    int lines = 0;
    for (std::string line; std::getline(in, line);) {
        lines = line.starts_with('[') ? 0 : lines + 1;
        if (lines <= kept) {
            line += '\n';
            catalogue.insert(catalogue.end(), line.begin(), line.end());
        }
    }
    return catalogue;
}

} // namespace

const char* put_in_memory(Bytes bytes, int64_t size) {
    static const std::vector<uint8_t> catalogue = short_catalogue();
    memory_files = {};
    memory_files.media = bytes;
    memory_files.repeated_size = size == static_cast<int64_t>(bytes.size()) ? 0 : size;
    memory_files.catalogue = catalogue;
    return "input";
}

InputCost input_cost() {
    return {memory_files.reads, memory_files.bytes_read, memory_files.highest_reserved};
}

int64_t left_behind() {
    return memory_files.open_files + memory_files.reserved_memory;
}

} // namespace zat::test
