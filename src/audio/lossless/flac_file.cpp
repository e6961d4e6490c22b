#include "audio/lossless/flac_file.h"

#include "audio/flac_streaminfo.h"
#include "audio/lossless/flac_frame.h"
#include "audio/lossless/lossless_file.h"
#include "common/bytes/numbers.h"
#include "common/record/channel_layout.h"
#include "common/text/text.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

constexpr LosslessKind flac_kind = {"[FLAC]", "FLAC", "FLAC"};

enum BlockType : uint8_t {
    block_streaminfo = 0,
    block_comment = 4,
    block_cuesheet = 5,
    block_picture = 6,
    block_invalid = 127,
};

constexpr int64_t block_header_size = 4;
constexpr uint8_t last_block = 0x80;
constexpr int block_limit = 1024; // files have a handful

// A first frame that metadata does not lead to, and a last one that is not at the end, are looked
// for in this much.
constexpr int64_t frame_search = 1048576;
// The last frame, where its largest size is not known or nonsense.
constexpr int64_t largest_tail = 65536;

struct FlacFile {
    LosslessFile lossless;
    FlacStreamInfo info;
    bool has_info = false;
    int64_t audio = 0; // offset of the frames in the stream
    FlacFrame first;   // frame; a block of 0: none was found
    int64_t first_at = 0;
    uint64_t frame_samples = 0; // up to the end of the last frame
    uint64_t last_samples = 0;  // of the last frame
    int64_t last_at = 0;
    bool ends_early = false; // something else stands behind the last frame
};

struct Block {
    uint8_t type;
    bool last;
    int64_t at; // of its content
    int64_t size;
};

bool read_block_header(FlacFile* flac, int64_t at, Block* block) {
    const Bytes header =
        read_view(&flac->lossless.reader, flac->lossless.tags.stream, at, block_header_size);
    if (header.size() < block_header_size) {
        return false;
    }
    block->type = header[0] & static_cast<uint8_t>(~last_block);
    block->last = (header[0] & last_block) != 0;
    block->at = at + block_header_size;
    block->size = ReadBE24(&header[1]);
    return block->type != block_invalid;
}

bool lies_in_stream(const FlacFile* flac, const Block& block) {
    return block.size <= size_of(flac->lossless.tags.stream) - block.at;
}

bool read_frame_at(FlacFile* flac, int64_t at, FlacFrame* frame) {
    return read_flac_frame(
        read_view(&flac->lossless.reader, flac->lossless.tags.stream, at, flac_frame_header_size),
        frame);
}

// True when a block that was passed by leads to another one or, the last, to a frame.
bool leads_on(FlacFile* flac, const Block& block) {
    Block next;
    FlacFrame frame;
    const int64_t end = block.at + block.size;
    return block.last ? read_frame_at(flac, end, &frame)
                      : read_block_header(flac, end, &next) && next.type <= block_picture &&
                            lies_in_stream(flac, next);
}

// A picture of 16 MiB and more does not fit into a block's size: then it is as long as its own
// fields say.
void mend_picture_size(FlacFile* flac, Block* block) {
    if (lies_in_stream(flac, *block) && leads_on(flac, *block)) {
        return;
    }
    Reader* reader = &flac->lossless.reader;
    const Span stream = flac->lossless.tags.stream;
    int64_t at = block->at + 4;                       // its type
    at += 4 + int64_t{read_be32(reader, stream, at)}; // the media type
    at += 4 + int64_t{read_be32(reader, stream, at)}; // the description
    at += 16;                                         // size, depth, colours
    at += 4 + int64_t{read_be32(reader, stream, at)}; // the picture
    Block mended = *block;
    mended.size = at - block->at;
    if (lies_in_stream(flac, mended) && leads_on(flac, mended)) {
        block->size = mended.size;
    }
}

// WAVEFORMATEXTENSIBLE_CHANNEL_MASK=0x0033; 0 where nothing is told.
uint32_t told_channel_mask(std::string_view text) {
    uint32_t mask = 0;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        for (const char c : text.substr(0, 8)) {
            const char lower = ascii_lower(c);
            const bool digit = lower >= '0' && lower <= '9';
            if (!digit && (lower < 'a' || lower > 'f')) {
                return 0;
            }
            mask = mask << 4 | static_cast<uint32_t>(digit ? lower - '0' : lower - 'a' + 10);
        }
    }
    return mask;
}

