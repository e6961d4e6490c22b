// Names for the type codes that a host shows.
#pragma once

#include <cstdint>
#include <string>

namespace host {

// The enumerator of zat.h, such as "FILETYPE_MP3"; empty for a code without one.
std::string type_name(uint32_t type_code);

} // namespace host
