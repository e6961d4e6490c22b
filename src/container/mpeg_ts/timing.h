// How long a transport stream plays: by the time stamps of a program's video and audio, else by its
// clock, checked against probes through the file for joints.
#pragma once

#include "container/mpeg_ts/analysis.h"

namespace zat::ts {

struct PlayTime {
    double seconds = 0;  // 0: not known
    bool joined = false; // parts of several recordings: the time is a sum and estimated
};

// Reads the tail and the probes of a file that the head did not cover. The programs are looked at
// from the one of index `program` on.
PlayTime measure_play_time(Analysis* analysis, uint32_t program);

} // namespace zat::ts
