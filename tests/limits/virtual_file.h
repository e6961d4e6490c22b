// Files of any size that exist only while they are measured: what the library asks the system for a
// path that begins with "virtual:" is answered from pieces that repeat.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zat::test {

// `size` bytes of the pattern over and over.
struct Piece {
    std::vector<uint8_t> pattern;
    uint64_t size;
    bool hole = false; // zeros that the file system does not store
};

struct VirtualFile {
    std::string name;
    std::vector<Piece> pieces = {};

    VirtualFile& add(const std::vector<uint8_t>& bytes);
    VirtualFile& repeat(const std::vector<uint8_t>& pattern, uint64_t size);
    VirtualFile& hole(uint64_t size);
    uint64_t size() const;
};

// What the library asked of the system since the last reset_costs.
struct SystemCosts {
    uint64_t reads;
    uint64_t bytes_read;
    uint64_t memory;      // bytes allocated or mapped at present
    uint64_t peak_memory; // at the most
};

extern SystemCosts system_costs;
void reset_costs();

// The file that "virtual:" names from now on; it must live on.
void serve(const VirtualFile* file);
inline constexpr std::string_view virtual_path = "virtual:file";

} // namespace zat::test
