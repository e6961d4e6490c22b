#include "limits/hostile_files.h"

#include "support/atom_builder.h"
#include "support/byte_builder.h"
#include "support/ebml_builder.h"
#include "support/riff_builder.h"
#include "support/ts_builder.h"

#include <algorithm>
#include <random>

namespace zat::test {

namespace {

constexpr uint64_t endless = uint64_t{4} << 30;

Data random_bytes(size_t count) {
    std::mt19937 source(14);
    Data bytes(count);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(source()); });
    return bytes;
}

// Random bytes with a start code before every other sixteen of them.
Data start_codes() {
    Data bytes = random_bytes(65536);
    for (size_t i = 0; i + 3 < bytes.size(); i += 16) {
        bytes[i] = bytes[i + 1] = 0;
        bytes[i + 2] = 1;
    }
    return bytes;
}

// Boxes in one another, each as long as the rest.
Data nested_boxes(std::string_view type, int depth) {
    ByteBuilder file;
    for (int i = 0; i < depth; ++i) {
        file.be32(0x7FFFFFFFU - static_cast<uint32_t>(8 * i)).text(type);
    }
    return file.bytes;
}

// A packet of every identifier, each with the start of a table.
Data all_packet_identifiers() {
    TsBuilder stream;
    const Data table = pat({{1, 0x100}, {2, 0x101}});
    for (int pid = 0; pid < 8192; ++pid) {
        stream.table(pid, table);
    }
    return stream.file.bytes;
}

Data sample_table(const char* type) {
    return join({file_type("isom"), atom("moov",
                                        ByteBuilder()
                                            .be32(0x7FFFFFF0)
                                            .text("trak")
                                            .be32(0x7FFFFF00)
                                            .text("mdia")
                                            .be32(0x7FFFFE00)
                                            .text("minf")
                                            .be32(0x7FFFFD00)
                                            .text("stbl")
                                            .be32(0x7FFFFC00)
                                            .text(type)
                                            .be32(0)
                                            .be32(0)
                                            .be32(0x1FFFFFFF)
                                            .bytes,
                                        0x7FFFFFFF)});
}

Data fragment_and_media(size_t run_size = 8, size_t media_size = 9000) {
    return join(
        {atom("moof", {atom("traf", {atom("tfhd", Data(8)), atom("trun", Data(run_size))})}), atom("mdat", Data(media_size))});
}

Data tag_of_tags(size_t count) {
    ByteBuilder file;
    for (size_t i = 0; i < count; ++i) {
        file.text("ID3").raw({4, 0, 0, 0, 0, 0, 0});
    }
    return file.bytes;
}

} // namespace

VirtualFile movie_of_fragments(uint64_t count) {
    const Data fragment = fragment_and_media();
    return VirtualFile{"MP4, " + std::to_string(count) + " fragments"}
        .add(file_type("isom"))
        .repeat(fragment, fragment.size() * count);
}

VirtualFile movie_without_end() {
    constexpr size_t behind_the_front = 20000;
    const Data video = track(1, "vide", {descriptions({video_entry("hvc1")}), sizes({})});
    return VirtualFile{"MP4, unlike fragments"}
        .add(file_type("isom"))
        .add(atom("moov", {atom("free", Data(behind_the_front)), video}))
        .repeat(join({fragment_and_media(8, 60000), fragment_and_media(3000, 60000)}), endless);
}

