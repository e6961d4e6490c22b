// Blanks in texts that people typed and programs padded.
#pragma once

#include <cstddef>

namespace zat {

// Makes runs of blanks in a UTF-8 text one and takes those at both ends away, ideographic ones at
// the ends too. Returns the length.
size_t tidy_blanks(char* text);

} // namespace zat
