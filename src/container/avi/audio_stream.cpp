#include "audio/first_frame.h"
#include "audio/wave_stream.h"
#include "common/record/details.h"
#include "container/avi/stream_facts.h"

namespace zat::avi {

namespace {

// Bytes: the longest formats hold coefficients and code books.
constexpr uint32_t audio_format_size = 256;

// Bit/s of sound whose samples have one size, where what was counted and the samples' own rate
// agree: some formats tell another; 0 else.
uint64_t counted_sample_rate(const Source& source, const Stream& stream, const ZatStream& facts) {
    const uint64_t counted = mean_bit_rate(static_cast<double>(facts.bytes), facts.duration);
    const uint64_t told = mean_bit_rate(stream.sample_size, unit_time(*source.movie, stream));
    return source.counted && is_same_bit_rate(counted, told) ? counted : 0;
}

} // namespace

void add_audio(const Source& source, uint32_t number) {
    const Stream& stream = source.movie->streams[number];
    ZatStream facts = stream_facts(source, number, ZAT_STREAM_AUDIO);
    uint8_t format[audio_format_size];
    const uint32_t size = read_some(source.reader, stream.format, 0, format, sizeof format);
    WaveStream wave;
    wave.format = {format, size};
    wave.start = read_view(source.reader, stream.first_data, 0, frame_start_size);
    // Samples of one size have one rate, which the format tells.
    if (stream.sample_size == 0) {
        wave.rate = counted_rate(source, stream);
        wave.rate_is_counted = true;
        wave.rate_is_estimated = !source.counted;
    } else {
        wave.details_rate = counted_sample_rate(source, stream, facts);
    }
    add_wave_stream(source.out, wave, &facts);
}

} // namespace zat::avi