void take_comments(FlacFile* flac, Span block) {
    LosslessFile* lossless = &flac->lossless;
    VorbisComments comments;
    open_comments(&comments, &lossless->reader, block);
    copy_utf8(lossless->facts.encoder, bounded_text(comments.writer));
    VorbisComment comment;
    while (next_comment(&comments, &comment)) {
        take_comment_text(comment, &lossless->comment_texts);
        if (same_letters(comment.name, "waveformatextensible_channel_mask")) {
            lossless->channel_mask = told_channel_mask(comment.value);
        }
    }
    lossless->comments = comments.read;
}

void take_block(FlacFile* flac, Block* block) {
    LosslessFile* lossless = &flac->lossless;
    const Span space = sub_span(lossless->tags.stream, block->at, block->size);
    switch (block->type) {
    case block_streaminfo: {
        const Bytes content = read_view(&lossless->reader, space, 0, flac_streaminfo_size);
        flac->has_info = flac->has_info || read_flac_streaminfo(content, &flac->info);
        break;
    }
    case block_comment:
        if (lossless->comments == 0) {
            take_comments(flac, space);
        }
        break;
    case block_cuesheet:
        lossless->cuesheet = true;
        break;
    case block_picture:
        ++lossless->pictures;
        break;
    default:
        break;
    }
}

// Walks the metadata blocks up to the frames. False when a block led nowhere.
bool walk_blocks(FlacFile* flac) {
    Block block{};
    flac->audio = block_header_size; // behind "fLaC"
    for (int i = 0; !block.last; ++i) {
        if (i == block_limit || !read_block_header(flac, flac->audio, &block)) {
            return false;
        }
        if (block.type == block_picture) {
            mend_picture_size(flac, &block);
        }
        if (!lies_in_stream(flac, block)) {
            return false;
        }
        take_block(flac, &block);
        flac->audio = block.at + block.size;
    }
    return true;
}

// Calls `take` with each frame header between two offsets of the stream, until it returns false.
template <class Take>
void scan_frames(FlacFile* flac, int64_t from, int64_t to, Take take) {
    constexpr uint32_t look = BlockReader::jump_size;
    const Span stream = flac->lossless.tags.stream;
    while (from < to) {
        const Bytes bytes = read_view(&flac->lossless.reader, stream, from, look);
        if (bytes.empty()) {
            return;
        }
        // A header that the view cuts off is looked at again in the next one.
        const bool whole = from + static_cast<int64_t>(bytes.size()) >= size_of(stream);
        const size_t end =
            whole ? bytes.size()
                  : bytes.size() - std::min(bytes.size() - 1, flac_frame_header_size - 1);
        const uint8_t* limit = bytes.data() + end;
        const uint8_t* at = bytes.data();
        while ((at = static_cast<const uint8_t*>(
                    std::memchr(at, 0xFF, static_cast<size_t>(limit - at)))) != nullptr) {
            FlacFrame frame;
            const auto offset = static_cast<size_t>(at - bytes.data());
            if (read_flac_frame(bytes.subspan(offset), &frame) &&
                !take(frame, from + static_cast<int64_t>(offset))) {
                return;
            }
            if (++at == limit) {
                break;
            }
        }
        from += static_cast<int64_t>(end);
    }
}

void find_first_frame(FlacFile* flac, bool follows_blocks) {
    flac->first_at = flac->audio;
    if (follows_blocks && read_frame_at(flac, flac->audio, &flac->first)) {
        return;
    }
    scan_frames(
        flac, flac->audio, flac->audio + frame_search, [flac](const FlacFrame& frame, int64_t at) {
            flac->first = frame;
            flac->first_at = at;
            return false;
        });
    flac->audio = flac->first_at;
}

bool goes_on(const FlacFrame& first, const FlacFrame& frame) {
    return frame.variable == first.variable && frame.sample_rate == first.sample_rate &&
           frame.channels == first.channels && frame.bits == first.bits;
}

void find_last_frame(FlacFile* flac, int64_t tail) {
    const int64_t end = size_of(flac->lossless.tags.stream);
    const int64_t from = std::max(flac->first_at, end - tail);
    scan_frames(flac, from, end, [flac](const FlacFrame& frame, int64_t at) {
        if (goes_on(flac->first, frame)) {
            const uint64_t unit = frame.variable ? 1 : flac->first.block;
            flac->frame_samples = frame.number * unit + frame.block;
            flac->last_samples = frame.block;
            flac->last_at = at;
        }
        return true;
    });
}

