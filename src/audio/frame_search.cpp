#include "audio/frame_search.h"

#include "audio/ac3.h"
#include "audio/adts.h"
#include "audio/mpeg_audio.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace zat {

namespace {

constexpr size_t frame_header_size = 8; // enough for every kind

bool read_mpeg_header(Bytes bytes, MpegAudioHeader* info) {
    return IsMpegAudioSync(bytes.data()) && read_mpeg_audio_header(bytes, info) == 0 &&
           info->bitrate > 0;
}

// ISO/IEC 11172-3, 2.4.3.1, by slots; the frame size of the info is one that lines show.
uint32_t mpeg_audio_size(Bytes bytes) {
    MpegAudioHeader info;
    if (!read_mpeg_header(bytes, &info)) {
        return 0;
    }
    const auto rate = static_cast<uint32_t>(info.bitrate) * 1000;
    const uint32_t padding = info.padding != 0 ? 1 : 0;
    if (info.layer == 1) {
        return (12 * rate / info.sample_rate + padding) * 4;
    }
    const uint32_t factor = info.layer == 3 && info.version_code != 10 ? 72 : 144;
    return factor * rate / info.sample_rate + padding;
}

uint32_t adts_size(Bytes bytes) {
    // syncword, layer '00'; aac_frame_length (ISO/IEC 13818-7, 6.2.1 and 6.2.2)
    const bool is_sync = bytes[0] == 0xFF && (bytes[1] & 0xF6) == 0xF0;
    return is_sync ? (bytes[3] & 3U) << 11 | uint32_t{bytes[4]} << 3 | bytes[5] >> 5 : 0;
}

uint32_t ac3_size(Bytes bytes) {
    constexpr uint8_t last_bsid = 8;
    const bool is_sync = has_at(bytes, 0, "\x0B\x77") && bytes[5] >> 3 <= last_bsid;
    return is_sync ? static_cast<uint32_t>(ac3_framesize(bytes[4] & 0x3F, bytes[4] >> 6)) : 0;
}

uint32_t dts_size(Bytes bytes) {
    // FSIZE (ETSI TS 102 114, 5.3.1)
    const bool is_sync = has_at(bytes, 0, "\x7F\xFE\x80\x01");
    return is_sync ? ((bytes[5] & 3U) << 12 | uint32_t{bytes[6]} << 4 | bytes[7] >> 4) + 1 : 0;
}

struct Kind {
    uint8_t first_byte;
    uint32_t (*size)(Bytes);
    // The bits of the header that all frames of a stream share.
    std::array<uint8_t, frame_header_size> shared;
};

constexpr Kind kinds[] = {
    {0xFF, mpeg_audio_size, {0xFF, 0xFE, 0x0C, 0, 0, 0, 0, 0}},
    {0xFF, adts_size, {0xFF, 0xFE, 0xFC, 0, 0, 0, 0, 0}},
    {0x0B, ac3_size, {0xFF, 0xFF, 0, 0, 0xC0, 0xF8, 0, 0}},
    {0x7F, dts_size, {0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0}},
};

const Kind& kind_of(FrameKind kind) {
    return kinds[static_cast<size_t>(kind)];
}

} // namespace

uint32_t audio_frame_size(FrameKind kind, Bytes bytes) {
    return bytes.size() >= frame_header_size ? kind_of(kind).size(bytes) : 0;
}

bool same_stream(FrameKind kind, Bytes first, Bytes second) {
    const Kind& row = kind_of(kind);
    bool same = true;
    for (size_t i = 0; i < frame_header_size; ++i) {
        same = same && ((first[i] ^ second[i]) & row.shared[i]) == 0;
    }
    return same;
}

int64_t find_audio_frame(FrameKind kind, Bytes bytes) {
    const Kind& row = kind_of(kind);
    int64_t unconfirmed = -1;
    for (size_t at = 0; at + frame_header_size <= bytes.size(); ++at) {
        const void* hit =
            std::memchr(&bytes[at], row.first_byte, bytes.size() - at - (frame_header_size - 1));
        if (hit == nullptr) {
            break;
        }
        at = static_cast<size_t>(static_cast<const uint8_t*>(hit) - bytes.data());
        const Bytes frame = bytes.subspan(at);
        const uint32_t size = row.size(frame);
        if (size < frame_header_size) {
            continue;
        }
        if (size + frame_header_size > frame.size()) {
            unconfirmed = unconfirmed < 0 ? static_cast<int64_t>(at) : unconfirmed;
            continue;
        }
        const Bytes next = frame.subspan(size);
        if (same_stream(kind, frame, next) && row.size(next) != 0) {
            return static_cast<int64_t>(at);
        }
    }
    return unconfirmed;
}

uint32_t audio_frame_samples(FrameKind kind, Bytes bytes) {
    if (audio_frame_size(kind, bytes) == 0) {
        return 0;
    }
    MpegAudioHeader info;
    switch (kind) {
    case FrameKind::mpeg_audio:
        read_mpeg_header(bytes, &info);
        return mpeg_audio_frame_samples(&info);
    case FrameKind::adts:
        return adts_frame_samples(bytes);
    case FrameKind::ac3:
        return 1536;
    case FrameKind::dts: // NBLKS + 1 blocks of 32
        return ((bytes[4] & 1U) << 6 | bytes[5] >> 2) * 32 + 32;
    }
    return 0;
}

} // namespace zat
