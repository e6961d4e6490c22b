// The name texts of the type codes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr size_t file_type_name_size = 32; // room for every name with its terminator

// Writes the name of a ZatFileType into `out` of file_type_name_size bytes, which stays as it is
// for a code without a name.
void FileTypeName(uint32_t type_code, char* out);

} // namespace zat
