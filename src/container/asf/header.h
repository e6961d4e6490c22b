// What the header object of an ASF file says (ASF, 3 and 4).
#pragma once

#include "common/file/reader.h"
#include "common/tags/tag_texts.h"
#include "container/asf/object.h"

#include <cstdint>

namespace zat::asf {

constexpr uint32_t stream_limit = 64;
constexpr uint32_t stream_numbers = 128;

enum class StreamType : uint8_t { unknown, audio, video, image, command, file_transfer, binary };

// Stream properties, with what other objects say of the stream. Spans are empty where there is
// none.
struct Stream {
    uint8_t number = 0;
    StreamType type = StreamType::unknown;
    bool encrypted = false;
    Span type_data = {}; // WAVEFORMATEX, or the size and BITMAPINFOHEADER
};

// Of a stream by its number; what comes from other objects than its own.
struct StreamExtras {
    uint32_t data_rate = 0;   // bit/s, without the packets' overhead
    uint32_t packet_rate = 0; // bit/s, with it
    uint64_t frame_time = 0;  // 100 ns
    bool has_language = false;
    uint16_t language = 0; // index
    Span name = {};        // UTF-16
    uint32_t aspect_x = 0; // of a pixel
    uint32_t aspect_y = 0;
    bool tells_vbr = false;
    bool vbr = false;
};

struct Header {
    uint64_t created = 0;       // 100 ns since 1601
    uint64_t play_duration = 0; // 100 ns, the preroll included
    uint64_t preroll = 0;       // milliseconds
    uint64_t packets = 0;
    uint32_t smallest_packet = 0; // bytes
    uint32_t largest_packet = 0;
    bool has_properties = false;
    bool has_data = false;
    bool broadcast = false;
    bool drm = false;

    Span languages = {};
    Span codec_list = {};
    uint32_t markers = 0;
    uint32_t script_commands = 0;

    TagTexts texts;
    char tool_name[tag_text_size] = {};
    char tool_version[tag_text_size] = {};
    char settings[tag_text_size] = {};
    char sdk_version[tag_text_size] = {};

    Span data = {};            // packets
    int64_t announced_end = 0; // file position

    StreamExtras extras[stream_numbers];
    uint32_t stream_count = 0; // those beyond the limit are not kept
    Stream streams[stream_limit];
};

// Whether the header was written before the packets and not filled in behind them: of a live
// stream, or of a recording that was broken off.
bool is_open(const Header& header);

// Reads the header object and finds the data.
void read_header(Reader* reader, Header* header);

// UTF-16 up to its end or a zero, blanks around it left out.
void read_text(Reader* reader, Span text, char* out, size_t size);
template <size_t N>
void read_text(Reader* reader, Span text, char (&out)[N]) {
    read_text(reader, text, out, N);
}

// The language with that index; empty when there is none.
void read_language(Reader* reader, const Header& header, uint16_t index, char (&out)[32]);

// The codec list's description of the setting of the stream `order`, counted from 0 among those of
// its type (1 video, 2 audio).
void read_setting(
    Reader* reader, const Header& header, uint16_t type, uint32_t order, char (&out)[256]);

} // namespace zat::asf
