#include "memory_file_access.h"

#include "common/file/file_access.h"
#include "common/file/file_window.h"
#include "common/file/poison.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <sys/mman.h>

namespace zat {

test::MemoryFiles test::memory_files;

using test::Fault;
using test::memory_files;

namespace {

enum Handle : intptr_t { handle_closed = -1, handle_media = 1, handle_catalogue = 2 };

// Counts a call. True when the fault is due at it.
bool fault_is_due() {
    const bool due = memory_files.calls++ == memory_files.fault_at;
    if (due) {
        switch (memory_files.fault) {
        case Fault::vanishes:
            memory_files.vanished = true;
            break;
        case Fault::shrinks:
            memory_files.media = memory_files.media.first(memory_files.media.size() / 2);
            break;
        case Fault::grows:
            memory_files.media = memory_files.longer;
            break;
        default:
            break;
        }
    }
    return due;
}

// Reservations that stay mapped, for mapping costs more than a run: one of each kind at a time,
// others come from the heap. Bytes out of their bounds are poisoned.
struct Arena {
    size_t least; // bytes of a reservation that takes it
    size_t size;
    uint8_t* memory = nullptr;
    size_t reserved = 0; // 0: nobody has it
    size_t usable = 0;   // not poisoned
};

// Views, which only reading fills: what was not read stays poisoned, what was is cleared. Bytes
// that are held of the file's end are copied behind those that were read.
Arena views = {size_t{4} << 20, size_t{64} << 20};
constexpr size_t view_start = FileWindow::first_size; // bytes that are copied into a new view
constexpr size_t view_padding = FileEnds::back_size + 8;

// Tables, of which a run touches few pages: the system takes those back.
Arena tables = {65536, size_t{4} << 20};

bool is_in(const Arena& arena, const uint8_t* memory) {
    return arena.memory != nullptr && memory >= arena.memory && memory < arena.memory + arena.size;
}

void set_usable(Arena* arena, size_t end) {
    if (end > arena->usable) {
        ASAN_UNPOISON_MEMORY_REGION(arena->memory + arena->usable, end - arena->usable);
    } else {
        ASAN_POISON_MEMORY_REGION(arena->memory + end, arena->usable - end);
    }
    arena->usable = end;
}

void view_is_filled(size_t end) {
    set_usable(&views, std::max(views.usable, std::min(end + view_padding, views.reserved)));
}

bool reserve_in(Arena* arena, size_t size) {
    if (size < arena->least || size > arena->size || arena->reserved != 0) {
        return false;
    }
    if (arena->memory == nullptr) {
        void* memory = mmap(nullptr, arena->size, PROT_READ | PROT_WRITE,
            MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (memory == MAP_FAILED) {
            std::abort();
        }
        arena->memory = static_cast<uint8_t*>(memory);
        ASAN_POISON_MEMORY_REGION(memory, arena->size);
    }
    arena->reserved = size;
    return true;
}

uint8_t* reserve_zeros(size_t size) {
    if (reserve_in(&views, size)) {
        view_is_filled(view_start);
        return views.memory;
    }
    if (reserve_in(&tables, size)) {
        set_usable(&tables, size);
        return tables.memory;
    }
    return static_cast<uint8_t*>(std::calloc(size, 1));
}

void release_zeros(uint8_t* memory) {
    if (is_in(views, memory)) {
        std::memset(views.memory, 0, views.usable);
        set_usable(&views, 0);
        views.reserved = 0;
    } else if (is_in(tables, memory)) {
        madvise(tables.memory, tables.reserved, MADV_DONTNEED);
        tables.reserved = 0;
    } else {
        std::free(memory);
    }
}

int64_t media_size() {
    return memory_files.repeated_size != 0 ? memory_files.repeated_size
                                           : static_cast<int64_t>(memory_files.media.size());
}

void copy_repeated(Bytes bytes, int64_t position, uint8_t* to, size_t count) {
    while (count != 0) {
        const Bytes rest =
            bytes.subspan(static_cast<size_t>(position % static_cast<int64_t>(bytes.size())));
        const size_t part = std::min(count, rest.size());
        std::memcpy(to, rest.data(), part);
        position += static_cast<int64_t>(part);
        to += part;
        count -= part;
    }
}

} // namespace

int FileOpen(FileRecord* file, const char* path) {
    file->handle = handle_closed;
    fault_is_due();
    const bool is_catalogue = std::string_view(path).ends_with(".ini");
    if (memory_files.vanished || (is_catalogue && memory_files.catalogue.empty())) {
        return 1;
    }
    ++memory_files.open_files;
    file->handle = is_catalogue ? handle_catalogue : handle_media;
    file->size = is_catalogue ? static_cast<int64_t>(memory_files.catalogue.size()) : media_size();
    return 0;
}

uint32_t FileRead(FileRecord* file, void* destination, uint32_t count) {
    if (!take_work(file, count)) {
        return 0;
    }
    const bool due = fault_is_due();
    const bool is_catalogue = file->handle == handle_catalogue;
    memory_files.reads += is_catalogue ? 0 : 1;
    const Bytes bytes = is_catalogue ? memory_files.catalogue : memory_files.media;
    const int64_t size = is_catalogue ? static_cast<int64_t>(bytes.size()) : media_size();
    const int64_t position = platform_position(file, file->position);
    if (memory_files.vanished || (due && memory_files.fault == Fault::failed_read) ||
        file->position < 0 || position >= size) {
        return 0;
    }
    auto got = static_cast<uint32_t>(std::min<int64_t>(count, size - position));
    if (due && memory_files.fault == Fault::short_read) {
        got /= 2;
    }
    auto* to = static_cast<uint8_t*>(destination);
    if (is_in(views, to)) {
        view_is_filled(static_cast<size_t>(to - views.memory) + got);
    }
    copy_repeated(bytes, position, to, got);
    file->position += got;
    memory_files.bytes_read += is_catalogue ? 0 : got;
    return got;
}

// Zeros of a whole page count as a hole, as where a file was never written.
int64_t next_data(const FileRecord* file, int64_t position) {
    constexpr int64_t page = 4096;
    if (fault_is_due() && memory_files.fault == Fault::failed_seek) {
        return position;
    }
    const auto size = static_cast<int64_t>(memory_files.media.size());
    int64_t at = platform_position(file, position);
    if (memory_files.vanished || at < 0 || at >= size || memory_files.repeated_size != 0) {
        return position;
    }
    while (at < size) {
        const int64_t end = std::min(size, at / page * page + page);
        const Bytes rest =
            memory_files.media.subspan(static_cast<size_t>(at), static_cast<size_t>(end - at));
        if (leading_zeros(rest) != rest.size()) {
            break;
        }
        at = end;
    }
    return std::max(position, at - file->origin);
}

// Nothing is kept from run to run: the catalogue is read each time.
bool settled_stamp(const char* /*path*/, FileStamp* /*stamp*/) {
    return false;
}

void FileClose(FileRecord* file) {
    if (file->handle != handle_closed) {
        --memory_files.open_files;
        file->handle = handle_closed;
    }
}

int FileExists(const char* /*path*/) {
    return 0;
}

uint8_t* reserve_memory(size_t size, size_t /*filled*/) {
    if (memory_files.no_memory) {
        return nullptr;
    }
    memory_files.reserved_memory += static_cast<int64_t>(size);
    memory_files.highest_reserved =
        std::max(memory_files.highest_reserved, memory_files.reserved_memory);
    return reserve_zeros(size);
}

void release_memory(uint8_t* memory, size_t size) {
    if (memory != nullptr) {
        memory_files.reserved_memory -= static_cast<int64_t>(size);
        release_zeros(memory);
    }
}

} // namespace zat
