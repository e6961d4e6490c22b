#include "detect/signatures.h"

#include "zat/zat.h"

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

// All magics must match.
struct Signature {
    uint32_t type_code;
    Magic magics[3];
};

// The first match wins, so the order counts where one row's magic covers another's.
constexpr Signature signatures[] = {
    // Start codes (ISO/IEC 11172-1, 2.4.3; 13818-1, 2.5.3). With sync bytes one packet apart at 4
    // and 196 they are the time stamp before a transport packet, which the later probes tell. A
    // pack header's next bits are '01' in MPEG-2 and '0010' in MPEG-1.
    {FILETYPE_UNKNOWN, {{0, "\x00\x00\x01"sv}, {4, "G"}, {196, "G"}}},
    {FILETYPE_MPEG2, {{0, "\x00\x00\x01\xBA"sv}, {4, "\x40", 0xC0}}},
    {FILETYPE_MPEG1, {{0, "\x00\x00\x01\xBA"sv}, {4, "\x20", 0xF0}}},
    {FILETYPE_MPEG, {{0, "\x00\x00\x01"sv}}},
    {FILETYPE_WAV, {{0, "RIFF"}, {8, "WAV"}}},
    {FILETYPE_RMP3, {{0, "RIFF"}, {8, "RMP"}}},
    {FILETYPE_MPEG1VCD, {{0, "RIFF"}, {8, "CDXA"}}},
    {FILETYPE_AC3, {{0, "\x0B\x77"}}},             // ATSC A/52, 5.4.1.1
    {FILETYPE_DTS16BE, {{0, "\x7F\xFE\x80\x01"}}}, // ETSI TS 102 114, 5.3.1
    {FILETYPE_DTS16LE, {{0, "\xFE\x7F\x01\x80"}}}, // the same, bytes swapped
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
    {FILETYPE_OGGMEDIA, {{0, "OggS"}}},
    {FILETYPE_MUSEPACK, {{0, "MPCK"}}},
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

bool matches(Bytes bytes, const Signature& signature) {
    for (const Magic& magic : signature.magics) {
        if (!matches(bytes, magic)) {
            return false;
        }
    }
    return true;
}

uint32_t first_match(std::span<const Signature> table, Bytes bytes) {
    for (const Signature& signature : table) {
        if (matches(bytes, signature)) {
            return signature.type_code;
        }
    }
    return FILETYPE_UNKNOWN;
}

} // namespace

uint32_t CheckHeaderSignature(Bytes bytes) {
    return first_match(signatures, bytes);
}

uint32_t check_late_signature(Bytes bytes) {
    return first_match(late_signatures, bytes);
}

} // namespace zat
