// The program association and map sections (ISO/IEC 13818-1, 2.4.4).
#include "container/mpeg_ts/analysis.h"

namespace zat::ts {

namespace {

constexpr uint8_t table_pat = 0;
constexpr uint8_t table_pmt = 2;
constexpr uint16_t first_free_pid = 0x10;

Program* program_of(Analysis* analysis, uint16_t number, uint16_t map_pid) {
    for (uint32_t i = 0; i < analysis->program_count; ++i) {
        Program* program = &analysis->programs[i];
        if (program->number == number && program->map_pid == map_pid) {
            return program;
        }
    }
    if (analysis->program_count == program_slots) {
        return nullptr;
    }
    Program* program = take_entry(analysis->programs, &analysis->program_count);
    program->number = number;
    program->map_pid = map_pid;
    return program;
}

void read_pat(Analysis* analysis, const Section& section) {
    analysis->pat_seen = true;
    for (Bytes rest = part_of(section.bytes, 8); rest.size() >= 4; rest = rest.subspan(4)) {
        const uint16_t number = ReadBE16(rest.data());
        const uint16_t pid = ReadBE16(&rest[2]) & 0x1FFF;
        Program* program = number != 0 ? program_of(analysis, number, pid) : nullptr;
        if (program != nullptr) {
            program->listed = true;
            place_of(analysis, pid)->carries_map = true;
        }
    }
}

void add_map_stream(Analysis* analysis, uint16_t program, uint32_t registration, Bytes entry) {
    const uint16_t pid = ReadBE16(&entry[1]) & 0x1FFF;
    Pid* place = place_of(analysis, pid);
    if (place->stream != 0 || analysis->stream_count == stream_slots) {
        return; // shared between programs
    }
    Stream* stream = enter_stream(analysis);
    place->stream = static_cast<uint16_t>(analysis->stream_count);
    stream->pid = pid;
    stream->program = program;
    stream->type = entry[0];
    describe_stream_type(stream, descriptor_loop(entry, 3), registration);
}

void read_pmt(Analysis* analysis, uint16_t pid, const Section& section) {
    const Bytes bytes = section.bytes;
    Program* program = bytes.size() < 12 ? nullptr : program_of(analysis, section.extension, pid);
    if (program == nullptr || program->has_map) {
        return;
    }
    program->has_map = true;
    program->pcr_pid = ReadBE16(&bytes[8]) & 0x1FFF;
    place_of(analysis, pid)->carries_map = true;
    const uint32_t registration = registration_of(descriptor_loop(bytes, 10));
    const auto index = static_cast<uint16_t>(program - analysis->programs);
    Bytes rest = part_of(bytes, 12 + length12(bytes, 10));
    while (rest.size() >= 5) {
        add_map_stream(analysis, index, registration, rest);
        rest = part_of(rest, 5 + length12(rest, 3));
    }
}

struct Context {
    Analysis* analysis;
    uint16_t pid;
};

void take_program_section(void* context, Bytes bytes) {
    Analysis* analysis = static_cast<Context*>(context)->analysis;
    const uint16_t pid = static_cast<Context*>(context)->pid;
    Section section;
    if (!read_section(bytes, &section) || !section.has_syntax || !section.current ||
        !(section.crc_ok || analysis->take_damaged)) {
        return;
    }
    if (section.table_id == table_pat && pid == 0) {
        if (take_number(&analysis->pat_sections, section.number)) {
            read_pat(analysis, section);
        }
    } else if (section.table_id == table_pmt && pid >= first_free_pid) {
        read_pmt(analysis, pid, section);
    }
}

void take_service_section(void* context, Bytes bytes) {
    Analysis* analysis = static_cast<Context*>(context)->analysis;
    const uint16_t pid = static_cast<Context*>(context)->pid;
    Section section;
    if (read_section(bytes, &section)) {
        read_service_section(&analysis->services, pid, section);
    }
}

// The place where sections of the identifier grow; null when all are in use.
SectionBuffer* buffer_of(Analysis* analysis, uint16_t pid) {
    Pid* place = place_of(analysis, pid);
    if (place->section == 0 && analysis->section_count < section_slots) {
        uint8_t* bytes = analysis->section_bytes[analysis->section_count];
        take_entry(analysis->sections, &analysis->section_count)->bytes = bytes;
        place->section = static_cast<uint8_t>(analysis->section_count);
    }
    return place->section != 0 ? &analysis->sections[place->section - 1] : nullptr;
}

// Whether a unit begins with a section that looks like a program map, on any identifier: the
// association table may come later or never.
bool begins_map(const Packet& packet) {
    const Bytes payload = packet.payload;
    if (!packet.starts_unit || payload.empty() || packet.pid < first_free_pid ||
        packet.pid == null_pid) {
        return false;
    }
    const size_t at = size_t{1} + payload[0];
    return byte_at(payload, at) == table_pmt && (byte_at(payload, at + 1) & 0xC0) == 0x80 &&
           byte_at(payload, at + 6) == 0 && byte_at(payload, at + 7) == 0;
}

} // namespace

void read_program_tables(Analysis* analysis, const Packet& packet) {
    Pid* place = place_of(analysis, packet.pid);
    const bool is_candidate = !analysis->pat_seen && place->stream == 0 && begins_map(packet);
    const bool is_table = packet.pid == 0 || place->carries_map || is_candidate;
    if (!is_table && (place->section == 0 || carries_service_info(packet.pid))) {
        return;
    }
    Context context = {analysis, packet.pid};
    feed_sections(buffer_of(analysis, packet.pid), packet.payload, packet.starts_unit,
        take_program_section, &context);
}

void read_service_tables(Analysis* analysis, const Packet& packet) {
    Context context = {analysis, packet.pid};
    feed_sections(buffer_of(analysis, packet.pid), packet.payload, packet.starts_unit,
        take_service_section, &context);
}

} // namespace zat::ts
