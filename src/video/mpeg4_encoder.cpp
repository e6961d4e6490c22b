#include "video/mpeg4_encoder.h"

#include "common/bytes/start_code.h"
#include "common/catalogue/codec_catalogue.h"
#include "common/record/details.h"
#include "common/text/text.h"
#include "video/bitmap_info.h"
#include "video/divx_probe.h"
#include "video/mpeg4_vop.h"

#include <algorithm>

namespace zat {

namespace {

constexpr std::string_view section = "[AVI-Video]";
constexpr int two_strings = 3;
constexpr uint8_t user_data_code = 0xB2;
constexpr size_t longest_encoder = 64;

// Looks the string up; the probe keeps the result for the string that is meant for its FourCC.
template <size_t N>
void look_up(std::string_view string, bool is_meant, char (&name)[N], DivxProbe* probe) {
    char found[N];
    const int result = codec_name(section, string, string, found, N);
    if (result == codec_found) {
        copy_text(name, bounded_text(found));
    }
    if (is_meant || result == codec_no_catalogue) {
        probe->lookup_result = static_cast<uint32_t>(result);
    }
}

void look_up_strings(DivxProbe* probe) {
    const bool is_xvid = bounded_text(probe->fourcc) == "XVID";
    if (probe->divx_found != 0) {
        look_up(bounded_text(probe->divx_string), !is_xvid, probe->divx_name, probe);
    }
    if (probe->xvid_found != 0) {
        look_up(bounded_text(probe->xvid_string), is_xvid, probe->xvid_name, probe);
    }
}

std::string_view composed_name(const DivxProbe& probe) {
    const std::string_view names[] = {bounded_text(probe.codec_name), bounded_text(probe.xvid_name),
        bounded_text(probe.divx_name)};
    for (const std::string_view name : names) {
        if (!name.empty()) {
            return name;
        }
    }
    return {};
}

// User data up to its end, when all of it is text.
std::string_view user_data_text(Bytes media) {
    const int64_t at = find_start_code_of(media, 0, user_data_code);
    if (at < 0) {
        return {};
    }
    const Bytes data = media.subspan(static_cast<size_t>(at) + start_code_size);
    const auto* text = reinterpret_cast<const char*>(data.data());
    const std::string_view whole = bounded_text(text, std::min(data.size(), longest_encoder));
    return std::any_of(whole.begin(), whole.end(), IsNotPrintable) ? std::string_view{} : whole;
}

void set_encoder(const DivxProbe& probe, Bytes codec_data, Bytes media, ZatStream* stream) {
    const std::string_view strings[] = {bounded_text(probe.xvid_string),
        bounded_text(probe.divx_string), user_data_text(codec_data), user_data_text(media)};
    for (const std::string_view string : strings) {
        if (!string.empty() && std::none_of(string.begin(), string.end(), IsNotPrintable)) {
            copy_utf8(stream->encoder, string);
            return;
        }
    }
}

} // namespace

void set_mpeg4_encoder(Bytes media, ZatStream* stream) {
    copy_utf8(stream->encoder, user_data_text(media));
}

bool shows_mpeg4_encoder(Bytes media) {
    DivxProbe probe;
    return find_divx_strings(media, &probe) == two_strings ||
           (find_start_code_of(media, 0, vop_start_code) >= 0 &&
               (probe.divx_found != 0 || probe.xvid_found != 0 ||
                   find_start_code_of(media, 0, user_data_code) >= 0));
}

void name_mpeg4_encode(Bytes codec_data, Bytes media, const uint8_t* compression,
    char (&name)[mpeg4_encoder_size], ZatStream* stream) {
    DivxProbe probe;
    for (int i = 0; i < 4; ++i) {
        probe.fourcc[i] = ascii_upper(static_cast<char>(compression[i]));
    }
    if (find_divx_strings(codec_data, &probe) != two_strings) {
        find_divx_strings(media, &probe);
    }
    FindDivxVolAspect(codec_data, &probe);
    FindDivxVolAspect(media, &probe);
    Mpeg4AspectName(&probe);
    look_up_strings(&probe);
    ComposeDivxCodecName(&probe);
    copy_text(name, composed_name(probe));
    if (name[0] == '\0') {
        video_code_name(compression, name, sizeof name);
    }
    const std::string_view aspect = bounded_text(probe.aspect_text);
    if (!aspect.starts_with("unknown")) {
        AppendWithSeparator(name, aspect, separator_space);
    }
    set_encoder(probe, codec_data, media, stream);
}

} // namespace zat
