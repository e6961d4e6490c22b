#include "video/mpeg4_visual.h"

#include "common/bytes/bits.h"
#include "common/bytes/start_code.h"
#include "common/text/text.h"

#include <array>

namespace zat {

namespace {

constexpr char vol_start_code[] = "\0\0\1\x20";
constexpr uint32_t extended_par = 15;

struct ProfileName {
    uint8_t value;
    const char* name;
};

// ISO/IEC 14496-2, table G.1. Kept as they are: the Advanced Simple rows stand one value above the
// published ones, and the wording of row B1 and its neighbours.
constexpr ProfileName mpeg4_profiles[] = {
    {0x01, "Simple@L1"},
    {0x02, "Simple@L2"},
    {0x03, "Simple@L3"},
    {0x08, "Simple@L0"},
    {0x11, "Simple Scalable@L1"},
    {0x12, "Simple Scalable@L2"},
    {0x21, "Core@L1"},
    {0x22, "Core@L2"},
    {0x32, "Main@L2"},
    {0x33, "Main@L3"},
    {0x34, "Main@L4"},
    {0x42, "N-bit@L2"},
    {0x51, "Scalable Texture@L1"},
    {0x61, "Simple Face Anim@L1"},
    {0x62, "Simple Face Anim@L2"},
    {0x63, "Simple FBA@L1"},
    {0x64, "Simple FBA@L2"},
    {0x71, "Basic Anim Text@L1"},
    {0x72, "Basic Anim Text@L2"},
    {0x81, "Hybrid@L1"},
    {0x82, "Hybrid@L2"},
    {0x91, "Adv RT Simple@L1"},
    {0x92, "Adv RT Simple@L2"},
    {0x93, "Adv RT Simple@L3"},
    {0x94, "Adv RT Simple@L4"},
    {0xA1, "Core Scalable@L1"},
    {0xA2, "Core Scalable@L2"},
    {0xA3, "Core Scalable@L3"},
    {0xB1, "Adv Coding Efficieny@L1"},
    {0xB2, "Adv Coding Efficieny@L2"},
    {0xB3, "Adv Coding Efficieny@L3"},
    {0xB4, "Adv Coding Efficieny@L4"},
    {0xC1, "Adv Core Profile@L1"},
    {0xC2, "Adv Core Profile@L2"},
    {0xD1, "Adv Scalable Texture@L1"},
    {0xD2, "Adv Scalable Texture@L2"},
    {0xD3, "Adv Scalable Texture@L3"},
    {0xE1, "Simple Studio@L1"},
    {0xE2, "Simple Studio@L2"},
    {0xE3, "Simple Studio@L3"},
    {0xE4, "Simple Studio@L4"},
    {0xE5, "Core Studio@L1"},
    {0xE6, "Core Studio@L2"},
    {0xE7, "Core Studio@L3"},
    {0xE8, "Core Studio@L4"},
    {0xF1, "Adv Simple@L0"},
    {0xF2, "Adv Simple@L1"},
    {0xF3, "Adv Simple@L2"},
    {0xF4, "Adv Simple@L3"},
    {0xF5, "Adv Simple@L4"},
    {0xF6, "Adv Simple@L5"},
    {0xF7, "Adv Simple@L3b"},
    {0xF8, "FGS@L0"},
    {0xF9, "FGS@L1"},
    {0xFA, "FGS@L2"},
    {0xFB, "FGS@L3"},
    {0xFC, "FGS@L4"},
    {0xFD, "FGS@L5"},
};

// Position of the last start code, or 0: one at the very start does not count.
size_t last_vol_start_code(Bytes buffer) {
    constexpr size_t zeros = 2;
    size_t last = 0;
    size_t from = zeros + 1;
    for (;;) {
        const int64_t pair = find_byte_pair(buffer, from, 0x01, 0x20);
        if (pair < 0) {
            return last;
        }
        const size_t at = static_cast<size_t>(pair) - zeros;
        if (starts_with(&buffer[at], vol_start_code)) {
            last = at;
        }
        from = static_cast<size_t>(pair) + zeros;
    }
}

// Reads n bits; false when they lie past the data.
bool take(BitReader* reader, int n, uint32_t* value) {
    *value = read_bits(reader, n);
    return !reader->failed;
}

// VideoObjectLayer() up to its aspect. False when the data ended.
bool read_vol_aspect(Bytes header, VolAspect* aspect) {
    BitReader reader{header};
    uint32_t is_object_layer_identifier = 0;
    skip_bits(&reader, 1); // random_accessible_vol
    skip_bits(&reader, 8); // video_object_type_indication
    if (!take(&reader, 1, &is_object_layer_identifier)) {
        return false;
    }
    if (is_object_layer_identifier != 0) {
        skip_bits(&reader, 4); // video_object_layer_verid
        skip_bits(&reader, 3); // video_object_layer_priority
    }
    uint32_t aspect_ratio_info = 0;
    if (!take(&reader, 4, &aspect_ratio_info)) {
        return false;
    }
    aspect->aspect_ratio_info = aspect_ratio_info;
    if (aspect_ratio_info == extended_par) {
        uint32_t par_width = 0;
        uint32_t par_height = 0;
        if (!take(&reader, 8, &par_width)) {
            return false;
        }
        aspect->par_width = par_width;
        if (!take(&reader, 8, &par_height)) {
            return false;
        }
        aspect->par_height = static_cast<uint8_t>(par_height);
    }
    return true;
}

} // namespace

void Mpeg4ProfileLevelName(char* out, size_t size, uint32_t value) {
    for (const ProfileName& row : mpeg4_profiles) {
        if (row.value == value) {
            copy_text(out, size, row.name);
            return;
        }
    }
    format_text(out, size, "UnknownProfile(%d)", value);
}

// ISO/IEC 14496-2, table 6-12.
void vol_aspect_name(const VolAspect& aspect, char (&out)[vol_aspect_size]) {
    static constexpr std::array names{
        "unknown(0)", "1:1", "4:3 PAL", "4:3 NTSC", "16:9 PAL", "16:9 NTSC"};
    const uint32_t value = aspect.aspect_ratio_info;
    if (value < names.size()) {
        copy_text(out, names[value]);
    } else if (value < extended_par) {
        format_text(out, sizeof out, "unknown(%d)", value);
    } else if (value == extended_par) {
        format_text(out, sizeof out, "custom %d:%d", aspect.par_width, aspect.par_height);
    }
}

void find_vol_aspect(Bytes buffer, VolAspect* aspect) {
    const size_t at = last_vol_start_code(buffer);
    if (at == 0) {
        return;
    }
    aspect->found = true;
    if (!aspect->complete && read_vol_aspect(buffer.subspan(at + start_code_size), aspect)) {
        aspect->complete = true;
    }
}

} // namespace zat
