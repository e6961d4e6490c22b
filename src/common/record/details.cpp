#include "common/record/details.h"

#include "common/bytes/numbers.h"
#include "common/text/text.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>

namespace zat {

namespace {

// The ZatEstimated bits that may be set: those of the figures that are known.
uint32_t estimable(const ZatStream& stream) {
    return (stream.duration != 0 ? uint32_t{ZAT_ESTIMATED_DURATION} : 0) |
           (stream.bit_rate != 0 ? uint32_t{ZAT_ESTIMATED_BIT_RATE} : 0) |
           (stream.frame_rate != 0 ? uint32_t{ZAT_ESTIMATED_FRAME_RATE} : 0) |
           (stream.frames != 0 ? uint32_t{ZAT_ESTIMATED_FRAMES} : 0) |
           (stream.samples != 0 ? uint32_t{ZAT_ESTIMATED_SAMPLES} : 0) |
           (stream.bytes != 0 ? uint32_t{ZAT_ESTIMATED_BYTES} : 0);
}

} // namespace

ZatStream new_stream(ZatStreamKind kind) {
    ZatStream stream{};
    stream.kind = kind;
    stream.start = std::numeric_limits<double>::quiet_NaN();
    return stream;
}

double known_duration(double seconds) {
    return seconds > 0 && seconds < duration_limit ? seconds : 0;
}

void add_stream(ZatDetails* details, const ZatStream& stream) {
    if (details == nullptr) {
        return;
    }
    if (details->stream_count < ZAT_STREAM_SLOTS) {
        ZatStream* kept = &details->streams[details->stream_count];
        *kept = stream;
        kept->bit_rate = stream.bit_rate < bit_rate_limit ? stream.bit_rate : 0;
        kept->nominal_bit_rate =
            stream.nominal_bit_rate < bit_rate_limit ? stream.nominal_bit_rate : 0;
        kept->duration = known_duration(stream.duration);
        kept->estimated &= estimable(*kept);
    }
    ++details->stream_count;
}

void set_ratio(uint64_t width, uint64_t height, uint32_t* out_width, uint32_t* out_height) {
    *out_width = 0;
    *out_height = 0;
    if (width == 0 || height == 0) {
        return;
    }
    const uint64_t divisor = std::gcd(width, height);
    if (width / divisor <= UINT32_MAX && height / divisor <= UINT32_MAX) {
        *out_width = static_cast<uint32_t>(width / divisor);
        *out_height = static_cast<uint32_t>(height / divisor);
    }
}

void set_pixel_aspect(ZatStream* stream, uint64_t width, uint64_t height) {
    if (width == 0 || height == 0 || width > UINT32_MAX || height > UINT32_MAX) {
        return;
    }
    set_ratio(width, height, &stream->pixel_aspect_width, &stream->pixel_aspect_height);
    set_ratio(uint64_t{stream->pixel_aspect_width} * stream->width,
        uint64_t{stream->pixel_aspect_height} * stream->height, &stream->display_aspect_width,
        &stream->display_aspect_height);
}

void set_display_aspect(ZatStream* stream, uint64_t width, uint64_t height) {
    if (width == 0 || height == 0 || width > UINT32_MAX || height > UINT32_MAX) {
        return;
    }
    set_ratio(width, height, &stream->display_aspect_width, &stream->display_aspect_height);
    set_ratio(uint64_t{stream->display_aspect_width} * stream->height,
        uint64_t{stream->display_aspect_height} * stream->width, &stream->pixel_aspect_width,
        &stream->pixel_aspect_height);
}

uint64_t mean_bit_rate(double bytes, double seconds) {
    return seconds > 0 ? clamp_to_integer<uint64_t>(bytes * 8 / seconds + 0.5) : 0;
}

bool is_same_bit_rate(uint64_t rate, uint64_t other) {
    constexpr double tolerance = 0.01;
    const double difference = std::abs(static_cast<double>(rate) - static_cast<double>(other));
    return difference <= tolerance * static_cast<double>(other);
}

void set_frame_rate(ZatStream* stream, uint64_t numerator, uint64_t denominator) {
    if (numerator == 0 || denominator == 0) {
        return;
    }
    stream->frame_rate = static_cast<double>(numerator) / static_cast<double>(denominator);
    set_ratio(
        numerator, denominator, &stream->frame_rate_numerator, &stream->frame_rate_denominator);
}

void note_details(ZatDetails* details, std::string_view note) {
    if (details == nullptr || note.empty()) {
        return;
    }
    std::string_view rest = bounded_text(details->notes);
    const size_t used = rest.size();
    while (!rest.empty()) {
        const size_t end = rest.find('\n');
        if (rest.substr(0, end) == note) {
            return;
        }
        rest = end == std::string_view::npos ? std::string_view{} : text_from(rest, end + 1);
    }
    if (used + 1 + note.size() < sizeof details->notes) {
        append_text(details->notes, used != 0 ? "\n" : "");
        append_text(details->notes, note);
    }
}

void note_work_limit(ZatDetails* details) {
    note_details(details, "work limit");
}

void note_work_limit(const Output& out, const Reader& reader) {
    if (reader.limited) {
        note_work_limit(out.details);
    }
}

void note_missing_bytes(ZatDetails* details, uint64_t missing_bytes) {
    details->missing_bytes = missing_bytes;
    note_details(details, "truncated");
}

void clear_details(ZatDetails* details) {
    const uint32_t size = details->size;
    const size_t used = std::min<size_t>(details->stream_count, ZAT_STREAM_SLOTS);
    std::memset(details, 0, offsetof(ZatDetails, streams) + used * sizeof(ZatStream));
    details->size = size;
}

void finish_details(const InfoRecord& record, ZatDetails* details) {
    if (record.type_code < FILETYPE_MEDIA) {
        return;
    }
    // NaN: the analyser knows better than the record.
    details->duration =
        known_duration(details->duration == 0 ? record.play_time : details->duration);
    // The duration is the declared one, also of a file that was cut.
    const double size =
        static_cast<double>(record.file_size) + static_cast<double>(details->missing_bytes);
    const double bit_rate = divide(size * 8, details->duration);
    if (details->bit_rate == 0 && details->duration > 0 &&
        bit_rate < static_cast<double>(bit_rate_limit)) {
        details->bit_rate = clamp_to_integer<uint64_t>(bit_rate + 0.5);
        details->estimated |= (details->estimated & ZAT_ESTIMATED_DURATION) != 0
                                  ? uint32_t{ZAT_ESTIMATED_BIT_RATE}
                                  : 0;
    }
    if (details->bit_rate == no_bit_rate) {
        details->bit_rate = 0;
    }
    details->estimated &= (details->duration != 0 ? uint32_t{ZAT_ESTIMATED_DURATION} : 0) |
                          (details->bit_rate != 0 ? uint32_t{ZAT_ESTIMATED_BIT_RATE} : 0);
}

} // namespace zat
