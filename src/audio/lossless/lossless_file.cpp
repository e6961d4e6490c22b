#include "audio/lossless/lossless_file.h"

#include "common/file/file_window.h"
#include "common/record/channel_layout.h"
#include "common/text/text.h"

#include <algorithm>
#include <iterator>

namespace zat {

namespace {

constexpr uint32_t lossless_search_limit = 1048576; // bytes

} // namespace

void open_lossless_file(LosslessFile* lossless, FileRecord* file) {
    reader_open(&lossless->reader, file);
    lossless->facts = new_stream(ZAT_STREAM_AUDIO);
    lossless->tags = measure_outer_tags(&lossless->reader);
}

bool find_stream_start(LosslessFile* lossless, std::string_view magic) {
    Span* stream = &lossless->tags.stream;
    const Bytes start =
        read_view(&lossless->reader, *stream, 0, static_cast<uint32_t>(magic.size()));
    if (text_of(start) == magic) {
        return true;
    }
    FileWindow window;
    const auto reach =
        static_cast<uint32_t>(std::min<int64_t>(size_of(*stream), lossless_search_limit));
    window_open(&window, lossless->reader.block.file, stream->start, reach);
    window_load_all(&window);
    const size_t found = text_of(window_bytes(&window)).find(magic);
    window_close(&window);
    if (found == std::string_view::npos) {
        return false;
    }
    stream->start += static_cast<int64_t>(found);
    return true;
}

void set_samples(LosslessFile* lossless, uint64_t samples) {
    ZatStream* facts = &lossless->facts;
    facts->samples = samples;
    facts->duration = facts->sample_rate == 0
                          ? 0
                          : static_cast<double>(samples) / static_cast<double>(facts->sample_rate);
}

void set_sample_rate(LosslessFile* lossless, uint64_t rate) {
    const uint32_t limit = lossless->is_dsd ? dsd_rate_limit : lossless_rate_limit;
    lossless->facts.sample_rate = rate < limit ? static_cast<uint32_t>(rate) : 0;
    lossless->damaged = lossless->damaged || lossless->facts.sample_rate == 0;
}

void set_channels(LosslessFile* lossless, uint64_t channels) {
    lossless->facts.channels =
        channels <= most_lossless_channels ? static_cast<uint32_t>(channels) : 0;
    lossless->damaged = lossless->damaged || lossless->facts.channels == 0;
}

void set_channel_mask(LosslessFile* lossless, uint32_t mask) {
    lossless->channel_mask = mask;
    details_layout(mask, lossless->facts.channels, lossless->facts.layout);
}

void add_name_word(LosslessFile* lossless, std::string_view word) {
    AppendWithSeparator(lossless->name, word, separator_space);
}

void dsd_name(uint32_t rate, char (&out)[16]) {
    for (const uint32_t base : {44100U, 48000U}) {
        const uint32_t multiple = rate / base;
        if (rate % base == 0 && multiple >= 32 && multiple <= 1024) {
            format_text(out, sizeof out, "DSD%u", multiple);
            return;
        }
    }
    copy_text(out, "DSD");
}

} // namespace zat
