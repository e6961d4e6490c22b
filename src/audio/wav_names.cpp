#include "audio/wav_names.h"

#include "common/text.h"

#include <iterator>
#include <string_view>

namespace zat {

namespace {

// By bit of the mask. Bits 4 and 5 are the back speakers, bits 9 and 10 the side ones; "SL" and
// "SR" for the former are the names that users know from this report.
constexpr std::string_view mask_names[] = {"L", "R", "C", "LFE", "SL", "SR", "FL-C", "FR-C", "B-C",
    "Side-L", "Side-R", "T-C", "TF-L", "TF-C", "TF-R", "TB-L", "TB-C", "TB-R"};

constexpr std::string_view count_names[] = {
    "L", "R", "C", "LFE", "BL", "BR", "FL-C", "FR-C", "B-C"};

// False when there is no room for the whole name.
bool add_speaker(char* out, std::string_view name) {
    const size_t used = bounded_text(out, wav_speakers_size).size();
    if (used + (used == 0 ? 0 : 1) + name.size() >= wav_speakers_size) {
        return false;
    }
    append_text(out, wav_speakers_size, used == 0 ? "" : "+");
    append_text(out, wav_speakers_size, name);
    return true;
}

} // namespace

void speakers_of_mask(uint32_t mask, char* out) {
    out[0] = '\0';
    for (size_t bit = 0; bit < std::size(mask_names); ++bit) {
        if ((mask >> bit & 1) != 0 && !add_speaker(out, mask_names[bit])) {
            return;
        }
    }
}

void speakers_of_count(uint32_t channels, char* out) {
    out[0] = '\0';
    for (size_t i = 0; i < std::size(count_names) && i < channels; ++i) {
        if (!add_speaker(out, count_names[i])) {
            return;
        }
    }
}

void guid_text(const uint8_t* guid, char* out) {
    static constexpr uint8_t order[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    size_t at = 0;
    for (size_t i = 0; i < std::size(order); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            out[at++] = '-';
        }
        at += format_text(out + at, wav_guid_size - at, "%.2X", guid[order[i]]);
    }
}

} // namespace zat
