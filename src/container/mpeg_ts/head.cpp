// The head of the file: where its tables stand and where every stream shows what it is.
#include "container/mpeg_ts/analysis.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace zat::ts {

namespace {

constexpr int64_t least_head = 256 << 10; // bytes read of a file that is larger
constexpr int64_t step_size = 128 << 10;  // read at a time of what comes behind
constexpr uint32_t least_stamps = 12;     // that tell a frame rate
constexpr int64_t tables_limit = 1 << 20; // bytes searched for the first tables
constexpr int64_t whole_limit = 1 << 20;  // files up to this size are read whole

bool has_all_maps(const Analysis* analysis) {
    bool any = false;
    for (uint32_t i = 0; i < analysis->program_count; ++i) {
        const Program& program = analysis->programs[i];
        if (program.listed && !program.has_map) {
            return false;
        }
        any = any || is_active(analysis, program);
    }
    return any && analysis->pat_seen;
}

bool has_any_map(const Analysis* analysis) {
    for (uint32_t i = 0; i < analysis->program_count; ++i) {
        if (is_active(analysis, analysis->programs[i])) {
            return true;
        }
    }
    return false;
}

// The program tables alone, so that their streams are known when packets are read for good.
void find_tables(Analysis* analysis, int64_t limit) {
    int64_t position = analysis->layout.offset;
    while (position + packet_size <= limit) {
        const auto wanted = static_cast<uint32_t>(std::min<int64_t>(piece_size, limit - position));
        PacketCursor cursor{
            file_bytes(analysis, position, wanted, buffer_size), analysis->layout.stride, 0};
        Packet packet;
        while (next_packet(&cursor, &packet)) {
            if (packet.has_payload && !packet.damaged && packet.scrambling == 0) {
                read_program_tables(analysis, packet);
            }
        }
        position += static_cast<int64_t>(cursor.position);
        const bool has_enough = position >= least_head && has_any_map(analysis);
        if (cursor.position == 0 || has_all_maps(analysis) || has_enough) {
            break;
        }
    }
    for (uint32_t i = 0; i < analysis->section_count; ++i) {
        drop_section(&analysis->sections[i]);
    }
}

void take_pcr(Analysis* analysis, Pid* place, const Packet& packet, int64_t position) {
    if (place->clock == 0 && analysis->clock_count < clock_slots) {
        take_entry(analysis->clocks, &analysis->clock_count);
        place->clock = static_cast<uint8_t>(analysis->clock_count);
    }
    if (place->clock != 0) {
        Clock* clock = &analysis->clocks[place->clock - 1];
        clock->pid = packet.pid;
        add_pcr(clock, packet.pcr, position);
    }
}

// A stream that no program map names, by its PES packets.
void add_unlisted_stream(Analysis* analysis, Pid* place, const Packet& packet) {
    PesHeader header;
    if (analysis->stream_count == stream_slots || !packet.starts_unit ||
        carries_service_info(packet.pid) || read_pes_header(&header, packet.payload) != 0) {
        return;
    }
    Codec codec = Codec::data;
    if (header.stream_id >= id_video_first && header.stream_id <= id_video_last) {
        codec = Codec::unknown_video;
    } else if (header.stream_id >= id_audio_first && header.stream_id <= id_audio_last) {
        codec = Codec::unknown_audio;
    } else if (header.stream_id != id_private_1 && header.stream_id != id_extended) {
        return;
    }
    Stream* stream = enter_stream(analysis);
    place->stream = static_cast<uint16_t>(analysis->stream_count);
    stream->pid = packet.pid;
    stream->program = program_slots; // none
    stream->codec = codec;
}

// Counts the packet. False for one that repeats the packet before it; `lost` tells that packets
// are missing in between.
bool check_counter(Pid* place, const Packet& packet, bool* lost) {
    *lost = false;
    if (!packet.has_payload) {
        return true;
    }
    if (place->has_counter && !packet.discontinuity) {
        if (packet.counter == place->counter) {
            return false;
        }
        *lost = packet.counter != ((place->counter + 1) & 0x0F);
    }
    place->counter = packet.counter;
    place->has_counter = true;
    return true;
}

void take_packet(Analysis* analysis, const Packet& packet, int64_t position, bool without_maps) {
    Pid* place = place_of(analysis, packet.pid);
    analysis->seen[packet.pid / 64] |= uint64_t{1} << packet.pid % 64;
    if (packet.damaged || packet.pid == null_pid) {
        return;
    }
    bool lost = false;
    if (!check_counter(place, packet, &lost)) {
        return;
    }
    if (packet.pcr != no_pcr) {
        take_pcr(analysis, place, packet, position);
    }
    if (!packet.has_payload) {
        return;
    }
    if (packet.scrambling != 0) {
        place->scrambled = true;
        return;
    }
    if (lost && place->section != 0) {
        drop_section(&analysis->sections[place->section - 1]);
    }
    if (carries_service_info(packet.pid) && !place->carries_map) {
        read_service_tables(analysis, packet);
        return;
    }
    read_program_tables(analysis, packet);
    if (place->stream == 0 && without_maps) {
        add_unlisted_stream(analysis, place, packet);
    }
    if (place->stream != 0) {
        feed_unit(analysis, place->stream - 1U, packet, lost);
    }
}

// Whether reading on cannot tell more: all streams of maps are described and, where tables of
// services occur, they were seen.
bool is_complete(const Analysis* analysis) {
    if (analysis->stream_count == 0) {
        return false;
    }
    for (uint32_t i = 0; i < analysis->stream_count; ++i) {
        const Stream& stream = analysis->streams[i];
        const Unit& unit = analysis->units[i];
        const ZatStreamKind kind = text_of(stream.codec).kind;
        const bool matters = kind == ZAT_STREAM_VIDEO || kind == ZAT_STREAM_AUDIO;
        const bool is_hidden = unit.encrypted || known_of(analysis, stream.pid).scrambled;
        const bool is_open =
            !unit.described || (unit.wants_stamps && unit.stamp_count < least_stamps);
        if (matters && is_open && !is_hidden) {
            return false;
        }
    }
    const bool waits_for_sdt = was_seen(analysis, pid_sdt) && !analysis->services.sdt_seen;
    const bool waits_for_eit = was_seen(analysis, pid_eit) && !analysis->services.eit_seen;
    return !waits_for_sdt && !waits_for_eit;
}

} // namespace

