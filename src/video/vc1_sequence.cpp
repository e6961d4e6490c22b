#include "video/vc1_sequence.h"

#include "common/bytes/start_code.h"
#include "video/avc_names.h"
#include "video/rbsp_reader.h"

#include <iterator>

namespace zat {

namespace {

constexpr uint8_t sequence_code = 0x0F;

// DISPLAY_EXT (6.1.14).
void read_display(RbspReader* reader, Vc1Sequence* sequence) {
    constexpr uint32_t own_aspect = 15;
    sequence->display_width = read_u(reader, 14) + 1;  // DISP_HORIZ_SIZE
    sequence->display_height = read_u(reader, 14) + 1; // DISP_VERT_SIZE
    if (read_u(reader, 1) != 0) {                      // ASPECT_RATIO_FLAG
        const uint32_t code = read_u(reader, 4);       // ASPECT_RATIO
        if (code == own_aspect) {
            sequence->aspect_width =
                static_cast<uint16_t>(read_u(reader, 8) + 1); // ASPECT_HORIZ_SIZE
            sequence->aspect_height =
                static_cast<uint16_t>(read_u(reader, 8) + 1); // ASPECT_VERT_SIZE
        } else if (code < 14) {                               // the same table as ITU-T H.264, E-1
            const SampleAspect aspect = avc_sample_aspect(static_cast<int>(code));
            sequence->aspect_width = aspect.width;
            sequence->aspect_height = aspect.height;
        }
    }
    if (read_u(reader, 1) == 0) { // FRAMERATE_FLAG
        return;
    }
    if (read_u(reader, 1) != 0) {                                // FRAMERATEIND
        sequence->frame_rate_numerator = read_u(reader, 16) + 1; // FRAMERATEEXP
        sequence->frame_rate_denominator = 32;
        return;
    }
    static constexpr uint32_t rates[] = {0, 24, 25, 30, 50, 60, 48, 72};
    const uint32_t rate = read_u(reader, 8);    // FRAMERATENR
    const uint32_t divisor = read_u(reader, 4); // FRAMERATEDR
    if (rate > 0 && rate < std::size(rates) && (divisor == 1 || divisor == 2)) {
        sequence->frame_rate_numerator = rates[rate] * 1000;
        sequence->frame_rate_denominator = divisor == 1 ? 1000 : 1001;
    }
}

void read_colour(RbspReader* reader, Vc1Sequence* sequence) {
    if (read_u(reader, 1) != 0) {                                             // COLOR_FORMAT_FLAG
        sequence->colour_primaries = static_cast<uint8_t>(read_u(reader, 8)); // COLOR_PRIM
        sequence->transfer_characteristics =
            static_cast<uint8_t>(read_u(reader, 8));                             // TRANSFER_CHAR
        sequence->matrix_coefficients = static_cast<uint8_t>(read_u(reader, 8)); // MATRIX_COEF
    }
}

} // namespace

int read_vc1_sequence(Vc1Sequence* sequence, Bytes bytes) {
    RbspReader reader = rbsp_reader(bytes);
    Vc1Sequence found;
    found.profile = static_cast<uint8_t>(read_u(&reader, 2));       // PROFILE
    found.level = static_cast<uint8_t>(read_u(&reader, 3));         // LEVEL
    found.chroma_format = static_cast<uint8_t>(read_u(&reader, 2)); // COLORDIFF_FORMAT
    read_u(&reader, 3);                                             // FRMRTQ_POSTPROC
    read_u(&reader, 5);                                             // BITRTQ_POSTPROC
    read_u(&reader, 1);                                             // POSTPROCFLAG
    found.width = (read_u(&reader, 12) + 1) * 2;                    // MAX_CODED_WIDTH
    found.height = (read_u(&reader, 12) + 1) * 2;                   // MAX_CODED_HEIGHT
    read_u(&reader, 1);                                             // PULLDOWN
    found.interlaced = static_cast<uint8_t>(read_u(&reader, 1));    // INTERLACE
    read_u(&reader, 4); // TFCNTRFLAG, FINTERPFLAG, RESERVED, PSF
    if (found.profile != vc1_advanced || found.chroma_format != 1 || rbsp_overrun(&reader)) {
        return 1;
    }
    if (read_u(&reader, 1) != 0) { // DISPLAY_EXT
        Vc1Sequence with_display = found;
        read_display(&reader, &with_display);
        read_colour(&reader, &with_display);
        found = rbsp_overrun(&reader) ? found : with_display;
    }
    *sequence = found;
    return 0;
}

int read_vc1_struct_c(Vc1Sequence* sequence, Bytes bytes) {
    constexpr size_t struct_c_size = 4;
    if (bytes.size() < struct_c_size) {
        return 1;
    }
    *sequence = {};
    sequence->profile = bytes[0] >> 6;
    return 0;
}

int find_vc1_sequence(Bytes stream, Vc1Sequence* sequence) {
    for (int64_t at = find_start_code_of(stream, 0, sequence_code); at >= 0;
         at = find_start_code_of(stream, static_cast<size_t>(at) + 3, sequence_code)) {
        if (read_vc1_sequence(
                sequence, stream.subspan(static_cast<size_t>(at) + start_code_size)) == 0) {
            return 0;
        }
    }
    return 1;
}

const char* vc1_profile_name(uint32_t profile) {
    static constexpr const char* names[] = {"Simple", "Main", "Complex", "Advanced"};
    return profile < std::size(names) ? names[profile] : "";
}

} // namespace zat
