// What the headers of an AVI file say.
#pragma once

#include "common/file/reader.h"
#include "common/file/riff.h"

#include <cstdint>

namespace zat::avi {

// Chunks of media data name their stream with two decimal digits.
constexpr uint32_t stream_limit = 100;

// AVISTREAMHEADER, and where a stream's other chunks are. Spans are empty where there is none.
struct Stream {
    uint32_t type = 0; // "vids", "auds", "txts", "mids", "iavs"
    uint8_t handler[4] = {};
    uint16_t language = 0;
    uint32_t scale = 0; // rate / scale: units per second
    uint32_t rate = 0;
    uint32_t start = 0;  // units
    uint32_t length = 0; // units
    uint32_t sample_size = 0;
    uint32_t byte_rate = 0; // of audio
    Span format = {};       // BITMAPINFOHEADER, WAVEFORMATEX or DVINFO
    Span name = {};
    Span index = {};           // OpenDML's
    uint32_t frame_aspect = 0; // width and height, 16 bits each
    uint32_t fields = 0;       // per frame

    // Of the media data: what the index lists or a walk over it met.
    uint64_t chunks = 0; // of audio only those with data
    uint64_t bytes = 0;
    Span first_data = {}; // of the first chunk with data
};

struct Movie {
    Movie() {} // leaves the streams as they are: clearing them all costs more than reading one

    uint32_t frame_time = 0; // microseconds
    uint32_t first_part_frames = 0;
    uint32_t total_frames = 0; // of all parts; OpenDML
    bool has_odml = false;
    uint32_t parts = 0; // RIFF chunks
    bool has_movi = false;
    Span movi = {};            // chunks of media data in the first part
    int64_t movi_bytes = 0;    // that all parts announce
    Span idx1 = {};            // the first part's index
    Span info = {};            // chunks of texts
    int64_t announced_end = 0; // file position
    uint32_t stream_count = 0;
    union {
        Stream streams[stream_limit]; // those that are counted
    };
};

// Pictures, alone or with the sound between them.
constexpr bool is_video(const Stream& stream) {
    return stream.type == fourcc("vids") || stream.type == fourcc("iavs");
}

// Reads the headers, the first part's and the heads of the others.
void read_movie(Reader* reader, Movie* movie);

// Seconds of one unit of the stream; 0 when nothing tells it.
double unit_time(const Movie& movie, const Stream& stream);

// Seconds of the stream as declared; 0 when not known.
double declared_time(const Movie& movie, const Stream& stream);

} // namespace zat::avi
