// The picture header of the H.263 variant in Flash Video files.
#pragma once

#include "common/bytes.h"

namespace zat {

struct H263PictureSize {
    uint32_t width = 0; // pixels
    uint32_t height = 0;
};

// The size in an H263VIDEOPACKET (Adobe Flash Video File Format 10.1, annex E.4.3.2); the
// start code is not checked. {0, 0} for the reserved size code and for a header that is cut off.
H263PictureSize ParseFlvH263PictureSize(Bytes picture);

} // namespace zat
