// The metadata objects of Flash Video files.
#pragma once

#include "common/bytes.h"

namespace zat {

// Numbers as the objects state them, whatever they are; 0 where none does.
struct FlvMetadata {
    double duration = 0;   // seconds
    double width = 0;      // pixels
    double height = 0;     // pixels
    double frame_rate = 0; // frames per second
    double video_rate = 0; // kbit/s
    double audio_rate = 0; // kbit/s
};

// Takes the known numbers from the data of a script tag: an AMF0 string (the object's name, which
// is not looked at) and an ECMA array (Action Message Format AMF 0, section 2). A later value of
// the same name wins. Damage ends the walk; what came before it counts.
void ParseFlvScript(Bytes data, FlvMetadata* metadata);

} // namespace zat
