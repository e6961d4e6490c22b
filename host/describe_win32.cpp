#include "description.h"
#include "encoding.h"
#include "terminal.h"

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

// A name under which the library can open the file: its own, else its short form.
std::string openable_name(const std::wstring& name) {
    const std::string own = in_code_page(name);
    if (!own.empty() && own.size() < MAX_PATH) {
        return own;
    }
    std::wstring whole(32768, L'\0');
    const DWORD length =
        GetFullPathNameW(name.c_str(), static_cast<DWORD>(whole.size()), whole.data(), nullptr);
    whole.resize(length);
    if (whole.rfind(L"\\\\", 0) != 0) {
        whole = L"\\\\?\\" + whole;
    }
    std::wstring brief(32768, L'\0');
    brief.resize(GetShortPathNameW(whole.c_str(), brief.data(), static_cast<DWORD>(brief.size())));
    if (brief.rfind(L"\\\\?\\", 0) == 0) {
        brief.erase(0, 4);
    }
    const std::string result = in_code_page(brief);
    return result.size() < MAX_PATH ? result : "";
}

void set_error(DWORD error, Description* description) {
    description->error = error_text(error);
    description->reason = reason::of_error({static_cast<int>(error), std::system_category()});
}

} // namespace

std::string path_for_library(const std::string& path) {
    return openable_name(wide_of_utf8(path));
}

void describe(const Library& library, Query query, Description* description) {
    const std::wstring name = wide_of_utf8(description->path);
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        set_error(GetLastError(), description);
        return;
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        description->error = "is a directory";
        description->reason = reason::not_a_file;
        return;
    }
    const std::string path = openable_name(name);
    InfoRecord* record = &description->record;
    if (path.empty() || path.size() >= sizeof record->path) {
        description->error =
            "its name is too long or outside the system's code page, and it has no short form";
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
            set_error(GetLastError(), description);
        } else {
            description->error = "is no regular file";
            description->reason = reason::not_a_file;
            CloseHandle(handle);
        }
    } else if (record->type_code != FILETYPE_UNKNOWN && record->type_code < FILETYPE_MEDIA) {
        description->error = "cannot be read";
        description->reason = reason::read_error;
    }
}

} // namespace host
