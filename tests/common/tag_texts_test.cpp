#include "common/tags/tag_texts.h"

#include "common/tags/outer_tags.h"
#include "support/atom_builder.h"
#include "support/temp_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace zat::test::tag_texts_test {

namespace {

using namespace std::string_view_literals;

Data data_of(std::string_view text) {
    return ByteBuilder().text(text).bytes;
}

// "artist|title|album|track gain|album gain|pictures", the empty ones at the end left out.
std::string shown(const TagTexts& texts) {
    const auto gain = [](double value) { return std::isnan(value) ? std::string() : std::to_string(value).substr(0, 5); };
    std::string out = std::string(texts.artist) + "|" + texts.title + "|" + texts.album + "|" + gain(texts.track_gain) + "|" +
                      gain(texts.album_gain) + "|" + (texts.pictures != 0 ? std::to_string(texts.pictures) : "") +
                      (texts.cuesheet ? " cuesheet" : "");
    while (out.ends_with("|")) {
        out.pop_back();
    }
    return out;
}

std::string read_from(const Data& bytes, const std::function<void(Reader*, TagTexts*)>& read) {
    const TempFile temporary(bytes);
    FileRecord file;
    EXPECT_EQ(FileOpen(&file, temporary.path.c_str()), 0);
    Reader reader;
    reader_open(&reader, &file);
    TagTexts texts;
    read(&reader, &texts);
    FileClose(&file);
    return shown(texts);
}

Data id3v2(int version, int flags, const Data& frames) {
    const size_t size = frames.size();
    ByteBuilder tag;
    tag.text("ID3").raw({version, 0, flags}).u8(size >> 21).u8(size >> 14 & 0x7F).u8(size >> 7 & 0x7F).u8(size & 0x7F);
    return tag.append(frames).bytes;
}

// A frame of version 2.3 or 2.4.
Data frame(std::string_view id, std::string_view body, uint64_t flags = 0) {
    return ByteBuilder().text(id).be32(body.size()).be16(flags).text(body).bytes;
}

Data ape_item(std::string_view key, std::string_view value, uint64_t flags = 0) {
    return ByteBuilder().le32(value.size()).le32(flags).text(key).u8(0).text(value).bytes;
}

Data comments(std::initializer_list<std::string_view> items, uint64_t count) {
    ByteBuilder block;
    block.le32(3).text("lib").le32(count);
    for (const std::string_view item : items) {
        block.le32(item.size()).text(item);
    }
    return block.bytes;
}

} // namespace

TEST(TagTexts, id3v2) {
    const std::string long_text(3000, 'x');
    const Data title = frame("TIT2", "\3T"sv);
    const struct {
        const char* what;
        Data tag;
        std::string expected;
    } rows[] = {
        {"2.2",
            id3v2(
                2, 0, data_of("TP1\0\0\4\0Bj\xF6TT2\0\0\4\0\x93\xFA\0PIC\0\0\1\0TXX\0\0\x1F\0replaygain_track_gain\0-7,25 dB"sv)),
            "Bjö|日||-7.25||1"},
        {"2.2 compressed", id3v2(2, 0x40, data_of("TP1\0\0\2\0A"sv)), ""},
        {"2.3 UTF-16, with and without a mark",
            id3v2(3, 0,
                join({frame("TPE1", "\1\xFE\xFF\x30\x42\0\0\x30\x44"sv), frame("TIT2", "\1B\x30"sv),
                    frame("TALB", "\2\x30\x46"sv)})),
            "あ, い|あ|う"},
        {"2.3 unsynchronised, extended header",
            id3v2(3, 0xC0, join({data_of("\0\0\0\6\0\0\0\0\0\0"sv), frame("PRIV", "\xFF\0\xFF\0ab"sv), title})), ""},
        {"closed frames", id3v2(3, 0, join({frame("TIT2", "\3Z"sv, 0x80), frame("TPE1", "G\3A"sv, 0x20)})), "A"},
        {"2.4 list, unsynchronised frame, length told",
            id3v2(4, 0,
                join({frame("TPE1", "\3"
                                    "A\0B\0A\0"sv),
                    frame("TIT2",
                        "\0\0\0\4\1\xFF\0\xFE"
                        "B\x30"sv,
                        3)})),
            "A, B|あ"},
        {"2.4 size without the 7-bit rule", id3v2(4, 0, join({frame("TPE1", "\3" + long_text), title})),
            std::string(511, 'x') + "|T"},
        {"2.4 identifiers of 2.2", id3v2(4, 0, join({frame("TST ", "\0S"sv), title})), "|T"},
        {"two tags", join({id3v2(3, 0, frame("TPE1", "\0A"sv)), id3v2(3, 0, join({frame("TPE1", "\0B"sv), title}))}), "A|T"},
        {"frame beyond the tag",
            id3v2(3, 0, join({title, ByteBuilder().text("TPE1").be32(0x7FFFFFFF).be16(0).text("\0A"sv).bytes})), "|T"},
        {"gains of nonsense",
            id3v2(3, 0,
                join({frame("TXXX", "\0REPLAYGAIN_TRACK_GAIN\0+100 dB"sv), frame("TXXX", "\0REPLAYGAIN_ALBUM_GAIN\0dB"sv)})),
            ""},
    };
    for (const auto& row : rows) {
        const std::string found =
            read_from(row.tag, [](Reader* reader, TagTexts* texts) { read_id3v2_texts(reader, whole_file(reader), texts); });
        EXPECT_EQ(found, row.expected) << row.what;
    }
}

