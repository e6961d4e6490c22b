#include "audio/lossless/dsf_file.h"

#include "audio/lossless/lossless_file.h"
#include "common/bytes/bytes.h"

#include <algorithm>
#include <bit>

namespace zat {

namespace {

constexpr LosslessKind dsf_kind = {"[DSF]", "DSF", "DSD"};

constexpr int64_t format_at = 28; // behind the DSD chunk
constexpr uint32_t format_size = 52;
constexpr uint32_t data_header_size = 12;
constexpr uint32_t dsf_header_size = format_at + format_size + data_header_size;

// Channel masks by the channel type, from 1 on.
constexpr uint32_t channel_masks[] = {0x4, 0x3, 0x7, 0x33, 0xF, 0x37, 0x3F};

// The tag that the header points to; it stands behind the sound.
void take_tag(LosslessFile* dsf, uint64_t pointer) {
    const Span file = whole_file(&dsf->reader);
    const auto size = static_cast<uint64_t>(size_of(file));
    if (pointer < dsf_header_size || pointer >= size) {
        return;
    }
    const auto start = static_cast<int64_t>(pointer);
    uint8_t header[id3v2_header_size];
    if (read_all(&dsf->reader, file, start, header, sizeof header)) {
        dsf->id3v2 = sub_span(file, start, whole_id3v2_size(header));
        dsf->tags.stream.end = std::min(dsf->tags.stream.end, start);
    }
}

int64_t bytes_of_samples(const ZatStream& facts) {
    return facts.samples > uint64_t{INT64_MAX} / 256
               ? 0
               : static_cast<int64_t>(facts.samples * facts.channels / 8);
}

void describe_dsf(LosslessFile* dsf) {
    dsf->is_dsd = true;
    dsf->constant_rate = true;
    uint8_t header[dsf_header_size];
    dsf->damaged = !find_stream_start(dsf, "DSD ") ||
                   !read_all(&dsf->reader, dsf->tags.stream, 0, header, sizeof header) ||
                   !starts_with(header + format_at, "fmt ");
    if (dsf->damaged) {
        return;
    }
    const uint8_t* format = header + format_at;
    take_tag(dsf, static_cast<uint64_t>(ReadLE64(header + 20)));
    set_channels(dsf, ReadLE32(format + 24));
    set_sample_rate(dsf, ReadLE32(format + 28));
    set_samples(dsf, static_cast<uint64_t>(std::max<int64_t>(ReadLE64(format + 36), 0)));
    dsf->facts.bit_depth = 1;
    const uint32_t type = ReadLE32(format + 20);
    if (type >= 1 && type <= std::size(channel_masks)) {
        set_channel_mask(dsf, channel_masks[type - 1]);
    }
    char name[16];
    dsd_name(dsf->facts.sample_rate, name);
    add_name_word(dsf, name);
    dsf->damaged = dsf->damaged || ReadLE32(format + 16) != 0; // another format than DSD

    // Blocks are filled up with zeros, and some files hold more of them than they count.
    const uint8_t* data = format + format_size;
    const int64_t rest =
        std::max<int64_t>(size_of(dsf->tags.stream) - static_cast<int64_t>(sizeof header), 0);
    dsf->declared_payload = bytes_of_samples(dsf->facts);
    dsf->payload = std::min(rest, dsf->declared_payload);
    dsf->damaged = dsf->damaged || !starts_with(data, "data");
}

} // namespace

int AnalyzeDsfFile(FileRecord* file, const Output& out) {
    LosslessFile dsf;
    open_lossless_file(&dsf, file);
    dsf.facts.flags |= ZAT_FLAG_LOSSLESS;
    describe_dsf(&dsf);
    write_lossless_file(&dsf, dsf_kind, out);
    return 0;
}

} // namespace zat
