#include "audio/sound/wav_speakers.h"

#include "common/text/text.h"

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
bool add_speaker(std::string_view name, char (&out)[wav_speakers_size]) {
    const size_t used = bounded_text(out).size();
    if (used + (used == 0 ? 0 : 1) + name.size() >= wav_speakers_size) {
        return false;
    }
    append_text(out, used == 0 ? "" : "+");
    append_text(out, name);
    return true;
}

} // namespace

void speakers_of_mask(uint32_t mask, char (&out)[wav_speakers_size]) {
    out[0] = '\0';
    for (size_t bit = 0; bit < std::size(mask_names); ++bit) {
        if ((mask >> bit & 1) != 0 && !add_speaker(mask_names[bit], out)) {
            return;
        }
    }
}

void speakers_of_count(uint32_t channels, char (&out)[wav_speakers_size]) {
    out[0] = '\0';
    for (size_t i = 0; i < std::size(count_names) && i < channels; ++i) {
        if (!add_speaker(count_names[i], out)) {
            return;
        }
    }
}

} // namespace zat
