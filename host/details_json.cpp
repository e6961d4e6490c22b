#include "details_json.h"

#include "encoding.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace host {

namespace {

template <size_t Size>
std::string json_text(const char (&text)[Size]) {
    return repaired_utf8({text, strnlen(text, Size)});
}

template <size_t Size>
void add_text(Json* out, const char* name, const char (&text)[Size]) {
    if (text[0] != '\0') {
        (*out)[name] = json_text(text);
    }
}

void add_count(Json* out, const char* name, uint64_t value) {
    if (value != 0) {
        (*out)[name] = value;
    }
}

void add_number(Json* out, const char* name, double value) {
    if (std::isfinite(value) && value > 0) {
        (*out)[name] = value;
    }
}

void add_ratio(Json* out, const char* name, char sign, uint32_t above, uint32_t below) {
    if (above != 0 && below != 0) {
        (*out)[name] = std::to_string(above) + sign + std::to_string(below);
    }
}

// The word for an enumerator from 1 on.
template <size_t Count>
void add_word(Json* out, const char* name, const char* const (&words)[Count], uint32_t value) {
    if (value >= 1 && value <= Count) {
        (*out)[name] = words[value - 1];
    }
}

struct Bit {
    uint32_t mask;
    const char* name;
};

constexpr Bit flags[] = {
    {ZAT_FLAG_DEFAULT, "default"},
    {ZAT_FLAG_FORCED, "forced"},
    {ZAT_FLAG_COMMENTARY, "commentary"},
    {ZAT_FLAG_HEARING_IMPAIRED, "hearing_impaired"},
    {ZAT_FLAG_VISUAL_IMPAIRED, "visual_impaired"},
    {ZAT_FLAG_ENCRYPTED, "encrypted"},
    {ZAT_FLAG_NO_DATA, "no_data"},
    {ZAT_FLAG_LOSSLESS, "lossless"},
};

constexpr Bit estimated_members[] = {
    {ZAT_ESTIMATED_DURATION, "duration"},
    {ZAT_ESTIMATED_BIT_RATE, "bit_rate"},
    {ZAT_ESTIMATED_FRAME_RATE, "frame_rate"},
    {ZAT_ESTIMATED_FRAMES, "frames"},
    {ZAT_ESTIMATED_SAMPLES, "samples"},
    {ZAT_ESTIMATED_BYTES, "bytes"},
};

constexpr const char* kind_names[] = {"video", "audio", "text", "data"};
constexpr const char* bit_rate_modes[] = {"constant", "variable"};
constexpr const char* scans[] = {"progressive", "interlaced"};
constexpr const char* field_orders[] = {"top", "bottom"};

// Names the members of the object that are estimates.
void add_estimated(uint32_t estimated, Json* out) {
    Json names = Json::array();
    for (const Bit& bit : estimated_members) {
        if ((estimated & bit.mask) != 0 && out->contains(bit.name)) {
            names.push_back(bit.name);
        }
    }
    if (!names.empty()) {
        (*out)["estimated"] = names;
    }
}

void add_notes(const ZatDetails& details, Json* out) {
    Json notes = Json::array();
    const std::string text = json_text(details.notes);
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        notes.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    if (!notes.empty()) {
        (*out)["notes"] = std::move(notes);
    }
}

void add_video_members(const ZatStream& stream, Json* out) {
    add_count(out, "width", stream.width);
    add_count(out, "height", stream.height);
    add_ratio(out, "pixel_aspect", ':', stream.pixel_aspect_width, stream.pixel_aspect_height);
    add_ratio(
        out, "display_aspect", ':', stream.display_aspect_width, stream.display_aspect_height);
    add_number(out, "frame_rate", stream.frame_rate);
    add_ratio(
        out, "frame_rate_ratio", '/', stream.frame_rate_numerator, stream.frame_rate_denominator);
    add_number(out, "nominal_frame_rate", stream.nominal_frame_rate);
    add_count(out, "frames", stream.frames);
    add_word(out, "scan", scans, stream.scan);
    add_word(out, "field_order", field_orders, stream.field_order);
    add_text(out, "chroma", stream.chroma);
    add_text(out, "primaries", stream.primaries);
    add_text(out, "transfer", stream.transfer);
    add_text(out, "matrix", stream.matrix);
    add_text(out, "range", stream.range);
    add_text(out, "hdr", stream.hdr);
}

} // namespace

Json stream_json(const ZatStream& stream) {
    Json out = Json::object();
    add_word(&out, "kind", kind_names, stream.kind);
    out["id"] = stream.id;
    add_text(&out, "codec", stream.codec);
    add_text(&out, "codec_id", stream.codec_id);
    add_text(&out, "profile", stream.profile);
    add_text(&out, "level", stream.level);
    add_text(&out, "language", stream.language);
    add_text(&out, "title", stream.title);
    for (const Bit& flag : flags) {
        if ((stream.flags & flag.mask) != 0) {
            out[flag.name] = true;
        }
    }
    if (std::isfinite(stream.start)) {
        out["start"] = stream.start;
    }
    add_number(&out, "duration", stream.duration);
    add_count(&out, "bit_rate", stream.bit_rate);
    add_count(&out, "nominal_bit_rate", stream.nominal_bit_rate);
    add_word(&out, "bit_rate_mode", bit_rate_modes, stream.bit_rate_mode);
    add_count(&out, "bytes", stream.bytes);
    add_text(&out, "encoder", stream.encoder);
    add_video_members(stream, &out);
    add_count(&out, "sample_rate", stream.sample_rate);
    add_count(&out, "channels", stream.channels);
    add_text(&out, "layout", stream.layout);
    add_count(&out, "bit_depth", stream.bit_depth);
    add_count(&out, "samples", stream.samples);
    add_estimated(stream.estimated, &out);
    return out;
}

void add_file_details(const ZatDetails& details, Json* out) {
    add_text(out, "format", details.format);
    add_text(out, "format_profile", details.format_profile);
    add_text(out, "title", details.title);
    add_text(out, "artist", details.artist);
    add_text(out, "writer", details.writer);
    add_text(out, "created", details.created);
    add_number(out, "duration", details.duration);
    add_count(out, "bit_rate", details.bit_rate);
    add_count(out, "missing_bytes", details.missing_bytes);
    add_count(out, "chapters", details.chapters);
    add_count(out, "pictures", details.pictures);
    add_estimated(details.estimated, out);
    add_notes(details, out);
}

void add_details(const ZatDetails& details, Json* out) {
    add_file_details(details, out);
    if (details.format[0] == '\0' && details.stream_count == 0) {
        return; // nobody has looked for streams
    }
    (*out)["stream_count"] = details.stream_count;
    Json streams = Json::array();
    for (uint32_t i = 0; i < std::min<uint32_t>(details.stream_count, ZAT_STREAM_SLOTS); ++i) {
        streams.push_back(stream_json(details.streams[i]));
    }
    (*out)["streams"] = std::move(streams);
}

} // namespace host
