// Enhanced AC-3 (ATSC A/52, annex E): the frames of a stream's substreams, and its line.
#pragma once

#include "common/bytes/bytes.h"
#include "common/record/details.h"
#include "common/text/text.h"

#include <cstdint>

namespace zat {

// One frame of a substream.
struct Eac3Frame {
    uint32_t size = 0; // bytes
    bool dependent = false;
    uint8_t substream = 0;
    uint32_t sample_rate = 0; // Hz
    uint32_t samples = 0;     // per channel
    uint8_t acmod = 0;        // audio coding mode
    bool has_lfe = false;
    uint16_t locations = 0; // speakers, as the channel map has them: the left one in the top bit
};

// Decodes the header of a frame, or the AC-3 frame that can stand in the independent substream's
// place. False for anything else.
bool read_eac3_frame(Bytes bytes, Eac3Frame* frame);

// A stream: its first programme, with the channels that dependent substreams add.
struct Eac3Info {
    Eac3Frame first;
    uint16_t locations = 0;
    uint32_t channels = 0; // LFE counted
    uint32_t bitrate = 0;  // bit/s, the mean of the frames at hand
};

// Decodes the frames that follow each other from the start of the bytes on; the last one may be
// cut. False when no E-AC-3 frame is among them, or the first one is not independent.
bool eac3_info(Bytes bytes, Eac3Info* info);

// The same at the first place where such frames follow; `bytes` then begin there.
bool find_eac3(Bytes* bytes, Eac3Info* info);

// "[E-AC-3 3/2.1] 48000Hz 6ch", what the line begins with.
void eac3_name(const Eac3Info& info, char (&out)[line_size]);

// "[E-AC-3 3/2.1] 48000Hz 6ch 640.000kbps".
void eac3_line(const Eac3Info* info, char (&out)[line_size]);

void eac3_facts(const Eac3Info& info, ZatStream* stream);

} // namespace zat
