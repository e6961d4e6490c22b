#include "container/mpeg_ts/sections.h"

#include "common/bytes/crc.h"

#include <algorithm>
#include <cstring>

namespace zat::ts {

namespace {

constexpr size_t section_start = 3; // table_id and section_length
constexpr size_t syntax_size = 8;   // up to last_section_number
constexpr size_t crc_size = 4;
constexpr uint8_t stuffing = 0xFF; // in place of a table_id

// Adds to the section under way. Returns how many of the bytes belong to it.
size_t append(SectionBuffer* buffer, Bytes bytes) {
    const size_t count = std::min<size_t>(bytes.size(), buffer->wanted - buffer->filled);
    std::memcpy(buffer->bytes + buffer->filled, bytes.data(), count);
    buffer->filled += static_cast<uint32_t>(count);
    return count;
}

void finish_if_whole(SectionBuffer* buffer, SectionHandler handler, void* context) {
    // The length itself may have been cut off by the packet's end.
    if (buffer->wanted == section_start && buffer->filled == section_start) {
        buffer->wanted =
            static_cast<uint32_t>(section_start + length12({buffer->bytes, section_start}, 1));
        if (buffer->wanted > section_limit) {
            buffer->wanted = 0;
        }
    }
    if (buffer->wanted > section_start && buffer->filled == buffer->wanted) {
        buffer->wanted = 0;
        handler(context, {buffer->bytes, buffer->filled});
    }
}

// The bytes that belong to the section under way; what is behind them is of no interest.
void continue_section(SectionBuffer* buffer, Bytes bytes, SectionHandler handler, void* context) {
    while (buffer != nullptr && buffer->wanted != 0 && !bytes.empty()) {
        const size_t taken = append(buffer, bytes);
        bytes = bytes.subspan(taken);
        finish_if_whole(buffer, handler, context);
        if (taken == 0) {
            return;
        }
    }
}

// The sections that begin in a packet.
void begin_sections(SectionBuffer* buffer, Bytes bytes, SectionHandler handler, void* context) {
    while (!bytes.empty() && bytes[0] != stuffing) {
        const size_t size =
            bytes.size() < section_start ? section_start : section_start + length12(bytes, 1);
        if (size <= bytes.size()) {
            handler(context, bytes.first(size));
            bytes = bytes.subspan(size);
            continue;
        }
        if (buffer != nullptr && size <= section_limit) {
            buffer->wanted = static_cast<uint32_t>(size);
            buffer->filled = 0;
            append(buffer, bytes);
        }
        return;
    }
}

} // namespace

bool read_section(Bytes bytes, Section* section) {
    *section = {};
    if (bytes.size() < section_start) {
        return false;
    }
    section->table_id = bytes[0];
    section->has_syntax = (bytes[1] & 0x80) != 0; // section_syntax_indicator
    section->bytes = bytes;
    if (!section->has_syntax) {
        return true;
    }
    if (bytes.size() < syntax_size + crc_size) {
        return false;
    }
    section->extension = ReadBE16(&bytes[3]);
    section->current = (bytes[5] & 1) != 0;
    section->number = bytes[6];
    section->crc_ok = crc32_mpeg2(bytes) == 0;
    section->bytes = bytes.first(bytes.size() - crc_size);
    return true;
}

void feed_sections(
    SectionBuffer* buffer, Bytes payload, bool starts_unit, SectionHandler handler, void* context) {
    if (!starts_unit) {
        continue_section(buffer, payload, handler, context);
        return;
    }
    if (payload.empty()) {
        return;
    }
    const size_t pointer = payload[0]; // pointer_field
    const Bytes behind = payload.subspan(1);
    continue_section(buffer, part_of(behind, 0, pointer), handler, context);
    drop_section(buffer);
    begin_sections(buffer, part_of(behind, pointer), handler, context);
}

size_t length12(Bytes bytes, size_t offset) {
    return static_cast<size_t>(byte_at(bytes, offset) & 0x0F) << 8 | byte_at(bytes, offset + 1);
}

Bytes descriptor_loop(Bytes bytes, size_t offset) {
    return part_of(bytes, offset + 2, length12(bytes, offset));
}

} // namespace zat::ts
