#include "audio/frame_count.h"

#include "common/tag_sizes.h"

#include <algorithm>

namespace zat {

namespace {

// Up to this size every frame is counted.
constexpr int64_t counted_size = 1048576;

// Of larger streams so many stretches of this length are looked at. Each is longer than two frames
// of any kind.
constexpr int places = 8;
constexpr uint32_t stretch_size = 16384;

struct Counter {
    const FrameFormat* format;
    FrameCount count;
    uint32_t first_size = 0;
};

void add_frame(Counter* counter, const AudioFrame& frame) {
    counter->first_size = counter->first_size == 0 ? frame.size : counter->first_size;
    counter->count.varies = counter->count.varies || frame.size != counter->first_size;
    counter->count.bytes += frame.size;
    counter->count.samples += frame.samples;
    ++counter->count.frames;
}

// The next place at or behind `from` where frames follow one another, or -1.
int64_t find_next(Reader* reader, Span stream, const FrameFormat& format, int64_t from) {
    uint8_t bytes[stretch_size];
    while (from < size_of(stream)) {
        const uint32_t length = read_some(reader, stream, from, bytes, sizeof bytes);
        const int64_t found = format.find({bytes, length});
        if (found >= 0) {
            return from + found;
        }
        if (length < sizeof bytes) {
            break;
        }
        from += stretch_size / 2; // the two frames may lie across the end
    }
    return -1;
}

void count_all(Reader* reader, Span stream, Counter* counter) {
    const FrameFormat& format = *counter->format;
    const uint32_t look = std::max(format.header_size, id3v2_header_size);
    for (int64_t position = 0; position >= 0 && position < size_of(stream);) {
        const Bytes bytes = read_view(reader, stream, position, look);
        AudioFrame frame;
        if (format.read(bytes, &frame)) {
            if (frame.size > size_of(stream) - position) {
                counter->count.cut = true;
                return;
            }
            add_frame(counter, frame);
            position += frame.size;
            continue;
        }
        const int64_t tag = bytes.size() >= id3v2_header_size ? whole_id3v2_size(bytes.data()) : 0;
        counter->count.tags += std::min(tag, size_of(stream) - position);
        position = tag != 0 ? position + tag : find_next(reader, stream, format, position + 1);
    }
}

void count_stretch(Bytes bytes, Counter* counter) {
    const int64_t start = counter->format->find(bytes);
    AudioFrame frame;
    for (Bytes rest = start >= 0 ? bytes.subspan(static_cast<size_t>(start)) : Bytes{};
         counter->format->read(rest, &frame) && frame.size <= rest.size();
         rest = rest.subspan(frame.size)) {
        add_frame(counter, frame);
    }
}

void sample(Reader* reader, Span stream, Counter* counter) {
    uint8_t bytes[stretch_size];
    const int64_t step = (size_of(stream) - stretch_size) / (places - 1);
    for (int place = 0; place < places; ++place) {
        const uint32_t length = read_some(reader, stream, place * step, bytes, sizeof bytes);
        count_stretch({bytes, length}, counter);
    }
    counter->count.sampled = true;
}

} // namespace

FrameCount count_frames(Reader* reader, Span stream, const FrameFormat& format, bool exact) {
    Counter counter = {.format = &format, .count = {}};
    if (exact || size_of(stream) <= counted_size) {
        count_all(reader, stream, &counter);
        counter.count.sampled = reader->limited;
    } else {
        sample(reader, stream, &counter);
    }
    return counter.count;
}

} // namespace zat
