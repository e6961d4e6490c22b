// The files that a command line means, one after the other.
#pragma once

#include "options.h"

#include <functional>
#include <string>

namespace host {

// Called with each file, or with a path and the reason why it leads to none. False ends the walk.
using FileVisitor = std::function<bool(const std::string& path, const std::string& error)>;

// Visits the named files, those of the lists, and those below directories: in the order given,
// within a directory by name. Links to directories found below one are not followed.
void for_each_file(const Options& options, const FileVisitor& visit);

// For paths as given on the command line.
bool names_directory(const std::string& path);
bool file_exists(const std::string& path);

} // namespace host
