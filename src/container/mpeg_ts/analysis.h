// What is known of a transport stream while its packets are read.
#pragma once

#include "common/file/file_access.h"
#include "common/file/work_memory.h"
#include "container/mpeg_pes.h"
#include "container/mpeg_ts/clock.h"
#include "container/mpeg_ts/packets.h"
#include "container/mpeg_ts/sections.h"
#include "container/mpeg_ts/service_info.h"
#include "container/mpeg_ts/stream_types.h"

#include <cstddef>
#include <cstdint>

namespace zat::ts {

constexpr uint32_t program_slots = 256;
constexpr uint32_t stream_slots = 256;
constexpr uint32_t clock_slots = 64;
constexpr uint32_t section_slots = 64; // sections under way at one time
constexpr uint32_t stamp_slots = 256;  // time stamps that are kept of a video stream
constexpr uint32_t stamped_units = 16; // video streams whose time stamps are kept
constexpr uint32_t capture_pool = 768 << 10;
constexpr uint32_t video_capture = 4096;  // from the first header on
constexpr uint32_t audio_capture = 65536; // of the first streams whose frames are counted
constexpr uint32_t small_capture = 8192;  // of all the others
constexpr uint32_t first_captures = 8;
constexpr uint32_t piece_size = 32 << 10;   // of the file: after each it is judged what is known
constexpr uint32_t buffer_size = 256 << 10; // of the file that is read at a time

struct Program {
    uint16_t number = 0;
    uint16_t map_pid = 0;
    uint16_t pcr_pid = 0;
    bool listed = false; // in the program association table
    bool has_map = false;
};

// The payload of the PES packets of a stream.
struct Unit {
    bool in_packet = false; // behind a header that was read
    bool was_read = false;  // PES packets began
    bool encrypted = false;
    bool capture_closed = false; // what is captured is all there will be
    bool described = false;      // it tells what the stream is
    bool stamps_jump = false;    // by more than a minute
    bool stamps_return = false;  // farther than frames are reordered
    bool has_stamps = false;
    uint8_t stream_id = 0;
    uint8_t false_headers = 0; // of video, that were looked at in vain
    uint32_t header_left = 0;  // bytes of the header that the next packets bring
    uint64_t payload = 0;      // bytes
    uint64_t sampled = 0;      // bytes of it outside the head
    uint32_t judged = 0;       // bytes captured when it was last looked at
    bool wants_stamps = false; // they have to tell the frame rate

    // Time stamps (PTS): ticks from the first one on.
    int64_t first_stamp = 0;
    int64_t lowest = 0;
    int64_t highest = 0;
    int64_t latest = 0;
    int64_t earlier = 0;      // ticks of the parts before a jump
    int64_t step = 0;         // the first one forward
    double frame_seconds = 0; // of what a time stamp begins, where the stream tells it
    uint32_t stamp_count = 0;
    uint32_t stamps = 0; // number, from 1, of the place where they are kept; 0: nowhere

    uint8_t edge[3] = {}; // the bytes before the next piece of payload
    uint32_t capture = 0; // place in the pool
    uint32_t capacity = 0;
    uint32_t captured = 0;
};

struct Pid {
    uint16_t stream = 0; // numbers from 1; 0: none
    uint8_t section = 0;
    uint8_t clock = 0;
    uint8_t counter = 0;
    bool has_counter : 1 = false;
    bool carries_map : 1 = false;
    bool scrambled : 1 = false;
};

// The start is all zero as far as the services. What stands behind them is cleared when it comes
// into use: clearing it all would cost more than reading most files.
struct Analysis {
    FileRecord* file = nullptr;
    Layout layout;
    int64_t file_size = 0;
    int64_t head_end = 0; // what was read from the file's start on
    int64_t sampled = 0;  // bytes of packets read outside of it
    int64_t lost = 0;     // bytes of it that are no packets
    bool whole_file = false;

