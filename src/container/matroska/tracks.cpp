#include "container/matroska/tracks.h"

#include "common/text/fourcc.h"
#include "common/text/text.h"
#include "container/matroska/ids.h"
#include "zat/details.h"

#include <algorithm>
#include <cstring>

namespace zat::matroska {

namespace {

constexpr uint64_t most_pixels = UINT32_MAX;

uint32_t read_u32(Reader* reader, const Element& element, uint32_t missing = 0) {
    return static_cast<uint32_t>(std::min(read_uint(reader, element, missing), most_pixels));
}

uint8_t read_u8(Reader* reader, const Element& element, uint8_t missing = 0) {
    return static_cast<uint8_t>(std::min<uint64_t>(read_uint(reader, element, missing), UINT8_MAX));
}

void read_colour(Reader* reader, Span data, VideoSettings* video) {
    ElementCursor cursor = children_of(data);
    Element element;
    uint32_t subsampling[2] = {UINT32_MAX, UINT32_MAX};
    while (next_element(reader, &cursor, &element)) {
        switch (element.id) {
        case id_matrix:
            video->colour.matrix = read_u8(reader, element, colour_unspecified);
            break;
        case id_transfer:
            video->colour.transfer = read_u8(reader, element, colour_unspecified);
            break;
        case id_primaries:
            video->colour.primaries = read_u8(reader, element, colour_unspecified);
            break;
        case id_range: {
            const uint32_t range = read_u32(reader, element);
            video->colour.range_known = range == 1 || range == 2;
            video->colour.full_range = range == 2;
            break;
        }
        case id_bits_per_channel:
            video->bits_per_channel = read_u8(reader, element);
            break;
        case id_chroma_subsampling_x:
            subsampling[0] = read_u32(reader, element);
            break;
        case id_chroma_subsampling_y:
            subsampling[1] = read_u32(reader, element);
            break;
        default:
            break;
        }
    }
    if (subsampling[0] <= 1 && subsampling[1] <= subsampling[0]) {
        video->chroma_format = static_cast<uint8_t>(4 - subsampling[0] - subsampling[1]);
    }
}

void read_video(Reader* reader, Span data, VideoSettings* video) {
    ElementCursor cursor = children_of(data);
    Element element;
    uint64_t width = 0;
    uint64_t height = 0;
    uint64_t crop_width = 0;
    uint64_t crop_height = 0;
    while (next_element(reader, &cursor, &element)) {
        switch (element.id) {
        case id_pixel_width:
            width = read_u32(reader, element);
            break;
        case id_pixel_height:
            height = read_u32(reader, element);
            break;
        case id_crop_left:
        case id_crop_right:
            crop_width += read_u32(reader, element);
            break;
        case id_crop_top:
        case id_crop_bottom:
            crop_height += read_u32(reader, element);
            break;
        case id_display_width:
            video->display_width = read_u32(reader, element);
            break;
        case id_display_height:
            video->display_height = read_u32(reader, element);
            break;
        case id_display_unit:
            video->display_unit = read_u8(reader, element);
            break;
        case id_interlaced:
            video->interlaced = read_u8(reader, element);
            break;
        case id_field_order:
            video->field_order = read_u8(reader, element, 2);
            break;
        case id_frame_rate:
            video->frame_rate = read_float(reader, element, 0);
            break;
        case id_uncompressed_fourcc:
            read_some(reader, element.data, 0, video->uncompressed_fourcc, 4);
            break;
        case id_colour:
            read_colour(reader, element.data, video);
            break;
        default:
            break;
        }
    }
    video->width = static_cast<uint32_t>(width > crop_width ? width - crop_width : width);
    video->height = static_cast<uint32_t>(height > crop_height ? height - crop_height : height);
}

void read_audio(Reader* reader, Span data, AudioSettings* audio) {
    audio->sample_rate = 8000; // the default values of the elements
    audio->channels = 1;
    ElementCursor cursor = children_of(data);
    Element element;
    while (next_element(reader, &cursor, &element)) {
        switch (element.id) {
        case id_sampling_frequency:
            audio->sample_rate = read_float(reader, element, audio->sample_rate);
            break;
        case id_output_sampling_frequency:
            audio->output_rate = read_float(reader, element, 0);
            break;
        case id_channels:
            audio->channels = read_u32(reader, element, 1);
            break;
        case id_bit_depth:
            audio->bits = read_u32(reader, element);
            break;
        default:
            break;
        }
    }
}

// The compressions that can be undone here are the header's stripping; the others say that frames
// cannot be looked at.
struct Encoding {
    uint32_t scope = 1; // frames; 2 is the private data
    uint32_t type = 0;  // 0 compression, 1 encryption
    uint32_t algorithm = 0;
    Span settings;
};

Encoding read_encoding(Reader* reader, Span data) {
    Encoding encoding;
    ElementCursor cursor = children_of(data);
    Element element;
    while (next_element(reader, &cursor, &element)) {
        if (element.id == id_encoding_scope) {
            encoding.scope = read_u32(reader, element, 1);
        } else if (element.id == id_encoding_type) {
            encoding.type = read_u32(reader, element);
        } else if (element.id == id_compression) {
            ElementCursor inner = children_of(element.data);
            while (next_element(reader, &inner, &element)) {
                if (element.id == id_compression_algorithm) {
                    encoding.algorithm = read_u32(reader, element);
                } else if (element.id == id_compression_settings) {
                    encoding.settings = element.data;
                }
            }
        }
    }
    return encoding;
}

void apply_encoding(Reader* reader, const Encoding& encoding, Encodings* encodings) {
    constexpr uint32_t header_stripping = 3;
    constexpr uint32_t encryption = 1;
    constexpr uint32_t scope_frames = 1;
    constexpr uint32_t scope_private = 2;
    const int64_t size = size_of(encoding.settings);
    encodings->encrypted = encodings->encrypted || encoding.type == encryption;
    const bool strips = encoding.type == 0 && encoding.algorithm == header_stripping &&
                        size <= Encodings::longest_prefix && encodings->prefix_size == 0;
    if (!strips) {
        encodings->frames_packed |= (encoding.scope & scope_frames) != 0;
        encodings->private_packed |= (encoding.scope & scope_private) != 0;
        return;
    }
    encodings->strips_frames = (encoding.scope & scope_frames) != 0;
    encodings->strips_private = (encoding.scope & scope_private) != 0;
    if (encodings->strips_frames || encodings->strips_private) {
        encodings->prefix_size =
            read_some(reader, encoding.settings, 0, encodings->prefix, Encodings::longest_prefix);
    }
}

void read_encodings(Reader* reader, Span data, Encodings* encodings) {
    ElementCursor cursor = children_of(data);
    Element element;
    while (next_element(reader, &cursor, &element)) {
        if (element.id == id_content_encoding) {
            apply_encoding(reader, read_encoding(reader, element.data), encodings);
        }
    }
}

void read_block_addition(Reader* reader, Span data, VideoSettings* video) {
    ElementCursor cursor = children_of(data);
    Element element;
    uint64_t type = 0;
    Span extra;
    while (next_element(reader, &cursor, &element)) {
        if (element.id == id_block_addition_type) {
            type = read_uint(reader, element, 0);
        } else if (element.id == id_block_addition_data) {
            extra = element.data;
        }
    }
    if (type == fourcc("dvcC") || type == fourcc("dvvC") || type == fourcc("dvwC")) {
        video->dolby_vision = extra;
    }
}

void set_flag(Reader* reader, const Element& element, uint32_t flag, Track* track) {
    const uint64_t missing = flag == ZAT_FLAG_DEFAULT ? 1 : 0; // the elements' default values
    track->flags = (track->flags & ~flag) | (read_uint(reader, element, missing) != 0 ? flag : 0);
}

// A BCP 47 tag stands for the code where it tells more: by a subtag, or where the code is none.
void set_language(const char* code, const char* tag, Track* track) {
    const bool has_code = code[0] != '\0' && std::strcmp(code, "und") != 0;
    const bool takes_tag = tag[0] != '\0' && (!has_code || std::strchr(tag, '-') != nullptr);
    copy_text(track->language, takes_tag ? tag : code);
    track->language_told = code[0] != '\0' || tag[0] != '\0';
}

void read_sub_element(Reader* reader, const Element& element, Track* track) {
    switch (element.id) {
    case id_track_number:
        track->number = read_uint(reader, element, 0);
        break;
    case id_track_uid:
        track->uid = read_uint(reader, element, 0);
        break;
    case id_track_type:
        track->type = read_u8(reader, element);
        break;
    case id_default_duration:
        track->default_duration = read_uint(reader, element, 0);
        break;
    case id_flag_default:
        set_flag(reader, element, ZAT_FLAG_DEFAULT, track);
        break;
    case id_flag_forced:
        set_flag(reader, element, ZAT_FLAG_FORCED, track);
        break;
    case id_flag_hearing_impaired:
        set_flag(reader, element, ZAT_FLAG_HEARING_IMPAIRED, track);
        break;
    case id_flag_visual_impaired:
        set_flag(reader, element, ZAT_FLAG_VISUAL_IMPAIRED, track);
        break;
    case id_flag_commentary:
        set_flag(reader, element, ZAT_FLAG_COMMENTARY, track);
        break;
    case id_codec_id:
        read_string(reader, element, track->codec_id);
        break;
    case id_codec_private:
        track->codec_private = element.data;
        break;
    case id_name:
        track->name = element.data;
        break;
    case id_video:
        read_video(reader, element.data, &track->video);
        break;
    case id_audio:
        read_audio(reader, element.data, &track->audio);
        break;
    case id_content_encodings:
        read_encodings(reader, element.data, &track->encodings);
        break;
    case id_block_addition_mapping:
        read_block_addition(reader, element.data, &track->video);
        break;
    default:
        break;
    }
}

void read_track(Reader* reader, Span data, Track* track) {
    char code[sizeof track->language] = "";
    char tag[sizeof track->language] = "";
    track->flags = ZAT_FLAG_DEFAULT; // the element's default value
    ElementCursor cursor = children_of(data);
    Element element;
    while (next_element(reader, &cursor, &element)) {
        if (element.id == id_language) {
            read_string(reader, element, code);
        } else if (element.id == id_language_bcp47) {
            read_string(reader, element, tag);
        } else {
            read_sub_element(reader, element, track);
        }
    }
    set_language(code, tag, track);
    track->flags |= track->encodings.encrypted ? uint32_t{ZAT_FLAG_ENCRYPTED} : 0;
}

bool is_known(const Segment& segment, const Track& track) {
    const Track* end = segment.tracks + kept_tracks(segment);
    return std::any_of(segment.tracks, end,
        [&](const Track& each) { return each.number == track.number && each.uid == track.uid; });
}

} // namespace

void read_tracks(Reader* reader, Span data, Segment* segment) {
    ElementCursor cursor = children_of(data);
    Element element;
    while (next_element(reader, &cursor, &element)) {
        if (element.id != id_track_entry) {
            continue;
        }
        Track track;
        read_track(reader, element.data, &track);
        if (is_known(*segment, track)) {
            continue;
        }
        if (segment->track_count < most_tracks) {
            segment->tracks[segment->track_count] = track;
        }
        ++segment->track_count;
    }
}

} // namespace zat::matroska
