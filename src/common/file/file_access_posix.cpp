#include "common/file/file_access.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zat {

namespace {

// Taking small pages one by one costs more than the reading into them; clearing a large one costs
// as much as taking a hundred.
constexpr size_t large_page = 2 << 20;
constexpr size_t worth_large_page = large_page / 4;

// The coarsest file systems tell times in steps of two seconds.
constexpr int64_t settling_time = 3'000'000'000;

int64_t nanoseconds(const timespec& time) {
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

// A multiple of large pages is placed so that the system can grant them.
size_t whole_pages(size_t size) {
    return size < worth_large_page ? size : (size + large_page - 1) / large_page * large_page;
}

} // namespace

int FileOpen(FileRecord* file, const char* path) {
    file->handle = -1;
    // Does not wait for a pipe's writer, nor take a terminal over. To look before opening would be
    // the second way through the path's directories, which takes as long as opening.
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) {
        return 1;
    }
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(descriptor);
        return 1;
    }
    file->handle = descriptor;
    file->size = status.st_size;
    return 0;
}

uint32_t FileRead(FileRecord* file, void* destination, uint32_t count) {
    auto* bytes = static_cast<uint8_t*>(destination);
    uint32_t done = 0;
    if (!take_work(file, count)) {
        return 0;
    }
    while (done < count && file->position >= 0) {
        const ssize_t got = pread(static_cast<int>(file->handle), bytes + done, count - done,
            platform_position(file, file->position));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            break;
        }
        done += static_cast<uint32_t>(got);
        file->position += got;
        if (file->position >= file->size) {
            break; // the end, without the call that would only confirm it
        }
    }
    return done;
}

int64_t next_data(const FileRecord* file, int64_t position) {
#ifdef SEEK_DATA
    const off_t start = platform_position(file, position);
    const off_t found = lseek(static_cast<int>(file->handle), start, SEEK_DATA);
    if (found > start) {
        return found - file->origin;
    }
    if (found < 0 && errno == ENXIO && file->size > position) {
        return file->size;
    }
#endif
    return position;
}

void FileClose(FileRecord* file) {
    if (file->handle != -1) {
        close(static_cast<int>(file->handle));
        file->handle = -1;
    }
}

int FileExists(const char* path) {
    struct stat status {};
    return stat(path, &status) == 0 ? 0 : 1;
}

bool settled_stamp(const char* path, FileStamp* stamp) {
    struct stat status {};
    timespec now{};
    if (stat(path, &status) != 0 || !S_ISREG(status.st_mode) ||
        clock_gettime(CLOCK_REALTIME, &now) != 0) {
        return false;
    }
    *stamp = {{status.st_dev, status.st_ino}, status.st_size, nanoseconds(status.st_mtim),
        nanoseconds(status.st_ctim)};
    return std::max(stamp->written, stamp->changed) < nanoseconds(now) - settling_time;
}

uint8_t* reserve_memory(size_t size, size_t filled) {
    size = whole_pages(size);
    void* memory = mmap(
        nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) {
        return nullptr;
    }
    auto* bytes = static_cast<uint8_t*>(memory);
#if defined(MADV_HUGEPAGE)
    // Who gets beyond the first of several fills most of the rest.
    const size_t start = filled >= worth_large_page ? 0 : large_page;
    if (size > start) {
        madvise(bytes + start, size - start, MADV_HUGEPAGE);
    }
#endif
    return bytes;
}

void release_memory(uint8_t* memory, size_t size) {
    if (memory != nullptr) {
        munmap(memory, whole_pages(size));
    }
}

} // namespace zat
