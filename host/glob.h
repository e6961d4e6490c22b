// Patterns for the names of files.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

// Whether the UTF-8 name matches as a whole: "*" stands for any characters, "?" for one, and ASCII
// letters match in either case.
bool matches(std::string_view pattern, std::string_view name);

bool matches_any(const std::vector<std::string>& patterns, std::string_view name);

} // namespace host
