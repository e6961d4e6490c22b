// What the audio parsers find, as the typed facts of a stream: one codec vocabulary for all
// containers, rates and channels as they are decoded. Each function sets what its parser knows and
// leaves the rest, so that a container's own facts may be set before or behind it.
#pragma once

#include "audio/ac3.h"
#include "audio/adts.h"
#include "audio/alac.h"
#include "audio/audio_specific_config.h"
#include "audio/dts.h"
#include "audio/flac_streaminfo.h"
#include "audio/lpcm.h"
#include "audio/mpeg_audio.h"
#include "audio/truehd.h"
#include "audio/vorbis.h"
#include "audio/wave_format.h"
#include "common/record/details.h"

namespace zat {

// By the first frame and the VBR header in it, if any: with one, also samples and duration.
void mpeg_audio_facts(const MpegAudioInfo& info, ZatStream* stream);

void ac3_facts(const Ac3Info& info, ZatStream* stream);

// The core, with the extensions inside it.
void dts_facts(const DtsInfo& info, ZatStream* stream);

void truehd_facts(const TrueHdInfo& info, ZatStream* stream);
// Rate, channels and layout alone.
void truehd_format_facts(const TrueHdInfo& info, ZatStream* stream);
void mlp_facts(const MlpInfo& info, ZatStream* stream);

void aac_facts(const AudioSpecificConfig& config, ZatStream* stream);

// The bit rate is that of one frame, and marked as estimated. The frame begins with the header; its
// first element may tell the channels where that does not.
void adts_facts(const AdtsHeader& header, Bytes frame, ZatStream* stream);

void vorbis_facts(const VorbisInfo& info, ZatStream* stream);

// Rate, channels with their speakers and bits.
void alac_facts(const AlacConfig& config, ZatStream* stream);
void flac_facts(const FlacStreamInfo& info, ZatStream* stream);

void dvd_lpcm_facts(const LpcmInfo& info, ZatStream* stream);
void bd_lpcm_facts(const LpcmInfo& info, ZatStream* stream);

// Codec, codec id, rate, channels and speakers of any format; bits of the PCM ones.
void wave_facts(const WaveFormat& format, ZatStream* stream);

// Sets the bytes of the payload and, by them, what the other facts leave open of duration and bit
// rate. A duration by a rate that need not be constant is estimated.
void complete_by_bytes(int64_t bytes, ZatStream* stream);

// The speakers of a channel mask; none when their number is not that of the channels.
void set_layout(uint32_t mask, ZatStream* stream);

} // namespace zat
