// Texts in the columns of a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

// Columns that UTF-8 takes: two for a wide character (Unicode, UAX #11), none for a combining one.
size_t text_width(std::string_view utf8);

// The text, its end replaced by "…" when it is wider.
std::string cut_to_width(const std::string& utf8, size_t columns);

// The text with control characters as "\x1B", so that none reaches the terminal.
std::string printable(std::string_view utf8);

// The same, but tabs and line ends stay.
std::string printable_lines(std::string_view utf8);

} // namespace host
