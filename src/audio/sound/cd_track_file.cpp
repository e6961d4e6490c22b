#include "audio/sound/cd_track_file.h"

#include "audio/sound/sound_file.h"
#include "common/file/riff.h"
#include "common/record/record_lines.h"
#include "common/tags/outer_tags.h"
#include "common/text/text.h"

#include <bit>

namespace zat {

namespace {

constexpr uint32_t cd_frames_per_second = 75; // of a disc (IEC 60908)
constexpr uint32_t cd_frame_samples = 588;
constexpr uint32_t cd_chunk_limit = 16;

// What every track holds.
constexpr SampleForm disc_form = pcm_form(PcmKind::signed_integer, 16, std::endian::little);
constexpr uint32_t disc_rate = 44100; // Hz
constexpr uint32_t disc_channels = 2;

// "fmt ": version, track, the disc's serial number, start and length in frames, and both in
// minutes, seconds and frames.
constexpr uint32_t cd_fields_size = 16;

void read_track(Reader* reader, const Chunk& chunk, SoundFile* sound) {
    uint8_t fields[cd_fields_size];
    if (!read_all(reader, chunk.payload, 0, fields, sizeof fields)) {
        return;
    }
    const uint32_t track = ReadLE16(fields + 2);
    const uint32_t start = ReadLE32(fields + 8);
    sound->header_size = chunk.size;
    sound->facts.id = track;
    sound->facts.start = static_cast<double>(start) / cd_frames_per_second;
    sound->facts.sample_rate = disc_rate;
    sound->facts.channels = disc_channels;
    sound->facts.samples = uint64_t{ReadLE32(fields + 12)} * cd_frame_samples;
    sound->facts.flags |= ZAT_FLAG_NO_DATA; // the sound is on the disc
    set_sample_form(sound, disc_form, 0);
    sound->facts.codec_id[0] = '\0';
    const uint32_t seconds = start / cd_frames_per_second;
    format_text(sound->fact, sizeof sound->fact, "track %u start %u:%02u.%02u", track, seconds / 60,
        seconds % 60, start % cd_frames_per_second);
}

} // namespace

int AnalyzeCdTrackFile(FileRecord* file, const Output& out) {
    Reader reader;
    SoundFile sound;
    reader_open(&reader, file);
    open_sound_file(&sound);
    sound.header_name = "fmt";
    Span rest = sub_span(span_behind_id3v2(&reader), riff_header_size);
    Chunk chunk;
    for (uint32_t i = 0; i < cd_chunk_limit && next_chunk(&reader, &rest, &chunk); ++i) {
        add_to_chain(&sound.chain, {.id = chunk.id});
        if (chunk.id == fourcc("fmt ")) {
            read_track(&reader, chunk, &sound);
        }
    }
    set_label(out.record, "%s", "[RIFF(CDDA)]");
    write_sound_file(&sound, out);
    return 0;
}

} // namespace zat
