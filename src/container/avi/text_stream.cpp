#include "common/catalogue/codec_names.h"
#include "common/text/text_codes.h"
#include "container/avi/stream_facts.h"

namespace zat::avi {

namespace {

constexpr uint32_t examined_size = 4096;

// A whole file of subtitles in one chunk: "GAB2", a name in UTF-16 and the text, each behind its
// number and its size.
struct Gab2 {
    Bytes name;
    Bytes text;
};

bool read_gab2(Bytes data, Gab2* subtitles) {
    constexpr size_t name_size_at = 7;
    constexpr size_t name_at = name_size_at + 4;
    constexpr size_t head_size = 6; // the text's number and size
    if (!has_at(data, 0, "GAB2") || data.size() < name_at) {
        return false;
    }
    const size_t size = ReadLE32(&data[name_size_at]);
    const Bytes rest = data.subspan(name_at);
    if (size <= rest.size()) {
        subtitles->name = rest.first(size);
        subtitles->text =
            rest.subspan(size).size() > head_size ? rest.subspan(size + head_size) : Bytes{};
    }
    return true;
}

void set_text_codec(const char* codec, const char* profile, ZatStream* facts) {
    copy_utf8(facts->codec, codec);
    copy_utf8(facts->profile, profile);
}

} // namespace

void add_text(const Source& source, uint32_t number) {
    const Stream& stream = source.movie->streams[number];
    ZatStream facts = stream_facts(source, number, ZAT_STREAM_TEXT);
    const Bytes data = read_view(source.reader, stream.first_data, 0, examined_size);
    Gab2 subtitles;
    if (!read_gab2(data, &subtitles)) {
        set_text_codec("timed text", "", &facts);
        add_text_stream(source.out, source.extra, facts, "text");
        return;
    }
    if (facts.title[0] == '\0') {
        utf16le_to_utf8(subtitles.name, facts.title, sizeof facts.title);
    }
    const auto* text = reinterpret_cast<const char*>(subtitles.text.data());
    const std::string_view start{text, subtitles.text.size()};
    const bool is_ssa = start.substr(0, 64).find("[Script Info]") != std::string_view::npos;
    set_text_codec(is_ssa ? "ASS" : "SubRip", "", &facts);
    copy_utf8(facts.codec_id, "GAB2");
    add_text_stream(source.out, source.extra, facts, is_ssa ? "ASS" : "SubRip");
}

void add_data(const Source& source, uint32_t number) {
    const uint32_t type = source.movie->streams[number].type;
    ZatStream facts = stream_facts(source, number, ZAT_STREAM_DATA);
    char name[fourcc_text_size];
    printable_fourcc_text(type, name);
    const bool is_midi = type == fourcc("mids");
    copy_utf8(facts.codec_id, name);
    copy_utf8(facts.codec, is_midi ? "MIDI" : name);
    add_text_stream(source.out, source.extra, facts, facts.codec);
}

} // namespace zat::avi
