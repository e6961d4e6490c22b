// Filling the typed details: what an analyser knows of a stream goes into a ZatStream, from which
// its line is made too (stream_lines.h).
#pragma once

#include "common/file/reader.h"
#include "common/record/output.h"
#include "common/text/utf8.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zat {

// Bits a second that no stream has, whatever a damaged file claims.
constexpr uint64_t bit_rate_limit = 10'000'000'000;

// As the rate of a file: it is not known, for more is missing than anything tells.
constexpr uint64_t no_bit_rate = UINT64_MAX;

// Seconds that no file has, whatever a damaged one claims: reports show none of these either.
constexpr double duration_limit = 2'147'483'648.0;

// The duration, or 0 for one that is negative, not finite or beyond the limit.
double known_duration(double seconds);

// A stream of which nothing is known yet.
ZatStream new_stream(ZatStreamKind kind);

// Appends a stream, without a bit rate or duration beyond the limits; one beyond the slots is only
// counted. Does nothing without details.
void add_stream(ZatDetails* details, const ZatStream& stream);

// The ratio in its lowest terms; 0 and 0 unless both are set.
void set_ratio(uint64_t width, uint64_t height, uint32_t* out_width, uint32_t* out_height);

// Sets the pixel aspect and, by the stream's size, the display aspect. Nothing for a ratio of 0.
void set_pixel_aspect(ZatStream* stream, uint64_t width, uint64_t height);

// Sets the display aspect and, by the stream's size, the pixel aspect.
void set_display_aspect(ZatStream* stream, uint64_t width, uint64_t height);

// Bit/s of so many bytes over a time, rounded; 0 for a time that is not positive.
uint64_t mean_bit_rate(double bytes, double seconds);

// Whether a bit rate is within one percent of another: a claim that is tells nothing beside it.
bool is_same_bit_rate(uint64_t rate, uint64_t other);

// Sets frame_rate and its ratio; nothing for a ratio with a 0.
void set_frame_rate(ZatStream* stream, uint64_t numerator, uint64_t denominator);

// Adds a note of ASCII words. A note that stands there already is not repeated.
void note_details(ZatDetails* details, std::string_view note);

// Notes that not all of the file was looked at, as its walk had used up its allowance.
void note_work_limit(ZatDetails* details);

// The same where the reader's allowance is used up.
void note_work_limit(const Output& out, const Reader& reader);

// Notes that the file's end is cut off, and how much is missing there.
void note_missing_bytes(ZatDetails* details, uint64_t missing_bytes);

// Clears all but the size, before an analyser runs; of the slots only those that are counted, since
// all of them take longer to clear than many a file to describe.
void clear_details(ZatDetails* details);

// Fills in, behind the analyser, what follows from the record: the play time where the analyser set
// no duration (NaN stands for one that is not known), and the bit rate of the whole file.
void finish_details(const InfoRecord& record, ZatDetails* details);

} // namespace zat
