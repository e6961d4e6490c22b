#include "audio/speex.h"

#include "common/text/text.h"

#include <algorithm>
#include <iterator>

namespace zat {

namespace {

constexpr size_t speex_head_size = 80;
constexpr size_t version_size = 20;

const char* mode_name(uint32_t mode) {
    static constexpr const char* names[] = {"narrowband", "wideband", "ultra-wideband"};
    return mode < std::size(names) ? names[mode] : "";
}

} // namespace

bool read_speex_head(Bytes packet, SpeexHead* head) {
    if (packet.size() < speex_head_size || !has_at(packet, 0, "Speex   ")) {
        return false;
    }
    const uint8_t* p = packet.data();
    std::string_view version = bounded_text(reinterpret_cast<const char*>(p + 8), version_size);
    if (version.starts_with("speex-")) {
        version.remove_prefix(6);
    }
    const bool printable =
        std::none_of(version.begin(), version.end(), [](char c) { return IsNotPrintable(c) != 0; });
    copy_text(head->version, printable ? version : "");
    head->sample_rate = ReadLE32(p + 36);
    head->mode = ReadLE32(p + 40);
    head->channels = ReadLE32(p + 48);
    head->bit_rate = static_cast<int32_t>(ReadLE32(p + 52));
    head->frame_samples = ReadLE32(p + 56);
    head->variable = ReadLE32(p + 60) != 0;
    head->packet_frames = ReadLE32(p + 64);
    head->extra_headers = ReadLE32(p + 68);
    return true;
}

void speex_codec_text(const SpeexHead& head, char* out, size_t size) {
    copy_text(out, size, "Speex");
    AppendWithSeparator(out, size, head.version, head.version[0] != '\0' ? separator_space : 0);
    const char* mode = mode_name(head.mode);
    AppendWithSeparator(out, size, mode, mode[0] != '\0' ? separator_space : 0);
}

void set_speex_facts(const SpeexHead& head, ZatStream* stream) {
    copy_text(stream->codec, "Speex");
    copy_text(stream->profile, mode_name(head.mode));
    stream->sample_rate = head.sample_rate;
    stream->channels = head.channels;
    stream->bit_rate = head.bit_rate > 0 ? static_cast<uint64_t>(head.bit_rate) : 0;
    stream->bit_rate_mode = head.variable ? ZAT_BIT_RATE_VARIABLE : ZAT_BIT_RATE_CONSTANT;
}

} // namespace zat
