#include "description.h"
#include "encoding.h"
#include "files.h"
#include "messages.h"

#include <cstring>
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace host {

namespace {

// The name in the system's code page; empty when it has characters that are not in it.
std::string in_code_page(const std::wstring& name) {
    BOOL lost = FALSE;
    char out[1024];
    const int length = WideCharToMultiByte(
        CP_ACP, WC_NO_BEST_FIT_CHARS, name.c_str(), -1, out, sizeof out, nullptr, &lost);
    return length > 0 && lost == FALSE ? out : "";
}

// A name under which the library can open the file: its own, else its short form, else the one
// behind "\\\\?\\". Empty when all are too long for a record or have characters that are in no name
// of the library's.
std::string openable_name(const std::string& path) {
    const std::wstring own = wide_of_utf8(path);
    const std::wstring whole = native_path(path);
    if (own == whole) {
        const std::string name = in_code_page(own);
        if (!name.empty() && name.size() < MAX_PATH) {
            return name;
        }
    }
    std::wstring brief(32768, L'\0');
    brief.resize(GetShortPathNameW(whole.c_str(), brief.data(), static_cast<DWORD>(brief.size())));
    for (const std::wstring& candidate : {brief, whole}) {
        const std::string name = in_code_page(candidate);
        if (!name.empty() && name.size() < sizeof InfoRecord{}.path) {
            return name;
        }
    }
    return "";
}

void set_error(Description* description) {
    const std::error_code error(static_cast<int>(GetLastError()), std::system_category());
    description->error = error_text(error);
    description->reason = reason::of_error(error);
}

} // namespace

std::string path_for_library(const std::string& path) {
    return openable_name(path);
}

void describe(const Library& library, Query query, Description* description) {
    const std::wstring name = native_path(description->path);
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        set_error(description);
        return;
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        description->error = message(Message::is_directory);
        description->reason = reason::not_a_file;
        return;
    }
    const std::string path = openable_name(description->path);
    InfoRecord* record = &description->record;
    if (path.empty()) {
        description->error = message(Message::name_out_of_reach);
        description->reason = reason::path_too_long;
        return;
    }
    std::memcpy(record->path, path.c_str(), path.size() + 1);
    ask_library(library, query, description);
    if (record->type_code == FILETYPE_OPENFAILED) {
        const HANDLE handle =
            CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            set_error(description);
        } else {
            description->error = message(Message::is_no_regular_file);
            description->reason = reason::not_a_file;
            CloseHandle(handle);
        }
    }
}

} // namespace host
