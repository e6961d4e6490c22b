#include "audio/framed/eac3_file.h"

#include "audio/eac3.h"
#include "audio/framed/framed_file.h"
#include "common/record/stream_lines.h"

namespace zat {

namespace {

constexpr uint32_t eac3_header_look = 12; // bytes

// A frame of another programme, or one that adds channels to the one before it, takes no time.
bool read_frame(Bytes bytes, AudioFrame* frame) {
    Eac3Frame header;
    if (!read_eac3_frame(bytes, &header)) {
        return false;
    }
    const bool leads = !header.dependent && header.substream == 0;
    *frame = {header.size, leads ? header.samples : 0};
    return true;
}

int64_t find_frames(Bytes bytes) {
    AudioFrame frame;
    for (int64_t at = find_byte_pair(bytes, 0, 0x0B, 0x77); at >= 0;
         at = find_byte_pair(bytes, static_cast<size_t>(at) + 1, 0x0B, 0x77)) {
        const Bytes rest = bytes.subspan(static_cast<size_t>(at));
        if (read_frame(rest, &frame) && has_at(rest, frame.size, "\x0B\x77")) {
            return at;
        }
    }
    return -1;
}

constexpr FrameFormat eac3_frames = {eac3_header_look, read_frame, find_frames};

// Fills in the facts. False without frames of E-AC-3.
bool count_eac3_file(FileRecord* file, const Output& out, FramedFile* framed, Eac3Info* info) {
    // Of so much, channels and programmes are told; the first frame is looked for there, too.
    constexpr uint32_t reach = 16384; // bytes
    open_framed_file(framed, file);
    uint8_t bytes[reach];
    Bytes start = {bytes, read_some(&framed->reader, framed->stream, 0, bytes, reach)};
    if (!eac3_info(start, info)) {
        const int64_t first = find_frames(start);
        if (first < 0 || !eac3_info(start.subspan(static_cast<size_t>(first)), info)) {
            return false;
        }
        framed->stream.start += first;
    }
    eac3_facts(*info, &framed->facts);
    framed->facts.estimated = 0;
    (void)count_framed_file(framed, eac3_frames, out); // of a cut frame the header's rate stands
    framed->facts.bit_rate_mode = framed->count.varies ? 0 : ZAT_BIT_RATE_CONSTANT;
    return true;
}

} // namespace

bool set_eac3_file_facts(FileRecord* file, const Output& out, ZatStream* stream) {
    FramedFile framed;
    Eac3Info info;
    if (!count_eac3_file(file, out, &framed, &info)) {
        return false;
    }
    *stream = framed.facts;
    return true;
}

int eac3_file(FileRecord* file, const Output& out) {
    FramedFile framed;
    Eac3Info info;
    if (!count_eac3_file(file, out, &framed, &info)) {
        return 1;
    }
    eac3_name(info, framed.line);
    append_bit_rate(framed.facts, framed.line);
    name_framed_file(out, "", "AC-3");
    write_framed_file(&framed, out);
    return 0;
}

} // namespace zat
