#include "audio/framed/mlp_file.h"

#include "audio/frame_search.h"
#include "audio/framed/framed_file.h"
#include "audio/stream_facts.h"
#include "audio/truehd.h"
#include "common/record/stream_lines.h"

#include <algorithm>
#include <iterator>

namespace zat {

namespace {

constexpr uint32_t sync_offset = 4;   // of the major sync in an access unit
constexpr uint32_t unit_samples = 40; // of an access unit at 44.1 and 48 kHz

bool is_major_sync(Bytes unit) {
    return has_at(unit, sync_offset, "\xF8\x72\x6F\xBA") ||
           has_at(unit, sync_offset, "\xF8\x72\x6F\xBB");
}

// AC-3 frames for simple players may stand between the units. The samples are counted in access
// units.
bool read_unit(Bytes bytes, AudioFrame* frame) {
    if (const uint32_t core = audio_frame_size(FrameKind::ac3, bytes); core != 0) {
        *frame = {core, 0};
        return true;
    }
    *frame = {mlp_unit_size(bytes), 1};
    return frame->size != 0;
}

int64_t find_units(Bytes bytes) {
    for (int64_t at = find_byte_pair(bytes, sync_offset, 0xF8, 0x72); at >= 0;
         at = find_byte_pair(bytes, static_cast<size_t>(at) + 1, 0xF8, 0x72)) {
        const Bytes unit = bytes.subspan(static_cast<size_t>(at) - sync_offset);
        if (is_major_sync(unit)) {
            return at - int64_t{sync_offset};
        }
    }
    return -1;
}

constexpr FrameFormat mlp_units = {8, read_unit, find_units};

// Samples of an access unit: as many times more as the rate is one of its family.
uint32_t samples_of_unit(uint32_t sample_rate) {
    constexpr uint32_t cd_rate = 44100;
    constexpr uint32_t dvd_rate = 48000;
    return unit_samples * (sample_rate / (sample_rate % cd_rate == 0 ? cd_rate : dvd_rate));
}

} // namespace

int mlp_file(FileRecord* file, const Output& out) {
    constexpr uint32_t looked_at = sync_offset + 20; // bytes, up to the peak rate
    FramedFile framed;
    open_framed_file(&framed, file);
    framed.stream = framed.tags.stream; // a unit may begin with a zero
    const Bytes start = framed_start(&framed, truehd_header_size);
    if (!is_major_sync(start)) {
        return -1;
    }
    const bool is_truehd = has_at(start, sync_offset, "\xF8\x72\x6F\xBA");
    name_framed_file(out, "", is_truehd ? "TrueHD" : "MLP");
    if (start.size() < looked_at) {
        return 1;
    }
    TrueHdInfo truehd;
    MlpInfo mlp;
    if (is_truehd) {
        (void)truehd_info(start, &truehd);
        truehd_facts(truehd, &framed.facts);
    } else {
        (void)mlp_info(start.subspan(sync_offset), &mlp);
        mlp_facts(mlp, &framed.facts);
    }
    (void)count_framed_file(&framed, mlp_units, out, samples_of_unit(framed.facts.sample_rate));
    if (is_truehd) {
        named_truehd_line(truehd, "Dolby_TrueHD", framed.line);
    } else {
        format_audio_line(framed.facts,
            {.codec = "MLP", .bits = framed.facts.bit_depth, .channel_mask = mlp.channel_mask},
            framed.line);
    }
    write_framed_file(&framed, out);
    return 0;
}

} // namespace zat
