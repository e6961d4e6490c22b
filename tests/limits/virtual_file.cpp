#include "limits/virtual_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace zat::test {

namespace {

constexpr int virtual_descriptor = 1 << 20;
constexpr size_t least_pattern = 65536; // shorter ones would make copying dear

const VirtualFile* served = nullptr;

// Stands for the system call that reading a real file costs.
void pay_for_a_call() {
    static const int zeros = open("/dev/zero", O_RDONLY | O_CLOEXEC);
    char byte = 0;
    syscall(SYS_pread64, zeros, &byte, 1, 0);
}

uint64_t copy_from(const Piece& piece, uint64_t at, uint8_t* to, uint64_t count) {
    count = std::min(count, piece.size - at);
    if (piece.hole) {
        std::memset(to, 0, count);
        return count;
    }
    for (uint64_t done = 0; done < count;) {
        const uint64_t offset = (at + done) % piece.pattern.size();
        const uint64_t run = std::min(count - done, piece.pattern.size() - offset);
        std::memcpy(to + done, piece.pattern.data() + offset, run);
        done += run;
    }
    return count;
}

uint64_t read_served(uint64_t at, uint8_t* to, uint64_t count) {
    uint64_t done = 0;
    uint64_t start = 0;
    for (const Piece& piece : served->pieces) {
        if (done < count && at + done < start + piece.size) {
            done += copy_from(piece, at + done - start, to + done, count - done);
        }
        start += piece.size;
    }
    return done;
}

// The start of the first stored byte from a position on; -1 when none follows.
int64_t next_stored(uint64_t at) {
    uint64_t start = 0;
    for (const Piece& piece : served->pieces) {
        if (!piece.hole && at < start + piece.size) {
            return static_cast<int64_t>(std::max(at, start));
        }
        start += piece.size;
    }
    return -1;
}

void fill_status(struct stat* status) {
    *status = {};
    status->st_mode = S_IFREG | 0444;
    status->st_size = static_cast<off_t>(served->size());
}

void count_memory(uint64_t bytes) {
    system_costs.memory += bytes;
    system_costs.peak_memory = std::max(system_costs.peak_memory, system_costs.memory);
}

} // namespace

SystemCosts system_costs;

void reset_costs() {
    system_costs = {};
}

void serve(const VirtualFile* file) {
    served = file;
}

VirtualFile& VirtualFile::add(const std::vector<uint8_t>& bytes) {
    return bytes.empty() ? *this : repeat(bytes, bytes.size());
}

VirtualFile& VirtualFile::repeat(const std::vector<uint8_t>& pattern, uint64_t size) {
    Piece piece = {pattern, size};
    while (piece.pattern.size() < least_pattern && piece.pattern.size() < size) {
        piece.pattern.insert(piece.pattern.end(), pattern.begin(), pattern.end());
    }
    pieces.push_back(std::move(piece));
    return *this;
}

VirtualFile& VirtualFile::hole(uint64_t size) {
    pieces.push_back({{}, size, true});
    return *this;
}

uint64_t VirtualFile::size() const {
    uint64_t sum = 0;
    for (const Piece& piece : pieces) {
        sum += piece.size;
    }
    return sum;
}

} // namespace zat::test

// Found before the C library's by whatever is loaded into this program.
using namespace zat::test;

extern "C" {

void* __libc_malloc(size_t size);

void* malloc(size_t size) {
    system_costs.peak_memory += size; // what is freed is not followed: there should be none
    return __libc_malloc(size);
}

// The C library's own names are reserved ones, and the system's addresses are numbers.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name,performance-no-int-to-ptr)
int stat64(const char* path, struct stat64* status) {
    if (path == virtual_path) {
        pay_for_a_call();
        fill_status(reinterpret_cast<struct stat*>(status));
        return 0;
    }
    return static_cast<int>(syscall(SYS_stat, path, status));
}

int open64(const char* path, int flags, ...) {
    if (path == virtual_path) {
        pay_for_a_call();
        return virtual_descriptor;
    }
    return static_cast<int>(syscall(SYS_open, path, flags, 0));
}

int fstat64(int file, struct stat64* status) {
    if (file == virtual_descriptor) {
        pay_for_a_call();
        fill_status(reinterpret_cast<struct stat*>(status));
        return 0;
    }
    return static_cast<int>(syscall(SYS_fstat, file, status));
}

ssize_t pread64(int file, void* bytes, size_t count, off64_t at) {
    if (file != virtual_descriptor) {
        return syscall(SYS_pread64, file, bytes, count, at);
    }
    pay_for_a_call();
    const uint64_t got = read_served(static_cast<uint64_t>(at), static_cast<uint8_t*>(bytes), count);
    ++system_costs.reads;
    system_costs.bytes_read += got;
    return static_cast<ssize_t>(got);
}

off64_t lseek64(int file, off64_t at, int from) noexcept {
    if (file != virtual_descriptor || from != SEEK_DATA) {
        return syscall(SYS_lseek, file, at, from);
    }
    pay_for_a_call();
    const int64_t found = next_stored(static_cast<uint64_t>(at));
    if (found < 0) {
        errno = ENXIO;
    }
    return found;
}

int close(int file) {
    return file == virtual_descriptor ? 0 : static_cast<int>(syscall(SYS_close, file));
}

void* mmap64(void* at, size_t size, int access, int flags, int file, off64_t offset) noexcept {
    count_memory(size);
    return reinterpret_cast<void*>(syscall(SYS_mmap, at, size, access, flags, file, offset));
}

int munmap(void* at, size_t size) noexcept {
    system_costs.memory -= size;
    return static_cast<int>(syscall(SYS_munmap, at, size));
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name,performance-no-int-to-ptr)
}
