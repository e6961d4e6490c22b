#include "support/details_text.h"
#include "support/record_text.h"
#include "support/riff_builder.h"
#include "support/temp_file.h"

#include <gtest/gtest.h>

namespace zat::test::avi_test {
namespace {

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
    return avi({headers({video({.width = 0, .height = 0}, properties(16, 9, 1)), pcm()}),
        movi({riff_chunk("00dc", jpeg(2)), riff_chunk("01wb", Data(16)), riff_chunk("00dc", {})}),
        idx1({{"00dc", 4, 45}, {"01wb", 58, 16}, {"00dc", 82, 0}})});
}

// A picture of one start code after the other, with the encoder's name.
Data mpeg4_picture(std::string_view encoder) {
    return ByteBuilder().raw({0, 0, 1, 0xB2}).text(encoder).raw({0, 0, 1, 0xB6, 0x10}).bytes;
}

// Sound of frames, one to a chunk; its rate is what the index says.
Data mp3_track() {
    return audio(0x55, 16000, 0, stream_header("auds", 1152, 48000, 3, 0));
}

Data mp3_file(uint64_t frame_size) {
    return avi({headers({mp3_track()}), movi({riff_chunk("00wb", mp3_frame())}),
        idx1({{"00wb", 4, frame_size}, {"00pc", 4, 9}, {"00wb", 4, 0}, {"10wb", 4, 9}, {"00wb", 4, frame_size}})});
}

// Two parts; the second one has its media data only. The index of the stream lies between them.
Data opendml() {
    const Data index = chunk_index({1000, 500, 0x80000000 + 250, 250});
    const Data first_media = movi({riff_chunk("00dc", Data(4, 1))});
    const auto place = [&](uint64_t offset) {
        return avi({opendml_headers(super_index(offset, index.size())), first_media, index});
    };
    const uint64_t at = place(0).size() - index.size();
    return join({place(at), riff_list("RIFF", "AVIX", {movi({riff_chunk("00dc", Data(4, 2))})})});
}

// Nothing of what a recorder fills in at its end.
Data open_recording() {
    const Data media = movi({riff_chunk("00dc", Data(9, 1)), riff_chunk("01wb", Data(19200)), riff_chunk("00dc", Data(9, 1))}, 0);
    const Data sound = audio(1, 192000, 16, stream_header("auds", 1, 48000, 0, 4));
    return avi({headers({video({.length = 0}), sound}), media}, 0);
}

// More pictures than are counted of such a file; `time` of one in microseconds.
Data long_open_recording(uint64_t time) {
    ByteBuilder pictures;
    for (int i = 0; i < 2000; ++i) {
        pictures.append(riff_chunk("00dc", Data(8)));
    }
    return avi({headers({video({.scale = 0, .rate = 0, .length = 0})}, main_header(time)), movi({pictures.bytes}, 0)}, 0);
}

// The same of sound whose chunks have a size of their own.
Data long_open_sound() {
    ByteBuilder sound;
    for (int i = 0; i < 2000; ++i) {
        sound.append(riff_chunk("00wb", Data(80)));
    }
    return avi({headers({audio(0x566F, 6000, 0, stream_header("auds", 1, 25, 0, 0))}), movi({sound.bytes}, 0)}, 0);
}

Data gab2(std::string_view text) {
    ByteBuilder data;
    data.text("GAB2").u8(0).le16(2).le32(6).raw({'E', 0, 'n', 0, 0, 0}).le16(4).le32(text.size()).text(text);
    return data.bytes;
}

Data with_texts() {
    const Data named = riff_chunk("strn", ByteBuilder().text("Main").u8(0).bytes);
    const Data subtitles = stream_list(stream_header("txts", 1, 1, 0, 0, 0x0411), {});
    const Data info = riff_list("LIST", "INFO",
        {riff_chunk("INAM", ByteBuilder().text("Title").u8(0).bytes), riff_chunk("IART", ByteBuilder().text("Artist").bytes),
            riff_chunk("ISFT", ByteBuilder().text("Writer").bytes)});
    return avi({headers({video({}, named), subtitles, subtitles, video({.code = "DXSB", .scale = 0, .length = 0}),
                    stream_list(stream_header("mids", 1, 1, 0, 0), {})}),
        info, movi({riff_chunk("01tx", gab2("1\r\n")), riff_chunk("02tx", gab2("[Script Info]"))}),
        idx1({{"01tx", 4, 26}, {"02tx", 38, 36}})});
}

// The first blocks of a frame of 625 lines: 16:9, interlaced, 32 kHz with four channels of 12 bits.
Data dv_frame() {
    ByteBuilder frame;
    frame.raw({0x1F, 7, 0, 0xBF, 0xF8}).fill(4400 - 5, 0xFF);
    frame.put(243, std::string_view("\x60\xFF\xFF\xE0\xFF", 5)).put(248, std::string_view("\x61\x3F\xCA\xFC\xFF", 5));
    return frame.put(54 * 80 + 3, std::string_view("\x50\xD8\x00\xE0\x91", 5)).bytes;
}

// Of its 50 frames the stream's header counts those of the first part.
Data dv_type_1() {
    const Data extended = riff_list("LIST", "odml", {riff_chunk("dmlh", ByteBuilder().le32(50).bytes)});
    return avi({headers({stream_list(stream_header("iavs", 1, 25, 25, 0), Data(32)), extended}),
        movi({riff_chunk("00__", dv_frame())}), idx1({{"00__", 4, 144000}})});
}

// AC-3: 48 kHz, 192 kbit/s, stereo.
Data ac3_frame() {
    return ByteBuilder().raw({0x0B, 0x77, 0, 0, 0x14, 0x40, 0x40}).fill(500).bytes;
}

Data sounds() {
    const Data units = stream_header("auds", 1, 48000, 48000, 4);
    const auto extensible = [](uint64_t tag) {
        return ByteBuilder()
            .le16(20)
            .le32(0x3F)
            .le16(tag)
            .raw({0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71})
            .bytes;
    };
    return avi({headers({audio(1, 192000, 16, units),
                    audio(0xFFFE, 16000, 16, units, ByteBuilder().append(extensible(0xFF)).raw({0x11, 0x90}).bytes),
                    audio(0xFFFE, 864000, 24, units, extensible(1)), audio(2, 48000, 4, units)}),
        movi({riff_chunk("00wb", ac3_frame())})});
}

// High profile, level 1.3, 256x144, square samples.
Data avc_picture() {
    return ByteBuilder()
        .raw({0, 0, 0, 1, 0x67, 0x64, 0x00, 0x0D, 0xAC, 0xD9, 0x41, 0x01, 0x3B, 0x01, 0x10, 0x00, 0x00, 0x03, 0x00, 0x10})
        .raw({0x00, 0x00, 0x03, 0x03, 0xC0, 0xF1, 0x42, 0x99, 0x60, 0, 0, 0, 1, 0x68})
        .bytes;
}

// Advanced profile, level 1, 64x48, 10 frames a second, behind a byte that is none of it.
Data vc1_sequence() {
    return bytes_of_hex("24 00 00 01 0F CB 84 07 70 33 8A 07 78 1D FF 9B 9B 80 44 80 19 00");
}

Data pictures() {
    const auto top_down = static_cast<uint64_t>(-240);
    return avi({headers({video({.code = "h264", .width = 256, .height = 144}, properties(4, 3, 2)),
                    video({.code = {"\0\0\0\0", 4}, .height = top_down}),
                    video({.code = "WMV3", .codec_data = {0x4E, 0x39, 0x0A, 0x01}}),
                    video({.code = "XVID", .codec_data = mpeg4_picture("DivX999b000p/XviD0046")}),
                    video({.code = "WVC1", .codec_data = vc1_sequence()})}),
        movi({riff_chunk("00dc", avc_picture())})});
}

// Sound in front of the picture looks like the header of an interlaced one.
Data sound_like_a_header() {
    return avi({headers({audio(1, 192000, 16, stream_header("auds", 1, 48000, 48000, 4)),
                    video({.code = "XVID", .width = 176, .height = 144})}),
        movi({riff_chunk("00wb", bytes_of_hex("00 00 01 20 00 C4 8D 88 00 CD 05 84 12 1C 63 00")),
            riff_chunk("01dc", bytes_of_hex("00 00 01 20 00 C4 8D 88 00 CD 05 84 12 14 63 00"))})});
}

TEST(Avi, describes_streams) {
    expect_rows({
        {"chunks told in the place of samples",
            avi({headers({audio(1, 192000, 16, stream_header("auds", 1, 48000, 2, 4))}), movi({riff_chunk("00wb", Data(96000))}),
                idx1({{"00wb", 4, 48000}, {"00wb", 4, 48000}})}),
            "[AVI]\n"
            "A [C\x96\xB3"
            "0001] 48000Hz 2ch 16Bit 1536.000kbps\n"
            "0.500",
            "AVI duration=0.500 bit_rate=1540000\n"
            "audio mode=1 duration=0.500 bit_rate=1536000 bytes=96000 sample_rate=48000 channels=2 bit_depth=16 codec=PCM "
            "codec_id=0x0001 "
            "profile=signed 16 LE"},
        {"the picture's own header, not one in the sound", sound_like_a_header(),
            "[AVI]\n"
            "V 176x144 [C\x96\xB3XVID 1:1] 25.000fps 50f Progressive\n"
            "A [C\x96\xB3"
            "0001] 48000Hz 2ch 16Bit 1536.000kbps\n"
            "X no index\n"
            "2.000",
            "AVI notes=no index duration=2.000 bit_rate=1496\n"
            "audio mode=1 duration=1.000 bit_rate=1536000 sample_rate=48000 channels=2 bit_depth=16 codec=PCM codec_id=0x0001 "
            "profile=signed 16 LE\n"
            "video id=1 duration=2.000 frame_rate=25.000 frames=50 size=176:144 pixel=1:1 display=11:9 fps_ratio=25:1 scan=1 "
            "bit_depth=8 codec=MPEG-4 Visual codec_id=XVID chroma=4:2:0"},
        {"fields of MJPEG, display shape, PCM", two_streams(),
            "[AVI]\n"
            "V 320x240 [C\x96\xB3MJPG] 8Bit 25.000fps 4.500kbps 50f interlace display 427x240\n"
            "A [C\x96\xB3"
            "0001] 48000Hz 2ch 16Bit 1536.000kbps\n"
            "2.000",
            "AVI duration=2.000 bit_rate=2152\n"
            "video duration=2.000 bit_rate=4500 bytes=45 frame_rate=25.000 frames=50 size=320:240 pixel=4:3 display=16:9 "
            "fps_ratio=25:1 scan=2 field_order=2 bit_depth=8 codec=MJPEG codec_id=MJPG chroma=4:2:2\n"
            "audio mode=1 id=1 duration=2.000 bit_rate=1536000 bytes=16 sample_rate=48000 channels=2 bit_depth=16 codec=PCM "
            "codec_id=0x0001 profile=signed 16 LE"},
        {"frames of the told rate", mp3_file(384),
            "[AVI]\n"
            "A MPEG1-LayerIII 48000Hz [CBR Joint Stereo /MS] 128.00kbps [384bpf] \n"
            "0.072",
            "AVI duration=0.072 bit_rate=75778\n"
            "audio duration=0.072 bit_rate=128000 bytes=768 sample_rate=48000 channels=2 codec=MP3 codec_id=0x0055 "
            "layout=L R"},
        {"frames of another rate", mp3_file(192),
            "[AVI]\n"
            "A MPEG1-LayerIII 48000Hz [VBR Joint Stereo /MS] 64.00kbps [384bpf] \n"
            "0.072",
            "AVI duration=0.072 bit_rate=75778\n"
            "audio mode=2 duration=0.072 bit_rate=64000 nominal_bit_rate=128000 bytes=384 sample_rate=48000 channels=2 codec=MP3 "
            "codec_id=0x0055 layout=L R"},
        {"OpenDML in two parts", opendml(),
            "[AVI(OpenDML)]\n"
            "V 320x240 [C\x96\xB3MJPG] 2.000fps 8.000kbps 4f\n"
            "X OpenDML(2)\n"
            "2.000",
            "AVI profile=OpenDML duration=2.000 bit_rate=1632\n"
            "video duration=2.000 bit_rate=8000 bytes=2000 frame_rate=2.000 frames=4 size=320:240 fps_ratio=2:1 codec=MJPEG "
            "codec_id=MJPG"},
        {"a recording that was broken off", open_recording(),
            "[AVI]\n"
            "V 320x240 [C\x96\xB3MJPG] 25.000fps 1.800kbps 2f\n"
            "A [C\x96\xB3"
            "0001] 48000Hz 2ch 16Bit 1536.000kbps\n"
            "X no index\n"
            "0.100",
            "AVI notes=no index duration=0.100 bit_rate=1565600\n"
            "video duration=0.080 bit_rate=1800 bytes=18 frame_rate=25.000 frames=2 size=320:240 fps_ratio=25:1 codec=MJPEG "
            "codec_id=MJPG\n"
            "audio mode=1 id=1 duration=0.100 bit_rate=1536000 bytes=19200 sample_rate=48000 channels=2 bit_depth=16 codec=PCM "
            "codec_id=0x0001 profile=signed 16 LE"},
        {"a long one", long_open_recording(40000),
            "[AVI]\n"
            "V 320x240 [C\x96\xB3MJPG] 25.000fps ~1.600kbps ~2000f\n"
            "X no index\n"
            "X time estimated\n"
            "80.000",
            "AVI notes=no index\ntime estimated duration=80.000 bit_rate=3222 estimated=3\n"
            "video estimated=11 duration=80.000 bit_rate=1600 frame_rate=25.000 frames=2000 size=320:240 fps_ratio=25:1 "
            "codec=MJPEG "
            "codec_id=MJPG"},
        {"a long one without any time", long_open_recording(0), "[AVI]\nV 320x240 [C\x96\xB3MJPG] ~2000f\nX no index\n0.000",
            "AVI notes=no index\nvideo estimated=8 frames=2000 size=320:240 codec=MJPEG codec_id=MJPG"},
        {"long sound", long_open_sound(),
            "[AVI]\n"
            "A [C\x96\xB3"
            "566F] 48000Hz 2ch ~16.000kbps\n"
            "X no index\n"
            "X time estimated\n"
            "80.000",
            "AVI notes=no index\ntime estimated duration=80.000 bit_rate=17620 estimated=3\n"
            "audio estimated=3 duration=80.000 bit_rate=16000 nominal_bit_rate=48000 sample_rate=48000 channels=2 codec=Vorbis "
            "codec_id=0x566f"},
        {"subtitles, texts, other streams", with_texts(),
            "[AVI]\n"
            "V 320x240 [C\x96\xB3MJPG] 25.000fps 50f \"Main\"\n"
            "X [SubRip] jpn \"En\"\n"
            "X [ASS] jpn \"En\"\n"
            "X [DivX subtitle]\n"
            "X [MIDI]\n"
            "I Artist - Title / Writer\n"
            "2.000",
            "AVI title=Title artist=Artist writer=Writer duration=2.000 bit_rate=3144\n"
            "video flags=64 duration=2.000 frame_rate=25.000 frames=50 size=320:240 fps_ratio=25:1 codec=MJPEG codec_id=MJPG "
            "title=Main\n"
            "text id=1 bytes=26 codec=SubRip codec_id=GAB2 language=jpn title=En\n"
            "text id=2 bytes=36 codec=ASS codec_id=GAB2 language=jpn title=En\n"
            "text flags=64 id=3 codec=DivX subtitle codec_id=DXSB\n"
            "data flags=64 id=4 codec=MIDI codec_id=mids"},
        {"DV type 1", dv_type_1(),
            "[AVI(OpenDML)]\n"
            "V 720x576 [C\x96\xB3"
            "dvsd] 25.000fps 28800.000kbps 50f\n"
            "A [PCM] 32000Hz 4ch(L+R+BL+BR) 12Bit 1536.000kbps\n"
            "2.000",
            "AVI profile=OpenDML duration=2.000 bit_rate=18688\n"
            "video duration=2.000 bit_rate=28800000 bytes=144000 frame_rate=25.000 frames=50 size=720:576 pixel=64:45 "
            "display=16:9 fps_ratio=25:1 scan=2 bit_depth=8 codec=DV codec_id=dvsd chroma=4:2:0\n"
            "audio duration=2.000 bit_rate=1536000 sample_rate=32000 channels=4 bit_depth=12 codec=PCM profile=signed 12 BE"},
        {"sounds", sounds(),
            "[AVI]\n"
            "A AC3 48000Hz [2Ch(2/0) L+R CM] 192kbps\n"
            "A [AAC LC] 48000Hz stereo(L,R) 128.000kbps\n"
            "A [C\x96\xB3"
            "0001] 48000Hz 2ch 20Bit 6912.000kbps\n"
            "A [C\x96\xB3"
            "0002] 48000Hz 2ch 4Bit 384.000kbps\n"
            "X no index\n"
            "1.000",
            "AVI notes=no index duration=1.000 bit_rate=8560\n"
            "audio mode=1 duration=1.000 bit_rate=192000 nominal_bit_rate=1536000 sample_rate=48000 channels=2 codec=AC-3 "
            "codec_id=0x0001 layout=L R\n"
            "audio id=1 duration=1.000 bit_rate=128000 sample_rate=48000 channels=2 codec=AAC codec_id=0x00ff profile=LC "
            "layout=L R\n"
            "audio mode=1 id=2 duration=1.000 bit_rate=6912000 sample_rate=48000 channels=2 bit_depth=20 codec=PCM "
            "codec_id=0x0001 "
            "profile=signed 24 LE\n"
            "audio id=3 duration=1.000 bit_rate=384000 sample_rate=48000 channels=2 codec=ADPCM codec_id=0x0002 profile=MS"},
        {"pictures", pictures(),
            "[AVI]\n"
            "V 256x144 [AVC/H264 High@1.3 3:4] 8Bit 25.000fps 50f interlace\n"
            "V 320x240 [C\x96\xB3"
            "00000000] 24Bit 25.000fps 50f\n"
            "V 320x240 [C\x96\xB3WMV3] 25.000fps 50f\n"
            "V 320x240 [C\x96\xB3XviD0046(BVOP)] 25.000fps 50f\n"
            "V 320x240 [VC-1 Advanced@1] 25.000fps 50f Progressive\n"
            "X no index\n"
            "2.000",
            "AVI notes=no index duration=2.000 bit_rate=3576\n"
            "video duration=2.000 frame_rate=25.000 frames=50 size=256:144 pixel=3:4 display=4:3 fps_ratio=25:1 scan=2 "
            "bit_depth=8 codec=H.264 codec_id=h264 profile=High level=1.3 chroma=4:2:0\n"
            "video id=1 duration=2.000 frame_rate=25.000 frames=50 size=320:240 fps_ratio=25:1 bit_depth=8 codec=Raw video "
            "codec_id=00000000\n"
            "video id=2 duration=2.000 frame_rate=25.000 frames=50 size=320:240 fps_ratio=25:1 bit_depth=8 codec=WMV3 "
            "codec_id=WMV3 profile=Main chroma=4:2:0\n"
            "video id=3 duration=2.000 frame_rate=25.000 frames=50 size=320:240 fps_ratio=25:1 codec=MPEG-4 Visual codec_id=XVID "
            "encoder=XviD0046\n"
            "video id=4 duration=2.000 frame_rate=25.000 frames=50 size=320:240 pixel=1:1 display=4:3 fps_ratio=25:1 scan=1 "
            "bit_depth=8 codec=VC-1 codec_id=WVC1 profile=Advanced level=1 chroma=4:2:0"},
    });
}

TEST(Avi, survives_every_length) {
    for (const Data& file : {two_streams(), with_texts(), opendml()}) {
        expect_sound_at_every_length(file, 3);
    }
}

} // namespace
} // namespace zat::test::avi_test
