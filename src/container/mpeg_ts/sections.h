// Sections of tables over packets (ISO/IEC 13818-1, 2.4.4).
#pragma once

#include "common/bytes/bytes.h"

#include <cstddef>
#include <cstdint>

namespace zat::ts {

constexpr size_t section_limit = 4096; // bytes of a private section; those of PSI have 1024

// A section that is longer than the packet it begins in.
struct SectionBuffer {
    uint32_t wanted = 0; // bytes of the whole section; 0 when none is under way
    uint32_t filled = 0;
    uint8_t* bytes = nullptr; // section_limit of them
};

// What a section says of itself.
struct Section {
    uint8_t table_id = 0;
    uint16_t extension = 0;  // table_id_extension
    uint8_t number = 0;      // section_number
    bool current = true;     // current_next_indicator
    bool has_syntax = false; // the fields above stand there, and a CRC
    bool crc_ok = false;
    Bytes bytes; // from table_id on, without the CRC
};

// Takes one section apart. False when its bytes are too few.
bool read_section(Bytes bytes, Section* section);

// The sections of a table that were read, by their numbers: the others of a number repeat the
// first.
struct SectionNumbers {
    uint64_t bits[4];
};

inline bool take_number(SectionNumbers* numbers, uint8_t number) {
    uint64_t* word = &numbers->bits[number / 64];
    const uint64_t bit = uint64_t{1} << number % 64;
    const bool is_new = (*word & bit) == 0;
    *word |= bit;
    return is_new;
}

// Receives each whole section; `context` is the caller's.
using SectionHandler = void (*)(void* context, Bytes section);

// Takes the payload of a packet that carries sections. `buffer` keeps a section under way from
// packet to packet and may be null: then only those that lie in one packet are seen.
void feed_sections(
    SectionBuffer* buffer, Bytes payload, bool starts_unit, SectionHandler handler, void* context);

// A packet was lost: so is the section under way.
inline void drop_section(SectionBuffer* buffer) {
    if (buffer != nullptr) {
        buffer->wanted = 0;
    }
}

// The loop of descriptors behind a 12-bit length at `offset`, cut to the bytes that are there.
Bytes descriptor_loop(Bytes bytes, size_t offset);

// The 12-bit length at `offset`, 0 behind the end.
size_t length12(Bytes bytes, size_t offset);

// The part of the bytes from `offset` on, `length` at most: nothing behind the end.
inline Bytes part_of(Bytes bytes, size_t offset, size_t length = SIZE_MAX) {
    if (offset >= bytes.size()) {
        return {};
    }
    const size_t rest = bytes.size() - offset;
    return bytes.subspan(offset, length < rest ? length : rest);
}

} // namespace zat::ts
