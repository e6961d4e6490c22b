#include "audio/frame_search.h"

#include "support/byte_builder.h"

#include <gtest/gtest.h>

namespace zat::test::frame_search_test {
namespace {

TEST(AudioFrameSearch, prefers_a_frame_that_another_follows) {
    const auto frame = [](std::initializer_list<int> header, size_t size) {
        return ByteBuilder().raw(header).pad_to(size).bytes;
    };
    const struct {
        const char* name;
        FrameKind kind;
        std::vector<uint8_t> header_frame;
        uint32_t samples;
    } rows[] = {
        {"MPEG-1 Layer II", FrameKind::mpeg_audio, frame({0xFF, 0xFD, 0xC0, 0}, 835), 1152}, // 256 kbit/s, 44.1 kHz
        {"MPEG-2 Layer II", FrameKind::mpeg_audio, frame({0xFF, 0xF5, 0x80, 0}, 417), 1152}, // 64 kbit/s, 22.05 kHz
        {"MPEG-1 Layer I", FrameKind::mpeg_audio, frame({0xFF, 0xFF, 0x42, 0}, 140), 384},   // 128 kbit/s, 44.1 kHz, padded
        {"ADTS", FrameKind::adts, frame({0xFF, 0xF1, 0x50, 0x80, 0x0C, 0x9F, 0xFC, 0}, 100), 1024},
        {"AC-3", FrameKind::ac3, frame({0x0B, 0x77, 0, 0, 0x14, 0x40, 0, 0}, 768), 1536},
        {"DTS", FrameKind::dts, frame({0x7F, 0xFE, 0x80, 0x01, 0xFC, 0x3C, 0x3F, 0xF0}, 1024), 512},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const size_t size = row.header_frame.size();
        EXPECT_EQ(audio_frame_size(row.kind, row.header_frame), size);
        EXPECT_EQ(audio_frame_samples(row.kind, row.header_frame), row.samples);
        // A header in the data before the frame is passed over: nothing stands where it ends.
        const ByteBuilder start = ByteBuilder().append({row.header_frame.begin(), row.header_frame.begin() + 20});
        const auto two = ByteBuilder(start).append(row.header_frame).append(row.header_frame).bytes;
        EXPECT_EQ(find_audio_frame(row.kind, two), 20);
        EXPECT_EQ(find_audio_frame(row.kind, Bytes(two).first(40)), 0); // neither is confirmed
        EXPECT_EQ(find_audio_frame(row.kind, Bytes(two).first(7)), -1);
    }
}

} // namespace
} // namespace zat::test::frame_search_test
