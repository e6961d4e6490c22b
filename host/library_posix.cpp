#include "library.h"
#include "messages.h"

#include <dlfcn.h>
#include <unistd.h>
#include <vector>

namespace host {

std::string program_directory() {
    std::vector<char> path(4096);
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    const std::string program(path.data(), length > 0 ? static_cast<size_t>(length) : 0);
    return program.substr(0, program.rfind('/') + 1);
}

namespace {

template <class Function>
bool find(void* handle, const char* name, Function* function) {
    *function = reinterpret_cast<Function>(dlsym(handle, name));
    return *function != nullptr;
}

} // namespace

bool load_library(Library* library, std::string* problem) {
    const std::string directory = program_directory();
    void* handle = nullptr;
    for (const std::string& path :
        {directory + "libzat.so", directory + "../" ZAT_LIBRARY_DIR "/libzat.so.1",
            directory + "../lib/libzat.so.1", std::string("libzat.so.1")}) {
        handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (handle != nullptr) {
            break;
        }
    }
    if (handle == nullptr) {
        *problem = message(Message::library_missing, "libzat.so", dlerror());
        return false;
    }
    if (!find(handle, "SetPath", &library->set_path) ||
        !find(handle, "GetFileFormat", &library->get_file_format) ||
        !find(handle, "GetInfo", &library->get_info) ||
        !find(handle, "GetDetails", &library->get_details) ||
        !find(handle, "ReFormFullBounded", &library->reform_full_bounded) ||
        !find(handle, "GetTypeName", &library->get_type_name) ||
        !find(handle, "GetDllVersion", &library->get_version)) {
        *problem = message(Message::library_lacks_export, "libzat.so");
        return false;
    }
    return true;
}

} // namespace host
