#include "container/video_cd.h"

#include "common/file/riff.h"
#include "common/record/record_lines.h"
#include "common/text/fourcc.h"
#include "container/mpeg_ps/program.h"

#include <algorithm>

namespace zat {

namespace {

using namespace ps;

constexpr double sectors_per_second = 75;

// The sync pattern of a sector (ECMA-130, 14.1).
bool is_sync(Reader* reader, Span file, int64_t position) {
    const Bytes bytes = read_view(reader, file, position, 12);
    return bytes.size() == 12 && has_at(bytes, 0, "\x00\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF") &&
           bytes[11] == 0;
}

// The first place where a sector begins and another one behind it; -1 without one.
int64_t find_sync(Reader* reader, Span file, int64_t from) {
    constexpr int64_t searched = 65'536;
    const int64_t end = std::min(from + searched, size_of(file));
    for (int64_t at = from; at < end;) {
        const Bytes bytes = read_view(reader, file, at, BlockReader::jump_size);
        const int64_t pair = find_byte_pair(bytes, 0, 0x00, 0xFF);
        if (pair < 0) {
            at += std::max<int64_t>(static_cast<int64_t>(bytes.size()) - 1, 1);
            continue;
        }
        at += pair;
        if (is_sync(reader, file, at) && is_sync(reader, file, at + sector_size)) {
            return at;
        }
        ++at;
    }
    return -1;
}

// Where the sectors begin: in the data chunk, whose size is often wrong, or somewhat behind its
// start; the file's end when there are none.
Span find_sectors(Reader* reader) {
    const Span file = whole_file(reader);
    const Span none = {file.end, file.end};
    Span space = sub_span(file, riff_header_size);
    Chunk chunk;
    while (next_chunk(reader, &space, &chunk)) {
        if (chunk.id == fourcc("data")) {
            const int64_t start = chunk.payload.start;
            const int64_t at =
                is_sync(reader, file, start) ? start : find_sync(reader, file, start);
            return at < 0 ? none : Span{at, file.end};
        }
    }
    return none;
}

} // namespace

int AnalyzeVideoCdFile(FileRecord* file, const Output& out) {
    const WorkMemory memory(sizeof(Program));
    Program* program = start_program(memory, file);
    if (program == nullptr) {
        return 0;
    }
    InfoRecord* record = out.record;
    source_open(
        &program->source, &program->reader, find_sectors(&program->reader), Packing::sectors);
    record->scan_budget = read_program(program, *record, 0);
    const int64_t sectors = program->source.size / sector_data_size;
    program->told = {.seconds = static_cast<double>(sectors) / sectors_per_second};
    set_label(record, "%s", "[VideoCD]");
    if (record->data_size == 0) {
        record->data_size = static_cast<uint64_t>(program->source.size);
    }
    write_program(program, out, "VideoCD");
    return static_cast<int>(std::min<int64_t>(program->damaged, INT32_MAX));
}

} // namespace zat
