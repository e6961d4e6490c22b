#include "common/file/file_access.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#include <winioctl.h>

#include <algorithm>
#include <iterator>

namespace zat {

namespace {

HANDLE native(const FileRecord* file) {
    return reinterpret_cast<HANDLE>(file->handle);
}

// The 8-bit functions take no path of MAX_PATH characters or more, even with the prefix "\\?\".
struct WidePath {
    wchar_t text[1024]; // more than a record's path or the catalogue's
};

bool widen(const char* path, WidePath* wide) {
    return MultiByteToWideChar(AreFileApisANSI() != 0 ? CP_ACP : CP_OEMCP, 0, path, -1, wide->text,
               static_cast<int>(std::size(wide->text))) != 0;
}

int64_t joined(DWORD high, DWORD low) {
    return static_cast<int64_t>(uint64_t{high} << 32 | low);
}

int64_t ticks(const FILETIME& time) { // of 100 ns
    return joined(time.dwHighDateTime, time.dwLowDateTime);
}

// FNV-1a
uint64_t hash_of(const WidePath& path) {
    uint64_t hash = 0xCBF29CE484222325;
    for (const wchar_t* at = path.text; *at != 0; ++at) {
        hash = (hash ^ *at) * 0x100000001B3;
    }
    return hash;
}

// The coarsest file systems tell times in steps of two seconds.
constexpr int64_t settling_time = 30'000'000;

} // namespace

int FileOpen(FileRecord* file, const char* path) {
    file->handle = -1;
    WidePath wide;
    if (!widen(path, &wide)) {
        return 1;
    }
    const HANDLE handle = CreateFileW(wide.text, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return 1;
    }
    BY_HANDLE_FILE_INFORMATION information;
    if (GetFileType(handle) != FILE_TYPE_DISK ||
        GetFileInformationByHandle(handle, &information) == 0 ||
        (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        CloseHandle(handle);
        return 1;
    }
    file->handle = reinterpret_cast<intptr_t>(handle);
    file->size = joined(information.nFileSizeHigh, information.nFileSizeLow);
    return 0;
}

uint32_t FileRead(FileRecord* file, void* destination, uint32_t count) {
    auto* bytes = static_cast<uint8_t*>(destination);
    uint32_t done = 0;
    if (!take_work(file, count)) {
        return 0;
    }
    while (done < count && file->position >= 0) {
        // The position travels with the read, so that a seek costs no system call.
        OVERLAPPED at{};
        const int64_t position = platform_position(file, file->position);
        at.Offset = static_cast<DWORD>(position & 0xFFFFFFFF);
        at.OffsetHigh = static_cast<DWORD>(position >> 32);
        DWORD got = 0;
        if (ReadFile(native(file), bytes + done, count - done, &got, &at) == 0 || got == 0) {
            break;
        }
        done += got;
        file->position += got;
        if (file->position >= file->size) {
            break; // the end, without the call that would only confirm it
        }
    }
    return done;
}

int64_t next_data(const FileRecord* file, int64_t position) {
    if (position < 0 || position >= file->size) {
        return position;
    }
    FILE_ALLOCATED_RANGE_BUFFER wanted{};
    FILE_ALLOCATED_RANGE_BUFFER first{};
    const int64_t start = platform_position(file, position);
    wanted.FileOffset.QuadPart = start;
    wanted.Length.QuadPart = file->size - position;
    DWORD got = 0;
    // Room for one range is enough; that there are more is no failure.
    if (DeviceIoControl(native(file), FSCTL_QUERY_ALLOCATED_RANGES, &wanted, sizeof wanted, &first,
            sizeof first, &got, nullptr) == 0 &&
        GetLastError() != ERROR_MORE_DATA) {
        return position;
    }
    if (got < sizeof first) {
        return file->size;
    }
    return first.FileOffset.QuadPart > start ? first.FileOffset.QuadPart - file->origin : position;
}

void FileClose(FileRecord* file) {
    if (file->handle != -1) {
        CloseHandle(native(file));
        file->handle = -1;
    }
}

int FileExists(const char* path) {
    WIN32_FIND_DATAA found;
    const HANDLE handle = FindFirstFileA(path, &found);
    if (handle == INVALID_HANDLE_VALUE) {
        return 1;
    }
    FindClose(handle);
    return 0;
}

bool settled_stamp(const char* path, FileStamp* stamp) {
    WidePath wide;
    WIN32_FILE_ATTRIBUTE_DATA found;
    if (!widen(path, &wide) ||
        GetFileAttributesExW(wide.text, GetFileExInfoStandard, &found) == 0 ||
        (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return false;
    }
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    *stamp = {{hash_of(wide), 0}, joined(found.nFileSizeHigh, found.nFileSizeLow),
        ticks(found.ftLastWriteTime), ticks(found.ftCreationTime)};
    return std::max(stamp->written, stamp->changed) < ticks(now) - settling_time;
}

uint8_t* reserve_memory(size_t size, size_t /*filled*/) {
    return static_cast<uint8_t*>(
        VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
}

void release_memory(uint8_t* memory, size_t /*size*/) {
    if (memory != nullptr) {
        VirtualFree(memory, 0, MEM_RELEASE);
    }
}

} // namespace zat
