#include "support/atom_builder.h"
#include "support/dispatched.h"

namespace zat::test::mp4_segment_test {

// An index of a stream; `entries` are the words of its references, three each.
Data index(int version, uint64_t id, uint64_t time_scale, const std::vector<uint64_t>& entries, int64_t count = own_size) {
    ByteBuilder payload;
    payload.u8(static_cast<uint64_t>(version)).be24(0).be32(id).be32(time_scale).fill(version == 0 ? 8 : 16).be16(0);
    payload.be16(count == own_size ? entries.size() / 3 : static_cast<uint64_t>(count));
    for (const uint64_t word : entries) {
        payload.be32(word);
    }
    return atom("sidx", payload.bytes);
}

Data segment_type(std::string_view brand) {
    return atom("styp", ByteBuilder().text(brand).be32(0).bytes);
}

Data fragment() {
    const Data header = atom("tfhd", ByteBuilder().be32(0).be32(1).bytes);
    const Data run = atom("trun", ByteBuilder().be32(0x100).be32(1).be32(500).bytes);
    return atom("moof", {atom("traf", {header, run})});
}

TEST(Mp4Segment, tells_what_stands_without_a_movie) {
    const uint64_t further_index = 0x80000000;
    const Data nested = index(0, 1, 1000, {further_index + 44, 9000, 0, further_index + 44, 9000, 0});
    const struct {
        const char* name;
        Data bytes;
        std::string expected; // lines and play time, then the details
    } rows[] = {
        {"two streams, the second one longer",
            join({segment_type("msdh"), index(0, 1, 1000, {500, 2000, 0}), index(1, 2, 48000, {500, 48000, 0, 400, 72000, 0}),
                fragment(), fragment()}),
            "G trak\nX [C\x96\xB3MSDH]\nX MovieFragment(2)\n2.500\nMP4 profile=msdh duration=2.500"},
        {"events, no brand", join({atom("emsg", Data(9)), atom("emsg", Data(9)), fragment()}),
            "G trak\nX MovieFragment(1)\nX emsg(2)\n0.000\nMP4"},
        {"an index of indexes", join({nested, index(0, 1, 1000, {100, 9000, 0}), index(0, 1, 1000, {100, 1500, 0})}),
            "G trak\n10.500\nMP4 duration=10.500"},
        {"fewer references than told, no scale in another",
            join({index(0, 1, 100, {1, 50, 0}, 65535), index(0, 2, 0, {1, 50, 0})}), "G trak\n0.500\nMP4 duration=0.500"},
        {"cut media data", join({index(1, 1, 10, {1, 50, 0}), atom("mdat", Data(10), 100)}),
            "G trak\n5.000\nMP4 notes=truncated duration=5.000 missing=82"},
        {"a movie tells more",
            join({segment_type("msdh"), file_type("isom"), atom("moov", {movie_header(10, 70)}), index(0, 1, 10, {1, 50, 0}),
                atom("emsg", Data(9))}),
            "G trak\nX [C\x96\xB3ISOM]\nX moov chunk 32\n7.000\nMP4 profile=isom duration=7.000"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(dispatched(FILETYPE_MPEG4, row.bytes)->text(), row.expected) << row.name;
        expect_sound_when_cut(FILETYPE_MPEG4, row.bytes);
    }
}

} // namespace zat::test::mp4_segment_test
