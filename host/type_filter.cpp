#include "type_filter.h"

#include "detect/file_type.h"

#include <algorithm>
#include <iterator>

namespace host {

namespace {

constexpr std::string_view kind_words[] = {"video", "audio", "picture"};

bool is_same(std::string_view a, std::string_view b) {
    const auto lower = [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
        [&](char left, char right) { return lower(left) == lower(right); });
}

bool is_picture(uint32_t type_code) {
    return type_code > FILETYPE_GRAPHIC && type_code < FILETYPE_GRAPHIC_END;
}

std::string_view kind_word_of(const Description& description) {
    const InfoRecord& record = description.record;
    if (is_picture(record.type_code)) {
        return "picture";
    }
    const ZatDetails* details = description.details.get();
    if (details == nullptr || details->stream_count == 0) {
        return record.type_code < FILETYPE_VIDEO_AUDIO_END ? "video" : "audio";
    }
    const ZatStream* end =
        details->streams + std::min<uint32_t>(details->stream_count, ZAT_STREAM_SLOTS);
    const bool has_video = std::any_of(details->streams, end,
        [](const ZatStream& stream) { return stream.kind == ZAT_STREAM_VIDEO; });
    return has_video ? "video" : "audio";
}

// The formats of all types, each once.
std::vector<std::string_view> format_names() {
    std::vector<std::string_view> names;
    for (uint32_t code = FILETYPE_MEDIA; code < FILETYPE_MEDIA_END; ++code) {
        const std::string_view name = zat::type_format(code);
        if (!name.empty() && std::find(names.begin(), names.end(), name) == names.end()) {
            names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

bool is_type_filter(std::string_view word) {
    const auto is_word = [&](std::string_view name) { return is_same(word, name); };
    if (std::any_of(std::begin(kind_words), std::end(kind_words), is_word)) {
        return true;
    }
    for (uint32_t code = FILETYPE_MEDIA; code < FILETYPE_MEDIA_END; ++code) {
        const std::string_view format = zat::type_format(code);
        if (!format.empty() && (is_word(format) || is_word(zat::type_enumerator(code)))) {
            return true;
        }
    }
    return false;
}

std::string type_filter_names() {
    std::string out;
    for (const std::string_view kind : kind_words) {
        out += (out.empty() ? "" : ", ") + std::string(kind);
    }
    for (const std::string_view name : format_names()) {
        out += ", " + std::string(name);
    }
    return out;
}

bool has_type(const Description& description, const std::vector<std::string>& words) {
    const uint32_t code = description.record.type_code;
    const std::string_view names[] = {kind_word_of(description), description.format,
        zat::type_format(code), description.type_name};
    return std::any_of(words.begin(), words.end(), [&](const std::string& word) {
        return std::any_of(std::begin(names), std::end(names),
            [&](std::string_view name) { return is_same(word, name); });
    });
}

} // namespace host
