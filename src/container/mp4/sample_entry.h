// The sample description of a track: its format, the fixed fields and the atoms that configure the
// decoder (ISO/IEC 14496-12, 8.5.2 and 12; QuickTime File Format, "Sample Description Atoms").
#pragma once

#include "audio/es_descriptor.h"
#include "container/mp4/movie.h"

namespace zat::mp4 {

struct SampleEntry {
    bool found = false;
    uint8_t format[4] = {};

    // Video.
    uint16_t width = 0;
    uint16_t height = 0;
    uint16_t depth = 0; // bits

    // Audio.
    uint32_t channels = 0;
    uint32_t sample_size = 0; // bits
    uint32_t sample_rate = 0; // Hz

    // Payloads of atoms behind the fixed fields; empty where there is none.
    Span es_descriptor;      // "esds"
    Span avc_configuration;  // "avcC"
    Span pixel_aspect;       // "pasp"
    Span alac_cookie;        // "alac"
    Span flac_configuration; // "dfLa"
    Span eac3_configuration; // "dec3"
    Span sampling_rate;      // "srat"
};

// Reads the last entry of a video or audio track. Without one, all fields stay cleared.
void read_sample_entry(Reader* reader, const Track& track, SampleEntry* entry);

// An entry's elementary stream descriptor, with the bytes that it points into: encoders' headers
// are some dozen bytes long.
struct EsBox {
    EsDescriptor descriptor; // cleared without one
    uint8_t bytes[4608];
};

void read_es_box(Reader* reader, const SampleEntry& entry, EsBox* box);

} // namespace zat::mp4
