// The directory of the codec name catalogue: the library's only global state.
#pragma once

#include <cstddef>

namespace zat {

// Takes the text as it stands, its last separator included, cut at 511 characters. Not to be called
// while another thread is inside the library.
void set_catalogue_directory(const char* directory);

// Empty before the first call of the above.
const char* catalogue_directory();

} // namespace zat
