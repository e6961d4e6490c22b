// A file's description as one line of aligned columns, for people with many files.
#pragma once

#include "description.h"

#include <cstddef>
#include <string>

namespace host {

// Type, duration, the first video and audio stream, bit rate and name, with its line end. At most
// `columns` wide unless that is 0. Empty for a file that could not be examined.
std::string table_line(const Description& description, size_t columns);

} // namespace host
