// The library, loaded as any host loads it.
#pragma once

#include "zat/details.h"

#include <string>

namespace host {

struct Library {
    decltype(&::SetPath) set_path = nullptr;
    decltype(&::GetFileFormat) get_file_format = nullptr;
    decltype(&::GetInfo) get_info = nullptr;
    decltype(&::GetDetails) get_details = nullptr;
    decltype(&::ReFormFullBounded) reform_full_bounded = nullptr;
    decltype(&::GetTypeName) get_type_name = nullptr;
    decltype(&::GetDllVersion) get_version = nullptr;
};

// Loads the library that stands beside the program, in its build folder or as installed. False
// when it could not be loaded; `problem` says why.
bool load_library(Library* library, std::string* problem);

// The directory of the program with its last separator, as UTF-8.
std::string program_directory();

} // namespace host
