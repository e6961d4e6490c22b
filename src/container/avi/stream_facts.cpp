#include "container/avi/stream_facts.h"

#include "common/record/details.h"
#include "common/text/text_codes.h"
#include "container/avi/language.h"

#include <algorithm>

namespace zat::avi {

namespace {

constexpr uint32_t name_size = 256; // bytes of a stream's name that are looked at

void read_title(const Source& source, const Stream& stream, ZatStream* facts) {
    const Bytes name = read_view(source.reader, stream.name, 0, name_size);
    const auto* text = reinterpret_cast<const char*>(name.data());
    unknown_to_utf8(bounded_text(text, name.size()), facts->title);
}

} // namespace

ZatStream stream_facts(const Source& source, uint32_t number, ZatStreamKind kind) {
    const Stream& stream = source.movie->streams[number];
    ZatStream facts = new_stream(kind);
    facts.id = number;
    facts.start = stream.start * unit_time(*source.movie, stream);
    facts.duration = declared_time(*source.movie, stream);
    facts.estimated |=
        source.estimated && facts.duration > 0 ? uint32_t{ZAT_ESTIMATED_DURATION} : 0;
    copy_utf8(facts.language, language_of(stream.language));
    read_title(source, stream, &facts);
    if (source.counted) {
        facts.bytes = stream.bytes;
        facts.flags |= stream.chunks == 0 ? uint32_t{ZAT_FLAG_NO_DATA} : 0;
    }
    return facts;
}

uint64_t counted_rate(const Source& source, const Stream& stream) {
    const double seconds = static_cast<double>(stream.chunks) * unit_time(*source.movie, stream);
    return mean_bit_rate(static_cast<double>(stream.bytes), seconds);
}

} // namespace zat::avi