Analysis* start_analysis(const WorkMemory& memory, FileRecord* file) {
    auto* analysis = reinterpret_cast<Analysis*>(memory.bytes);
    std::memset(memory.bytes, 0, offsetof(Analysis, services));
    clear_services(&analysis->services);
    analysis->file = file;
    analysis->file_size = file->size;
    return analysis;
}

Stream* enter_stream(Analysis* analysis) {
    analysis->units[analysis->stream_count] = {};
    return take_entry(analysis->streams, &analysis->stream_count);
}

Bytes file_bytes(Analysis* analysis, int64_t position, uint32_t wanted, int64_t ahead) {
    const int64_t left = std::max<int64_t>(analysis->file_size - position, 0);
    wanted = static_cast<uint32_t>(std::min<int64_t>(left, wanted));
    const int64_t end = analysis->buffer_start + analysis->buffer_loaded;
    if (position < analysis->buffer_start || position + wanted > end) {
        ahead = std::clamp<int64_t>(std::min(ahead, left), wanted, buffer_size);
        analysis->buffer_start = position;
        analysis->buffer_loaded =
            read_at(analysis->file, position, analysis->buffer, static_cast<uint32_t>(ahead));
    }
    const auto offset = static_cast<size_t>(position - analysis->buffer_start);
    return part_of({analysis->buffer, analysis->buffer_loaded}, offset, wanted);
}

void read_head(Analysis* analysis, int64_t limit, bool thorough) {
    find_tables(analysis, std::min({limit, tables_limit, analysis->file_size}));
    const bool without_maps = !has_any_map(analysis);
    analysis->take_damaged = without_maps;
    int64_t position = analysis->layout.offset;
    const int64_t end = std::min(limit, analysis->file_size);
    const bool reads_all = thorough || analysis->file_size <= whole_limit;
    for (;;) {
        const auto wanted = static_cast<uint32_t>(std::min<int64_t>(piece_size, end - position));
        const int64_t ahead = reads_all || position < least_head ? buffer_size : step_size;
        PacketCursor cursor{file_bytes(analysis, position, wanted, std::min(ahead, end - position)),
            analysis->layout.stride, 0};
        Packet packet;
        while (next_packet(&cursor, &packet)) {
            const auto at = static_cast<int64_t>(cursor.position - cursor.stride);
            take_packet(analysis, packet, position + at, without_maps);
        }
        const auto used = static_cast<int64_t>(cursor.position);
        position += used;
        analysis->head_end = position;
        analysis->lost += static_cast<int64_t>(cursor.lost);
        if (used == 0 || position + packet_size > end) {
            break;
        }
        judge_units(analysis);
        if (!reads_all && position >= least_head && is_complete(analysis)) {
            break;
        }
    }
    judge_units(analysis);
    analysis->whole_file = analysis->head_end + analysis->layout.stride > analysis->file_size;
}

} // namespace zat::ts
