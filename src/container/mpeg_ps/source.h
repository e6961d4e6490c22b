// The bytes of a program stream, whether they lie in the file one behind the other or in the user
// data of a VideoCD's sectors.
#pragma once

#include "common/file/reader.h"

#include <cstdint>

namespace zat::ps {

// Sectors of a raw CD image (IEC 10149, ECMA-130, 14; Philips/Sony CD-ROM XA).
constexpr int64_t sector_size = 2352;
constexpr int64_t sector_header_size = 24;
constexpr int64_t sector_data_size = 2324; // of form 2; form 1 has 2048

// How a stream lies in its span of the file.
enum class Packing { bytes, sectors };

struct Source {
    // Bytes that one view may have.
    static constexpr uint32_t view_limit = 2048;

    Reader* reader = nullptr;
    Span span; // of the file; begins with a sector, if there are any
    Packing packing = Packing::bytes;
    int64_t size = 0; // bytes of the stream
    uint8_t view[view_limit];
};

// Starts on a part of the file.
void source_open(Source* source, Reader* reader, Span span, Packing packing);

// Reads `count` bytes that are going to be looked at piece by piece, as far as the reader's block
// has room.
void source_read_ahead(Source* source, int64_t position, uint32_t count);

// Up to `count` (at most view_limit) bytes from a position of the stream, fewer where it ends.
// Valid until the source's next use.
Bytes source_view(Source* source, int64_t position, uint32_t count);

// Copies up to `count` bytes. Returns how many there were.
uint32_t source_read(Source* source, int64_t position, uint8_t* destination, uint32_t count);

} // namespace zat::ps
