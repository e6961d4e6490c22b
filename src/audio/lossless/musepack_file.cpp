#include "audio/lossless/musepack_file.h"

#include "audio/lossless/lossless_file.h"
#include "common/bytes/bits.h"
#include "common/bytes/bytes.h"
#include "common/bytes/crc.h"
#include "common/text/text.h"

#include <algorithm>
#include <string_view>

namespace zat {

namespace {

constexpr LosslessKind musepack_kind = {"[MusePack]", "Musepack", "Musepack"};

constexpr uint32_t musepack_rates[] = {44100, 48000, 37800, 32000};

// By the number of the profile; quality is that less five.
constexpr std::string_view profiles[16] = {"", "Experimental", "", "", "", "", "", "Telephone",
    "Thumb", "Radio", "Standard", "Xtreme", "Insane", "BrainDead", "", ""};
constexpr uint32_t lowest_quality = 5;
constexpr uint32_t profile_xtreme = 11;

constexpr uint32_t last_old_version = 116; // hundredths

// Adds " Standard q5.25" for a profile in eighths; nothing for those without a quality.
void add_profile(LosslessFile* musepack, uint32_t eighths, int version) {
    const uint32_t number = eighths / 8;
    std::string_view name = profiles[number & 0xF];
    if (version == 8 && number == profile_xtreme) {
        name = "Extreme"; // as it is called since
    }
    if (!name.empty()) {
        add_name_word(musepack, name);
        copy_utf8(musepack->facts.profile, name);
    }
    if (number < lowest_quality) {
        return;
    }
    constexpr const char* parts[] = {"", ".125", ".25", ".375", ".5", ".625", ".75", ".875"};
    char quality[16];
    format_text(quality, sizeof quality, "q%u%s", number - lowest_quality, parts[eighths % 8]);
    add_name_word(musepack, quality);
}

// The encoder's version in hundredths, as long as it had but that: odd ones are alpha versions.
void set_old_encoder(LosslessFile* musepack, uint32_t version) {
    char(&out)[sizeof musepack->facts.encoder] = musepack->facts.encoder;
    if (version == 0) {
        return;
    }
    if (version % 10 == 0) {
        format_text(out, sizeof out, "%u.%u", version / 100, version / 10 % 10);
    } else {
        format_text(out, sizeof out, "%u.%02u %s", version / 100, version % 100,
            version % 2 == 0 ? "beta" : "alpha");
    }
}

void set_gain(double* gain, double decibels, bool told) {
    if (told) {
        *gain = decibels;
    }
}

// Signed hundredths of a decibel.
void set_old_gain(const uint8_t* field, double* gain) {
    constexpr double hundredth = 0.01;
    const auto value = static_cast<int16_t>(ReadLE16(field));
    set_gain(gain, value * hundredth, value != 0);
}

// "MP+" and the version 1, frames 4, form of the sound 4, peak and gain of track and album 2 each,
// ending 4, reserved, version of the encoder 1.
void describe_version_7(LosslessFile* musepack) {
    constexpr uint32_t header_size = 28;
    // Of the last word one byte is the encoder's version; the frames begin in the others.
    constexpr int64_t frames_at = 25;
    constexpr uint32_t frame_samples = 1152;
    constexpr uint32_t decoder_delay = 481;
    constexpr double least_frame_bits = 20;
    const Span stream = musepack->tags.stream;
    uint8_t header[header_size];
    if (!read_all(&musepack->reader, stream, 0, header, sizeof header) || (header[3] & 0xF) != 7) {
        musepack->damaged = true;
        return;
    }
    const bool has_noise_substitution = header[3] >> 4 == 1;
    copy_text(musepack->name, has_noise_substitution ? "MusePack SV7.1" : "MusePack SV7");
    copy_text(musepack->format_profile, has_noise_substitution ? "SV7.1" : "SV7");
    const uint64_t frames = ReadLE32(header + 4);
    const uint32_t form = ReadLE32(header + 8);
    const uint32_t ending = ReadLE32(header + 20);
    add_profile(musepack, (form >> 20 & 0xF) * 8, 7);
    set_old_encoder(musepack, header[27]);
    set_channels(musepack, 2);
    set_sample_rate(musepack, musepack_rates[form >> 16 & 3]);

    const uint32_t last = ending >> 20 & 0x7FF;
    musepack->gapless = (ending & 0x80000000) != 0;
    const uint64_t unused = !musepack->gapless      ? decoder_delay
                            : last == 0             ? 0
                            : last <= frame_samples ? frame_samples - last
                                                    : 0;
    const uint64_t samples = frames * frame_samples;
    set_samples(musepack, samples > unused ? samples - unused : 0);

    set_old_gain(header + 14, &musepack->own_texts.track_gain);
    set_old_gain(header + 18, &musepack->own_texts.album_gain);
    musepack->payload = std::max<int64_t>(size_of(stream) - frames_at, 0);
    musepack->truncated =
        static_cast<double>(musepack->payload) * 8 < least_frame_bits * static_cast<double>(frames);
}

// Numbers of 7 bits a byte, high ones first; the top bit says that more follow.
uint64_t read_varint(BitReader* bits) {
    uint64_t value = 0;
    for (int i = 0; i < 9; ++i) {
        const uint32_t byte = read_bits(bits, 8);
        value = value << 7 | (byte & 0x7F);
        if ((byte & 0x80) == 0) {
            return value;
        }
    }
    bits->failed = true;
    return 0;
}

void take_stream_header(Bytes data, LosslessFile* musepack) {
    BitReader bits{.bytes = data};
    const uint32_t crc = read_bits(&bits, 32);
    const uint32_t version = read_bits(&bits, 8);
    const uint64_t samples = read_varint(&bits);
    const uint64_t silence = read_varint(&bits);
    const uint32_t rate = read_bits(&bits, 3);
    skip_bits(&bits, 5);
    const uint32_t channels = read_bits(&bits, 4) + 1;
    if (bits.failed || version != 8) {
        musepack->damaged = true;
        return;
    }
    musepack->damaged = crc32(data.subspan(4)) != crc;
    set_sample_rate(musepack, rate < std::size(musepack_rates) ? musepack_rates[rate] : 0);
    set_channels(musepack, channels);
    set_samples(musepack, samples > silence ? samples - silence : 0);
}

void take_gains(Bytes data, LosslessFile* musepack) {
    constexpr double reference = 64.82; // dB
    if (data.size() < 9 || data[0] != 1) {
        return;
    }
    const uint32_t track = ReadBE16(&data[1]);
    const uint32_t album = ReadBE16(&data[5]);
    set_gain(&musepack->own_texts.track_gain, reference - track / 256.0, track != 0);
    set_gain(&musepack->own_texts.album_gain, reference - album / 256.0, album != 0);
}

void take_encoder(Bytes data, LosslessFile* musepack) {
    if (data.size() < 4) {
        return;
    }
    add_profile(musepack, data[0] >> 1, 8);
    const uint32_t major = data[1];
    const uint32_t minor = data[2];
    if (major * 100 + minor <= last_old_version) {
        set_old_encoder(musepack, major * 100 + minor);
    } else {
        format_text(musepack->facts.encoder, sizeof musepack->facts.encoder, "%u.%u.%u%s", major,
            minor, uint32_t{data[3]}, minor % 2 == 0 ? "" : " unstable");
    }
}

struct PacketRow {
    std::string_view key;
    void (*take)(Bytes data, LosslessFile* musepack);
};

constexpr PacketRow packet_rows[] = {
    {"SH", take_stream_header},
    {"RG", take_gains},
    {"EI", take_encoder},
};

// Walks the packets up to the first one of audio. False when they lead nowhere.
bool walk_packets(LosslessFile* musepack) {
    constexpr int packet_limit = 256;
    constexpr uint32_t look = 64;
    int64_t at = 4; // behind "MPCK"
    for (int i = 0; i < packet_limit; ++i) {
        const Bytes bytes = read_view(&musepack->reader, musepack->tags.stream, at, look);
        BitReader bits{.bytes = bytes, .position = 16};
        const uint64_t size = read_varint(&bits);
        const size_t used = bits.position / 8;
        if (bits.failed || size < used || size > static_cast<uint64_t>(INT32_MAX)) {
            return false;
        }
        const std::string_view key = text_of(bytes.first(2));
        if (key == "AP" || key == "SE") {
            musepack->payload = size_of(musepack->tags.stream) - at;
            return true;
        }
        for (const PacketRow& row : packet_rows) {
            if (row.key == key) {
                row.take(
                    bytes.subspan(used, std::min(bytes.size(), static_cast<size_t>(size)) - used),
                    musepack);
            }
        }
        at += static_cast<int64_t>(size);
    }
    return false;
}

void describe_version_8(LosslessFile* musepack) {
    constexpr int64_t end_packet_size = 3;
    copy_text(musepack->name, "MusePack SV8");
    copy_text(musepack->format_profile, "SV8");
    if (!walk_packets(musepack) || musepack->facts.channels == 0) {
        musepack->damaged = true;
    }
    const Span stream = musepack->tags.stream;
    const Bytes end = read_view(&musepack->reader, stream, size_of(stream) - end_packet_size,
        static_cast<uint32_t>(end_packet_size));
    musepack->truncated = text_of(end) != "SE\x03";
}

} // namespace

int AnalyzeMusePackFile(FileRecord* file, const Output& out) {
    LosslessFile musepack;
    open_lossless_file(&musepack, file);
    musepack.shows_encoder = true;
    musepack.shows_ratio = false;
    if (!find_stream_start(&musepack, "MP")) {
        musepack.damaged = true;
    } else if (byte_at(read_view(&musepack.reader, musepack.tags.stream, 2, 1), 0) == 'C') {
        describe_version_8(&musepack);
    } else {
        describe_version_7(&musepack);
    }
    write_lossless_file(&musepack, musepack_kind, out);
    return 0;
}

} // namespace zat
