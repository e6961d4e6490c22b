#include "container/mpeg_descriptors.h"

#include "common/text/text.h"
#include "zat/details.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace zat {

bool next_descriptor(Bytes* rest, Descriptor* descriptor) {
    if (rest->size() < 2 || (*rest)[1] > rest->size() - 2) {
        return false;
    }
    descriptor->tag = (*rest)[0];
    descriptor->data = rest->subspan(2, (*rest)[1]);
    *rest = rest->subspan(2 + descriptor->data.size());
    return true;
}

void add_language(char (&languages)[32], Bytes code) {
    if (code.size() < 3 || !std::ranges::all_of(code.first(3), is_ascii_letter)) {
        return;
    }
    char text[4] = {};
    for (size_t i = 0; i < 3; ++i) {
        text[i] = static_cast<char>(code[i]);
    }
    const std::string_view known = bounded_text(languages);
    if (known.find(text) != std::string_view::npos || known.size() + 4 >= sizeof languages) {
        return;
    }
    append_text(languages, known.empty() ? "" : "/");
    append_text(languages, text);
}

void read_languages(Bytes data, char (&languages)[32], uint32_t* flags) {
    if (languages[0] != '\0') {
        return;
    }
    for (; data.size() >= 4; data = data.subspan(4)) {
        add_language(languages, data.first(3));
        switch (data[3]) { // audio_type
        case 2:
            *flags |= ZAT_FLAG_HEARING_IMPAIRED;
            break;
        case 3:
            *flags |= ZAT_FLAG_VISUAL_IMPAIRED;
            break;
        default:
            break;
        }
    }
}

} // namespace zat
