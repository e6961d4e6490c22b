#include "audio/framed/frame_count.h"

#include "common/bytes/numbers.h"
#include "common/record/details.h"
#include "common/tags/outer_tags.h"

#include <algorithm>

namespace zat {

namespace {

// Up to this size every frame is counted.
constexpr int64_t counted_size = 1048576;

// Of larger streams so many stretches of this length are looked at. Each is longer than two frames
// of any kind.
constexpr int places = 8;
constexpr uint32_t stretch_size = 16384;

// A frame that takes time with those behind it that do not.
struct Unit {
    uint32_t frames = 0;
    uint32_t bytes = 0;
    uint32_t samples = 0;
};

struct Counter {
    const FrameFormat* format;
    FrameCount count;
    Unit unit;
    uint32_t first_size = 0; // of a unit
};

void finish_unit(Counter* counter) {
    const Unit unit = counter->unit;
    if (unit.frames == 0) {
        return;
    }
    FrameCount* count = &counter->count;
    counter->first_size = counter->first_size == 0 ? unit.bytes : counter->first_size;
    count->varies = count->varies || unit.bytes != counter->first_size;
    count->frames += unit.frames;
    count->bytes += unit.bytes;
    count->samples += unit.samples;
    counter->unit = {};
}

void add_frame(Counter* counter, const AudioFrame& frame) {
    if (frame.samples != 0) {
        finish_unit(counter);
    }
    ++counter->unit.frames;
    counter->unit.bytes += frame.size;
    counter->unit.samples += frame.samples;
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
    const int64_t size = size_of(stream);
    for (int64_t position = 0; position >= 0 && position < size;) {
        const Bytes bytes = read_view(reader, stream, position, look);
        AudioFrame frame;
        if (format.read(bytes, &frame)) {
            if (frame.size > size - position) {
                counter->count.cut = true;
                break;
            }
            add_frame(counter, frame);
            position += frame.size;
            continue;
        }
        const int64_t tag = bytes.size() >= id3v2_header_size ? whole_id3v2_size(bytes.data()) : 0;
        counter->count.tags += std::min(tag, size - position);
        position = tag != 0 ? position + tag : find_next(reader, stream, format, position + 1);
    }
    finish_unit(counter);
}

// Counts the whole units of a stretch.
void count_stretch(Bytes bytes, Counter* counter) {
    const int64_t start = counter->format->find(bytes);
    AudioFrame frame;
    for (Bytes rest = start >= 0 ? bytes.subspan(static_cast<size_t>(start)) : Bytes{};
         counter->format->read(rest, &frame) && frame.size <= rest.size();
         rest = rest.subspan(frame.size)) {
        if (frame.samples != 0 || counter->unit.frames != 0) {
            add_frame(counter, frame);
        }
    }
    counter->unit = {}; // of which more may follow
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

FrameCount count_frames(Reader* reader, Span stream, const FrameFormat& format, Counting counting) {
    Counter counter = {.format = &format, .count = {}, .unit = {}};
    if (counting == Counting::exact || size_of(stream) <= counted_size) {
        count_all(reader, stream, &counter);
        counter.count.sampled = reader->limited;
    } else {
        sample(reader, stream, &counter);
    }
    return counter.count;
}

void set_counted(const FrameCount& count, int64_t size, uint32_t unit, ZatStream* facts) {
    facts->bytes = count.bytes;
    double samples = static_cast<double>(count.samples) * unit;
    if (count.sampled) {
        facts->bytes = static_cast<uint64_t>(size);
        samples *= static_cast<double>(facts->bytes) / static_cast<double>(count.bytes);
        facts->estimated |= count.varies ? uint32_t{ZAT_ESTIMATED_DURATION} |
                                               uint32_t{ZAT_ESTIMATED_BIT_RATE} |
                                               uint32_t{ZAT_ESTIMATED_SAMPLES}
                                         : 0;
    }
    facts->samples = clamp_to_integer<uint64_t>(samples + 0.5);
    facts->duration = samples / facts->sample_rate;
    facts->bit_rate = mean_bit_rate(static_cast<double>(facts->bytes), facts->duration);
}

} // namespace zat
