#include "container/mp4/sample_entry.h"

#include "common/bytes/numbers.h"

#include <algorithm>
#include <cstring>

namespace zat::mp4 {

namespace {

// Entry fields that all formats share: size, format, 6 bytes reserved, data reference index.
constexpr int64_t common_size = 16;

struct Located {
    uint32_t type;
    Span SampleEntry::*payload;
};

constexpr Located located[] = {
    {fourcc("esds"), &SampleEntry::es_descriptor},
    {fourcc("avcC"), &SampleEntry::avc_configuration},
    {fourcc("pasp"), &SampleEntry::pixel_aspect},
    {fourcc("alac"), &SampleEntry::alac_cookie},
    {fourcc("dfLa"), &SampleEntry::flac_configuration},
    {fourcc("dec3"), &SampleEntry::eac3_configuration},
    {fourcc("srat"), &SampleEntry::sampling_rate},
    {fourcc("hvcC"), &SampleEntry::video_configuration},
    {fourcc("av1C"), &SampleEntry::video_configuration},
    {fourcc("vpcC"), &SampleEntry::video_configuration},
    {fourcc("dvc1"), &SampleEntry::video_configuration},
    {fourcc("dac3"), &SampleEntry::audio_configuration},
    {fourcc("dOps"), &SampleEntry::audio_configuration},
    {fourcc("ddts"), &SampleEntry::audio_configuration},
    {fourcc("dmlp"), &SampleEntry::audio_configuration},
    {fourcc("dvcC"), &SampleEntry::dolby_vision},
    {fourcc("dvvC"), &SampleEntry::dolby_vision},
    {fourcc("dvwC"), &SampleEntry::dolby_vision},
    {fourcc("fiel"), &SampleEntry::fields},
    {fourcc("btrt"), &SampleEntry::bit_rates},
    {fourcc("enda"), &SampleEntry::byte_order},
    {fourcc("wfex"), &SampleEntry::audio_configuration},
    {fourcc("pcmC"), &SampleEntry::pcm_configuration},
    {fourcc("chan"), &SampleEntry::channel_layout},
    {fourcc("sinf"), &SampleEntry::protection},
};

bool has_colour_codes(Reader* reader, Span colour) {
    const uint32_t type = read_be32(reader, colour, 0);
    return type == fourcc("nclx") || type == fourcc("nclc");
}

// The first atom of a type counts.
void locate_atom(Reader* reader, const Atom& atom, SampleEntry* entry) {
    if (atom.type == fourcc("colr")) {
        if (size_of(entry->colour) == 0 && has_colour_codes(reader, atom.payload)) {
            entry->colour = atom.payload;
        }
        return;
    }
    for (const Located& row : located) {
        if (row.type == atom.type && size_of(entry->*row.payload) == 0) {
            entry->*row.payload = atom.payload;
        }
    }
}

// QuickTime keeps the decoder's atoms of a sound in one more, "wave".
void locate_atoms(Reader* reader, Span space, SampleEntry* entry) {
    Atom atom;
    while (next_child(reader, &space, &atom)) {
        locate_atom(reader, atom, entry);
        if (atom.type == fourcc("wave")) {
            Span inner = atom.payload;
            Atom child;
            while (next_child(reader, &inner, &child)) {
                locate_atom(reader, child, entry);
            }
        }
    }
}

// Fields of 16 and 32 bits; one that the entry's end cuts off counts as zero.
uint16_t be16_at(Bytes fields, size_t at) {
    return at + 2 <= fields.size() ? ReadBE16(&fields[at]) : uint16_t{0};
}
uint32_t be32_at(Bytes fields, size_t at) {
    return at + 4 <= fields.size() ? ReadBE32(&fields[at]) : 0;
}

// Version 2, revision 2, vendor 4, qualities 4 and 4, size 2 and 2, resolutions 4 and 4, data size
// 4, frame count 2, compressor name 32, depth 2, colour table 2.
int64_t read_video_fields(Reader* reader, Span space, SampleEntry* entry) {
    uint8_t buffer[70];
    const Bytes fields = read_box(reader, sub_span(space, common_size), buffer);
    entry->width = be16_at(fields, 16);
    entry->height = be16_at(fields, 18);
    entry->depth = be16_at(fields, 66);
    return common_size + static_cast<int64_t>(sizeof buffer);
}

// Version 2, revision 2, vendor 4, channels 2, sample size 2, compression 2, packet size 2, rate
// 16.16; QuickTime's later versions go on behind that.
int64_t read_audio_fields(Reader* reader, Span space, bool quicktime_versions, SampleEntry* entry) {
    constexpr int64_t version_0_size = 20;
    uint8_t buffer[56];
    const Bytes fields = read_box(reader, sub_span(space, common_size), buffer);
    entry->channels = be16_at(fields, 8);
    entry->sample_size = be16_at(fields, 10);
    entry->sample_rate = be16_at(fields, 16);
    const uint16_t version = quicktime_versions ? be16_at(fields, 0) : uint16_t{0};
    if (version == 1) { // per packet: samples, bytes; bytes per frame, bytes per sample
        entry->packet_samples = be32_at(fields, 20);
        entry->frame_size = be32_at(fields, 28);
        return common_size + version_0_size + 16;
    }
    if (version == 2) { // structure size 4, rate as a double, channels 4, marker 4, bits 4, ...
        entry->sample_rate =
            fields.size() >= 32 ? clamp_to_integer<uint32_t>(ReadBEFloat64(&fields[24])) : 0;
        entry->channels = be32_at(fields, 32);
        entry->sample_size = be32_at(fields, 40);
        entry->pcm_flags = be32_at(fields, 44);
        return common_size + static_cast<int64_t>(sizeof buffer);
    }
    if (std::memcmp(entry->format, "mlpa", 4) == 0) { // a TrueHD rate has all 32 bits
        entry->sample_rate = be32_at(fields, 16);
    }
    return common_size + version_0_size;
}

// Where the entry of a number, or the last one before it, stands; false without any.
bool find_entry(Reader* reader, Span description, uint32_t number, Span* found_at) {
    uint32_t count = read_be32(reader, description, 4);
    count = number != 0 ? std::min(count, number) : count;
    Span space = description;
    space.start += 8;
    bool found = false;
    while (count != 0) {
        // An entry's header is an atom's.
        Atom entry;
        const Span rest = space;
        if (!next_child(reader, &space, &entry) || entry.payload.end - rest.start < common_size) {
            break;
        }
        *found_at = {rest.start, entry.payload.end};
        found = true;
        --count;
    }
    return found;
}

} // namespace

void read_sample_entry(Reader* reader, const Track& track, uint32_t number, SampleEntry* entry) {
    Span space;
    uint8_t description[4];
    if (!read_all(reader, track.sample_description, 0, description, sizeof description) ||
        !find_entry(reader, track.sample_description, number, &space)) {
        return;
    }
    entry->found = read_all(reader, space, 4, entry->format, sizeof entry->format);
    // A description of version 1 announces ISO/IEC 14496-12's own entry of version 1, which has the
    // fields of version 0.
    const bool quicktime_versions = description[0] == 0;
    entry->fixed = sub_span(space, common_size);
    int64_t fixed_size = common_size;
    if (track.kind == TrackKind::video) {
        fixed_size = read_video_fields(reader, space, entry);
    } else if (track.kind == TrackKind::audio) {
        fixed_size = read_audio_fields(reader, space, quicktime_versions, entry);
    }
    locate_atoms(reader, {space.start + fixed_size, space.end}, entry);
}

void read_es_box(Reader* reader, const SampleEntry& entry, EsBox* box) {
    const Span behind_version = sub_span(entry.es_descriptor, 4);
    read_es_descriptor(read_box(reader, behind_version, box->bytes), &box->descriptor);
}

} // namespace zat::mp4
