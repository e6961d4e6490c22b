#include "audio/lossless/tak_file.h"

#include "audio/lossless/lossless_file.h"
#include "common/bytes/bytes.h"
#include "common/bytes/crc.h"
#include "common/text/text.h"

#include <algorithm>

namespace zat {

namespace {

constexpr LosslessKind tak_kind = {"[TAK]", "TAK", "TAK"};

constexpr uint32_t tak_block_limit = 256;
constexpr uint32_t crc_size = 3; // behind each block's content

enum TakBlockType : uint8_t {
    block_end = 0,
    block_stream_info = 1,
    block_encoder = 4,
    block_last_frame = 7,
};

// Fields from the lowest bit of the first byte on. A field behind the end is 0.
struct LowBits {
    Bytes bytes;
    size_t position = 0;
};

uint64_t take_bits(LowBits* bits, int count) {
    uint64_t value = 0;
    for (int i = 0; i < count; ++i, ++bits->position) {
        const uint64_t bit = byte_at(bits->bytes, bits->position / 8) >> bits->position % 8 & 1;
        value |= bit << i;
    }
    return value;
}

struct TakFile {
    LosslessFile lossless;
    uint32_t profile = 0;
    bool has_info = false;
    bool has_preset = false;
    int64_t data_size = not_declared; // behind the blocks, by the last frame's place
};

// Each speaker by its number, 1 to 18; a channel with 0 has none.
void take_speakers(TakFile* tak, LowBits* bits) {
    uint32_t mask = 0;
    for (uint32_t i = 0; i < tak->lossless.facts.channels; ++i) {
        const auto speaker = static_cast<uint32_t>(take_bits(bits, 6));
        mask |= speaker >= 1 && speaker <= 18 ? 1U << (speaker - 1) : 0;
    }
    if (mask != 0) {
        set_channel_mask(&tak->lossless, mask);
    }
}

void take_stream_info(Bytes data, TakFile* tak) {
    constexpr uint32_t lowest_rate = 6000;
    constexpr uint32_t lowest_bits = 8;
    LosslessFile* lossless = &tak->lossless;
    if (data.size() < 10) {
        lossless->damaged = true;
        return;
    }
    tak->has_info = true;
    LowBits bits = {data};
    take_bits(&bits, 6); // codec
    tak->profile = static_cast<uint32_t>(take_bits(&bits, 4));
    take_bits(&bits, 4); // frame size
    const uint64_t samples = take_bits(&bits, 35);
    take_bits(&bits, 3); // data type
    set_sample_rate(lossless, take_bits(&bits, 18) + lowest_rate);
    lossless->facts.bit_depth = static_cast<uint32_t>(take_bits(&bits, 5)) + lowest_bits;
    set_channels(lossless, take_bits(&bits, 4) + 1);
    set_samples(lossless, samples);
    if (take_bits(&bits, 1) != 0) {
        take_bits(&bits, 5); // valid bits
        if (take_bits(&bits, 1) != 0) {
            take_speakers(tak, &bits);
        }
    }
}

void add_preset(TakFile* tak, uint32_t preset, uint32_t evaluation) {
    constexpr const char* evaluations[] = {"", "e", "m"};
    char piece[16];
    format_text(piece, sizeof piece, "-p%u%s", preset,
        evaluation < std::size(evaluations) ? evaluations[evaluation] : "");
    add_name_word(&tak->lossless, piece);
    copy_utf8(tak->lossless.facts.profile, piece);
}

void take_encoder(Bytes data, TakFile* tak) {
    if (data.size() < 3) {
        return;
    }
    char(&encoder)[sizeof tak->lossless.facts.encoder] = tak->lossless.facts.encoder;
    format_text(encoder, sizeof encoder, "%u.%u.%u", uint32_t{data[2]}, uint32_t{data[1]},
        uint32_t{data[0]});
    add_name_word(&tak->lossless, encoder);
    if (data.size() > 3) {
        tak->has_preset = true;
        add_preset(tak, data[3] & 0xF, data[3] >> 4);
    }
}

void take_last_frame(Bytes data, TakFile* tak) {
    if (data.size() >= 8) {
        LowBits bits = {data};
        const uint64_t position = take_bits(&bits, 40);
        tak->data_size = static_cast<int64_t>(position + take_bits(&bits, 24));
    }
}

struct TakRow {
    uint8_t type;
    void (*take)(Bytes data, TakFile* tak);
};

constexpr TakRow block_rows[] = {
    {block_stream_info, take_stream_info},
    {block_encoder, take_encoder},
    {block_last_frame, take_last_frame},
};

// Takes a block that is known; one whose checksum is wrong is only told.
void take_block(uint8_t type, Span block, TakFile* tak) {
    constexpr uint32_t largest_known = 512;
    for (const TakRow& row : block_rows) {
        if (row.type != type) {
            continue;
        }
        const auto size = static_cast<uint32_t>(size_of(block));
        const Bytes bytes = read_view(&tak->lossless.reader, block, 0, size);
        if (size > largest_known || bytes.size() < size || size < crc_size) {
            tak->lossless.damaged = true;
            return;
        }
        const Bytes data = bytes.first(size - crc_size);
        const uint8_t* crc = bytes.data() + data.size();
        const uint32_t told = ReadLE16(crc) | uint32_t{crc[2]} << 16;
        tak->lossless.damaged = tak->lossless.damaged || crc24(data) != told;
        row.take(data, tak);
    }
}

void describe_stream(TakFile* tak) {
    LosslessFile* lossless = &tak->lossless;
    copy_text(lossless->name, "TAK");
    lossless->damaged = !find_stream_start(lossless, "tBaK");
    const Span stream = lossless->tags.stream;
    int64_t at = 4; // behind "tBaK"
    bool ended = false;
    for (uint32_t i = 0; i < tak_block_limit && !ended && !lossless->damaged; ++i) {
        const Bytes header = read_view(&lossless->reader, stream, at, 4);
        if (header.size() < 4) {
            break;
        }
        const uint8_t type = header[0] & 0x7F;
        const int64_t size = ReadLE16(&header[1]) | int64_t{header[3]} << 16;
        at += 4;
        ended = type == block_end;
        if (!ended) {
            take_block(type, sub_span(stream, at, size), tak);
            at += size;
        }
    }
    lossless->damaged = lossless->damaged || !tak->has_info;
    if (tak->has_info && !tak->has_preset) {
        add_preset(tak, tak->profile, 0);
    }
    const int64_t rest = std::max<int64_t>(size_of(stream) - at, 0);
    lossless->declared_payload = tak->data_size;
    lossless->payload = tak->data_size == not_declared ? rest : std::min(rest, tak->data_size);
}

} // namespace

int AnalyzeTakFile(FileRecord* file, const Output& out) {
    TakFile tak;
    open_lossless_file(&tak.lossless, file);
    tak.lossless.facts.flags |= ZAT_FLAG_LOSSLESS;
    describe_stream(&tak);
    write_lossless_file(&tak.lossless, tak_kind, out);
    return 0;
}

} // namespace zat
