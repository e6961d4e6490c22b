#include "common/file/file_access.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

// Positions stay inside what 64 bits hold, whatever a file's own fields add up to.
int64_t saturating_add(int64_t a, int64_t b) {
    int64_t sum = 0;
    if (!__builtin_add_overflow(a, b, &sum)) {
        return sum;
    }
    return b > 0 ? INT64_MAX : INT64_MIN;
}

uint32_t seek_and_read(FileRecord* file, int64_t position, void* destination, uint32_t count) {
    FileSeek(file, position, SeekOrigin::begin);
    return FileRead(file, destination, count);
}

// Where the kept end begins.
int64_t back_start(const FileRecord* file) {
    return file->size - file->ends->back_loaded;
}

// Loads the kept front or back of the file when the wanted bytes begin in it.
void hold(FileRecord* file, int64_t position, uint32_t count) {
    FileEnds* ends = file->ends;
    if (position == 0 && file->origin == 0 && count <= FileEnds::front_size) {
        ends->front_loaded = seek_and_read(file, 0, ends->front, FileEnds::front_size);
    } else if (const int64_t start = std::max<int64_t>(file->size - FileEnds::back_size, 0);
               position >= start && position < file->size) {
        const auto size = static_cast<uint32_t>(file->size - start);
        const uint32_t got = seek_and_read(file, start, ends->back, size);
        ends->back_loaded = got == size ? got : 0; // the file has shrunk
    }
}

} // namespace

FileRecord::~FileRecord() {
    FileClose(this);
}

int64_t FileSeek(FileRecord* file, int64_t offset, SeekOrigin origin) {
    const int64_t base = origin == SeekOrigin::begin     ? 0
                         : origin == SeekOrigin::current ? file->position
                                                         : file->size;
    file->position = saturating_add(base, offset);
    return file->position;
}

uint32_t held_at(const FileRecord* file, int64_t position) {
    const FileEnds* ends = file->ends;
    if (ends == nullptr || position < 0 || position >= file->size) {
        return 0;
    }
    if (const int64_t at = platform_position(file, position); at < ends->front_loaded) {
        return static_cast<uint32_t>(std::min(ends->front_loaded - at, file->size - position));
    }
    return position >= back_start(file) ? static_cast<uint32_t>(file->size - position) : 0;
}

uint32_t read_at(FileRecord* file, int64_t position, void* destination, uint32_t count) {
    uint32_t held = held_at(file, position);
    if (held == 0 && file->ends != nullptr) {
        hold(file, position, count);
        held = held_at(file, position);
    }
    if (held == 0) {
        return seek_and_read(file, position, destination, count);
    }
    const FileEnds* ends = file->ends;
    const uint32_t done = std::min(held, count);
    const int64_t at = platform_position(file, position);
    const uint8_t* bytes =
        at < ends->front_loaded ? ends->front + at : ends->back + (position - back_start(file));
    std::memcpy(destination, bytes, done);
    FileSeek(file, position + done, SeekOrigin::begin);
    return done == count || file->position >= file->size
               ? done
               : done + FileRead(file, static_cast<uint8_t*>(destination) + done, count - done);
}

void FileBeginAt(FileRecord* file, int64_t position) {
    file->origin += position;
    file->size -= position;
    file->position = 0;
}

int64_t FileSizeByPath(const char* path) {
    FileRecord file;
    if (FileOpen(&file, path) != 0) {
        return 0;
    }
    return file.size;
}

} // namespace zat
