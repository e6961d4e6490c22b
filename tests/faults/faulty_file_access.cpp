#include "faults/faulty_file_access.h"

#include "common/file_access.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace zat {

test::Faults test::faults;
std::vector<uint8_t> test::file_bytes;

using test::faults;
using test::file_bytes;

int FileOpen(FileRecord* file, const char* /*path*/) {
    ++faults.open_files;
    file->handle = 1;
    file->size = static_cast<int64_t>(file_bytes.size());
    return 0;
}

uint32_t FileRead(FileRecord* file, void* destination, uint32_t count) {
    if (file->position < 0 || file->position >= file->size || faults.reads > faults.good_reads) {
        ++faults.reads;
        return 0;
    }
    auto got = static_cast<uint32_t>(std::min<int64_t>(count, file->size - file->position));
    if (faults.reads++ == faults.good_reads) {
        got /= 2; // the file shrinks here
    }
    std::memcpy(destination, file_bytes.data() + platform_position(file, file->position), got);
    file->position += got;
    return got;
}

int64_t next_data(const FileRecord* /*file*/, int64_t position) {
    return position;
}

void FileClose(FileRecord* file) {
    if (file->handle != -1) {
        --faults.open_files;
        file->handle = -1;
    }
}

int FileExists(const char* /*path*/) {
    return 0;
}

uint8_t* reserve_memory(size_t size) {
    if (faults.no_memory) {
        return nullptr;
    }
    faults.reserved_memory += static_cast<int64_t>(size);
    return static_cast<uint8_t*>(std::calloc(size, 1));
}

void release_memory(uint8_t* memory, size_t size) {
    if (memory != nullptr) {
        faults.reserved_memory -= static_cast<int64_t>(size);
        std::free(memory);
    }
}

} // namespace zat
