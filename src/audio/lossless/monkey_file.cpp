#include "audio/lossless/monkey_file.h"

#include "audio/lossless/lossless_file.h"
#include "common/bytes/bytes.h"
#include "common/bytes/tables.h"
#include "common/text/text.h"

#include <algorithm>
#include <string_view>

namespace zat {

namespace {

constexpr LosslessKind monkey_kind = {"[Monkey's Audio]", "Monkey's Audio", "Monkey's Audio"};

constexpr uint32_t first_monkey_version = 3200; // thousandths
constexpr uint32_t first_with_descriptor = 3980;
constexpr uint32_t most_channels = 32;

enum Flag : uint32_t {
    flag_8_bits = 1 << 0,
    flag_peak = 1 << 2,
    flag_24_bits = 1 << 3,
    flag_seek_elements = 1 << 4,
    flag_no_wav_header = 1 << 5,
};

struct Level {
    uint32_t value;
    std::string_view name;
};

constexpr Level levels[] = {
    {1000, "Fast"},
    {2000, "Normal"},
    {3000, "High"},
    {4000, "Extra High"},
    {5000, "Insane"},
};

// Both headers in one form.
struct MonkeyHeader {
    uint32_t level = 0;
    uint32_t bits = 0;
    uint32_t channels = 0;
    uint32_t rate = 0;
    uint64_t frames = 0;
    uint64_t blocks_per_frame = 0;
    uint64_t final_blocks = 0;
    int64_t data = 0; // offset of the frames in the stream
    int64_t frame_bytes = not_declared;
    int64_t terminating_bytes = 0;
    int64_t last_seek_entry = 0; // offset of the last frame
};

struct MonkeyFile {
    LosslessFile lossless;
    uint32_t version = 0;
    MonkeyHeader header;
};

// From version 3.98 on: a descriptor with the sizes of all parts, then the header.
bool read_new_header(MonkeyFile* monkey) {
    constexpr uint32_t descriptor_size = 52;
    constexpr uint32_t header_size = 24;
    Reader* reader = &monkey->lossless.reader;
    const Span stream = monkey->lossless.tags.stream;
    uint8_t descriptor[descriptor_size];
    uint8_t header[header_size];
    if (!read_all(reader, stream, 0, descriptor, sizeof descriptor)) {
        return false;
    }
    const int64_t behind_descriptor = ReadLE32(descriptor + 8);
    if (!read_all(reader, stream, behind_descriptor, header, sizeof header)) {
        return false;
    }
    MonkeyHeader* out = &monkey->header;
    out->level = ReadLE16(header);
    out->blocks_per_frame = ReadLE32(header + 4);
    out->final_blocks = ReadLE32(header + 8);
    out->frames = ReadLE32(header + 12);
    out->bits = ReadLE16(header + 16);
    out->channels = ReadLE16(header + 18);
    out->rate = ReadLE32(header + 20);
    const int64_t header_bytes = ReadLE32(descriptor + 12);
    const int64_t seek_bytes = ReadLE32(descriptor + 16);
    const int64_t wav_header_bytes = ReadLE32(descriptor + 20);
    out->data = behind_descriptor + header_bytes + seek_bytes + wav_header_bytes;
    out->frame_bytes = std::max<int64_t>(ReadLE64(descriptor + 24), not_declared);
    out->terminating_bytes = ReadLE32(descriptor + 32);
    return true;
}

uint64_t old_blocks_per_frame(uint32_t version, uint32_t level) {
    if (version >= 3950) {
        return 294912;
    }
    return version >= 3900 || (version >= 3800 && level == 4000) ? 73728 : 9216;
}

bool read_old_header(MonkeyFile* monkey) {
    constexpr uint32_t header_size = 32;
    Reader* reader = &monkey->lossless.reader;
    const Span stream = monkey->lossless.tags.stream;
    uint8_t header[header_size];
    if (!read_all(reader, stream, 0, header, sizeof header)) {
        return false;
    }
    MonkeyHeader* out = &monkey->header;
    const uint32_t flags = ReadLE16(header + 8);
    out->level = ReadLE16(header + 6);
    out->channels = ReadLE16(header + 10);
    out->rate = ReadLE32(header + 12);
    out->terminating_bytes = ReadLE32(header + 20);
    out->frames = ReadLE32(header + 24);
    out->final_blocks = ReadLE32(header + 28);
    out->blocks_per_frame = old_blocks_per_frame(monkey->version, out->level);
    out->bits = (flags & flag_8_bits) != 0 ? 8 : (flags & flag_24_bits) != 0 ? 24 : 16;
    int64_t at = header_size + ((flags & flag_peak) != 0 ? 4 : 0);
    auto seek_elements = static_cast<int64_t>(out->frames);
    if ((flags & flag_seek_elements) != 0) {
        seek_elements = read_le32(reader, stream, at);
        at += 4;
    }
    at += (flags & flag_no_wav_header) != 0 ? 0 : int64_t{ReadLE32(header + 16)};
    out->data =
        at + seek_elements * 4 + (monkey->version < 3810 ? static_cast<int64_t>(out->frames) : 0);
    if (seek_elements > 0 && out->frames > 0) {
        const int64_t last =
            std::min<int64_t>(seek_elements, static_cast<int64_t>(out->frames)) - 1;
        out->last_seek_entry = read_le32(reader, stream, at + last * 4, UINT32_MAX);
    }
    return true;
}

void set_name(MonkeyFile* monkey) {
    LosslessFile* lossless = &monkey->lossless;
    format_text(lossless->name, sizeof lossless->name, "Monkey's Audio %u.%02u",
        monkey->version / 1000, monkey->version % 1000 / 10);
    const Level* level = find_row(levels, &Level::value, monkey->header.level);
    if (level != nullptr) {
        add_name_word(lossless, level->name);
        copy_utf8(lossless->facts.profile, level->name);
    } else {
        lossless->damaged = true;
    }
}

void set_length(MonkeyFile* monkey) {
    LosslessFile* lossless = &monkey->lossless;
    const MonkeyHeader& header = monkey->header;
    if (header.frames == 0) {
        copy_text(lossless->note, "not finalised");
        return;
    }
    if (header.final_blocks == 0 || header.final_blocks > header.blocks_per_frame) {
        lossless->damaged = true;
        return;
    }
    set_samples(lossless, (header.frames - 1) * header.blocks_per_frame + header.final_blocks);
}

void set_payload(MonkeyFile* monkey) {
    LosslessFile* lossless = &monkey->lossless;
    const MonkeyHeader& header = monkey->header;
    const int64_t rest = std::max<int64_t>(size_of(lossless->tags.stream) - header.data, 0);
    if (header.frame_bytes != not_declared) {
        lossless->declared_payload = header.frame_bytes;
        lossless->payload = std::min(rest, header.frame_bytes);
        return;
    }
    lossless->payload = std::max<int64_t>(rest - header.terminating_bytes, 0);
    const Span stream = lossless->tags.stream;
    lossless->truncated = header.frames != 0 && header.last_seek_entry >= size_of(stream);
}

void describe_stream(MonkeyFile* monkey) {
    LosslessFile* lossless = &monkey->lossless;
    uint8_t start[6];
    if (!find_stream_start(lossless, "MAC") ||
        !read_all(&lossless->reader, lossless->tags.stream, 0, start, sizeof start)) {
        lossless->damaged = true;
        return;
    }
    const bool is_float = start[3] == 'F';
    monkey->version = ReadLE16(start + 4);
    if (monkey->version < first_monkey_version ||
        !(monkey->version >= first_with_descriptor ? read_new_header(monkey)
                                                   : read_old_header(monkey))) {
        lossless->damaged = true;
        return;
    }
    const MonkeyHeader& header = monkey->header;
    set_sample_rate(lossless, header.rate);
    set_channels(lossless, header.channels <= most_channels ? header.channels : 0);
    const bool known_bits = header.bits % 8 == 0 && header.bits >= 8 && header.bits <= 32;
    lossless->facts.bit_depth = known_bits ? header.bits : 0;
    lossless->damaged = lossless->damaged || !known_bits;
    set_name(monkey);
    if (is_float) {
        add_name_word(lossless, "float");
    }
    set_length(monkey);
    set_payload(monkey);
}

} // namespace

int AnalyzeMonkeyFile(FileRecord* file, const Output& out) {
    MonkeyFile monkey;
    open_lossless_file(&monkey.lossless, file);
    monkey.lossless.facts.flags |= ZAT_FLAG_LOSSLESS;
    describe_stream(&monkey);
    write_lossless_file(&monkey.lossless, monkey_kind, out);
    return 0;
}

} // namespace zat
