#include "audio/lossless/wavpack_file.h"

#include "audio/lossless/lossless_file.h"
#include "audio/lossless/wavpack_block.h"
#include "common/file/file_window.h"
#include "common/text/text.h"

#include <algorithm>
#include <string_view>

namespace zat {

namespace {

constexpr LosslessKind wavpack_kind = {"[WavPack]", "WavPack", "WavPack"};

constexpr int64_t wavpack_search_limit = 1048576; // bytes at either end
constexpr int first_blocks = 64; // looked at: metadata, and the streams of the first stretch

constexpr uint32_t wavpack_rates[] = {6000, 8000, 9600, 11025, 12000, 16000, 22050, 24000, 32000,
    44100, 48000, 64000, 88200, 96000, 192000};

// Flags of the configuration.
constexpr uint32_t config_fast = 0x200;
constexpr uint32_t config_high = 0x800;
constexpr uint32_t config_very_high = 0x1000;
constexpr uint32_t config_correction_file = 0x80000;

// What float samples have that is not in the main stream.
constexpr uint8_t float_needs_extension = 0x2E;

struct WavPackFile {
    LosslessFile lossless;
    WavPackBlock first; // with samples
    WavPackStream stream;
    uint32_t stream_channels = 0; // of all streams of the first stretch
    int64_t first_size = 0;       // bytes up to the end of the first stretch
};

bool read_block_at(WavPackFile* wavpack, int64_t at, WavPackBlock* block) {
    return read_wavpack_block(read_view(&wavpack->lossless.reader, wavpack->lossless.tags.stream,
                                  at, wavpack_header_size),
        block);
}

// Moves the stream's start to its first valid block and notes what stands before it.
bool find_first_block(WavPackFile* wavpack) {
    Span* stream = &wavpack->lossless.tags.stream;
    WavPackBlock block;
    const int64_t padding = wavpack->lossless.reader.block.file->origin;
    if (read_block_at(wavpack, 0, &block)) {
        wavpack->lossless.junk = padding;
        return true;
    }
    FileWindow window;
    const auto reach = static_cast<uint32_t>(std::min(size_of(*stream), wavpack_search_limit));
    window_open(&window, wavpack->lossless.reader.block.file, stream->start, reach);
    window_load_all(&window);
    const Bytes bytes = window_bytes(&window);
    size_t at = 0;
    while ((at = text_of(bytes).find("wvpk", at)) != std::string_view::npos &&
           !read_wavpack_block(bytes.subspan(at), &block)) {
        ++at;
    }
    window_close(&window);
    if (at == std::string_view::npos) {
        return false;
    }
    wavpack->lossless.junk = padding + static_cast<int64_t>(at);
    stream->start += static_cast<int64_t>(at);
    return true;
}

// Reads the blocks up to the last one of the first stretch of samples.
void read_first_blocks(WavPackFile* wavpack) {
    int64_t at = 0;
    WavPackBlock block;
    for (int i = 0; i < first_blocks && read_block_at(wavpack, at, &block); ++i) {
        read_wavpack_sub_blocks(&wavpack->lossless.reader,
            sub_span(wavpack->lossless.tags.stream, at, block.size), &wavpack->stream);
        at += block.size;
        if (block.samples == 0) {
            continue;
        }
        if (wavpack->first.samples == 0) {
            wavpack->first = block;
        }
        wavpack->stream_channels += (block.flags & wavpack_mono) != 0 ? 1 : 2;
        wavpack->first_size = at;
        if ((block.flags & wavpack_final) != 0) {
            break;
        }
    }
}

// The last sample behind the last whole block in the file's last MiB; 0 when there is none.
uint64_t find_last_sample(WavPackFile* wavpack) {
    constexpr int64_t step = 65536;
    const Span stream = wavpack->lossless.tags.stream;
    const int64_t lowest = std::max(stream.start, stream.end - wavpack_search_limit);
    FileWindow window;
    window_open(&window, wavpack->lossless.reader.block.file, lowest, step + wavpack_header_size);
    uint64_t last = 0;
    for (int64_t end = stream.end; end > lowest && last == 0;) {
        const int64_t start = std::max(lowest, end - step);
        const Bytes bytes = window_view(
            &window, start, static_cast<uint32_t>(end - start) + wavpack_header_size - 1);
        const std::string_view text = text_of(bytes);
        for (size_t at = text.rfind("wvpk"); at != std::string_view::npos;
             at = at == 0 ? at - 1 : text.rfind("wvpk", at - 1)) {
            WavPackBlock block;
            if (read_wavpack_block(bytes.subspan(at), &block) && block.samples != 0 &&
                block.size <= stream.end - start - static_cast<int64_t>(at)) {
                last = block.index + block.samples;
                break;
            }
        }
        end = start;
    }
    window_close(&window);
    return last;
}

// Nominal bytes of the whole file are below twice of what it has: its end is missing, if the last
// block says so too.
bool may_be_truncated(const WavPackFile& wavpack) {
    const double promised = static_cast<double>(wavpack.first_size) *
                            static_cast<double>(wavpack.first.total) /
                            std::max<uint32_t>(wavpack.first.samples, 1);
    return static_cast<double>(wavpack.lossless.payload) * 2 < promised;
}

void set_length(WavPackFile* wavpack, bool thorough) {
    LosslessFile* lossless = &wavpack->lossless;
    const WavPackBlock& first = wavpack->first;
    const bool is_counted = first.total == wavpack_unknown_total || first.index != 0;
    uint64_t total = is_counted ? 0 : first.total;
    if (is_counted || thorough || may_be_truncated(*wavpack)) {
        const uint64_t last = find_last_sample(wavpack);
        if (is_counted) {
            total = last > first.index ? last - first.index : 0;
        } else {
            lossless->truncated = last < total;
        }
    }
    set_samples(lossless, lossless->is_dsd ? total * 8 : total);
}

void set_format(WavPackFile* wavpack) {
    LosslessFile* lossless = &wavpack->lossless;
    const WavPackStream& stream = wavpack->stream;
    const uint32_t flags = wavpack->first.flags;
    const uint32_t index = flags >> 23 & 0xF;
    uint64_t rate = index < std::size(wavpack_rates) ? wavpack_rates[index] : stream.sample_rate;
    if (lossless->is_dsd) {
        // The header's rate is that of bytes, or of several of them.
        rate = stream.dsd_power >= 0 && stream.dsd_power < 16 ? rate << stream.dsd_power << 3 : 0;
    }
    set_sample_rate(lossless, rate);
    set_channels(lossless, stream.channels != 0 ? stream.channels : wavpack->stream_channels);
    if (stream.channel_mask != 0) {
        set_channel_mask(lossless, stream.channel_mask);
    }
    const uint32_t bits = ((flags & 3) + 1) * 8;
    const uint32_t shift = flags >> 13 & 0x1F;
    lossless->facts.bit_depth = lossless->is_dsd ? 1 : shift < bits ? bits - shift : 0;
}

// What the samples lose: nothing, or what a correction file holds, or what is not sent at all.
std::string_view mode_of(const WavPackFile& wavpack) {
    const WavPackStream& stream = wavpack.stream;
    if (stream.has_correction && !stream.has_audio) {
        return "correction";
    }
    if ((wavpack.first.flags & wavpack_hybrid) != 0) {
        return "hybrid lossy";
    }
    const bool needs_extension =
        (stream.float_flags & float_needs_extension) != 0 || stream.int32_bits != 0;
    return needs_extension && !stream.has_extension ? "lossy" : "lossless";
}

std::string_view speed_of(const WavPackFile& wavpack) {
    const uint32_t config = wavpack.stream.config;
    if ((config & config_fast) != 0) {
        return "fast";
    }
    const bool old_high = (config & config_high) != 0 && wavpack.first.version < 0x405;
    if ((config & config_very_high) != 0 || old_high) {
        return "very high";
    }
    return (config & config_high) != 0 ? "high" : "";
}

void set_name(WavPackFile* wavpack) {
    LosslessFile* lossless = &wavpack->lossless;
    const WavPackStream& stream = wavpack->stream;
    char piece[16];
    add_name_word(lossless, lossless->is_dsd || stream.version_5 ? "WavPack 5" : "WavPack 4");
    const std::string_view mode = mode_of(*wavpack);
    if (lossless->is_dsd) {
        dsd_name(lossless->facts.sample_rate, piece);
        add_name_word(lossless, piece);
    } else {
        add_name_word(lossless, mode);
    }
    if (const std::string_view speed = speed_of(*wavpack); !speed.empty()) {
        add_name_word(lossless, speed);
    }
    if (stream.extra_level != 0) {
        format_text(piece, sizeof piece, "x%u", stream.extra_level);
        add_name_word(lossless, piece);
    }
    if ((wavpack->first.flags & wavpack_float) != 0) {
        add_name_word(lossless, "float");
    }
    if (mode == "lossless" || lossless->is_dsd) {
        lossless->facts.flags |= ZAT_FLAG_LOSSLESS;
    }
    lossless->correction_file = (wavpack->first.flags & wavpack_hybrid) != 0 &&
                                (stream.config & config_correction_file) != 0;
}

// A raw stream of versions 1 to 3: its header tells neither rate nor, before version 3, length.
void describe_old_stream(WavPackFile* wavpack, Bytes header) {
    constexpr uint32_t flag_mono = 1;
    constexpr uint32_t flag_high = 0x10;
    constexpr uint32_t flag_3_bytes = 0x20;
    constexpr uint32_t flag_hybrid = 0x400;
    constexpr uint32_t flag_not_extreme = 0x800;
    constexpr uint32_t flag_extreme = 0x8000;
    LosslessFile* lossless = &wavpack->lossless;
    const uint32_t version = ReadLE16(&header[8]);
    const bool is_lossy = version > 1 && ReadLE16(&header[10]) != 0;
    const uint32_t flags = version == 3 ? ReadLE16(&header[12]) : flag_high;
    lossless->facts.flags |= is_lossy ? 0 : uint32_t{ZAT_FLAG_LOSSLESS};
    format_text(lossless->name, sizeof lossless->name, "WavPack %u", version);
    add_name_word(lossless, !is_lossy                    ? "lossless"
                            : (flags & flag_hybrid) != 0 ? "hybrid lossy"
                                                         : "lossy");
    if (version != 3) {
        return;
    }
    if ((flags & flag_extreme) != 0 && (flags & flag_not_extreme) == 0) {
        add_name_word(lossless, "very high");
    } else {
        add_name_word(lossless, (flags & flag_high) != 0 ? "high" : "fast");
    }
    set_channels(lossless, (flags & flag_mono) != 0 ? 1 : 2);
    lossless->facts.bit_depth = (flags & flag_3_bytes) != 0 ? 24 : 16;
    set_samples(lossless, ReadLE32(&header[16]));
}

void describe_stream(WavPackFile* wavpack, bool thorough) {
    LosslessFile* lossless = &wavpack->lossless;
    const Span stream = lossless->tags.stream;
    const Bytes header = read_view(&lossless->reader, stream, 0, wavpack_header_size);
    if (header.size() == wavpack_header_size && starts_with(header.data(), "wvpk") &&
        ReadLE16(&header[8]) >= 1 && ReadLE16(&header[8]) <= 3) {
        describe_old_stream(wavpack, header);
        lossless->payload = size_of(stream);
        return;
    }
    if (!find_first_block(wavpack)) {
        lossless->damaged = true;
        return;
    }
    lossless->payload = size_of(lossless->tags.stream);
    read_first_blocks(wavpack);
    lossless->is_dsd = (wavpack->first.flags & wavpack_dsd) != 0;
    if (wavpack->first.samples == 0) {
        lossless->damaged = true;
        return;
    }
    set_format(wavpack);
    set_length(wavpack, thorough);
    set_name(wavpack);
}

} // namespace

int AnalyzeWavPackFile(FileRecord* file, const Output& out) {
    WavPackFile wavpack;
    open_lossless_file(&wavpack.lossless, file);
    describe_stream(&wavpack, is_thorough(*out.record));
    write_lossless_file(&wavpack.lossless, wavpack_kind, out);
    return 0;
}

} // namespace zat
