// The one seam to the platform: opening, reading and closing media files, and reserving memory for
// a view of one. What calls the system is in file_access_posix.cpp and file_access_win32.cpp, what
// all platforms share in file_access.cpp.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zat {

// An amount of reading, done or allowed: calls, and the bytes that they ask for.
struct FileWork {
    int64_t reads;
    int64_t bytes;
};

constexpr FileWork unlimited_work = {INT64_MAX, INT64_MAX};

// The first and the last bytes of an open file, which are looked at again and again.
struct FileEnds {
    static constexpr uint32_t front_size = 8192; // what detection reads
    static constexpr uint32_t back_size = 4096;

    uint32_t front_loaded = 0; // bytes from position 0 on
    uint32_t back_loaded = 0;  // bytes up to the end
    uint8_t front[front_size];
    uint8_t back[back_size];
};

// An open file, closed with its record. `handle` belongs to the platform; -1 when no file is open.
struct FileRecord {
    intptr_t handle = -1;
    int64_t position = 0;     // byte position after the last seek or read
    int64_t size = 0;         // bytes, taken when the file was opened
    int64_t origin = 0;       // bytes before the place that counts as position 0
    FileEnds* ends = nullptr; // where read_at keeps the ends of the file; null: nowhere
    FileWork done = {};
    FileWork limit = unlimited_work;
    bool exhausted = false; // a read was refused because of the limit

    FileRecord() = default;
    FileRecord(const FileRecord&) = delete;
    FileRecord& operator=(const FileRecord&) = delete;
    ~FileRecord();
};

enum class SeekOrigin { begin, current, end };

// Opens an existing regular file for reading, shared with readers and writers. Links are followed;
// a directory, pipe, socket or device does not open. Returns 0, or 1 on failure.
int FileOpen(FileRecord* file, const char* path);

// Moves the position and returns it. A position before the file's start reads nothing.
int64_t FileSeek(FileRecord* file, int64_t offset, SeekOrigin origin);

// Leaves out the bytes before a position: from now on the file begins there.
void FileBeginAt(FileRecord* file, int64_t position);

// Where a position of the file stands in what the platform has open.
inline int64_t platform_position(const FileRecord* file, int64_t position) {
    return position > INT64_MAX - file->origin ? INT64_MAX : position + file->origin;
}

// Takes a read off what the file's limit leaves. False when it does not fit.
inline bool take_work(FileRecord* file, uint32_t count) {
    if (file->done.reads >= file->limit.reads || count > file->limit.bytes - file->done.bytes) {
        file->exhausted = true;
        return false;
    }
    ++file->done.reads;
    file->done.bytes += count;
    return true;
}

// Reads up to `count` bytes at the position and moves it. Returns the bytes read: fewer at the end
// of the file, 0 on failure and when the file's limit does not allow so much.
uint32_t FileRead(FileRecord* file, void* destination, uint32_t count);

// The first position from `position` on where anything but zeros may stand: past the holes of a
// sparse file, where the platform tells them; the file's size when only holes follow.
int64_t next_data(const FileRecord* file, int64_t position);

// Does nothing to a record without an open file.
void FileClose(FileRecord* file);

// Size in bytes of the regular file at `path`, 0 when it does not open.
int64_t FileSizeByPath(const char* path);

// 0 when something stands at `path`, a directory included; 1 when nothing does.
int FileExists(const char* path);

// Tells one content of a file from another. Two that were written within one step of the file
// system's clock may have the same stamp.
struct FileStamp {
    uint64_t place[2]; // which file it is
    int64_t size;      // bytes
    int64_t written;   // times in the platform's own units
    int64_t changed;

    bool operator==(const FileStamp&) const = default;
};

// The stamp of the regular file at `path`. False when there is none, or when it was changed within
// the last seconds: a further change might leave the stamp as it is.
bool settled_stamp(const char* path, FileStamp* stamp);

// Reserves `size` bytes that read as zero and cost memory only where they are written, as the first
// `filled` of them are going to be at once; null on failure.
uint8_t* reserve_memory(size_t size, size_t filled = 0);
void release_memory(uint8_t* memory, size_t size);

// Reads at an absolute position; same result as FileSeek and FileRead.
uint32_t read_at(FileRecord* file, int64_t position, void* destination, uint32_t count);

// The bytes from a position on that read_at gives without a call of the system.
uint32_t held_at(const FileRecord* file, int64_t position);

} // namespace zat