// The last frame stands at the end, but for what else somebody may have put there.
void find_end(FlacFile* flac) {
    const int64_t largest = flac->has_info ? flac->info.largest_frame : 0;
    find_last_frame(flac, largest == 0 ? largest_tail : std::min(largest, largest_tail));
    if (flac->frame_samples == 0) {
        find_last_frame(flac, frame_search);
        const int64_t behind = size_of(flac->lossless.tags.stream) - flac->last_at;
        flac->ends_early = flac->frame_samples != 0 && behind > largest;
    }
}

// Bytes of the frames. Where the last one ends is not told: it is taken for as large as the others.
int64_t payload_of(const FlacFile& flac) {
    const int64_t rest = std::max<int64_t>(size_of(flac.lossless.tags.stream) - flac.audio, 0);
    if (!flac.ends_early) {
        return rest;
    }
    const int64_t before = flac.last_at - flac.audio;
    if (before == 0) {
        return std::min<int64_t>(rest, flac.info.largest_frame);
    }
    const double others = static_cast<double>(flac.frame_samples - flac.last_samples);
    const double share = divide(static_cast<double>(flac.frame_samples), others);
    return std::min(rest, clamp_to_integer<int64_t>(static_cast<double>(before) * share + 0.5));
}

// Where the frames tell something else than the header they hold: the header's figure, then theirs.
void note_difference(char (&note)[96], const char* unit, uint32_t in_header, uint32_t in_frames) {
    if (in_frames != 0 && in_header != in_frames) {
        char piece[48];
        format_text(piece, sizeof piece, "%u%s/%u%s", in_header, unit, in_frames, unit);
        AppendWithSeparator(note, piece, separator_comma);
    }
}

void set_format(FlacFile* flac) {
    LosslessFile* lossless = &flac->lossless;
    const FlacStreamInfo& info = flac->info;
    const FlacFrame& first = flac->first;
    char note[96] = "";
    if (flac->has_info) {
        note_difference(note, "Hz", info.sample_rate, first.sample_rate);
        note_difference(note, "ch", info.channels, first.channels);
        note_difference(note, "Bit", info.bits, first.bits);
    }
    if (flac->has_info || first.block != 0) {
        set_sample_rate(lossless, first.sample_rate != 0 ? first.sample_rate : info.sample_rate);
        set_channels(lossless, first.channels != 0 ? first.channels : info.channels);
        lossless->facts.bit_depth = first.bits != 0 ? first.bits : info.bits;
    }
    if (note[0] != '\0') {
        format_text(lossless->note, sizeof lossless->note, "header and frames differ(%s)", note);
    } else if (!flac->has_info) {
        copy_text(lossless->note, "no STREAMINFO");
    }
}

void set_length(FlacFile* flac) {
    LosslessFile* lossless = &flac->lossless;
    const uint64_t told = flac->has_info ? flac->info.samples : 0;
    const uint64_t counted = flac->frame_samples;
    set_samples(lossless, std::max(told, counted));
    lossless->truncated = counted == 0 || counted < told;
    if (told != 0 && counted > told && lossless->note[0] == '\0') {
        format_text(lossless->note, sizeof lossless->note,
            "header and frames differ(%ju/%ju samples)", static_cast<uintmax_t>(told),
            static_cast<uintmax_t>(counted));
    }
}

} // namespace

int AnalyzeFlacFile(FileRecord* file, const Output& out) {
    FlacFile flac;
    LosslessFile* lossless = &flac.lossless;
    open_lossless_file(lossless, file);
    copy_text(lossless->name, "FLAC");
    lossless->shows_encoder = true;
    if (find_stream_start(lossless, "fLaC")) {
        const bool led_on = walk_blocks(&flac);
        find_first_frame(&flac, led_on);
        if (flac.first.block != 0) {
            find_end(&flac);
        }
        set_format(&flac);
        set_length(&flac);
        const uint32_t mask = lossless->channel_mask;
        set_channel_mask(
            lossless, mask != 0 ? mask : default_channel_mask(lossless->facts.channels));
        lossless->payload = payload_of(flac);
        if (flac.ends_early) {
            lossless->facts.estimated |= ZAT_ESTIMATED_BIT_RATE | ZAT_ESTIMATED_BYTES;
        }
    }
    lossless->facts.flags |= ZAT_FLAG_LOSSLESS;
    write_lossless_file(lossless, flac_kind, out);
    return 0;
}

} // namespace zat
