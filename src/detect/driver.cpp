#include "detect/driver.h"

#include "common/file/file_window.h"
#include "common/tags/outer_tags.h"
#include "common/tags/tag_sizes.h"
#include "common/text/messages.h"
#include "detect/ac3_probe.h"
#include "detect/mpeg_probes.h"
#include "detect/quicktime_brand.h"
#include "detect/signatures.h"
#include "detect/text_check.h"
#include "detect/ts_probes.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace zat {

namespace {

// No probe sees more than this of a file.
constexpr uint32_t view_size = 5242880;

// The view in a dozen steps, once more behind a tag, and the tags themselves.
constexpr FileWork detection_limit = {64, 3 * int64_t{view_size}};

// The first few ID3v2 tags of this size or more are stepped over with a read for each, further and
// smaller ones within what the view loads anyway.
constexpr uint32_t large_tag = 4096;
constexpr uint32_t few_tags = 16;

// Writes the line that says why.
Detection refuse(
    DetectContext* context, uint32_t type_code, Detection result, std::string_view text) {
    context->type_code = type_code;
    copy_text(context->general[0], text);
    context->general_count = 1;
    return result;
}

Detection accept(DetectContext* context, uint32_t type_code) {
    context->type_code = type_code;
    return Detection::decided;
}

Detection accept_packets(DetectContext* context, uint32_t packet_size) {
    return accept(context, packet_size == ts_packet_size ? FILETYPE_MPEG2_TS : FILETYPE_MPEG2_M2TS);
}

struct Refusal {
    char magic[3];
    const char* text;
};

constexpr Refusal refusals[] = {
    {"MZ", message::exe_file},
    {"PK", message::zip_file},
};

bool has_tag_at(FileWindow* window, int64_t position, uint32_t first_tag_size) {
    uint8_t id[3] = {};
    if (position > view_size - int64_t{sizeof id}) {
        return false;
    }
    const auto at = static_cast<uint32_t>(position);
    const bool alone = first_tag_size >= large_tag && at / first_tag_size <= few_tags;
    if (alone && at + sizeof id > window->loaded) {
        read_at(window->file, position, id, sizeof id);
    } else {
        std::memcpy(id, window_at(window, at, sizeof id), sizeof id);
    }
    return starts_with(id, "ID3");
}

// File position behind the ID3v2 tags at the start. A further tag counts with the first one's size.
int64_t end_of_tags(FileWindow* window) {
    window_load(window, id3v2_header_size);
    const uint32_t size = Id3v2Size(window->bytes);
    int64_t end = size;
    while (size > 0 && has_tag_at(window, end, size)) {
        end += size;
    }
    return end;
}

// Loads more only while the bytes at hand leave the answer open.
int64_t find_packets(FileWindow* window, uint32_t* packet_size) {
    for (;;) {
        const int64_t position = TsFullCheck(window_bytes(window), packet_size);
        if (position != ts_wants_more || window->complete) {
            return position;
        }
        window_load(window, window->loaded + 1);
    }
}

// Streams that begin somewhere in the view.
Detection search_streams(FileWindow* window, DetectContext* context) {
    const size_t zeros = leading_zeros(window_bytes(window));
    if (zeros > padding_limit) {
        return refuse(context, FILETYPE_UNKNOWN, Detection::refused, message::dummy_data);
    }
    window_load(window, static_cast<uint32_t>(zeros) + mpeg_audio_reach);
    if (MpegAudioCheck(window_bytes(window).subspan(zeros), MpegAudioMode::search) >= 0) {
        return accept(context, FILETYPE_MP3);
    }
    window_load_all(window);
    const Bytes bytes = window_bytes(window).subspan(zeros);
    if (MpegSequenceCheck(bytes) >= 0) {
        return accept(context, FILETYPE_MPEG);
    }
    uint32_t packet_size = 0;
    if (TsTwoPacketCheck(bytes, &packet_size) == 0) {
        return accept(context, FILETYPE_MPEG2_TS); // of either size
    }
    if (Ac3SyncCheck(bytes) >= 0) {
        return accept(context, FILETYPE_AC3);
    }
    context->type_code = FILETYPE_UNKNOWN;
    return Detection::unknown;
}

// Analysers see a file that begins with its stream, `padding` bytes behind the tags. Those of audio
// step over a tag and what follows it by themselves, and describe the tag.
Detection accept_signature(
    FileWindow* window, DetectContext* context, uint32_t type_code, uint32_t padding) {
    if (window->start == 0 || type_code < FILETYPE_AUDIO) {
        FileBeginAt(window->file, window->start + padding);
    }
    return accept(context, type_code);
}

// The probes behind those for packets.
Detection probe_further(FileWindow* window, DetectContext* context) {
    const LateSignature late = check_late_signature(window);
    if (late.type_code != FILETYPE_UNKNOWN) {
        return accept_signature(window, context, late.type_code, late.start);
    }
    return search_streams(window, context);
}

// The probes, from the surest to the most lenient, on the bytes behind the tags.
Detection probe(FileWindow* window, DetectContext* context) {
    const Bytes start = window_bytes(window);
    if (WrappedMp3Check(start) > 0) {
        return accept(context, FILETYPE_SHOCKWAVEMP3);
    }
    for (const auto check : {CheckHeaderSignature, QuickTimeBrandCheck}) {
        const uint32_t type_code = check(start);
        if (type_code != FILETYPE_UNKNOWN) {
            return accept_signature(window, context, type_code, 0);
        }
    }
    if (MpegAudioCheck(start, MpegAudioMode::at_start) >= 0) {
        return accept(context, FILETYPE_MP3);
    }
    uint32_t packet_size = 0;
    if (find_packets(window, &packet_size) >= 0) {
        return accept_packets(context, packet_size);
    }
    const Bytes bytes = window_bytes(window);
    if (TsTwoPacketCheck(bytes, &packet_size) == 0) {
        return accept_packets(context, packet_size);
    }
    // Packets of 188 bytes have been accepted by now. A start code at the start, too, ends here at
    // the latest: the signatures leave it only with a sync byte behind it.
    if (TsOnePacketCheck(bytes) == 0) {
        return accept_packets(context, timestamped_packet_size);
    }
    return probe_further(window, context);
}

// Goes behind the tags. False when nothing can be read there.
bool pass_tags(FileWindow* window) {
    const int64_t stream = end_of_tags(window);
    if (stream > 0) {
        window_move(window, stream);
    }
    return window_load(window, 1) != 0;
}

Detection classify(FileWindow* window, DetectContext* context) {
    if (window->file->size == 0) {
        return refuse(context, FILETYPE_UNKNOWN, Detection::empty, message::empty_file);
    }
    if (window_load(window, 1) == 0) {
        return refuse(context, FILETYPE_ERROR, Detection::not_read, message::read_failed);
    }
    if (TextFileCheck(window, window->file->size) == 0) {
        return refuse(context, FILETYPE_UNKNOWN, Detection::refused, message::text_file);
    }
    for (const Refusal& row : refusals) {
        if (starts_with(window->bytes, row.magic)) {
            return refuse(context, FILETYPE_UNKNOWN, Detection::refused, row.text);
        }
    }
    if (!pass_tags(window)) {
        return refuse(context, FILETYPE_ERROR, Detection::not_read, message::read_failed);
    }
    return probe(window, context);
}

} // namespace

