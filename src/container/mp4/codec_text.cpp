#include "container/mp4/codec_text.h"

#include "common/catalogue/codec_catalogue.h"
#include "common/text/fourcc.h"

namespace zat::mp4 {

namespace {

// Formats that have a sample entry of their own, by the objectTypeIndication that "mp4v" and "mp4a"
// entries can carry instead (registry of ISO/IEC 14496-1).
struct ObjectType {
    uint8_t object_type;
    char format[5];
};

constexpr ObjectType object_types[] = {
    {0x60, "mp2v"}, // MPEG-2 Video: Simple, Main, SNR, Spatial, High and 4:2:2 profile
    {0x61, "mp2v"},
    {0x62, "mp2v"},
    {0x63, "mp2v"},
    {0x64, "mp2v"},
    {0x65, "mp2v"},
    {0x6A, "mp1v"},
    {0x6C, "jpeg"},
    {0x6D, "png "},
    {0x6E, "mjp2"},
    {0xA6, "ec-3"},
    {0xAD, "Opus"},
    {0xDD, "OggV"},
    {0xE1, "sqcp"},
};

} // namespace

void catalogue_text(
    std::string_view section, const uint8_t* format, uint8_t object_type, char* out) {
    char shown[fourcc_text_size];
    FourccText(format, shown);
    std::string_view key{reinterpret_cast<const char*>(format), 4};
    for (const ObjectType& row : object_types) {
        if (row.object_type == object_type) {
            key = row.format;
        }
    }
    codec_name(section, key, shown, out, codec_text_size);
}

} // namespace zat::mp4
