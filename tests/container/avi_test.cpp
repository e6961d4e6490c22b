#include "support/details_text.h"
#include "support/record_text.h"
#include "support/riff_builder.h"
#include "support/temp_file.h"

#include "zat/zat.h"

#include <gtest/gtest.h>

namespace zat::test {
namespace {

using Data = std::vector<uint8_t>;

struct Video {
    std::string_view code = "MJPG";
    uint64_t scale = 1, rate = 25, length = 50;
    uint64_t width = 320, height = 240, bits = 24;
    Data codec_data{};
};

Data stream_header(
    std::string_view type, uint64_t scale, uint64_t rate, uint64_t length, uint64_t sample_size, uint64_t language = 0) {
    ByteBuilder header;
    header.text(type).fill(4).le32(0).le16(0).le16(language).le32(0).le32(scale).le32(rate).le32(0).le32(length);
    return riff_chunk("strh", header.le32(0).le32(0).le32(sample_size).fill(8).bytes);
}

Data stream_list(const Data& header, const Data& format, const Data& more = {}) {
    return riff_list("LIST", "strl", {header, riff_chunk("strf", format), more});
}

Data video(const Video& v, const Data& more = {}) {
    ByteBuilder format;
    format.le32(40).le32(v.width).le32(v.height).le16(1).le16(v.bits).text(v.code).le32(0).fill(16).append(v.codec_data);
    return stream_list(stream_header("vids", v.scale, v.rate, v.length, 0), format.bytes, more);
}

// 48 kHz, two channels; `rate` in bytes per second.
Data audio(uint64_t tag, uint64_t rate, uint64_t bits, const Data& header, const Data& extension = {}) {
    ByteBuilder format;
    format.le16(tag).le16(2).le32(48000).le32(rate).le16(4).le16(bits).le16(extension.size()).append(extension);
    return stream_list(header, format.bytes);
}

Data pcm() {
    return audio(1, 192000, 16, stream_header("auds", 1, 48000, 96000, 4));
}

Data main_header(uint64_t frame_time = 40000, uint64_t frames = 0) {
    return riff_chunk("avih", ByteBuilder().le32(frame_time).le32(0).le32(0).le32(0).le32(frames).fill(36).bytes);
}

Data headers(std::initializer_list<Data> streams, const Data& avih = main_header()) {
    ByteBuilder content;
    content.append(avih);
    for (const Data& stream : streams) {
        content.append(stream);
    }
    return riff_list("LIST", "hdrl", {content.bytes});
}

Data movi(std::initializer_list<Data> chunks, int64_t size = true_size) {
    return riff_list("LIST", "movi", chunks, size);
}

struct IndexEntry {
    std::string_view id;
    uint64_t offset, size;
};

Data idx1(std::initializer_list<IndexEntry> entries) {
    ByteBuilder index;
    for (const IndexEntry& entry : entries) {
        index.text(entry.id).le32(16).le32(entry.offset).le32(entry.size);
    }
    return riff_chunk("idx1", index.bytes);
}

Data avi(std::initializer_list<Data> chunks, int64_t size = true_size) {
    return riff_list("RIFF", "AVI ", chunks, size);
}

Data joined(std::initializer_list<Data> parts) {
    ByteBuilder all;
    for (const Data& part : parts) {
        all.append(part);
    }
    return all.bytes;
}

Data jpeg(uint64_t polarity) {
    ByteBuilder image;
    image.raw({0xFF, 0xD8, 0xFF, 0xE0}).be16(16).text("AVI1").u8(polarity).fill(9);
    return image.raw({0xFF, 0xC0}).be16(17).u8(8).be16(120).be16(320).raw({3, 1, 0x21, 0, 2, 0x11, 1, 3, 0x11, 1}).bytes;
}

// MPEG-1 Layer III, 128 kbit/s, 48 kHz, joint stereo.
Data mp3_frame() {
    return ByteBuilder().raw({0xFF, 0xFB, 0x94, 0x64}).fill(380).bytes;
}

Data properties(uint64_t aspect_width, uint64_t aspect_height, uint64_t fields) {
    return riff_chunk("vprp", ByteBuilder().fill(20).le16(aspect_height).le16(aspect_width).fill(8).le32(fields).fill(32).bytes);
}

// A "vids" stream of two pictures a second with an index of its own.
Data opendml_headers(const Data& super_index) {
    const Data extended = riff_list("LIST", "odml", {riff_chunk("dmlh", ByteBuilder().le32(4).bytes)});
    return headers({video({.rate = 2, .length = 2}, super_index), extended});
}

Data super_index(uint64_t offset, uint64_t size, uint64_t entries = 1) {
    ByteBuilder index;
    index.le16(4).u8(0).u8(0).le32(entries).text("00dc").fill(12).le64(offset).le32(size).le32(4);
    return riff_chunk("indx", index.bytes);
}

Data chunk_index(std::initializer_list<uint64_t> sizes) {
    ByteBuilder index;
    index.le16(2).u8(0).u8(1).le32(sizes.size()).text("00dc").le64(0).le32(0);
    for (const uint64_t size : sizes) {
        index.le32(0).le32(size);
    }
    return riff_chunk("ix00", index.bytes);
}

struct Row {
    const char* name;
    Data bytes;
    std::string lines;
    std::string details;
};

void expect_rows(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto record = info_of(row.bytes);
        EXPECT_EQ(std::string(record->label) + "\n" + record_text(*record), row.lines);
        EXPECT_EQ(details_text(*details_of(row.bytes)), row.details);
        expect_sound(*record);
    }
}

Data two_streams() {
    return avi(
        {headers({video({}), pcm()}), movi({riff_chunk("00dc", jpeg(0)), riff_chunk("01wb", Data(16)), riff_chunk("00dc", {})}),
            idx1({{"00dc", 4, 45}, {"01wb", 58, 16}, {"00dc", 82, 0}})});
}

TEST(Avi, describes_what_the_headers_and_the_index_tell) {
    expect_rows({
        {"", two_streams(), "", ""},
    });
}

TEST(Avi, survives_every_length) {
    expect_sound_at_every_length(two_streams());
}

} // namespace
} // namespace zat::test
