// Decides from a file's bytes, never from its name, what it is.
#pragma once

#include "common/file/file_access.h"
#include "common/text/text.h"
#include "zat/zat.h"

#include <cstddef>
#include <cstdint>

namespace zat {

// The longest path text; one of exactly this length leaves no room for its terminator and does not
// open.
constexpr size_t path_limit = 512;

// The driver's working record.
struct DetectContext {
    char path[path_limit];
    size_t path_length; // bytes; more than path_limit when the text did not fit
    uint32_t type_code;
    int64_t file_size; // bytes; 0 for a file that does not open
    char general[2][line_size];
    int32_t general_count;
};

// How a detection ended: a probe decided, or why none did.
enum class Detection : uint8_t {
    decided,
    not_opened,
    no_memory,
    not_read,
    empty,
    refused, // text, executables, archives
    unknown, // no probe matched
};

// Decides the type of the file at context->path; the context is cleared but for path and path
// length. The type is always written; all but `decided` and `unknown` write a general line that
// says why. The file stays open.
Detection detect(DetectContext* context, FileRecord* file);

// What a file is that was taken for a transport stream, whose sync byte is a letter that texts and
// pictures have too, and holds no packets: the type that the probes behind those for packets give,
// FILETYPE_UNKNOWN for none.
uint32_t type_without_packets(FileRecord* file);

} // namespace zat
