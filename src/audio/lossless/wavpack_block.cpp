#include "audio/lossless/wavpack_block.h"

#include <algorithm>

namespace zat {

namespace {

constexpr int64_t largest_block = 1048576;
constexpr uint32_t most_samples = 0x30000; // of a block
constexpr uint32_t sub_block_limit = 256;

constexpr uint32_t size_in_24_bits = 0x80;
constexpr uint32_t one_byte_less = 0x40;
constexpr uint32_t id_mask = 0x3F;

constexpr uint32_t extra_mode = 0x2000000; // in the configuration's flags

void take_float_info(Bytes data, WavPackStream* stream) {
    stream->float_flags = byte_at(data, 0);
}

void take_int32_info(Bytes data, WavPackStream* stream) {
    stream->int32_bits = byte_at(data, 0);
}

void take_audio(Bytes /*data*/, WavPackStream* stream) {
    stream->has_audio = true;
}

void take_correction(Bytes /*data*/, WavPackStream* stream) {
    stream->has_correction = true;
}

void take_extension(Bytes /*data*/, WavPackStream* stream) {
    stream->has_extension = true;
}

void take_version_5(Bytes /*data*/, WavPackStream* stream) {
    stream->version_5 = true;
}

uint32_t little_endian(Bytes data) {
    uint32_t value = 0;
    for (size_t i = 0; i < data.size() && i < 4; ++i) {
        value |= uint32_t{data[i]} << (8 * i);
    }
    return value;
}

void take_channels(Bytes data, WavPackStream* stream) {
    if (data.size() >= 6) { // counts beyond 255
        stream->channels = (data[0] | (data[2] & 0xFU) << 8) + 1;
        stream->channel_mask = little_endian(data.subspan(3));
    } else if (!data.empty()) {
        stream->channels = data[0];
        stream->channel_mask = little_endian(data.subspan(1));
    }
}

void take_dsd(Bytes data, WavPackStream* stream) {
    stream->has_audio = true;
    stream->dsd_power = data.empty() ? -1 : int32_t{data[0]};
}

void take_config(Bytes data, WavPackStream* stream) {
    if (data.size() < 3) {
        return;
    }
    stream->has_config = true;
    stream->config = little_endian(data.first(3)) << 8;
    size_t used = 3;
    if ((stream->config & extra_mode) != 0 && data.size() > used) {
        stream->extra_level = data[used++];
    }
    stream->version_5 = stream->version_5 || data.size() > used;
}

void take_rate(Bytes data, WavPackStream* stream) {
    if (data.size() >= 3) {
        stream->sample_rate = little_endian(data) & 0x7FFFFFFF;
    }
}

struct WavpackRow {
    uint32_t id;
    void (*take)(Bytes data, WavPackStream* stream);
};

constexpr WavpackRow sub_block_rows[] = {
    {0x08, take_float_info}, {0x09, take_int32_info}, {0x0A, take_audio}, {0x0B, take_correction},
    {0x0C, take_extension}, {0x0D, take_channels}, {0x0E, take_dsd}, {0x25, take_config},
    {0x27, take_rate}, {0x2A, take_version_5},      // new configuration
    {0x2C, take_extension}, {0x2F, take_version_5}, // checksum
};

} // namespace

bool read_wavpack_block(Bytes header, WavPackBlock* block) {
    if (header.size() < wavpack_header_size || !starts_with(header.data(), "wvpk")) {
        return false;
    }
    const uint8_t* p = header.data();
    block->size = int64_t{ReadLE32(p + 4)} + 8;
    block->version = ReadLE16(p + 8);
    const uint32_t low = ReadLE32(p + 12);
    const uint64_t high = p[11];
    block->total = low == UINT32_MAX ? wavpack_unknown_total : low + (high << 32) - high;
    block->index = uint64_t{p[10]} << 32 | ReadLE32(p + 16);
    block->samples = ReadLE32(p + 20);
    block->flags = ReadLE32(p + 24);
    return block->size % 2 == 0 && block->size >= wavpack_header_size &&
           block->size < largest_block && block->samples < most_samples &&
           block->version >= 0x402 && block->version <= 0x410;
}

void read_wavpack_sub_blocks(Reader* reader, Span block, WavPackStream* stream) {
    int64_t at = wavpack_header_size;
    for (uint32_t i = 0; i < sub_block_limit; ++i) {
        const Bytes head = read_view(reader, block, at, 4);
        if (head.size() < 2) {
            return;
        }
        const uint32_t id = head[0];
        const bool is_large = (id & size_in_24_bits) != 0;
        if (is_large && head.size() < 4) {
            return;
        }
        const int64_t words = is_large ? head[1] | head[2] << 8 | head[3] << 16 : head[1];
        at += is_large ? 4 : 2;
        const int64_t size = words * 2 - ((id & one_byte_less) != 0 ? 1 : 0);
        if (size < 0 || size > size_of(block) - at) {
            return;
        }
        const auto* row = std::find_if(std::begin(sub_block_rows), std::end(sub_block_rows),
            [id](const WavpackRow& candidate) { return candidate.id == (id & id_mask); });
        if (row != std::end(sub_block_rows)) {
            row->take(
                read_view(reader, block, at, static_cast<uint32_t>(std::min<int64_t>(size, 16))),
                stream);
        }
        at += words * 2;
    }
}

} // namespace zat
