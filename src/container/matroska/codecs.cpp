#include "container/matroska/codecs.h"

#include "common/text/fourcc.h"

#include <algorithm>
#include <iterator>

namespace zat::matroska {

namespace {

// An identifier stands in front of those that begin with it.
constexpr Codec codecs[] = {
    {"V_MPEG4/ISO/AVC", "AVC/H264", {"H.264"}, Parser::code, fourcc("H264")},
    {"V_MPEGH/ISO/HEVC", "HEVC/H265", {"HEVC"}, Parser::code, fourcc("HEVC")},
    {"V_MPEGI/ISO/VVC", "VVC/H266", {"VVC"}},
    {"V_AV1", "AV1", {"AV1"}, Parser::code, fourcc("AV01")},
    {"V_VP8", "VP8", {"VP8"}, Parser::code, fourcc("VP80")},
    {"V_VP9", "VP9", {"VP9"}, Parser::code, fourcc("VP90")},
    {"V_MPEG1", "MPEG1", {"MPEG-1 Video"}, Parser::code, fourcc("MPG1")},
    {"V_MPEG2", "MPEG2", {"MPEG-2 Video"}, Parser::code, fourcc("MPG2")},
    {"V_MPEG4/ISO", "MPEG4", {"MPEG-4 Visual"}, Parser::code, fourcc("MP4V")},
    {"V_MPEG4/MS/V3", "MS-MPEG4 v3", {"MS-MPEG4 v3"}},
    {"V_MS/VFW/FOURCC", "", {}, Parser::vfw},
    {"V_QUICKTIME", "QuickTime", {}, Parser::stsd},
    {"V_PRORES", "ProRes", {"ProRes"}, Parser::fourcc},
    {"V_UNCOMPRESSED", "Raw video", {"Raw video"}, Parser::raw},
    {"V_THEORA", "Theora", {"Theora"}, Parser::theora},
    {"V_MJPEG", "Motion JPEG", {"MJPEG"}, Parser::code, fourcc("MJPG")},
    {"V_FFV1", "FFV1", {"FFV1"}},
    {"V_DIRAC", "Dirac", {"Dirac"}},
    {"V_SNOW", "Snow", {"Snow"}},
    {"V_CAVS", "AVS", {"AVS"}},
    {"V_AVS2", "AVS2", {"AVS2"}},
    {"V_AVS3", "AVS3", {"AVS3"}},
    {"V_REAL/RV10", "RealVideo 10", {"RealVideo 10"}},
    {"V_REAL/RV20", "RealVideo 20", {"RealVideo 20"}},
    {"V_REAL/RV30", "RealVideo 30", {"RealVideo 30"}},
    {"V_REAL/RV40", "RealVideo 40", {"RealVideo 40"}},

    {"A_MPEG/L1", "MP1", {"MP1"}, Parser::mpeg_audio},
    {"A_MPEG/L2", "MP2", {"MP2"}, Parser::mpeg_audio},
    {"A_MPEG/L3", "MP3", {"MP3"}, Parser::mpeg_audio},
    {"A_AAC", "AAC", {"AAC"}, Parser::aac},
    {"A_AC3", "AC-3", {"AC-3"}, Parser::ac3},
    {"A_EAC3", "E-AC-3", {"E-AC-3"}, Parser::eac3},
    {"A_AC4", "AC-4", {"AC-4"}},
    {"A_DTS/EXPRESS", "DTS Express", {"DTS", "Express"}, Parser::dts},
    {"A_DTS/LOSSLESS", "DTS-HD MA", {"DTS", "HD MA"}, Parser::dts},
    {"A_DTS", "DTS", {"DTS"}, Parser::dts},
    {"A_TRUEHD", "TrueHD", {"TrueHD"}, Parser::truehd},
    {"A_MLP", "MLP", {"MLP"}, Parser::lossless},
    {"A_VORBIS", "Vorbis", {"Vorbis"}, Parser::vorbis},
    {"A_OPUS", "Opus", {"Opus"}, Parser::opus},
    {"A_SPEEX", "Speex", {"Speex"}}, // not registered, but written by GStreamer
    {"A_FLAC", "FLAC", {"FLAC"}, Parser::flac},
    {"A_ALAC", "ALAC", {"ALAC"}, Parser::alac},
    {"A_TTA1", "TTA", {"TTA"}, Parser::lossless},
    {"A_WAVPACK4", "WavPack", {"WavPack"}, Parser::lossless},
    {"A_ATRAC/AT1", "ATRAC", {"ATRAC"}},
    {"A_MPC", "Musepack", {"Musepack"}},
    {"A_PCM/INT/LIT", "PCM", {"PCM"}, Parser::pcm_signed_le},
    {"A_PCM/INT/BIG", "PCM", {"PCM"}, Parser::pcm_signed_be},
    {"A_PCM/FLOAT/IEEE", "PCM", {"PCM"}, Parser::pcm_float},
    {"A_MS/ACM", "", {}, Parser::acm},
    {"A_QUICKTIME", "QuickTime", {}, Parser::stsd},
    {"A_REAL/14_4", "RealAudio 1.0", {"RealAudio 14.4"}},
    {"A_REAL/28_8", "RealAudio 2.0", {"RealAudio 28.8"}},
    {"A_REAL/COOK", "RealAudio Cook", {"RealAudio Cook"}},
    {"A_REAL/SIPR", "RealAudio SIPR", {"RealAudio Sipro"}},
    {"A_REAL/RALF", "RealAudio Lossless", {"RealAudio Lossless"}, Parser::lossless},
    {"A_REAL/ATRC", "ATRAC3", {"ATRAC3"}},

    {"S_TEXT/UTF8", "SubRip", {"SubRip"}},
    {"S_TEXT/ASCII", "SubRip", {"SubRip"}},
    {"S_TEXT/SSA", "SSA", {"ASS", "SSA"}},
    {"S_TEXT/ASS", "ASS", {"ASS"}},
    {"S_TEXT/USF", "USF", {"USF"}},
    {"S_TEXT/WEBVTT", "WebVTT", {"WebVTT"}},
    {"S_SSA", "SSA", {"ASS", "SSA"}},
    {"S_ASS", "ASS", {"ASS"}},
    {"D_WEBVTT", "WebVTT", {"WebVTT"}},
    {"S_VOBSUB", "VobSub", {"VobSub"}},
    {"S_HDMV/PGS", "PGS", {"PGS"}},
    {"S_HDMV/TEXTST", "TextST", {"TextST"}},
    {"S_DVBSUB", "DVB subtitle", {"DVB subtitle"}},
    {"S_ARIBSUB", "ARIB caption", {"ARIB caption"}},
    {"S_KATE", "Kate", {"Kate"}},
    {"S_IMAGE/BMP", "BMP", {"BMP"}},
    {"B_VOBBTN", "VobBtn", {"DVD buttons"}},
};

bool names(const Codec& codec, std::string_view id) {
    return id.starts_with(codec.id) && (id.size() == codec.id.size() || id[codec.id.size()] == '/');
}

} // namespace

const Codec* find_codec(std::string_view codec_id) {
    const auto* row = std::find_if(std::begin(codecs), std::end(codecs),
        [=](const Codec& codec) { return names(codec, codec_id); });
    return row != std::end(codecs) ? row : nullptr;
}

} // namespace zat::matroska
