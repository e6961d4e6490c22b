#include "corpus.h"

#include "common/bytes/bytes.h"
#include "common/bytes/crc.h"
#include "support/byte_builder.h"
#include "support/ebml_builder.h"
#include "support/ogg_builder.h"
#include "support/program_builder.h"
#include "support/riff_builder.h"
#include "support/ts_builder.h"
#include "support/video_builder.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <set>

namespace {

using zat::test::ByteBuilder;
using zat::test::comment_block;
using zat::test::OggBuilder;
using zat::test::ProgramBuilder;
using zat::test::riff_chunk;
using zat::test::riff_list;
using Bytes = std::vector<uint8_t>;

// A file of `size` bytes ends with the tail; between it and the first bytes is a hole.
void write_file(
    const std::string& path, const Bytes& bytes, uint64_t size = 0, const Bytes& tail = {}) {
    const auto write = [](std::ofstream& file, const Bytes& part) {
        file.write(
            reinterpret_cast<const char*>(part.data()), static_cast<std::streamsize>(part.size()));
    };
    std::ofstream file(path, std::ios::binary);
    write(file, bytes);
    if (size > bytes.size()) {
        file.flush();
        std::filesystem::resize_file(path, size);
        file.seekp(static_cast<std::streamoff>(size - tail.size()));
        write(file, tail);
    }
}

// An hour of 128 kbit/s MPEG-1 Layer III behind an ID3v2 tag of 200 KiB.
Bytes hour_of_mp3() {
    ByteBuilder file;
    file.text("ID3").raw({3, 0, 0, 0, 12, 64, 0}).fill(204800, 'x');
    ByteBuilder frame;
    frame.raw({0xFF, 0xFB, 0x90, 0x64}).fill(413, 0x55);
    for (int i = 0; i < 137813; ++i) {
        file.append(frame.bytes);
    }
    return file.text("TAG").fill(125).bytes;
}

Bytes pcm_wav_head(uint32_t data_size) {
    return ByteBuilder()
        .text("RIFF")
        .le32(data_size + 36)
        .text("WAVEfmt ")
        .le32(16)
        .le16(1)
        .le16(2)
        .le32(44100)
        .le32(176400)
        .le16(4)
        .le16(16)
        .text("data")
        .le32(data_size)
        .fill(65536, 1)
        .bytes;
}

ByteBuilder box(const char* type, const Bytes& payload) {
    return ByteBuilder().be32(payload.size() + 8).text(type).append(payload);
}

// The movie box of a two-hour film: one video and one audio track with their sample tables.
Bytes long_movie() {
    const auto table = [](const char* type, uint32_t count, bool constant) {
        ByteBuilder payload;
        payload.be32(0);
        if (!constant) {
            payload.be32(0);
        }
        payload.be32(count);
        for (uint32_t i = 0; i < count; ++i) {
            payload.be32(1000 + i % 977);
        }
        return box(type, payload.bytes).bytes;
    };
    const auto track = [&](uint32_t id, const char* handler, const Bytes& entry, uint32_t samples) {
        const Bytes tkhd =
            box("tkhd", ByteBuilder().be32(0).be32(0).be32(0).be32(id).fill(68).bytes).bytes;
        const Bytes mdhd =
            box("mdhd", ByteBuilder().fill(12).be32(1000).be32(7200000).be32(0).bytes).bytes;
        const Bytes hdlr =
            box("hdlr", ByteBuilder().be32(0).be32(0).text(handler).fill(13).bytes).bytes;
        const Bytes stsd = box("stsd", ByteBuilder().be32(0).be32(1).append(entry).bytes).bytes;
        const Bytes stbl = box("stbl", ByteBuilder()
                                           .append(stsd)
                                           .append(table("stsz", samples, false))
                                           .append(table("stco", samples / 8, true))
                                           .bytes)
                               .bytes;
        const Bytes minf = box("minf", stbl).bytes;
        const Bytes mdia =
            box("mdia", ByteBuilder().append(mdhd).append(hdlr).append(minf).bytes).bytes;
        return box("trak", ByteBuilder().append(tkhd).append(mdia).bytes).bytes;
    };
    const Bytes video = box("hvc1", ByteBuilder()
                                        .fill(6)
                                        .be16(1)
                                        .fill(16)
                                        .be16(1920)
                                        .be16(1080)
                                        .fill(14)
                                        .fill(32)
                                        .be16(24)
                                        .be16(0xFFFF)
                                        .bytes)
                            .bytes;
    const Bytes audio = box("Opus",
        ByteBuilder().fill(6).be16(1).fill(8).be16(2).be16(16).fill(4).be16(48000).be16(0).bytes)
                            .bytes;
    const Bytes mvhd =
        box("mvhd", ByteBuilder().fill(12).be32(1000).be32(7200000).fill(80).bytes).bytes;
    const Bytes moov = box("moov", ByteBuilder()
                                       .append(mvhd)
                                       .append(track(1, "vide", video, 180000))
                                       .append(track(2, "soun", audio, 150000))
                                       .bytes)
                           .bytes;
    return ByteBuilder()
        .append(box("ftyp", ByteBuilder().text("isom").be32(512).bytes).bytes)
        .append(moov)
        .be32(1)
        .text("mdat")
        .be64(2000000016)
        .bytes;
}

// Pages of 4 KiB, each with a second of Opus.
Bytes hour_of_opus() {
    const Bytes head =
        ByteBuilder().text("OpusHead").u8(1).u8(2).le16(312).le32(48000).le16(0).u8(0).bytes;
    const Bytes tags = ByteBuilder().text("OpusTags").append(comment_block("libopus", {})).bytes;
    const Bytes packet = ByteBuilder().u8(0x78).pad_to(80).bytes;
    ByteBuilder body;
    for (int i = 0; i < 50; ++i) {
        body.append(packet);
    }
    OggBuilder file;
    file.page(2, 0, {head}).page(0, 0, {tags});
    for (int64_t second = 1; second <= 3600; ++second) {
        file.raw_page(0, 48000 * second + 312, Bytes(50, 80), body.bytes);
    }
    return file.bytes;
}

// A pack with its packet: MPEG-2 video, every twelfth one AC-3, at a constant rate.
Bytes dvd_pack(int64_t index) {
    using namespace zat::test;
    constexpr size_t size = 2048;
    constexpr int64_t packs_per_second = 390;
    const int64_t now = index * 90000 / packs_per_second;
    ProgramBuilder pack;
    pack.pack(now);
    if (index % 12 == 5) {
        const Bytes frames = ac3_frames(7);
        pack.packet(0xBD, ByteBuilder().raw({0x80, 7, 0, 1}).append(frames).bytes, now + 18000);
    } else {
        ByteBuilder video;
        if (index % 200 == 0) {
            video.append(sequence_header({})).append(sequence_extension({})).append(picture(1));
        }
        pack.packet(0xE0, video.pad_to(2000, 0x55).bytes, now + 18000);
    }
    return pack.pad_to(size).bytes;
}

// A program stream of true packs, or, with `sectors`, one in the sectors of a VideoCD.
void write_packs(const std::string& path, int64_t packs, bool sectors) {
    std::ofstream file(path, std::ios::binary);
    const auto put = [&file](const Bytes& bytes) {
        file.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
    };
    if (sectors) {
        put(ByteBuilder()
                .text("RIFF")
                .le32(0)
                .text("CDXAfmt ")
                .le32(16)
                .fill(16)
                .text("data")
                .le32(0)
                .bytes);
    }
    for (int64_t i = 0; i < packs; ++i) {
        const Bytes pack = dvd_pack(i);
        if (!sectors) {
            put(pack);
            continue;
        }
        ByteBuilder sector;
        sector.u8(0).fill(10, 0xFF).raw({0, 0, 2, 0, 2, 1, 1, 0x62, 0, 1, 1, 0x62, 0});
        put(sector.append(pack).pad_to(2352).bytes);
    }
}

// Two hours of video with variable sound: 180,000 and 250,000 chunks, whose index is the file's
// tail.
struct Avi {
    Bytes head;
    Bytes index;
};

Avi long_avi(uint64_t size) {
    const auto stream = [](const char* type, uint64_t scale, uint64_t rate, uint64_t length,
                            const Bytes& format) {
        const Bytes header = ByteBuilder()
                                 .text(type)
                                 .fill(16)
                                 .le32(scale)
                                 .le32(rate)
                                 .le32(0)
                                 .le32(length)
                                 .fill(20)
                                 .bytes;
        return riff_list("LIST", "strl", {riff_chunk("strh", header), riff_chunk("strf", format)});
    };
    const Bytes video =
        ByteBuilder().le32(40).le32(640).le32(480).le16(1).le16(24).text("XVID").fill(20).bytes;
    const Bytes audio =
        ByteBuilder().le16(0x55).le16(2).le32(44100).le32(16000).le16(1152).le16(0).le16(0).bytes;
    constexpr uint32_t pictures = 180000;
    constexpr uint32_t frames = 250000;
    ByteBuilder index;
    for (uint32_t i = 0; i < pictures + frames; ++i) {
        const bool is_video = i % 43 < 18;
        index.text(is_video ? "00dc" : "01wb").le32(16).le32(4).le32(is_video ? 2000 : 417);
    }
    Avi avi;
    avi.index = riff_chunk("idx1", index.bytes);
    const Bytes headers = riff_list("LIST", "hdrl",
        {riff_chunk("avih", Bytes(56)), stream("vids", 1, 25, pictures, video),
            stream("auds", 1152, 44100, frames, audio)});
    const auto movi_size = static_cast<int64_t>(size - 12 - headers.size() - 8 - avi.index.size());
    const Bytes picture = ByteBuilder()
                              .raw({0, 0, 1, 0xB0, 0xF5, 0, 0, 1, 0xB2})
                              .text("XviD0046")
                              .raw({0, 0, 1, 0xB6})
                              .bytes;
    avi.head = ByteBuilder()
                   .text("RIFF")
                   .le32(size - 8)
                   .text("AVI ")
                   .append(headers)
                   .append(riff_list("LIST", "movi", {riff_chunk("00dc", picture)}, movi_size))
                   .bytes;
    return avi;
}

// The header of an audio file with a picture in its tags, and packets that nobody reads.
Bytes long_wma() {
    const auto object = [](uint64_t first, uint64_t second, uint64_t third, const Bytes& data) {
        return ByteBuilder()
            .le32(first)
            .le32(second)
            .be64(third)
            .le64(data.size() + 24)
            .append(data)
            .bytes;
    };
    const Bytes properties = object(0x8CABDCA1, 0x11CFA947, 0x8EE400C00C205365,
        ByteBuilder()
            .fill(40)
            .le64(36000000000)
            .le64(0)
            .le64(0)
            .le32(2)
            .le32(3000)
            .le32(3000)
            .le32(128000)
            .bytes);
    const Bytes stream = object(0xB7DC0791, 0x11CFA9B7, 0x8EE600C00C205365,
        ByteBuilder()
            .le32(0xF8699E40)
            .le32(0x11CF5B4D)
            .fill(32)
            .le32(18)
            .le32(0)
            .le16(1)
            .le32(0)
            .le16(0x161)
            .le16(2)
            .le32(44100)
            .le32(16000)
            .le16(2230)
            .le16(16)
            .le16(0)
            .bytes);
    const Bytes picture = object(0xD2D0A440, 0x11D2E307, 0x97F000A0C95EA850,
        ByteBuilder().le16(1).le16(4).raw({'a', 0, 0, 0}).le16(1).le16(60000).fill(60000).bytes);
    const Bytes children = ByteBuilder().append(properties).append(picture).append(stream).bytes;
    return object(0x75B22630, 0x11CF668E, 0xA6D900AA0062CE6C,
        ByteBuilder().le32(3).raw({1, 2}).append(children).bytes);
}

Bytes random_bytes(size_t count) {
    std::mt19937_64 random(1);
    Bytes bytes(count);
    for (uint8_t& byte : bytes) {
        byte = static_cast<uint8_t>(random());
    }
    bytes[0] = 0x42; // matches no signature
    return bytes;
}

Bytes seed_bytes(const char* seed) {
    std::ifstream file(std::string(ZAT_SOURCE_DIR "fuzz/seeds/") + seed, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A seed with four mebibytes of noise behind it, as long sound looks from either end.
Bytes stretched(const char* seed) {
    return ByteBuilder().append(seed_bytes(seed)).append(random_bytes(4 << 20)).bytes;
}

// A thousand frames of two kilobytes each.
Bytes long_gif() {
    ByteBuilder file;
    file.text("GIF89a").le16(320).le16(200).raw({0, 0, 0});
    for (int frame = 0; frame < 1000; ++frame) {
        file.raw({0x21, 0xF9, 4, 0, 10, 0, 0, 0, 0x2C})
            .le16(0)
            .le16(0)
            .le16(320)
            .le16(200)
            .raw({0, 8});
        for (int block = 0; block < 8; ++block) {
            file.u8(255).fill(255, 0x55);
        }
        file.u8(0);
    }
    return file.u8(0x3B).bytes;
}

// A hundred thousand notes in one track.
Bytes long_midi() {
    constexpr uint64_t notes = 100'000;
    ByteBuilder file;
    file.text("MThd").be32(6).be16(0).be16(1).be16(480).text("MTrk").be32(notes * 4 + 4);
    for (uint64_t note = 0; note < notes; ++note) {
        file.raw({0x60, 0x90, 60, 64});
    }
    return file.raw({0, 0xFF, 0x2F, 0}).bytes;
}

// Four mebibytes of application data in front of the frame header.
Bytes long_jpeg() {
    const Bytes seed = seed_bytes("baseline.jpg");
    ByteBuilder file;
    file.raw({0xFF, 0xD8});
    for (int segment = 0; segment < 64; ++segment) {
        file.raw({0xFF, 0xE1}).be16(0xFFFF).fill(0xFFFD, 0x55);
    }
    return file.append({seed.begin() + 2, seed.end()}).bytes;
}

// The seek table has an entry for each frame, and its checksum is held against it.
Bytes hour_of_tta() {
    const auto with_crc = [](ByteBuilder bytes) {
        const uint32_t crc = zat::crc32(bytes.bytes);
        return bytes.le32(crc).bytes;
    };
    ByteBuilder header;
    header.text("TTA1").le16(1).le16(2).le16(16).le32(44100).le32(44100ULL * 3600);
    ByteBuilder table;
    for (int i = 0; i < 3446; ++i) {
        table.le32(100000);
    }
    return ByteBuilder().append(with_crc(header)).append(with_crc(table)).bytes;
}

// The start of a two-hour film: clusters of two seconds, 4.5 MB of them, then one that fills the
// rest. With statistics the tracks tell all that lines show.
Bytes long_matroska(bool with_statistics, uint64_t size) {
    using namespace zat::test;
    const auto block = [](uint64_t track, uint64_t time, size_t payload) {
        return element(
            0xA3, ByteBuilder().u8(0x80 | track).be16(time).u8(0x80).fill(payload).bytes);
    };
    const auto track = [](uint64_t track_number, uint64_t type, const char* codec,
                           const Bytes& settings) {
        return element(0xAE, {number(0xD7, track_number), number(0x73C5, track_number),
                                 number(0x83, type), words(0x86, codec), settings});
    };
    const auto statistics = [](uint64_t uid) {
        return element(0x7373,
            {element(0x63C0, {number(0x63C5, uid)}),
                element(0x67C8, {words(0x45A3, "BPS"), words(0x4487, "900000")}),
                element(0x67C8, {words(0x45A3, "NUMBER_OF_FRAMES"), words(0x4487, "172627")})});
    };
    ByteBuilder clusters;
    for (uint64_t start = 0; clusters.bytes.size() < 4'500'000; start += 2000) {
        ByteBuilder blocks;
        for (uint64_t i = 0; i < 48; ++i) {
            blocks.append(block(1, i * 125 / 3, 5000)).append(block(2, i * 125 / 3, 250));
            blocks.append(block(2, i * 125 / 3 + 20, 250));
        }
        clusters.append(element(0x1F43B675, {number(0xE7, start), blocks.bytes}));
    }
    const Bytes front =
        join_elements({element(0x1549A966, {real(0x4489, 7'200'000), words(0x5741, "bench")}),
            element(0x1654AE6B,
                {track(1, 1, "V_MPEG4/ISO/AVC",
                     join_elements({number(0x23E383, 41'708'333),
                         element(0xE0, {number(0xB0, 1920), number(0xBA, 1080)})})),
                    track(2, 2, "A_OPUS", element(0xE1, {real(0xB5, 48000), number(0x9F, 2)}))}),
            with_statistics ? element(0x1254C367, {statistics(1), statistics(2)}) : Bytes{},
            clusters.bytes});
    const Bytes head = element(0x1A45DFA3, {words(0x4282, "matroska")});
    const uint64_t rest = size - head.size() - 12 - front.size() - 12;
    return join_elements({head, sized_element(0x18538067, front.size() + 12 + rest, front),
        sized_element(0x1F43B675, rest, number(0xE7, 100'000))});
}

// The seed's fragment again and again: two hours in pieces of ten seconds with 1.5 MB of media
// each.
void write_fragments(const std::string& path) {
    const Bytes seed = seed_bytes("fragmented.mp4");
    const auto type_at = [&seed](size_t at) {
        return std::string(seed.begin() + static_cast<std::ptrdiff_t>(at) + 4,
            seed.begin() + static_cast<std::ptrdiff_t>(at) + 8);
    };
    size_t start = 0;
    while (type_at(start) != "moof") {
        start += zat::ReadBE32(&seed[start]);
    }
    const size_t end = start + zat::ReadBE32(&seed[start]);
    const auto place = [&seed](
                           size_t at) { return seed.begin() + static_cast<std::ptrdiff_t>(at); };
    constexpr uint32_t media_size = 1'500'000;
    const Bytes fragment =
        ByteBuilder().append({place(start), place(end)}).be32(media_size + 8).text("mdat").bytes;
    constexpr int fragments = 720;
    write_file(path, {place(0), place(start)}, start + fragments * (fragment.size() + media_size));
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    for (size_t i = 0; i < fragments; ++i) {
        file.seekp(static_cast<std::streamoff>(start + i * (fragment.size() + media_size)));
        file.write(reinterpret_cast<const char*>(fragment.data()),
            static_cast<std::streamsize>(fragment.size()));
    }
}

// Ten minutes of pictures and sound; the tags in the first mebibyte are looked at.
Bytes long_flv() {
    ByteBuilder file;
    file.text("FLV").raw({1, 5, 0, 0, 0, 9, 0, 0, 0, 0});
    const auto tag = [&file](uint8_t type, uint64_t time, uint8_t head, size_t size) {
        file.u8(type).be24(size).be24(time).u8(0).be24(0).u8(head).fill(size - 1, 0x55);
        file.be32(size + 11);
    };
    for (uint64_t time = 0; file.bytes.size() < (2 << 20); time += 40) {
        tag(9, time, time % 2000 == 0 ? 0x14 : 0x24, 5000);
        tag(8, time, 0x2F, 417);
    }
    return file.bytes;
}

// Twenty seconds of MPEG-2 video at 16 Mbit/s with MPEG audio. What is read of a transport stream
// does not grow with it from here on.
Bytes broadcast() {
    using namespace zat::test;
    const Bytes picture_start = ByteBuilder()
                                    .append(sequence_header({}))
                                    .append(sequence_extension({}))
                                    .append(picture(1))
                                    .pad_to(80000, 0x55)
                                    .bytes;
    const Bytes sound = ByteBuilder().raw({0xFF, 0xFD, 0xA4, 0x04}).pad_to(576, 0x22).bytes;
    TsBuilder to;
    for (int i = 0; i < 500; ++i) {
        const int64_t pts = 90000 + i * 3600;
        if (i % 10 == 0) {
            to.table(0, pat({{1, 0x1000}})).table(0x1000, pmt(1, 0x100, {{2, 0x100}, {3, 0x101}}));
        }
        to.packet(0x100, {}, false, 0, pts * 300).pes(0x100, 0xE0, pts, picture_start);
        to.pes(0x101, 0xC0, pts, sound);
    }
    return to.file.bytes;
}

} // namespace

std::vector<BenchFile> make_corpus(const std::string& directory) {
    std::vector<BenchFile> files;
    const auto add = [&](const std::string& name, const Bytes& bytes, uint64_t size = 0,
                         const Bytes& tail = {}) {
        write_file(directory + name, bytes, size, tail);
        files.push_back({name, directory + name});
    };
    add("mp3-60min", hour_of_mp3());
    add("wav-3gb-sparse", pcm_wav_head(3000000000U), 3000000000U);
    add("ogg-60min", hour_of_opus());
    add("mkv-2h", long_matroska(false, 1'000'000'000), 1'000'000'000);
    add("mkv-2h-statistics", long_matroska(true, 1'000'000'000), 1'000'000'000);
    add("mp4-2h", long_movie(), 2000000000U);
    constexpr uint64_t avi_size = 500000000;
    const Avi avi = long_avi(avi_size);
    add("avi-2h", avi.head, avi_size, avi.index);
    add("wma-1h", long_wma(), 57600000);
    add("header-typed-5gb", seed_bytes("tone.flac"), 5000000000U);
    const auto add_packs = [&](const std::string& name, int64_t packs, bool sectors) {
        write_packs(directory + name, packs, sectors);
        files.push_back({name, directory + name});
    };
    add_packs("vob-500mb", 244'000, false);
    add_packs("vob-1.4mb", 700, false);
    add_packs("videocd-700mb", 297'600, true);
    write_fragments(directory + "mp4-2h-fragments");
    files.push_back({"mp4-2h-fragments", directory + "mp4-2h-fragments"});
    add("flv-10min", long_flv());
    add("random-1mib", random_bytes(1 << 20));
    add("random-5mib", random_bytes(5 << 20));
    add("ts-20s", broadcast());
    add("tta-60min", hour_of_tta(), 344600000U);
    add("gif-1000-frames", long_gif());
    add("midi-100000-notes", long_midi());
    add("jpeg-4mib-of-application-data", long_jpeg());
    for (const char* seed : {"adts.aac", "surround.eac3", "surround.thd", "latm.loas", "avc.h264",
             "hevc.h265", "mpeg2.m2v", "tone.aiff", "mulaw.au", "tone.flac", "tone.wv", "dsd.wv",
             "monkey.ape", "monkey-old.ape", "tone.tta", "sv7.mpc", "sv8.mpc", "preset.tak",
             "optimfrog.ofr", "tag.dsf", "plain.dff", "packed.dff", "text.wsd", "palette.bmp",
             "rf64.wav", "tone.w64"}) {
        add(std::string("long-") + seed, stretched(seed));
    }
    std::set<std::filesystem::path> seeds;
    for (const auto& seed : std::filesystem::directory_iterator(ZAT_SOURCE_DIR "fuzz/seeds")) {
        seeds.insert(seed.path());
    }
    for (const std::filesystem::path& seed : seeds) {
        files.push_back({seed.filename().string(), seed.string()});
    }
    return files;
}
