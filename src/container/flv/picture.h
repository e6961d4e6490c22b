// Picture sizes in the video data of Flash Video files.
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

struct FlvPictureSize {
    uint32_t width = 0; // pixels
    uint32_t height = 0;
};

// The size in an H263VIDEOPACKET (Adobe Flash Video File Format 10.1, annex E.4.3.2); the
// start code is not checked. {0, 0} for the reserved size code and for a header that is cut off.
FlvPictureSize ParseFlvH263PictureSize(Bytes picture);

// The size in a VP6FLVVIDEOPACKET or, behind its offset to the alpha data, a VP6FLVALPHAVIDEOPACKET
// that starts with a key frame; {0, 0} for others.
FlvPictureSize flv_vp6_picture_size(Bytes packet, bool alpha);

// The size in a SCREENVIDEOPACKET or SCREENV2VIDEOPACKET; {0, 0} when it is cut off.
FlvPictureSize flv_screen_picture_size(Bytes packet);

} // namespace zat
