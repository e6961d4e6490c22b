#include "io_counters.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

IoCounters io_counters;
unsigned io_read_delay = 0;

namespace {

off_t last_end = 0; // of the last read

}

extern "C" {

int __real_open64(const char* path, int flags, ...);
int __real_stat64(const char* path, struct stat* status);
int __real_fstat64(int file, struct stat* status);
ssize_t __real_pread64(int file, void* bytes, size_t count, off_t at);
off_t __real_lseek64(int file, off_t at, int whence);
int __real_close(int file);
void* __real_mmap64(void* at, size_t size, int access, int flags, int file, off_t offset);
int __real_munmap(void* at, size_t size);

int __wrap_open64(const char* path, int flags, ...) {
    ++io_counters.calls;
    last_end = 0;
    return __real_open64(path, flags);
}

int __wrap_stat64(const char* path, struct stat* status) {
    ++io_counters.calls;
    return __real_stat64(path, status);
}

int __wrap_fstat64(int file, struct stat* status) {
    ++io_counters.calls;
    return __real_fstat64(file, status);
}

ssize_t __wrap_pread64(int file, void* bytes, size_t count, off_t at) {
    ++io_counters.calls;
    ++io_counters.reads;
    io_counters.seeks += at != last_end ? 1 : 0;
    if (io_read_delay != 0) {
        usleep(io_read_delay);
    }
    const ssize_t got = __real_pread64(file, bytes, count, at);
    if (got > 0) {
        last_end = at + got;
        io_counters.bytes_read += static_cast<uint64_t>(got);
    }
    return got;
}

off_t __wrap_lseek64(int file, off_t at, int whence) {
    ++io_counters.calls;
    return __real_lseek64(file, at, whence);
}

int __wrap_close(int file) {
    ++io_counters.calls;
    return __real_close(file);
}

void* __wrap_mmap64(void* at, size_t size, int access, int flags, int file, off_t offset) {
    ++io_counters.calls;
    return __real_mmap64(at, size, access, flags, file, offset);
}

int __wrap_munmap(void* at, size_t size) {
    ++io_counters.calls;
    return __real_munmap(at, size);
}
}
