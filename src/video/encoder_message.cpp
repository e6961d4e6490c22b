#include "video/encoder_message.h"

#include "common/text/text.h"

#include <algorithm>

namespace zat {

namespace {

struct Message {
    std::string_view identifier; // uuid_iso_iec_11578
    std::string_view name;       // of the encoder
    std::string_view before;     // stands before its version, which ends with a blank or a colon
    std::string_view shown;      // in the place of all that
};

using namespace std::string_view_literals;

constexpr Message messages[] = {
    {"\xDC\x45\xE9\xBD\xE6\xD9\x48\xB7\x96\x2C\xD8\x20\xD9\x23\xEE\xEF"sv, "x264", "core ",
        "x264 core "},
    {"\x2C\xA2\xDE\x09\xB5\x17\x47\xDB\xBB\x55\xA4\xFE\x7F\xC2\xFC\x4E"sv, "x265", ") - ", "x265 "},
};

} // namespace

void set_message_encoder(Bytes stream_start, ZatStream* stream) {
    constexpr size_t longest = 96; // bytes of a text up to its version's end
    const std::string_view start = text_of(stream_start);
    for (const Message& row : messages) {
        const size_t at = start.find(row.identifier);
        if (at == std::string_view::npos) {
            continue;
        }
        std::string_view text = text_from(start, at + row.identifier.size()).substr(0, longest);
        const size_t before = text.find(row.before);
        if (!text.starts_with(row.name) || before == std::string_view::npos) {
            continue;
        }
        text.remove_prefix(before + row.before.size());
        text = text.substr(0, text.find_first_of(" :"));
        if (!text.empty() && std::none_of(text.begin(), text.end(), IsNotPrintable)) {
            copy_text(stream->encoder, row.shown);
            append_text(stream->encoder, text);
            return;
        }
    }
}

} // namespace zat
