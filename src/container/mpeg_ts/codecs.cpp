#include "container/mpeg_ts/codecs.h"

#include <iterator>

namespace zat::ts {

namespace {

// In the order of the enumeration.
constexpr CodecText codec_texts[] = {
    {Codec::mpeg1_video, ZAT_STREAM_VIDEO, "MPEG1", "MPEG-1 Video"},
    {Codec::mpeg2_video, ZAT_STREAM_VIDEO, "MPEG2", "MPEG-2 Video"},
    {Codec::mpeg4_visual, ZAT_STREAM_VIDEO, "MPEG4", "MPEG-4 Visual"},
    {Codec::avc, ZAT_STREAM_VIDEO, "AVC/H264", "H.264"},
    {Codec::avc_layers, ZAT_STREAM_VIDEO, "AVC/H264 layers", "H.264"},
    {Codec::hevc, ZAT_STREAM_VIDEO, "HEVC/H265", "HEVC"},
    {Codec::hevc_layers, ZAT_STREAM_VIDEO, "HEVC/H265 layers", "HEVC"},
    {Codec::vvc, ZAT_STREAM_VIDEO, "VVC/H266", "VVC"},
    {Codec::evc, ZAT_STREAM_VIDEO, "EVC", "EVC"},
    {Codec::av1, ZAT_STREAM_VIDEO, "AV1", "AV1"},
    {Codec::vc1, ZAT_STREAM_VIDEO, "VC-1", "VC-1"},
    {Codec::jpeg2000, ZAT_STREAM_VIDEO, "JPEG 2000", "JPEG 2000"},
    {Codec::jpeg_xs, ZAT_STREAM_VIDEO, "JPEG XS", "JPEG XS"},
    {Codec::dirac, ZAT_STREAM_VIDEO, "Dirac", "Dirac"},
    {Codec::avs, ZAT_STREAM_VIDEO, "AVS", "AVS"},
    {Codec::avs2, ZAT_STREAM_VIDEO, "AVS2", "AVS2"},
    {Codec::avs3, ZAT_STREAM_VIDEO, "AVS3", "AVS3"},
    {Codec::unknown_video, ZAT_STREAM_VIDEO, "video", ""},
    {Codec::mpeg_audio, ZAT_STREAM_AUDIO, "MPEG audio", "MPEG audio"},
    {Codec::aac, ZAT_STREAM_AUDIO, "AAC", "AAC"},
    {Codec::aac_raw, ZAT_STREAM_AUDIO, "AAC", "AAC"},
    {Codec::ac3, ZAT_STREAM_AUDIO, "AC-3", "AC-3"},
    {Codec::eac3, ZAT_STREAM_AUDIO, "E-AC-3", "E-AC-3"},
    {Codec::ac4, ZAT_STREAM_AUDIO, "AC-4", "AC-4"},
    {Codec::truehd, ZAT_STREAM_AUDIO, "TrueHD", "TrueHD"},
    {Codec::dts, ZAT_STREAM_AUDIO, "DTS", "DTS"},
    {Codec::dts_hd_hra, ZAT_STREAM_AUDIO, "DTS-HD HRA", "DTS"},
    {Codec::dts_hd_ma, ZAT_STREAM_AUDIO, "DTS-HD MA", "DTS"},
    {Codec::dts_express, ZAT_STREAM_AUDIO, "DTS Express", "DTS"},
    {Codec::lpcm, ZAT_STREAM_AUDIO, "LPCM", "PCM"},
    {Codec::s302m, ZAT_STREAM_AUDIO, "SMPTE 302M", "PCM"},
    {Codec::opus, ZAT_STREAM_AUDIO, "Opus", "Opus"},
    {Codec::mpegh, ZAT_STREAM_AUDIO, "MPEG-H Audio", "MPEG-H 3D Audio"},
    {Codec::unknown_audio, ZAT_STREAM_AUDIO, "audio", ""},
    {Codec::pgs, ZAT_STREAM_TEXT, "PGS", "PGS"},
    {Codec::hdmv_text, ZAT_STREAM_TEXT, "HDMV text", "HDMV text"},
    {Codec::dvb_subtitle, ZAT_STREAM_TEXT, "DVB subtitle", "DVB subtitle"},
    {Codec::teletext, ZAT_STREAM_TEXT, "teletext", "teletext"},
    {Codec::arib_caption, ZAT_STREAM_TEXT, "ARIB caption", "ARIB caption"},
    {Codec::arib_superimpose, ZAT_STREAM_TEXT, "ARIB superimpose", "ARIB superimpose"},
    {Codec::ttml, ZAT_STREAM_TEXT, "TTML", "TTML"},
    {Codec::timed_text, ZAT_STREAM_TEXT, "timed text", "timed text"},
    {Codec::igs, ZAT_STREAM_DATA, "IGS", "IGS"},
    {Codec::data_broadcasting, ZAT_STREAM_DATA, "data broadcasting", "data broadcasting"},
    {Codec::timed_id3, ZAT_STREAM_DATA, "timed ID3", "timed ID3"},
    {Codec::klv, ZAT_STREAM_DATA, "KLV", "KLV"},
    {Codec::ait, ZAT_STREAM_DATA, "AIT", "AIT"},
    {Codec::scte35, ZAT_STREAM_DATA, "SCTE-35", "SCTE-35"},
    {Codec::private_sections, ZAT_STREAM_DATA, "private sections", "private sections"},
    {Codec::private_data, ZAT_STREAM_DATA, "private data", "private data"},
    {Codec::mheg, ZAT_STREAM_DATA, "MHEG", "MHEG"},
    {Codec::dsm_cc, ZAT_STREAM_DATA, "DSM-CC", "DSM-CC"},
    {Codec::dsm_cc_a, ZAT_STREAM_DATA, "DSM-CC type A", "DSM-CC"},
    {Codec::dsm_cc_b, ZAT_STREAM_DATA, "DSM-CC type B", "DSM-CC"},
    {Codec::dsm_cc_c, ZAT_STREAM_DATA, "DSM-CC type C", "DSM-CC"},
    {Codec::dsm_cc_d, ZAT_STREAM_DATA, "DSM-CC type D", "DSM-CC"},
    {Codec::h222_1, ZAT_STREAM_DATA, "H.222.1", "H.222.1"},
    {Codec::auxiliary, ZAT_STREAM_DATA, "auxiliary", "auxiliary"},
    {Codec::sl_packets, ZAT_STREAM_DATA, "SL packets", "SL packets"},
    {Codec::download, ZAT_STREAM_DATA, "download", "download"},
    {Codec::metadata, ZAT_STREAM_DATA, "metadata", "metadata"},
    {Codec::ipmp, ZAT_STREAM_DATA, "IPMP", "IPMP"},
    {Codec::data, ZAT_STREAM_DATA, "data", "data"},
};

constexpr bool are_in_order() {
    for (size_t i = 0; i < std::size(codec_texts); ++i) {
        if (codec_texts[i].codec != static_cast<Codec>(i)) {
            return false;
        }
    }
    return std::size(codec_texts) == static_cast<size_t>(Codec::count);
}
static_assert(are_in_order());

} // namespace

const CodecText& text_of(Codec codec) {
    return codec_texts[static_cast<size_t>(codec)];
}

} // namespace zat::ts
