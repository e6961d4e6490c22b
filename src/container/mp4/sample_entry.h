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
    // Of QuickTime's sound entries of version 1: samples per channel in a packet, and bytes of a
    // packet, all channels together.
    uint32_t packet_samples = 0;
    uint32_t frame_size = 0;
    uint32_t pcm_flags = 0; // of version 2

    // Payloads of atoms behind the fixed fields; empty where there is none.
    Span es_descriptor;      // "esds"
    Span avc_configuration;  // "avcC"
    Span pixel_aspect;       // "pasp"
    Span alac_cookie;        // "alac"
    Span flac_configuration; // "dfLa"
    Span eac3_configuration; // "dec3"
    Span sampling_rate;      // "srat"
    // "dac3", "dOps", "ddts", "dmlp", "wfex": of details only but for "dmlp"
    Span audio_configuration;
    // Of details only.
    Span video_configuration; // "hvcC", "av1C", "vpcC", "dvc1" and the like: by the format
    Span dolby_vision;        // "dvcC", "dvvC", "dvwC"
    Span colour;              // "colr", one with codes
    Span fields;              // "fiel"
    Span bit_rates;           // "btrt"
    Span byte_order;          // "enda"
    Span pcm_configuration;   // "pcmC"
    Span channel_layout;      // "chan"
    Span protection;          // "sinf"
    Span fixed;               // behind the common fields
};

// Reads an entry of a track, counted from 1; 0 is the last one. Without one, all fields stay
// cleared.
void read_sample_entry(Reader* reader, const Track& track, uint32_t number, SampleEntry* entry);

// An entry's elementary stream descriptor, with the bytes that it points into: encoders' headers
// are some dozen bytes long.
struct EsBox {
    EsDescriptor descriptor; // cleared without one
    uint8_t bytes[4608];
};

void read_es_box(Reader* reader, const SampleEntry& entry, EsBox* box);

} // namespace zat::mp4