    bool pat_seen = false;
    SectionNumbers pat_sections;
    bool take_damaged = false; // sections with a wrong CRC, where there are no others
    uint32_t program_count = 0;
    uint32_t stream_count = 0;
    uint32_t section_count = 0;
    uint32_t clock_count = 0;
    uint32_t stamped_count = 0;
    uint32_t capture_count = 0; // of audio
    uint32_t pool_used = 0;
    int64_t buffer_start = 0; // position in the file
    uint32_t buffer_loaded = 0;
    uint64_t seen[pid_count / 64]; // a bit for each identifier, apart: they are all looked at
    uint64_t used[pid_count / 64]; // a bit for each identifier that has its place in `pids`
    ServiceInfo services;
    Pid pids[pid_count];
    Program programs[program_slots];
    Stream streams[stream_slots];
    Unit units[stream_slots];
    Clock clocks[clock_slots];
    SectionBuffer sections[section_slots];
    uint8_t section_bytes[section_slots][section_limit];
    int64_t stamps[stamped_units][stamp_slots];
    uint8_t pool[capture_pool];
    uint8_t buffer[buffer_size];
};

static_assert(sizeof(Analysis) <= WorkMemory::kept_size);

// Begins an analysis in memory for one.
Analysis* start_analysis(const WorkMemory& memory, FileRecord* file);

// The next entry of a table that has room, cleared.
template <typename T, size_t N>
T* take_entry(T (&table)[N], uint32_t* count) {
    T* entry = &table[(*count)++];
    *entry = {};
    return entry;
}

// The identifier's place, cleared when it comes into use.
inline Pid* place_of(Analysis* analysis, uint32_t pid) {
    const uint64_t bit = uint64_t{1} << pid % 64;
    if ((analysis->used[pid / 64] & bit) == 0) {
        analysis->used[pid / 64] |= bit;
        analysis->pids[pid] = {};
    }
    return &analysis->pids[pid];
}

// What is known of the identifier.
inline Pid known_of(const Analysis* analysis, uint32_t pid) {
    return (analysis->used[pid / 64] >> pid % 64 & 1) != 0 ? analysis->pids[pid] : Pid{};
}

// The streams of programs that count: of those in the association table, or of all without one.
inline bool is_active(const Analysis* analysis, const Program& program) {
    return program.has_map && (program.listed || !analysis->pat_seen);
}

inline bool was_seen(const Analysis* analysis, uint32_t pid) {
    return (analysis->seen[pid / 64] >> pid % 64 & 1) != 0;
}

// The `wanted` (at most piece_size) bytes of the file from a position on, fewer where it ends.
// `ahead`: how many bytes from there on are going to be wanted, which are then read in one go.
// Valid until the next call.
Bytes file_bytes(Analysis* analysis, int64_t position, uint32_t wanted, int64_t ahead);

// Adds a stream, of which there are fewer than stream_slots, and its unit.
Stream* enter_stream(Analysis* analysis);

// Takes the sections of a packet's payload that belong to the program tables.
void read_program_tables(Analysis* analysis, const Packet& packet);

// Takes sections of service information.
void read_service_tables(Analysis* analysis, const Packet& packet);

// Takes the payload of a packet of the stream of this index. `lost` says that packets before it are
// missing.
void feed_unit(Analysis* analysis, uint32_t index, const Packet& packet, bool lost);

// Looks once more which streams are described by what was captured of them.
void judge_units(Analysis* analysis);

// What was captured of a stream: of video from its first header on, of audio from the first packet.
inline Bytes captured_bytes(const Analysis* analysis, const Unit& unit) {
    return {analysis->pool + unit.capture, unit.captured};
}

// Reads the head of the file, `limit` bytes at most: tables, then streams until they are all
// described or, if `thorough`, to the limit.
void read_head(Analysis* analysis, int64_t limit, bool thorough);

} // namespace zat::ts
