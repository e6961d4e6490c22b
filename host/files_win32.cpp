#include "encoding.h"
#include "files.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace host {

namespace {

constexpr wchar_t long_prefix[] = L"\\\\?\\";

// Room below MAX_PATH that a folder's name must leave for one in it.
constexpr size_t longest_plain_path = MAX_PATH - 14;

std::error_code last_error() {
    return {static_cast<int>(GetLastError()), std::system_category()};
}

// A link or junction; other reparse points, such as files that a cloud service keeps, are what they
// seem.
bool is_link(const WIN32_FIND_DATAW& found) {
    return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           (found.dwReserved0 == IO_REPARSE_TAG_SYMLINK ||
               found.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
}

DWORD attributes_of(const std::string& path) {
    return GetFileAttributesW(native_path(path).c_str());
}

} // namespace

std::wstring native_path(const std::string& path) {
    std::wstring wide = wide_of_utf8(path);
    if (wide.starts_with(long_prefix)) {
        // Behind the prefix a slash is a character like any other.
        for (wchar_t& c : wide) {
            c = c == L'/' ? L'\\' : c;
        }
        return wide;
    }
    wchar_t brief[longest_plain_path + 1];
    const DWORD length = GetFullPathNameW(wide.c_str(), longest_plain_path + 1, brief, nullptr);
    if (length <= longest_plain_path) {
        return wide;
    }
    std::wstring whole(length, L'\0');
    whole.resize(GetFullPathNameW(wide.c_str(), length, whole.data(), nullptr));
    return whole.starts_with(L"\\\\") ? long_prefix + (L"UNC" + whole.substr(1))
                                      : long_prefix + whole;
}

std::error_code read_folder(const std::string& folder, std::vector<FolderEntry>* entries) {
    WIN32_FIND_DATAW found;
    const HANDLE handle = FindFirstFileW(native_path(path_in(folder, "*")).c_str(), &found);
    if (handle == INVALID_HANDLE_VALUE) {
        const bool is_empty_root =
            GetLastError() == ERROR_FILE_NOT_FOUND && names_directory(folder);
        return is_empty_root ? std::error_code() : last_error();
    }
    do {
        const std::string name = utf8_of_wide(found.cFileName);
        const bool is_directory = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (name != "." && name != ".." && !(is_directory && is_link(found))) {
            const bool is_hidden = (found.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) != 0;
            entries->push_back({name, is_directory, is_hidden || name.starts_with('.')});
        }
    } while (FindNextFileW(handle, &found) != 0);
    const std::error_code error = last_error();
    FindClose(handle);
    return error.value() == ERROR_NO_MORE_FILES ? std::error_code() : error;
}

bool find_folder_id(const std::string& folder, FolderId* id) {
    const HANDLE handle = CreateFileW(native_path(folder).c_str(), 0,
        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
        FILE_FLAG_BACKUP_SEMANTICS, nullptr); // the flag opens folders
    if (handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    BY_HANDLE_FILE_INFORMATION information{};
    const bool is_known = GetFileInformationByHandle(handle, &information) != 0;
    CloseHandle(handle);
    *id = {information.dwVolumeSerialNumber,
        (static_cast<uint64_t>(information.nFileIndexHigh) << 32) | information.nFileIndexLow};
    return is_known && id->index != 0;
}

std::string path_in(const std::string& folder, const std::string& name) {
    const bool is_separated =
        folder.ends_with('/') || folder.ends_with('\\') || folder.ends_with(':');
    const char* separator = folder.starts_with("\\\\?\\") ? "\\" : "/";
    return folder + (is_separated ? "" : separator) + name;
}

bool names_directory(const std::string& path) {
    const DWORD attributes = attributes_of(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool file_exists(const std::string& path) {
    return attributes_of(path) != INVALID_FILE_ATTRIBUTES;
}

bool find_facts(const std::string& path, FileFacts* facts) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (GetFileAttributesExW(native_path(path).c_str(), GetFileExInfoStandard, &data) == 0) {
        return false;
    }
    facts->size = (static_cast<uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
    facts->modified = (static_cast<int64_t>(data.ftLastWriteTime.dwHighDateTime) << 32) |
                      data.ftLastWriteTime.dwLowDateTime;
    return true;
}

FILE* open_file(const std::string& path) {
    return _wfopen(native_path(path).c_str(), L"rb");
}

std::string listed_path(const std::string& bytes, ListEncoding encoding) {
    const bool is_as_it_is = encoding == ListEncoding::automatic && is_utf8(bytes);
    if (is_as_it_is || encoding == ListEncoding::utf8) {
        return bytes;
    }
    const UINT console = GetConsoleOutputCP();
    const UINT code_page = console != 0 ? console : GetOEMCP();
    const int size = static_cast<int>(bytes.size());
    const int length = MultiByteToWideChar(code_page, 0, bytes.data(), size, nullptr, 0);
    std::wstring wide(static_cast<size_t>(length), L'\0');
    MultiByteToWideChar(code_page, 0, bytes.data(), size, wide.data(), length);
    return utf8_of_wide(wide);
}

} // namespace host