std::vector<VirtualFile> built_hostile_files() {
    const Data page = ByteBuilder().text("OggS").fill(22).u8(0).bytes;
    const Data first_page = ByteBuilder().text("OggS").raw({0, 2}).fill(20).u8(1).u8(30).raw({1}).text("vorbis").fill(23).bytes;
    const Data matroska = element(0x1A45DFA3, {words(0x4282, "matroska")});
    const Data void_element = {0xEC, 0x80};
    return {
        VirtualFile{"zeros"}.repeat({0}, endless),
        VirtualFile{"hole"}.hole(endless),
        VirtualFile{"0xFF"}.repeat({0xFF}, endless),
        VirtualFile{"random"}.repeat(random_bytes(1 << 20), endless),
        VirtualFile{"start codes"}.repeat(start_codes(), endless),
        VirtualFile{"start codes only"}.repeat({0, 0, 1}, endless),
        VirtualFile{"text"}.repeat({'a', ' '}, endless),
        VirtualFile{"text, then not"}.repeat({'a', ' '}, 1 << 20).repeat(random_bytes(65536), endless),
        VirtualFile{"ID3v2 tags"}.repeat(tag_of_tags(1000), endless),
        VirtualFile{"ID3v2 tag of 256 MiB"}.add(ByteBuilder().text("ID3").raw({3, 0, 0, 127, 127, 127, 127}).bytes).hole(endless),
        VirtualFile{"MPEG audio headers"}.repeat({0xFF, 0xFB, 0x90, 0x64}, endless),
        VirtualFile{"MPEG audio, free format"}.repeat({0xFF, 0xFB, 0x00, 0x64}, endless),
        VirtualFile{"MPEG audio behind a length"}.add({0, 0, 1, 0x80}).repeat({0xFF}, endless),
        VirtualFile{"ADTS headers"}.repeat({0xFF, 0xF1, 0x50, 0x80, 0x00, 0xFF, 0xFC}, endless),
        VirtualFile{"AC-3 sync words"}.repeat({0x0B, 0x77}, endless),
        VirtualFile{"DTS sync words"}.repeat({0x7F, 0xFE, 0x80, 0x01}, endless),
        VirtualFile{"MP4, empty boxes"}.add(file_type("isom")).repeat(atom("free", Data{}), endless),
        VirtualFile{"MP4, empty boxes far apart"}.add(file_type("isom")).repeat(atom("free", Data(4089)), endless),
        VirtualFile{"MP4, empty movies"}.add(file_type("isom")).repeat(atom("moov", Data{}), endless),
        VirtualFile{"MP4, empty tracks"}
            .add(file_type("isom"))
            .add(atom("moov", movie_header(1000, 1000), 0x7FFFFFFF))
            .repeat(atom("trak", Data{}), endless),
        VirtualFile{"MP4, empty fragments"}.add(file_type("isom")).repeat(atom("moof", Data{}), endless),
        VirtualFile{"MP4, fragments far apart"}.add(file_type("isom")).repeat(fragment_and_media(), endless),
        VirtualFile{"MP4, nested boxes"}.add(file_type("isom")).add(nested_boxes("moov", 20000)).hole(endless),
        VirtualFile{"MP4, nested tracks"}
            .add(file_type("isom"))
            .add(nested_boxes("moov", 1))
            .add(nested_boxes("trak", 20000))
            .hole(endless),
        VirtualFile{"MP4, sizes of half a billion samples"}.add(sample_table("stsz")).repeat({0, 0, 0, 9}, endless),
        VirtualFile{"MP4, times of half a billion samples"}.add(sample_table("stts")).repeat({0, 0, 0, 9}, endless),
        VirtualFile{"Ogg, empty pages"}.add(first_page).repeat(page, endless),
        VirtualFile{"Ogg, first pages"}.repeat(first_page, endless),
        VirtualFile{"Ogg, a page cut by the next"}.repeat({'O', 'g', 'g', 'S', 0, 0}, endless),
        VirtualFile{"Ogg, no second page"}.add(first_page).repeat({'O', 'g'}, endless),
        VirtualFile{"Matroska, empty elements"}.add(matroska).add(unknown_element(0x18538067, {})).repeat(void_element, endless),
        VirtualFile{"Matroska, empty clusters"}
            .add(matroska)
            .add(unknown_element(0x18538067, {}))
            .repeat(unknown_element(0x1F43B675, {}), endless),
        VirtualFile{"Matroska, empty blocks"}
            .add(matroska)
            .add(unknown_element(0x18538067, {unknown_element(0x1F43B675, {})}))
            .repeat({0xA3, 0x84, 0x81, 0, 0, 0}, endless),
        VirtualFile{"Matroska, nested tags"}
            .add(matroska)
            .add(unknown_element(0x18538067, {}))
            .repeat(unknown_element(0x1254C367, {unknown_element(0x7373, {unknown_element(0x67C8, {})})}), endless),
        VirtualFile{"AVI, empty chunks"}.add(riff_list("RIFF", "AVI ", {}, 0x7FFFFFFF)).repeat(riff_chunk("JUNK", {}), endless),
        VirtualFile{"AVI, nested lists"}
            .add(riff_list("RIFF", "AVI ", {}, 0x7FFFFFFF))
            .repeat(riff_list("LIST", "movi", {}, 0x7FFFFFFF), endless),
        VirtualFile{"WAV, empty chunks"}.add(riff_list("RIFF", "WAVE", {}, 0x7FFFFFFF)).repeat(riff_chunk("abcd", {}), endless),
        VirtualFile{"WAV, chunks far apart"}
            .add(riff_list("RIFF", "WAVE", {}, 0x7FFFFFFF))
            .repeat(riff_chunk("abcd", Data(9000)), endless),
        VirtualFile{"AIFF, chunks far apart"}
            .add(ByteBuilder().text("FORM").be32(0x7FFFFFFF).text("AIFF").bytes)
            .repeat(ByteBuilder().text("abcd").be32(9000).fill(9000).bytes, endless),
        VirtualFile{"MIDI, empty tracks"}
            .add(ByteBuilder().text("MThd").be32(6).be16(1).be16(0xFFFF).be16(96).bytes)
            .repeat(ByteBuilder().text("MTrk").be32(0).bytes, endless),
        VirtualFile{"MIDI, one track of notes"}
            .add(ByteBuilder().text("MThd").be32(6).be16(0).be16(1).be16(96).text("MTrk").be32(0x7FFFFFFF).bytes)
            .repeat({0, 0x90, 0x40, 0x40}, endless),
        VirtualFile{"MIDI, one track of tempos"}
            .add(ByteBuilder().text("MThd").be32(6).be16(0).be16(1).be16(96).text("MTrk").be32(0x7FFFFFFF).bytes)
            .repeat({1, 0xFF, 0x51, 3, 1, 2, 3}, endless),
        VirtualFile{"TS, every identifier"}.repeat(all_packet_identifiers(), endless),
        VirtualFile{"GIF, empty blocks"}
            .add(ByteBuilder().text("GIF89a").le16(9).le16(9).raw({0, 0, 0}).bytes)
            .repeat({0x21, 0xFE, 1, 'x', 0}, endless),
        VirtualFile{"GIF, images of a pixel"}
            .add(ByteBuilder().text("GIF89a").le16(9).le16(9).raw({0, 0, 0}).bytes)
            .repeat({0x2C, 0, 0, 0, 0, 1, 0, 1, 0, 0, 2, 0}, endless),
        VirtualFile{"JPEG, empty segments"}.add({0xFF, 0xD8}).repeat({0xFF, 0xE5, 0, 2}, endless),
        VirtualFile{"JPEG, segments far apart"}
            .add({0xFF, 0xD8})
            .repeat(ByteBuilder().raw({0xFF, 0xE5}).be16(9000).fill(8998).bytes, endless),
        VirtualFile{"FLV, empty tags"}
            .add(ByteBuilder().text("FLV").raw({1, 5, 0, 0, 0, 9, 0, 0, 0, 0}).bytes)
            .repeat({9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 11}, endless),
    };
}

std::vector<VirtualFile> grown_files(const std::string& name, const std::vector<uint8_t>& seed) {
    std::vector<VirtualFile> files;
    for (const size_t cut : {size_t{16}, size_t{64}, size_t{1024}, seed.size()}) {
        if (cut > seed.size()) {
            continue;
        }
        const Data head(seed.begin(), seed.begin() + static_cast<std::ptrdiff_t>(cut));
        const Data back(head.begin() + static_cast<std::ptrdiff_t>(cut / 2), head.end());
        const std::string title = name + ", " + std::to_string(cut) + " bytes ";
        files.push_back(VirtualFile{title + "over and over"}.repeat(head, endless));
        files.push_back(VirtualFile{title + "and their back half over and over"}.add(head).repeat(back, endless));
        files.push_back(VirtualFile{title + "and a hole"}.add(head).hole(endless));
    }
    return files;
}

} // namespace zat::test
