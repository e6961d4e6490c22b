#include "common/file_access.h"

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
