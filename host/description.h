// One file as the host shows it.
#pragma once

#include "library.h"
#include "options.h"

#include <string>

namespace host {

struct Description {
    std::string path;     // as given; bytes on Linux, UTF-8 on Windows
    std::string error;    // why the file could not be examined; empty when it was
    bool unknown = false; // examined, but of no known type
    InfoRecord record{};
};

// Asks the library about the file; never throws and never waits for a pipe.
void describe(const Library& library, bool detect_only, Description* description);

// The path as the library takes it: the bytes on Linux; on Windows the name in the system's code
// page, by its short form when it must be. Empty when it has none.
std::string path_for_library(const std::string& path);

} // namespace host
