// Which files --type shows.
#pragma once

#include "description.h"

#include <string>
#include <string_view>
#include <vector>

namespace host {

// Whether the word names a kind of file ("video", "audio", "picture") or a format ("Matroska", or
// "MATROSKA" as in the type's enumerator). ASCII letters match in either case.
bool is_type_filter(std::string_view word);

// All kinds and formats, for people.
std::string type_filter_names();

// Whether one of the words names the file's kind or format. A file is video when it has a video
// stream, unless it is a picture, and else audio; with its type alone, what such files mostly are.
bool has_type(const Description& description, const std::vector<std::string>& words);

} // namespace host
