#include "detect/signatures.h"

#include "detect/stream_probes.h"
#include "zat/zat.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string_view>

namespace zat {

namespace {

using namespace std::string_view_literals;

// Bytes that stand at an offset; the mask is for each of them. Without bytes it always matches.
struct Magic {
    size_t offset;
    std::string_view bytes;
    uint8_t mask = 0xFF;
};

// All magics must match, and the probe must agree when the row names one. A row of the first table
// asks it only where something stands before the stream: at the start its magic alone decides.
struct Signature {
    uint32_t type_code;
    Magic magics[3];
    Probe probe = nullptr;
};

// The first match wins, so the order counts where one row's magic covers another's.
constexpr Signature signatures[] = {
    // Start codes (ISO/IEC 11172-1, 2.4.3; 13818-1, 2.5.3). With sync bytes one packet apart at 4
    // and 196 they are the time stamp before a transport packet, which the later probes tell. A
    // pack header's next bits are '01' in MPEG-2 and '0010' in MPEG-1.
    {FILETYPE_UNKNOWN, {{0, "\x00\x00\x01"sv}, {4, "G"}, {196, "G"}}},
    {FILETYPE_MPEG2, {{0, "\x00\x00\x01\xBA"sv}, {4, "\x40", 0xC0}}},
    {FILETYPE_MPEG1, {{0, "\x00\x00\x01\xBA"sv}, {4, "\x20", 0xF0}}},
    {FILETYPE_MPEG, {{0, "\x00\x00\x01"sv}}, has_video_headers},
    {FILETYPE_WAV, {{0, "RIFF"}, {8, "WAV"}}},
    {FILETYPE_RMP3, {{0, "RIFF"}, {8, "RMP"}}},
    {FILETYPE_MPEG1VCD, {{0, "RIFF"}, {8, "CDXA"}}},
    {FILETYPE_AC3, {{0, "\x0B\x77"}}, has_ac3_frames}, // ATSC A/52, 5.4.1.1
    {FILETYPE_DTS16BE, {{0, "\x7F\xFE\x80\x01"}}},     // ETSI TS 102 114, 5.3.1
    {FILETYPE_DTS16LE, {{0, "\xFE\x7F\x01\x80"}}},     // the same, bytes swapped
    {FILETYPE_OPTIMFROG, {{0, "OFR"}}},
    {FILETYPE_FLAC, {{0, "fLaC"}}},
    {FILETYPE_MUSEPACK, {{0, "MP+"}}},
    {FILETYPE_TTA, {{0, "TTA"}}},
    {FILETYPE_WAVPACK, {{0, "wvpk"}}},
    {FILETYPE_MONKEY, {{0, "MAC"}}},
    {FILETYPE_AVI, {{0, "RIFF"}, {8, "AVI"}}},
    // The first packet of an Ogg stream begins at 28 (RFC 3533, 6).
    {FILETYPE_OGGMEDIA, {{0, "OggS"}, {29, "video"}}},
    {FILETYPE_OGGMEDIA, {{0, "OggS"}, {29, "audio"}}},
    {FILETYPE_OGGVORBIS, {{0, "OggS"}, {29, "vorbi"}}}, // five letters are told apart, not six
    {FILETYPE_OGGSPEEX, {{0, "OggS"}, {28, "Speex"}}},
    {FILETYPE_OGGFLAC, {{0, "OggS"}, {28, "fLaC"}}},
    {FILETYPE_OGGOPUS, {{0, "OggS"}, {28, "OpusHead"}}},
    {FILETYPE_WMV, {{0, "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"sv}}},
    {FILETYPE_MATROSKA, {{0, "\x1A\x45\xDF\xA3"}}}, // EBML (RFC 8794, 11.2.1)
    {FILETYPE_REALMEDIA, {{0, ".RMF"}}},
    {FILETYPE_FLV, {{0, "FLV"}}},
    {FILETYPE_TAK, {{0, "tBaK"}}},
    {FILETYPE_DSDIFF, {{0, "FRM8"}}},
    {FILETYPE_DSF, {{0, "DSD "}}},
    {FILETYPE_WSD, {{0, "1bit"}}},
};

// Held against a file when no step that looks at its start knew it, and before those that search:
// what the first table and the probes recognise stays what it was.
constexpr Signature late_signatures[] = {
    {FILETYPE_OGGFLAC, {{0, "OggS"}, {28, "\x7F"
                                          "FLAC"}}},
    {FILETYPE_OGGMEDIA, {{0, "OggS"}}}, {FILETYPE_MUSEPACK, {{0, "MPCK"}}},
    // WAVE with sizes of 64 bits (EBU Tech 3306; ITU-R BS.2088), and the file of GUIDs.
    {FILETYPE_WAV, {{0, "RF64"}, {8, "WAVE"}}}, {FILETYPE_WAV, {{0, "BW64"}, {8, "WAVE"}}},
    {FILETYPE_WAV, {{0, "riff\x2E\x91\xCF\x11\xA5\xD6\x28\xDB\x04\xC1\x00\x00"sv}}},
    {FILETYPE_AIFF, {{0, "FORM"}, {8, "AIFF"}}}, {FILETYPE_AIFF, {{0, "FORM"}, {8, "AIFC"}}},
    {FILETYPE_AU, {{0, ".snd"}}}, {FILETYPE_MID, {{0, "MThd"}}},
    {FILETYPE_RMI, {{0, "RIFF"}, {8, "RMID"}}}, {FILETYPE_CDA, {{0, "RIFF"}, {8, "CDDA"}}},
    {FILETYPE_REALAUDIO, {{0, ".ra\xFD"}}},
    // Boxes that media segments begin with (ISO/IEC 14496-12, 8.8.4, 8.16; ISO/IEC 23009-1, 5.10).
    {FILETYPE_MPEG4, {{4, "styp"}}}, {FILETYPE_MPEG4, {{4, "moof"}}},
    {FILETYPE_MPEG4, {{4, "sidx"}}}, {FILETYPE_MPEG4, {{4, "emsg"}}},
    {FILETYPE_AAC, {{0, "ADIF"}}}, // ISO/IEC 13818-7, 6.1
    {FILETYPE_AAC, {{0, "\xFF"}}, has_adts_frames}, {FILETYPE_AAC, {{0, "\x56"}}, has_loas_frames},
    // In words of 14 bits the sync word goes on into the third: FTYPE 1 and SHORT 31.
    {FILETYPE_DTS14LE, {{0, "\xFF\x1F\x00\xE8"sv}, {4, "\xF0", 0xF0}, {5, "\x07"}}},
    {FILETYPE_DTS14BE, {{0, "\x1F\xFF\xE8\x00\x07"sv}, {5, "\xF0", 0xF0}}},
    {FILETYPE_JPEG, {{0, "\xFF\xD8\xFF"}}}, // SOI and a marker (ITU-T T.81, annex B)
    {FILETYPE_GIF, {{0, "GIF8"}}}, {FILETYPE_BMP, {{0, "BM"}}, has_bitmap_header},
    {FILETYPE_AC3, {{4, "\xF8\x72\x6F\xBA"}}}, // the major sync of Dolby TrueHD
    {FILETYPE_AC3, {{4, "\xF8\x72\x6F\xBB"}}}, // and that of other MLP streams
};

bool matches(Bytes bytes, const Magic& magic) {
    for (size_t i = 0; i < magic.bytes.size(); ++i) {
        const auto expected = static_cast<uint8_t>(magic.bytes[i]);
        if ((byte_at(bytes, magic.offset + i) & magic.mask) != expected) {
            return false;
        }
    }
    return true;
}

// The first byte alone tells most rows apart.
bool matches(Bytes bytes, const Signature& signature) {
    const Magic& first = signature.magics[0];
    if ((byte_at(bytes, first.offset) & first.mask) != static_cast<uint8_t>(first.bytes[0])) {
        return false;
    }
    return std::all_of(std::begin(signature.magics), std::end(signature.magics),
        [bytes](const Magic& magic) { return matches(bytes, magic); });
}

// The type by the first row that the bytes match. Given the view that holds them from `at` on, the
// probes of the rows are asked, too.
uint32_t first_match(
    std::span<const Signature> table, Bytes bytes, FileWindow* window = nullptr, uint32_t at = 0) {
    for (const Signature& row : table) {
        if (matches(bytes, row) &&
            (window == nullptr || row.probe == nullptr || row.probe(window, at))) {
            return row.type_code;
        }
    }
    return FILETYPE_UNKNOWN;
}

// Where the stream begins behind what may stand before it: the footer of an ID3v2 tag (ID3v2.4.0
// structure, 3.4), which the tag's size does not count, and zeros. 0 when nothing does, or too
// much.
uint32_t end_of_padding(Bytes bytes) {
    constexpr uint32_t footer_size = 10;
    const uint32_t footer = has_at(bytes, 0, "3DI") && bytes.size() > footer_size ? footer_size : 0;
    const size_t zeros = leading_zeros(bytes.subspan(footer));
    const size_t end = footer + zeros;
    if (zeros > padding_limit || end == bytes.size()) {
        return 0;
    }
    // The last two zeros before a 1 belong to a start code.
    const bool start_code = zeros >= 2 && bytes[end] == 1;
    return static_cast<uint32_t>(start_code ? end - 2 : end);
}

} // namespace

uint32_t CheckHeaderSignature(Bytes bytes) {
    return first_match(signatures, bytes);
}

LateSignature check_late_signature(FileWindow* window) {
    const Bytes bytes = window_bytes(window);
    const uint32_t at_start = first_match(late_signatures, bytes, window);
    const uint32_t padding = end_of_padding(bytes);
    if (at_start != FILETYPE_UNKNOWN || padding == 0) {
        return {at_start, 0};
    }
    const Bytes stream = bytes.subspan(padding);
    const uint32_t type_code = first_match(signatures, stream, window, padding);
    return {type_code != FILETYPE_UNKNOWN ? type_code
                                          : first_match(late_signatures, stream, window, padding),
        padding};
}

} // namespace zat
