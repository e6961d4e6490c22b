// Counting the frames of a stream that has nothing between them: what a file without a container
// tells of its length and its mean rate.
#pragma once

#include "common/file/reader.h"
#include "zat/details.h"

#include <cstdint>

namespace zat {

struct AudioFrame {
    uint32_t size = 0;    // bytes
    uint32_t samples = 0; // per channel; 0 for one that belongs to the frame before it
};

// How the frames of a kind of stream follow one another.
struct FrameFormat {
    uint32_t header_size; // bytes that `read` looks at
    // Reads the header at the front. False when none stands there.
    bool (*read)(Bytes bytes, AudioFrame* frame);
    // Offset of the first place where frames follow one another; -1 without one.
    int64_t (*find)(Bytes bytes);
};

struct FrameCount {
    uint64_t frames = 0;
    uint64_t bytes = 0;
    uint64_t samples = 0;
    int64_t tags = 0;     // bytes of ID3v2 tags between the frames
    bool sampled = false; // at a few places; else all frames are counted
    bool varies = false;  // in the size of the frames, each with those that belong to it
    bool cut = false;     // the last frame is
};

// Whether those of a large stream may be counted at a few places only.
enum class Counting : uint8_t { may_sample, exact };

// Counts the frames of a stream that begins with one. What is no frame is passed over.
FrameCount count_frames(Reader* reader, Span stream, const FrameFormat& format, Counting counting);

// Sets bytes, samples, duration and rate of a stream of `size` bytes, whose sample rate is known.
// At least one sample was counted; each stands for `unit` of them.
void set_counted(const FrameCount& count, int64_t size, uint32_t unit, ZatStream* facts);

} // namespace zat
