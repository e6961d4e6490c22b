// The text of a small file that is asked for again and again.
#pragma once

#include <string_view>

namespace zat {

// What stands in the file at `path`, as long as it was not changed lately; empty when it has to be
// read. The text stays as it is for good, on any thread.
std::string_view kept_text(const char* path);

} // namespace zat
