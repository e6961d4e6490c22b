#include "container/mp4/codec_text.h"

#include "common/codec_catalogue.h"
#include "video/divx_probe.h"

namespace zat::mp4 {

void catalogue_text(std::string_view section, const uint8_t* format, char* out) {
    char shown[9];
    FourccText(format, shown);
    codec_name(section, {reinterpret_cast<const char*>(format), 4}, shown, out, codec_text_size);
}

} // namespace zat::mp4
