#include "container/realmedia.h"

#include "common/bytes/bytes.h"
#include "common/file/file_window.h"
#include "common/record/details.h"
#include "common/record/record_lines.h"
#include "common/text/fourcc.h"
#include "common/text/text_codes.h"
#include "container/realaudio_header.h"
#include "container/realmedia_details.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace zat {

namespace {

// Chunks are looked for in this much of the file.
constexpr int64_t examined_size = 1048576;

constexpr uint32_t chunk_file = fourcc(".RMF");
constexpr uint32_t chunk_properties = fourcc("PROP");
constexpr uint32_t chunk_content = fourcc("CONT");
constexpr uint32_t chunk_stream = fourcc("MDPR");
constexpr uint32_t chunk_data = fourcc("DATA");
constexpr uint32_t chunk_ids[] = {
    chunk_file, chunk_properties, chunk_content, chunk_stream, chunk_data};

// Bytes of an MDPR chunk that its description can need: the fixed fields, two texts of up to 255
// bytes behind their lengths, and the headers of the type-specific data.
constexpr uint32_t stream_head_size = 640;

// Offsets in an MDPR chunk.
constexpr size_t stream_version_at = 8;
constexpr size_t stream_bit_rate_at = 16; // average
constexpr size_t stream_start_at = 28;
constexpr size_t stream_duration_at = 36;
constexpr size_t stream_name_at = 40;

struct Scan {
    FileWindow window;
    InfoRecord* record = nullptr;
    ZatDetails* details = nullptr;
    uint32_t properties_time = 0; // milliseconds
    uint32_t stream_time = 0;     // milliseconds, the longest stream's
    // Type-specific data of the last "logical-fileinfo" stream.
    bool has_file_info = false;
    uint32_t file_info_at = 0;
};

// How far the search may step when it sees a byte where the last of an id would stand: 0 when it is
// the last byte of one (Horspool 1980).
constexpr auto search_steps = [] {
    std::array<uint8_t, 256> steps{};
    steps.fill(4);
    for (int place = 0; place < 4; ++place) {
        for (const uint32_t id : chunk_ids) {
            steps[id >> (8 * (3 - place)) & 0xFF] = static_cast<uint8_t>(3 - place);
        }
    }
    return steps;
}();

bool is_chunk_id(uint32_t id) {
    return std::find(std::begin(chunk_ids), std::end(chunk_ids), id) != std::end(chunk_ids);
}

// Finds the first chunk id at or after `from`.
bool find_chunk(FileWindow* window, uint64_t from, uint32_t* position) {
    uint64_t last = from + 3;
    while (last < window->capacity && window_load(window, static_cast<uint32_t>(last + 1)) > last) {
        while (last < window->loaded) {
            const uint32_t step = search_steps[window->bytes[last]];
            if (step == 0 && is_chunk_id(ReadBE32(window->bytes + last - 3))) {
                *position = static_cast<uint32_t>(last - 3);
                return true;
            }
            last += std::max(step, 1U);
        }
    }
    return false;
}

// Copies the bytes at `position` of the view, with zeros behind its end.
void copy_padded(FileWindow* window, uint32_t position, uint8_t* out, uint32_t size) {
    const uint64_t end = std::min<uint64_t>(uint64_t{position} + size, window->capacity);
    const uint32_t loaded = window_load(window, static_cast<uint32_t>(end));
    std::fill_n(out, size, uint8_t{0});
    if (position < loaded) {
        std::copy_n(window->bytes + position, std::min(loaded - position, size), out);
    }
}

uint32_t read_be32(FileWindow* window, uint32_t position) {
    return ReadBE32(window_at(window, position, 4));
}

// A text behind its length of one byte.
std::string_view counted_text(const uint8_t* bytes) {
    return {reinterpret_cast<const char*>(bytes + 1), bytes[0]};
}

// `data` is the type-specific data, its 32-bit length included.
void describe_video(InfoRecord* record, const uint8_t* data, uint32_t bit_rate) {
    if (record->video_count >= ZAT_LINE_COUNT) {
        return; // before the catalogue is read
    }
    // The size of the header stands before the tag, but some writers leave it out.
    const bool without_size = !starts_with(data + 8, "VIDO") && starts_with(data + 4, "VIDO");
    const uint8_t* codec = data + (without_size ? 8 : 12);
    char name[256];
    real_codec_name(ReadBE32(codec), name);
    add_video_line(record, "[%s] %dx%d %dbit %dfps %.3fkbps", name, ReadBE16(codec + 4),
        ReadBE16(codec + 6), ReadBE16(codec + 8), ReadBE16(codec + 14), bit_rate * 0.001);
}

struct AudioFields {
    uint32_t sample_rate = 0; // Hz
    uint32_t bits = 0;        // per sample
    uint32_t channels = 0;
    char codec[256] = "";
};

// The ".ra" header by its version; false for one that is not known.
bool read_audio_header(const uint8_t* header, AudioFields* fields) {
    switch (ReadBE16(header + 8)) {
    case 3: // has neither rate nor codec: it is always the same
        *fields = {8000, 16, ReadBE16(header + 11), "RealAudio 1.0 (14.4)"};
        return true;
    case 4: // the four bytes of the interleaver stand for the codec
        *fields = {ReadBE32(header + 50), ReadBE32(header + 54), ReadBE16(header + 58), ""};
        real_codec_name(ReadBE32(header + 61), fields->codec);
        return true;
    case 5:
        *fields = {ReadBE32(header + 52), ReadBE32(header + 60), ReadBE16(header + 64), ""};
        real_codec_name(ReadBE32(header + 70), fields->codec);
        return true;
    default:
        return false;
    }
}

void describe_audio(InfoRecord* record, const uint8_t* data, uint32_t bit_rate) {
    if (record->audio_count >= ZAT_LINE_COUNT) {
        return;
    }
    const bool with_size = !starts_with(data + 4, ".ra\xFD") && starts_with(data + 8, ".ra\xFD");
    AudioFields fields;
    if (!read_audio_header(data + (with_size ? 4 : 0), &fields)) {
        add_audio_line(record, "%s", ""); // the stream counts all the same
        return;
    }
    add_audio_line(record, "[%s] %dHz %dbit %dch %.3fkbps", fields.codec,
        static_cast<int32_t>(fields.sample_rate), static_cast<int32_t>(fields.bits),
        static_cast<int32_t>(fields.channels), bit_rate * 0.001);
}

void read_properties(Scan* scan, uint32_t position) {
    const uint32_t duration = read_be32(&scan->window, position + 30);
    if (duration != 0) {
        scan->properties_time = duration + read_be32(&scan->window, position + 22) / 1000;
    }
}

void read_stream(Scan* scan, uint32_t position) {
    uint8_t head[stream_head_size];
    copy_padded(&scan->window, position, head, sizeof head);
    if (ReadBE16(head + stream_version_at) != 0) {
        return;
    }
    const uint32_t bit_rate = ReadBE32(head + stream_bit_rate_at);
    const uint32_t time =
        ReadBE32(head + stream_duration_at) + ReadBE32(head + stream_start_at) / 1000;
    scan->stream_time = std::max(scan->stream_time, time);

    const std::string_view name = counted_text(head + stream_name_at);
    const size_t mime_at = stream_name_at + 1 + name.size();
    const std::string_view mime = counted_text(head + mime_at);
    const size_t data_at = mime_at + 1 + mime.size();
    if (name.empty() && mime == "logical-fileinfo") {
        scan->has_file_info = true;
        scan->file_info_at = position + static_cast<uint32_t>(data_at);
    }
    if (scan->details != nullptr) {
        describe_realmedia_stream({head, stream_name_at, mime_at, data_at}, scan->details);
    }
    if (name.find("Video") != std::string_view::npos) {
        describe_video(scan->record, head + data_at, bit_rate);
    }
    if (name.find("Audio") != std::string_view::npos) {
        describe_audio(scan->record, head + data_at, bit_rate);
    }
}

// The position of the property "Generated By" among those of a file-info stream, or of the first
// property without it.
uint32_t find_generator(FileWindow* window, uint32_t position, uint32_t size) {
    static constexpr std::string_view word = "Generated";
    // The word may begin in the last of the bytes.
    const uint64_t end =
        std::min<uint64_t>(uint64_t{position} + size + word.size() - 1, window->capacity);
    const uint32_t loaded = window_load(window, static_cast<uint32_t>(end));
    if (size == 0 || loaded <= position) {
        return position;
    }
    const std::string_view text(reinterpret_cast<const char*>(window->bytes + position),
        static_cast<size_t>(std::min<uint64_t>(loaded, end) - position));
    const size_t hit = text.find(word);
    // Behind the name of twelve characters stands the value's type.
    return hit == std::string_view::npos ? position : position + static_cast<uint32_t>(hit) + 16;
}

void write_encoder(Scan* scan) {
    FileWindow* window = &scan->window;
    const uint32_t size = read_be32(window, scan->file_info_at);
    const uint32_t value_at = find_generator(window, scan->file_info_at + 4, size);
    const uint32_t length = read_be32(window, value_at) >> 16;
    const uint64_t end = std::min<uint64_t>(uint64_t{value_at} + 2 + length, window->capacity);
    window_load(window, static_cast<uint32_t>(end));
    char text[line_size] = "";
    size_t count = 0;
    for (uint64_t at = value_at + 2; at < std::min<uint64_t>(end, window->loaded); ++at) {
        const char c = static_cast<char>(window->bytes[at]);
        if (IsNotPrintable(c) == 0 && count < line_size - 1) {
            text[count++] = c;
        }
    }
    copy_text(scan->record->extra_info, text);
}

// What the file's own structure says that its end cuts off.
void note_missing_data(Scan* scan, uint32_t position) {
    const int64_t end = int64_t{position} + read_be32(&scan->window, position + 4);
    const int64_t missing = end - scan->window.file->size;
    if (missing > 0) {
        note_missing_bytes(scan->details, static_cast<uint64_t>(missing));
    }
}

// What only details tell.
void describe_chunk(Scan* scan, uint32_t id, uint32_t position) {
    constexpr uint32_t content_size = 1024;
    uint8_t content[content_size];
    if (id == chunk_data) {
        note_missing_data(scan, position);
    } else if (id == chunk_properties) {
        scan->details->duration = read_be32(&scan->window, position + 30) * 0.001;
    } else if (id == chunk_content) {
        copy_padded(&scan->window, position, content, sizeof content);
        describe_realmedia_content(content, scan->details);
    }
}

void scan_chunks(Scan* scan) {
    FileWindow* window = &scan->window;
    uint64_t next = 0;
    uint32_t position = 0;
    while (find_chunk(window, next, &position)) {
        const uint32_t id = ReadBE32(window->bytes + position);
        if (scan->details != nullptr) {
            describe_chunk(scan, id, position);
        }
        if (id == chunk_data) {
            return;
        }
        if (id == chunk_properties) {
            read_properties(scan, position);
        } else if (id == chunk_stream) {
            read_stream(scan, position);
        }
        next = uint64_t{position} + std::max(read_be32(window, position + 4), 1U);
        // A size that is one too large covers the first byte of the data chunk.
        if (next < window->capacity &&
            read_be32(window, static_cast<uint32_t>(next - 1)) == chunk_data) {
            return;
        }
    }
}

} // namespace

int AnalyzeRealMediaFile(FileRecord* file, const Output& out) {
    InfoRecord* record = out.record;
    Scan scan;
    scan.record = record;
    scan.details = out.details;
    window_open(&scan.window, file, 0, static_cast<uint32_t>(std::min(file->size, examined_size)));
    const bool readable = window_load(&scan.window, 1) != 0;
    if (readable) {
        scan_chunks(&scan);
        if (scan.has_file_info) {
            write_encoder(&scan);
        }
        const uint32_t time = scan.properties_time != 0 ? scan.properties_time : scan.stream_time;
        record->play_time = time * 0.001;
        if (out.details != nullptr) {
            copy_utf8(out.details->format, "RealMedia");
            cp932_to_utf8(
                bounded_text(record->extra_info), out.details->writer, sizeof out.details->writer);
        }
        set_label(record, "%s", "[Real Media]");
    }
    return readable ? 0 : 1;
}

} // namespace zat
