// The text of a small file that is asked for again and again.
#pragma once

#include <string_view>

namespace zat {

// What stands in the file at `path` now. Empty when the caller has to read it: it is large, was
// changed within the last seconds, or has no place left. The view stays valid for good, on any
// thread.
std::string_view kept_text(const char* path);

} // namespace zat
