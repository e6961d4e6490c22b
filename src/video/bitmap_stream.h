// A video stream that BITMAPINFOHEADER describes, as AVI, ASF, Matroska's VFW tracks and OGM have
// it, or a code that stands for the codec: its codec text and its facts, by what reads its codec.
#pragma once

#include "common/record/output.h"
#include "common/text/text.h"
#include "video/bitmap_info.h"
#include "video/container_aspect.h"

#include <cstdint>
#include <string_view>

namespace zat {

struct BitmapStream {
    BitmapInfo info;
    Bytes start = {}; // of the first picture
    Bytes media = {}; // where an MPEG-4 encoder's name is looked for; `start` when empty
    // The shape of the display that the container tells; 0 when it does not.
    uint64_t display_width = 0;
    uint64_t display_height = 0;
    double highest_frame_rate = 240;
    bool shows_wmv3_profile = false; // behind the catalogue's name
    // The container's name of a codec that it has a code of its own for: stands where the headers
    // tell none, in place of the catalogue's and of an encoder's.
    std::string_view name = {};
};

// What a line shows of a stream besides its facts.
struct VideoDescription {
    char codec[256] = {};
    char line[line_size] = {}; // of formats whose line is a form of its own
    uint32_t bits = 0;
    bool shows_aspect = false; // the codec text does
    bool hides_scan = false;   // from the line, which shows those of some codecs only
    DisplaySize display = {};  // as the container tells it; the height of the pictures when 0
};

// Fills in what the codec's headers tell. A codec that is set stays.
void describe_bitmap_stream(
    const BitmapStream& source, ZatStream* stream, VideoDescription* description);

// Adds the line and the details of a stream that was described.
void add_described_stream(const Output& out, const BitmapStream& source,
    const VideoDescription& description, ZatStream* stream);

// Both at once. What the container told before, size, frame rate, bit rate and scan among it,
// counts over what the headers tell.
void add_bitmap_stream(const Output& out, const BitmapStream& source, ZatStream* stream);

} // namespace zat
