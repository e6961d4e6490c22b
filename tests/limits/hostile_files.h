// The worst files that we know of: gigabytes of what costs most for the least of bytes.
#pragma once

#include "limits/virtual_file.h"

namespace zat::test {

// Built ones, each for a loop of one kind.
std::vector<VirtualFile> built_hostile_files();

// What a true file turns into when its parts are repeated without end, or something else follows.
std::vector<VirtualFile> grown_files(const std::string& name, const std::vector<uint8_t>& seed);

// True ones: what a camera or a broadcaster writes in many hours, and one that goes on until all that
// may be read is read.
VirtualFile movie_of_fragments(uint64_t count);
VirtualFile movie_without_end();

} // namespace zat::test
