#include "encoding.h"
#include "library.h"
#include "messages.h"

#include <vector>
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace host {

std::string program_directory() {
    std::vector<wchar_t> path(32768);
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    const std::string program = utf8_of_wide(std::wstring(path.data(), length));
    return program.substr(0, program.find_last_of("\\/") + 1);
}

namespace {

template <class Function>
bool find(HMODULE module, const char* name, Function* function) {
    *function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    return *function != nullptr;
}

} // namespace

bool load_library(Library* library, std::string* problem) {
    const std::wstring path = wide_of_utf8(program_directory() + ZAT_DLL_NAME);
    const HMODULE module = LoadLibraryW(path.c_str());
    if (module == nullptr) {
        *problem = message(Message::library_missing, ZAT_DLL_NAME,
            error_text({static_cast<int>(GetLastError()), std::system_category()}));
        return false;
    }
    if (!find(module, "SetPath", &library->set_path) ||
        !find(module, "GetFileFormat", &library->get_file_format) ||
        !find(module, "GetInfo", &library->get_info) ||
        !find(module, "GetDetails", &library->get_details) ||
        !find(module, "ReFormFullBounded", &library->reform_full_bounded) ||
        !find(module, "GetTypeName", &library->get_type_name) ||
        !find(module, "GetDllVersion", &library->get_version)) {
        *problem = message(Message::library_lacks_export, ZAT_DLL_NAME);
        return false;
    }
    return true;
}

} // namespace host