Detection detect(DetectContext* context, FileRecord* file) {
    if (context->path_length > path_limit) {
        const Detection result = refuse(context, FILETYPE_PATHTOOLONG, Detection::not_opened, "");
        format_text(context->general[0], line_size, message::path_too_long,
            static_cast<int>(context->path_length), static_cast<int>(path_limit));
        return result;
    }
    if (context->path_length == path_limit || FileOpen(file, context->path) != 0) {
        return refuse(context, FILETYPE_OPENFAILED, Detection::not_opened, message::open_failed);
    }
    context->file_size = file->size;
    file->limit = detection_limit;
    FileWindow window;
    window_open(&window, file, 0, view_size);
    Detection result = classify(&window, context);
    if (window.no_memory) {
        result = refuse(context, FILETYPE_ERROR, Detection::no_memory, message::buffer_failed);
    }
    return result;
}

uint32_t type_without_packets(FileRecord* file) {
    DetectContext context{};
    FileWindow window;
    window_open(&window, file, 0, view_size);
    if (!pass_tags(&window)) {
        return FILETYPE_UNKNOWN;
    }
    if (starts_with(window_at(&window, 0, 3), "\0\0\1")) {
        return FILETYPE_MPEG;
    }
    probe_further(&window, &context);
    return context.type_code == FILETYPE_MPEG2_TS ? uint32_t{FILETYPE_UNKNOWN} : context.type_code;
}

} // namespace zat
