// Typed details as one text, so that a row of a test holds all that is expected.
#pragma once

#include "zat/details.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

namespace zat::test {

struct DetailsText {
    std::string text;

    void add(const char* name, const char* value) {
        if (value[0] != '\0') {
            text += std::string(" ") + name + "=" + value;
        }
    }
    void add(const char* name, uint64_t value) {
        if (value != 0) {
            add(name, std::to_string(value).c_str());
        }
    }
    void add(const char* name, double value) {
        if (!std::isnan(value) && value != 0) {
            char shown[400];
            std::snprintf(shown, sizeof shown, "%.3f", value);
            add(name, shown);
        }
    }
    void add_ratio(const char* name, uint32_t a, uint32_t b) {
        if (a != 0) {
            add(name, (std::to_string(a) + ":" + std::to_string(b)).c_str());
        }
    }
};

// Every member that is known as " name=value", in the order of the structure.
inline std::string stream_text(const ZatStream& stream) {
    static constexpr const char* kinds[] = {"?", "video", "audio", "text", "data"};
    DetailsText out;
    out.text = kinds[stream.kind <= ZAT_STREAM_DATA ? stream.kind : 0];
    out.add("flags", uint64_t{stream.flags});
    out.add("estimated", uint64_t{stream.estimated});
    out.add("mode", uint64_t{stream.bit_rate_mode});
    out.add("id", stream.id);
    out.add("start", stream.start);
    out.add("duration", stream.duration);
    out.add("bit_rate", stream.bit_rate);
    out.add("nominal_bit_rate", stream.nominal_bit_rate);
    out.add("bytes", stream.bytes);
    out.add("frame_rate", stream.frame_rate);
    out.add("nominal_frame_rate", stream.nominal_frame_rate);
    out.add("frames", stream.frames);
    out.add_ratio("size", stream.width, stream.height);
    out.add_ratio("pixel", stream.pixel_aspect_width, stream.pixel_aspect_height);
    out.add_ratio("display", stream.display_aspect_width, stream.display_aspect_height);
    out.add_ratio("fps_ratio", stream.frame_rate_numerator, stream.frame_rate_denominator);
    out.add("scan", uint64_t{stream.scan});
    out.add("field_order", uint64_t{stream.field_order});
    out.add("samples", stream.samples);
    out.add("sample_rate", uint64_t{stream.sample_rate});
    out.add("channels", uint64_t{stream.channels});
    out.add("bit_depth", uint64_t{stream.bit_depth});
    out.add("codec", stream.codec);
    out.add("codec_id", stream.codec_id);
    out.add("profile", stream.profile);
    out.add("level", stream.level);
    out.add("language", stream.language);
    out.add("title", stream.title);
    out.add("encoder", stream.encoder);
    out.add("layout", stream.layout);
    out.add("chroma", stream.chroma);
    out.add("primaries", stream.primaries);
    out.add("transfer", stream.transfer);
    out.add("matrix", stream.matrix);
    out.add("range", stream.range);
    out.add("hdr", stream.hdr);
    return out.text;
}

// The file's members in one line, then a line for each stream.
inline std::string details_text(const ZatDetails& details) {
    DetailsText out;
    out.text = details.format;
    out.add("profile", details.format_profile);
    out.add("title", details.title);
    out.add("artist", details.artist);
    out.add("writer", details.writer);
    out.add("created", details.created);
    out.add("notes", details.notes);
    out.add("duration", details.duration);
    out.add("bit_rate", details.bit_rate);
    out.add("missing", details.missing_bytes);
    out.add("chapters", uint64_t{details.chapters});
    out.add("pictures", uint64_t{details.pictures});
    out.add("estimated", uint64_t{details.estimated});
    for (uint32_t i = 0; i < details.stream_count && i < ZAT_STREAM_SLOTS; ++i) {
        out.text += "\n" + stream_text(details.streams[i]);
    }
    return out.text;
}

} // namespace zat::test
