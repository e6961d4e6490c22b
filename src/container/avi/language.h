// Windows language identifiers.
#pragma once

#include <cstdint>
#include <string_view>

namespace zat::avi {

// ISO 639-2 by the primary language; empty for the neutral one and those without a row.
std::string_view language_of(uint16_t identifier);

} // namespace zat::avi
