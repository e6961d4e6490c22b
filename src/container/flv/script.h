// The metadata objects of Flash Video files.
#pragma once

#include "common/bytes/bytes.h"

namespace zat {

// Numbers as the objects state them, whatever they are; 0 where none does.
struct FlvMetadata {
    double duration = 0;   // seconds
    double width = 0;      // pixels
    double height = 0;     // pixels
    double frame_rate = 0; // frames per second
    double video_rate = 0; // kbit/s
    double audio_rate = 0; // kbit/s
    double file_size = 0;  // bytes

    // The first texts of each name, as they stand; empty where there is none.
    char title[256] = "";
    char artist[256] = "";
    char encoder[256] = "";
    char creator[256] = "";          // the program, as some name it
    char metadata_creator[256] = ""; // the program that put the metadata in
};

// Takes the known numbers and texts from the data of a script tag: an AMF0 string (the object's
// name, which is not looked at) and an ECMA array (Action Message Format AMF 0, section 2). A later
// number of the same name wins. Damage ends the walk; what came before it counts.
void ParseFlvScript(Bytes data, FlvMetadata* metadata);

} // namespace zat
