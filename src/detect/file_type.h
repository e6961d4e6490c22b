// The name texts of the type codes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zat {

constexpr size_t file_type_name_size = 32; // room for every name with its terminator

// Writes the name of a ZatFileType as traces show it; `out` stays as it is for a code without one.
void FileTypeName(uint32_t type_code, char (&out)[file_type_name_size]);

// The enumerator of a ZatFileType without "FILETYPE_"; empty for a code without one.
std::string_view type_enumerator(uint32_t type_code);

// The format of such files as the typed details name it, "Matroska", where the file itself does not
// tell more (WebM). Empty for a code of no file.
std::string_view type_format(uint32_t type_code);

} // namespace zat
