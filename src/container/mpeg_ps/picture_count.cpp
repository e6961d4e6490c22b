#include "container/mpeg_ps/picture_count.h"

#include "common/bytes/numbers.h"
#include "common/bytes/start_code.h"
#include "common/record/details.h"
#include "common/record/stream_lines.h"
#include "container/mpeg_ps/stream_table.h"
#include "video/rbsp_reader.h"

#include <algorithm>
#include <string_view>

namespace zat::ps {

namespace {

void add_fields(PictureCounter* counter, int64_t fields) {
    PictureCount* count = &counter->count;
    count->fields += fields;
    if (!count->first_group.found) {
        count->fields_before_group += fields;
    }
    count->fields_behind_group += fields;
}

// A picture whose fields are shown as they are stored.
void add_picture(PictureCounter* counter, int64_t fields) {
    counter->count.coded_fields += fields;
    add_fields(counter, fields);
}

// Fields that a picture is displayed for (ISO/IEC 13818-2, 6.3.10).
int64_t displayed_fields(const PictureCoding& picture, bool progressive) {
    if (picture.structure != structure_frame) {
        return 1;
    }
    if (picture.repeat_first_field == 0) {
        return 2;
    }
    return !progressive ? 3 : picture.top_field_first != 0 ? 6 : 4;
}

void count_mpeg(PictureCounter* counter, uint8_t code, Bytes behind) {
    PictureCount* count = &counter->count;
    PictureCoding picture;
    GopTime gop;
    if (code == picture_start_code) {
        add_picture(counter, 2);
        counter->open_picture = true;
    } else if (code == extension_start_code && counter->open_picture &&
               read_picture_coding(&picture, behind) == 0) {
        add_fields(counter,
            displayed_fields(picture, counter->stream->sequence.extension.progressive != 0) - 2);
        count->coded_fields -= picture.structure != structure_frame ? 1 : 0;
        counter->open_picture = false;
    } else if (code == group_start_code && read_gop_time(&gop, behind) == 0) {
        count->first_group = count->first_group.found ? count->first_group : gop;
        count->last_group = gop;
        count->fields_behind_group = 0;
    }
}

// field_pic_flag of a slice (ITU-T H.264, 7.3.3).
bool is_field(const PictureCounter& counter, Bytes behind) {
    RbspReader reader = rbsp_reader(behind);
    read_ue(&reader); // first_mb_in_slice
    read_ue(&reader); // slice_type
    read_ue(&reader); // pic_parameter_set_id
    if (counter.stream->avc.separate_colour_planes) {
        read_u(&reader, 2); // colour_plane_id
    }
    read_u(&reader, counter.stream->avc.frame_num_bits); // frame_num
    return read_u(&reader, 1) != 0;
}

// The first slice of a picture: its first_mb_in_slice is 0, which is a set bit.
void count_avc(PictureCounter* counter, uint8_t code, Bytes behind) {
    const uint8_t type = code & 0x9F;
    if ((type == 1 || type == 5) && (byte_at(behind, 0) & 0x80) != 0) {
        const bool field = counter->stream->avc.frame_mbs_only == 0 && is_field(*counter, behind);
        add_picture(counter, field ? 1 : 2);
    }
}

void take_time(PictureCount* count, int64_t time) {
    const bool is_first = count->times.count == 0;
    count->first_time = is_first ? time : std::min(count->first_time, time);
    count->last_time = is_first ? time : std::max(count->last_time, time);
    add_frame_time(&count->times, time);
}

void count_mpeg4(PictureCounter* counter, uint8_t code, Bytes behind) {
    constexpr uint8_t group = 0xB3;
    if (code == group) {
        read_mpeg4_group(&counter->clock, behind);
    } else if (code == vop_start_code) {
        add_picture(counter, 2);
        const int64_t time = read_mpeg4_time(&counter->clock, behind);
        if (time >= 0) {
            take_time(&counter->count, time);
        }
    }
}

void count_vc1(PictureCounter* counter, uint8_t code, Bytes) {
    constexpr uint8_t frame = 0x0D;
    if (code == frame) {
        add_picture(counter, 2);
    }
}

// Of HEVC the first slice segments of the base layer's pictures (ITU-T H.265, 7.3.1.2 and
// 7.3.6.1).
void count_hevc(PictureCounter* counter, uint8_t code, Bytes behind) {
    constexpr uint8_t last_picture_type = 31;
    const bool is_slice = (code & 0x81) == 0 && code >> 1 <= last_picture_type;
    const bool is_first = behind.size() > 1 && (behind[1] & 0x80) != 0;
    if (is_slice && is_first && behind[0] >> 3 == 0) { // nuh_layer_id
        add_picture(counter, counter->stream->field_pictures ? 1 : 2);
    }
}

struct Row {
    std::string_view codec;
    void (*count)(PictureCounter*, uint8_t code, Bytes behind);
};

constexpr Row rows[] = {
    {"MPEG-1 Video", count_mpeg},
    {"MPEG-2 Video", count_mpeg},
    {"H.264", count_avc},
    {"HEVC", count_hevc},
    {"MPEG-4 Visual", count_mpeg4},
    {"VC-1", count_vc1},
};

// The step between sorted times, when all have the same but the last, behind which pictures that
// are shown before it may be missing; else 0.
uint32_t common_step(const FrameTimes& times) {
    const int64_t step = times.count > 1 ? times.times[1] - times.times[0] : 0;
    for (uint32_t i = 2; i + 1 < times.count; ++i) {
        if (times.times[i] - times.times[i - 1] != step) {
            return 0;
        }
    }
    return clamp_to_integer<uint32_t>(static_cast<double>(step));
}

} // namespace

void start_count(PictureCounter* counter, const Stream& stream) {
    *counter = {};
    counter->stream = &stream;
    counter->clock.resolution = stream.mpeg4.time_increment_resolution;
    for (const Row& row : rows) {
        if (row.codec == bounded_text(stream.facts.codec)) {
            counter->count_unit = row.count;
        }
    }
}

size_t count_stretch(PictureCounter* counter, Bytes bytes, int64_t position, Follows follows) {
    constexpr size_t header_size = 64; // enough for every header that is looked at
    const size_t limit = follows == Follows::nothing  ? bytes.size()
                         : bytes.size() > header_size ? bytes.size() - header_size
                                                      : 0;
    int64_t at = find_start_code(bytes, 0);
    for (; at >= 0 && static_cast<size_t>(at) < limit;
         at = find_start_code(bytes, static_cast<size_t>(at) + 3)) {
        const auto place = static_cast<size_t>(at);
        counter->count_unit(counter, bytes[place + 3], bytes.subspan(place + start_code_size));
        if (counter->count.first_picture < 0 && counter->count.coded_fields > 0) {
            counter->count.first_picture = position + at;
        }
    }
    return at >= 0 ? static_cast<size_t>(at) : limit;
}

PictureCount count_pictures(Source* source, const Stream& stream, int64_t from, int64_t to) {
    constexpr uint32_t block_size = 131'072; // looked through at a time
    PictureCounter counter;
    start_count(&counter, stream);
    Follows follows = counter.count_unit == nullptr ? Follows::nothing : Follows::more;
    while (from < to && follows == Follows::more) {
        const auto wanted = static_cast<uint32_t>(std::min<int64_t>(block_size, to - from));
        const Bytes bytes = read_view(source->reader, source->span, from, wanted);
        if (bytes.size() < block_size || from + block_size >= to) {
            follows = Follows::nothing;
        }
        from += static_cast<int64_t>(count_stretch(&counter, bytes, from, follows));
    }
    return counter.count;
}

void measure_picture_rate(Stream* stream, FrameTimes* times) {
    const uint16_t resolution = stream->mpeg4.time_increment_resolution;
    if (stream->facts.frame_rate != 0 || resolution == 0) {
        return;
    }
    std::sort(times->times, times->times + times->count);
    const uint32_t step = common_step(*times);
    set_frame_rate(&stream->facts, resolution, step);
    if (step == 0) {
        measure_frame_rate(&stream->facts, times, 1.0 / resolution);
    }
    drop_nonsense(&stream->facts);
}

} // namespace zat::ps
