#include "audio/lossless/optimfrog_file.h"

#include "audio/lossless/lossless_file.h"
#include "common/bytes/bytes.h"
#include "common/text/text.h"

#include <algorithm>
#include <string_view>

namespace zat {

namespace {

constexpr LosslessKind optimfrog_kind = {"[OptimFROG]", "OptimFROG", "OptimFROG"};

constexpr uint32_t optimfrog_chunk_limit = 16384;
constexpr int64_t optimfrog_chunk_header_size = 8;
constexpr uint32_t first_optimfrog_version = 4500;
constexpr uint32_t dual_stream = 4; // the algorithm of DualStream files

// Bits by the sample type.
constexpr uint32_t sample_bits[] = {8, 8, 16, 16, 24, 24, 32, 32, 32, 32, 32};
constexpr uint32_t first_float_type = 8;

constexpr std::string_view modes[] = {
    "fast", "normal", "high", "extra", "best", "ultra", "insane", "highnew", "extranew", "bestnew"};
constexpr std::string_view speeds[] = {"", "2x", "4x"}; // of decoding

struct OptimFrogFile {
    LosslessFile lossless;
    bool is_dual_stream = false;
    bool has_tail = false;
};

// Sums the compressed blocks.
void walk_chunks(OptimFrogFile* frog) {
    constexpr uint32_t look = 20; // up to a block's algorithm
    LosslessFile* lossless = &frog->lossless;
    const Span stream = lossless->tags.stream;
    int64_t at = 0;
    bool is_first = true;
    for (uint32_t i = 0; i < optimfrog_chunk_limit; ++i) {
        const Bytes chunk = read_view(&lossless->reader, stream, at, look);
        if (chunk.size() < optimfrog_chunk_header_size) {
            return;
        }
        const int64_t size = ReadLE32(&chunk[4]);
        at += optimfrog_chunk_header_size;
        if (starts_with(chunk.data(), "COMP")) {
            if (is_first && chunk.size() == look) {
                frog->is_dual_stream = (ReadLE16(&chunk[18]) >> 6 & 0x1F) == dual_stream;
            }
            is_first = false;
            lossless->payload += std::min(size, size_of(stream) - at);
        }
        at += size;
        frog->has_tail =
            frog->has_tail || (starts_with(chunk.data(), "TAIL") && at <= size_of(stream));
    }
}

void set_name(OptimFrogFile* frog, const uint8_t* header, uint32_t size) {
    LosslessFile* lossless = &frog->lossless;
    copy_text(lossless->name, "OptimFROG");
    if (frog->is_dual_stream) {
        add_name_word(lossless, "DualStream");
    } else {
        lossless->facts.flags |= ZAT_FLAG_LOSSLESS;
    }
    if (size >= 15) {
        const uint32_t version = (ReadLE16(header + 20) >> 4) + first_optimfrog_version;
        char piece[16];
        format_text(piece, sizeof piece, "%u.%03u", version / 1000, version % 1000);
        add_name_word(lossless, piece);
        copy_utf8(lossless->facts.encoder, piece);
        const uint32_t mode = header[22] >> 3;
        const uint32_t speed = header[22] & 7;
        if (mode < std::size(modes)) {
            add_name_word(lossless, modes[mode]);
            copy_utf8(lossless->facts.profile, modes[mode]);
        }
        if (speed < std::size(speeds) && !speeds[speed].empty()) {
            add_name_word(lossless, speeds[speed]);
        }
    }
    if (header[14] >= first_float_type && header[14] < std::size(sample_bits)) {
        add_name_word(lossless, "float");
    }
}

void describe_stream(OptimFrogFile* frog) {
    LosslessFile* lossless = &frog->lossless;
    uint8_t header[23] = {};
    const uint32_t length =
        find_stream_start(lossless, "OFR")
            ? read_some(&lossless->reader, lossless->tags.stream, 0, header, sizeof header)
            : 0;
    const uint32_t size = ReadLE32(header + 4);
    if (length < 20 || (header[3] != ' ' && header[3] != 'X') || size < 12 ||
        (size >= 15 && length < sizeof header)) {
        lossless->damaged = true;
        return;
    }
    walk_chunks(frog);
    set_name(frog, header, size);
    set_sample_rate(lossless, ReadLE32(header + 16));
    set_channels(lossless, header[15] <= 1 ? header[15] + 1U : 0);
    const bool known_type = header[14] < std::size(sample_bits);
    lossless->facts.bit_depth = known_type ? sample_bits[header[14]] : 0;
    lossless->damaged = lossless->damaged || !known_type;
    lossless->truncated = !frog->has_tail;
    // The count is of the values of all channels.
    const uint64_t values = ReadLE32(header + 8) | uint64_t{ReadLE16(header + 12)} << 32;
    if (lossless->facts.channels != 0) {
        set_samples(lossless, values / lossless->facts.channels);
    }
}

} // namespace

int AnalyzeOptimFrogFile(FileRecord* file, const Output& out) {
    OptimFrogFile frog;
    open_lossless_file(&frog.lossless, file);
    describe_stream(&frog);
    write_lossless_file(&frog.lossless, optimfrog_kind, out);
    return 0;
}

} // namespace zat
