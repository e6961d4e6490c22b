// A program stream as a whole: its head is walked for the streams and their headers, its tail and a
// few places between for the clocks.
#pragma once

#include "common/file/reader.h"
#include "common/file/work_memory.h"
#include "common/record/output.h"
#include "container/mpeg_ps/source.h"
#include "container/mpeg_ps/stream_table.h"
#include "container/mpeg_ps/timing.h"

#include <cstdint>

namespace zat::ps {

// Bytes of the head that are walked unless the host allows more.
constexpr uint32_t least_scan_budget = 2'097'152;

struct PlayTime {
    double seconds = 0;
    bool estimated = false;
    bool joined = false; // of several recordings
};

struct Program {
    // Bytes of the file in memory at one time: few reads, and what was read is still in the caches.
    static constexpr uint32_t block_size = 262'144;

    bool bare = false; // one elementary stream, without packets
    bool any_pack = false;
    bool mpeg2 = false; // by the first pack
    uint32_t byte_rate = 0;
    bool whole = false;     // every unit was seen
    int64_t walked = 0;     // bytes of the head
    int64_t damaged = 0;    // packets
    int64_t stream_at = -1; // of the first unit; -1 when there is none
    PlayTime told;          // where clocks and stamps tell none

    Source source;
    ClockProbes clocks;
    StreamTable table;
    Reader reader;
    uint8_t block[block_size]; // of the reader
};

static_assert(sizeof(Program) <= WorkMemory::kept_size);

// Begins a program in memory for one, its reader on the file. Null when there is no memory.
Program* start_program(const WorkMemory& memory, FileRecord* file);

// Walks the stream that begins at or behind `from` of the source. Reads the record's options and
// its scan budget; returns the budget that was used, which the analyser writes back.
uint32_t read_program(Program* program, const InfoRecord& record, int64_t from);

// Collects a packet's payload until the stream is described.
void collect_payload(Source* source, Stream* stream, const Payload& payload);

// Adds the lines, the notes and the play time, and gives the details their format's name.
void write_program(Program* program, const Output& out, const char* format);

} // namespace zat::ps