TEST(TagTexts, ape_and_id3v1) {
    const Data items = join({ape_item("ARTIST", "A\0B\0A"sv), ape_item("Title", "bin", 2), ape_item("title", "caf\xE9"),
        ape_item("Cover Art (Front)", "png", 2), ape_item("replaygain_album_gain", "+9.266 dB"), ape_item("Cuesheet", "x"),
        ByteBuilder().le32(0xFFFFFFFF).le32(0).text("Album").u8(0).text("Z").bytes});
    const auto read_items = [](Reader* reader, TagTexts* texts) { read_ape_texts(reader, whole_file(reader), texts); };
    EXPECT_EQ(read_from(items, read_items), "A, B|café|||9.266|1 cuesheet");

    const Data tag =
        ByteBuilder().text("TAG").text("Title   ").pad_to(33).text("Artist").pad_to(63).text("   ").pad_to(128).bytes;
    const auto read_tag = [](Reader* reader, TagTexts* texts) { read_id3v1_texts(reader, whole_file(reader), texts); };
    EXPECT_EQ(read_from(tag, read_tag), "Artist|Title");
}

TEST(TagTexts, vorbis_comments_in_memory_and_in_a_file) {
    const std::string long_title = "title=" + std::string(3000, 'y');
    const struct {
        Data block;
        std::string expected;
        uint32_t items;
    } rows[] = {
        {comments({"ARTIST=A", "artist=B", "Artist=A", "no name", "METADATA_BLOCK_PICTURE=AAAA", "CUESHEET="}, 6),
            "A, B|||||1 cuesheet", 6},
        {comments({long_title, "album=x"}, 0xFFFFFFFF), "|" + std::string(511, 'y') + "|x", 2},
        {comments({"title=a"}, 0), "", 0},
        {ByteBuilder().le32(0xFFFFFFF0).text("lib").bytes, "", 0},
        {join({comments({}, 2), ByteBuilder().le32(0xFFFFFFFF).text("title=T").bytes}), "", 0},
    };
    for (const auto& row : rows) {
        VorbisComments in_memory;
        TagTexts texts;
        open_comments(&in_memory, Bytes(row.block));
        read_comment_texts(&in_memory, &texts);
        EXPECT_EQ(shown(texts), row.expected);
        EXPECT_EQ(in_memory.read, row.items);
        EXPECT_EQ(read_from(row.block,
                      [](Reader* reader, TagTexts* found) {
                          VorbisComments in_file;
                          open_comments(&in_file, reader, whole_file(reader));
                          read_comment_texts(&in_file, found);
                      }),
            row.expected);
    }
}

// By rank; what is empty, or empty in a line, falls away.
TEST(TagTexts, artist_and_title) {
    const struct {
        TagTexts first;
        TagTexts second;
        std::string expected;
    } rows[] = {
        {{.artist = "A", .title = "T"}, {.artist = "B", .title = "U"}, "A - T"},
        {{.artist = "A"}, {.title = "U"}, "A - U"},
        {{.artist = "A", .album = "L"}, {}, "A - L"},
        {{.title = "T"}, {}, "T"},
        {{.artist = "\u200B", .title = "T"}, {}, "T"},
        {{}, {}, ""},
    };
    for (const auto& row : rows) {
        TagTexts texts = row.first;
        complete_texts(&texts, row.second);
        InfoRecord record{};
        write_artist_and_title(texts, {&record, nullptr});
        EXPECT_EQ(record.extra_info, row.expected);
    }
}

TEST(OuterTags, are_measured_whole) {
    const Data body(100, 1);
    const auto whole_ape = [](size_t items) {
        return join({ByteBuilder().text("APETAGEX").pad_to(32).bytes, Data(items),
            ByteBuilder().text("APETAGEX").le32(2000).le32(items + 32).le32(1).le32(0x80000000).pad_to(32).bytes});
    };
    const Data ape = whole_ape(7);
    const Data small_ape = ByteBuilder().text("APETAGEX").le32(1000).le32(32).pad_to(32).bytes;
    const Data lying_ape = ByteBuilder().text("APETAGEX").le32(1000).le32(0x7FFFFFFF).pad_to(32).bytes;
    const Data lyrics = join({data_of("LYRICSBEGIN"), data_of("000011LYRICS200")});
    const Data id3v1 = ByteBuilder().text("TAG").pad_to(128).bytes;
    const struct {
        Data file;
        int64_t start, size, id3v2, ape, lyrics3, id3v1;
    } rows[] = {
        {body, 0, 100, 0, 0, 0, 0},
        {join({id3v2(3, 0, Data(5)), id3v2(3, 0, Data(6)), body, ape, lyrics, id3v1}), 31, 100, 31, 71, 26, 128},
        {join({body, id3v1, small_ape}), 0, 100, 0, 32, 0, 128},
        {join({body, lying_ape}), 0, 132, 0, 0, 0, 0},
        {join({body, whole_ape(67)}), 0, 100, 0, 131, 0, 0}, // "TAG" stands 128 bytes before its end
        {join({body, data_of("999999LYRICS200")}), 0, 115, 0, 0, 0, 0},
        {{}, 0, 0, 0, 0, 0, 0},
    };
    for (const auto& row : rows) {
        read_from(row.file, [&row](Reader* reader, TagTexts*) {
            const OuterTags tags = measure_outer_tags(reader);
            EXPECT_EQ(tags.stream.start, row.start);
            EXPECT_EQ(size_of(tags.stream), row.size);
            EXPECT_EQ(size_of(tags.id3v2), row.id3v2);
            EXPECT_EQ(tags.ape, row.ape);
            EXPECT_EQ(tags.lyrics3, row.lyrics3);
            EXPECT_EQ(size_of(tags.id3v1), row.id3v1);
        });
    }
    uint8_t header[10] = {'I', 'D', '3', 4, 0, 0x10, 0x80, 0, 0, 0x85};
    EXPECT_EQ(whole_id3v2_size(header), 25);
}

} // namespace zat::test::tag_texts_test
