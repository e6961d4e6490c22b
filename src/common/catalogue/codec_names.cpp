#include "common/catalogue/codec_names.h"

#include "common/bytes/bytes.h"
#include "common/text/fourcc.h"
#include "common/text/text.h"

#include <algorithm>
#include <iterator>

namespace zat {

namespace {

using namespace std::string_view_literals;

// Codes of four upper-case characters each, one behind the other.
struct FourccRow {
    std::string_view codes;
    CodecName name;
};

constexpr FourccRow video_codes[] = {
    {"DIVXXVIDXVIXDX50FMP4FFDSFVFWMP4VMP4SM4S23IV03IV13IV23IVXBLZ0DM4VDXGMEM4AEPHVGEOX"
     "GMP4HDX4M4CCNDIGPVMMRMP4SEDGSM4VSMP4UMP4VIDMWV1FZMP4",
        {"MPEG-4 Visual"}},
    {"3IVDMP43MPG3DIV3DIV4DIV5DIV6DVX3AP41COL0COL1", {"MS-MPEG4 v3"}},
    {"MPG4MP41DIV1", {"MS-MPEG4 v1"}},
    {"MP42DIV2", {"MS-MPEG4 v2"}},
    {"H264X264AVC1DAVCVSSHQ264V264AVC2AVC3AVC4SVC1SVC2MVC1MVC2MVC3MVC4DVA1DVAVAI5PAI5Q"
     "AI52AI53AI55AI56AI1PAI1QAI12AI13AI15AI16AVINAIVXXALG",
        {"H.264"}},
    {"HEVCH265X265HVC1HEV1HVC2HEV2HVT1LHV1LHE1DVHE", {"HEVC"}},
    {"H266VVC1VVI1", {"VVC"}},
    {"AV01DAV1", {"AV1"}},
    {"CAVS", {"AVS"}},
    {"AVS2", {"AVS2"}},
    {"H261M261D261L261", {"H.261"}},
    {"H263S263I263M263D263L263T263U263X263VIVOVIV1VIV2", {"H.263"}},
    {"VX1K", {"Lucent VX1000S"}},
    {"ZYGO", {"ZyGo Video"}},
    {"MPEGMPG1PIM1XMPGBW10M1V M1V1MP1V", {"MPEG-1 Video"}},
    {"MPG2MPGVMP2VPIM2LMP2MMESEM2VDVR VCR2H262M2V1MX3NMX3PMX4NMX4PMX5NMX5PAVMPHDV1HDV2"
     "HDV3HDV4HDV5HDV6HDV7HDV8HDV9HDVAXDV1XDV2XDV3XDV4XDV5XDV6XDV7XDV8XDV9XDVAXDVBXDVC"
     "XDVDXDVEXDVFXD51XD54XD55XD59XD5AXD5BXD5CXD5DXD5EXD5FXDHDXDH2",
        {"MPEG-2 Video"}},
    {"WMV1", {"WMV1"}},
    {"WMV2", {"WMV2"}},
    {"WMV3", {"WMV3"}},
    {"WMVAWVC1VC-1OVC1", {"VC-1"}},
    {"WMVP", {"WMV 9 Image"}},
    {"WVP2", {"WMV 9.1 Image V2"}},
    {"MSS1", {"WM Screen 7"}},
    {"MSS2", {"WM Screen 9"}},
    {"MSA1", {"MS ATC Screen"}},
    {"MTS2", {"MS Expression Encoder Screen"}},
    {"GXVE", {"ViVD V2"}},
    {"CRAMMSVCWHAM", {"MS Video 1"}},
    {"\1\0\0\0\2\0\0\0"
     "MRLERLE RLE8RLE4WRLE"sv,
        {"MS RLE"}},
    {"CVID", {"Cinepak"}},
    {"RPZAAZPR", {"Apple Video (RPZA)"}},
    {"SMC ", {"Apple Graphics (SMC)"}},
    {"SVQ1SVQI", {"Sorenson Video 1"}},
    {"SVQ3", {"Sorenson Video 3"}},
    {"PXLT", {"Apple Pixlet"}},
    {"RT21IR21", {"Indeo 2.1"}},
    {"IV30IV31IV32", {"Indeo 3"}},
    {"IV40IV41IAN ", {"Indeo 4"}},
    {"IV50", {"Indeo 5"}},
    {"ULTI", {"IBM Ultimotion"}},
    {"VIXLPIXL", {"miroVIDEO XL"}},
    {"QPEGQ1.0Q1.1", {"QPEG"}},
    {"ANIM", {"Intel RDX"}},
    {"AFLCAFLIFLIC", {"Autodesk FLIC"}},
    {"CYUV", {"Creative YUV"}},
    {"AURAAUR2", {"Auravision"}},
    {"WNV1", {"Winnov WNV1"}},
    {"YUV8", {"Winnov YUV8"}},
    {"VDOW", {"VDOLive"}},
    {"UCOD", {"ClearVideo"}},
    {"KMVC", {"Karl Morton's Video"}},
    {"XXAN", {"Xan (Wing Commander)"}},
    {"4XMV", {"4X Movie"}},
    {"AMVF", {"AMV"}},
    {"ASV1ASV2", {"ASUS Video"}},
    {"VCR1", {"ATI VCR1"}},
    {"LSVM", {"Vianet Lighting Strike"}},
    {"DUCKPVEZTM10", {"TrueMotion 1"}},
    {"TM20", {"TrueMotion 2"}},
    {"TM2A", {"TrueMotion Archiver 2"}},
    {"TM2X", {"TrueMotion 2X"}},
    {"TR20", {"TrueMotion RT 2"}},
    {"VP30VP31VP32", {"VP3"}},
    {"VP40", {"VP4"}},
    {"VP50", {"VP5"}},
    {"VP60VP61VP62VP6AVP6FFLV4", {"VP6"}},
    {"VP70VP71", {"VP7"}},
    {"VP80VP08", {"VP8"}},
    {"VP90VP09", {"VP9"}},
    {"THEO", {"Theora"}},
    {"DRAC", {"Dirac"}},
    {"SNOW", {"Snow"}},
    {"FLV1", {"Sorenson H.263"}},
    {"FSV1", {"Flash Screen Video"}},
    {"RV10RV13", {"RealVideo 10"}},
    {"RV20RVTR", {"RealVideo 20"}},
    {"RV30", {"RealVideo 30"}},
    {"RV40", {"RealVideo 40"}},
    {"RV60", {"RealVideo 60"}},
    {"MJPGJPEGAVRNAVDJADVJACDVAVI1AVI2CJPGDMB1DMB2DJPGIJPGJPGLMJPAMJPBMJPXQIVGSLMJSP54"
     "ZJPG",
        {"MJPEG"}},
    {"LJPGPIMJ", {"Lossless JPEG"}},
    {"MJLS", {"JPEG-LS"}},
    {"MJ2CMJP2LJ2KLJ2CIPJ2", {"JPEG 2000"}},
    {"DVSDDVSLDVHDDVC DVCSDVISDVCPPDVCCDVCCDVHCDV5IPDVSLDVAVD1MDVFAVDV", {"DV"}},
    {"DVH1DVHPDVHQDVH2DVH3DVH5DVH6", {"DV", "DVCPRO HD"}},
    {"DV25SL25DVPP", {"DV", "DVCPRO"}},
    {"DV50DV5NDV5P", {"DV", "DVCPRO50"}},
    {"HFYUFFVH", {"Huffyuv"}},
    {"FFV1", {"FFV1"}},
    {"LAGS", {"Lagarith"}},
    {"ULRAULRGULY0ULY2ULY4ULH0ULH2ULH4UQY2UQRGUQRAUMRGUMRAUMY2UMY4UMH2UMH4", {"Ut Video"}},
    {"MAGYM8RGM8RAM8G0M8Y0M8Y2M8Y4M8YA", {"MagicYUV"}},
    {"AASCAAS4", {"Autodesk RLE"}},
    {"LOCO", {"LOCO"}},
    {"MSZH", {"AVImszh"}},
    {"ZLIB", {"AVIzlib"}},
    {"ZMBV", {"Zip Motion Blocks Video"}},
    {"VBLE", {"VBLE"}},
    {"YLC0", {"YUY2 Lossless Codec"}},
    {"CLLC", {"Canopus Lossless"}},
    {"CHQX", {"Canopus HQX"}},
    {"CUVC", {"Canopus HQ"}},
    {"CFHD", {"CineForm"}},
    {"AVDNAVDH", {"DNxHD"}},
    {"APCH", {"ProRes", "422 HQ"}},
    {"APCN", {"ProRes", "422"}},
    {"APCS", {"ProRes", "422 LT"}},
    {"APCO", {"ProRes", "422 Proxy"}},
    {"AP4H", {"ProRes", "4444"}},
    {"SHQ0SHQ1SHQ2SHQ3SHQ4SHQ5SHQ7SHQ9", {"SpeedHQ"}},
    {"FICV", {"Mirillis FIC"}},
    {"XTOR", {"Dxtory"}},
    {"FPS1", {"Fraps"}},
    {"MPNGPNG ", {"PNG"}},
    {"PNG1", {"CorePNG"}},
    {"TGA ", {"Targa"}},
    {"ASLC", {"AlparySoft Lossless"}},
    {"MSUD", {"MSU Lossless"}},
    {"TSCC", {"TechSmith Screen Capture"}},
    {"TSC2", {"TechSmith Screen Capture 2"}},
    {"CSCD", {"CamStudio"}},
    {"VMNC", {"VMware Video"}},
    {"G2M2G2M3G2M4G2M5", {"GoToMeeting"}},
    {"RSCCISCC", {"innoHeim Screen Capture"}},
    {"SCPR", {"ScreenPressor"}},
    {"SPV1", {"Screenpresso"}},
    {"MSCC", {"Mandsoft Screen Capture"}},
    {"MWSC", {"MatchWare Screen Capture"}},
    {"LSCR", {"LEAD Screen Capture"}},
    {"WCMV", {"WinCAM Motion Video"}},
    {"RASC", {"RemotelyAnywhere Screen Capture"}},
    {"FMVC", {"FM Screen Capture"}},
    {"TDSC", {"TDSC"}},
    {"LM20ML20", {"MSN Messenger Mimic"}},
    {"AVIS", {"AviSynth"}},
    {"DFSC", {"DebugMode FrameServer"}},
    {"VDST", {"VirtualDub frame server"}},
    {"VIFP", {"VFAPI"}},
    {"\0\0\0\0\3\0\0\0"
     "RGB RGBARAW DIB BGR R10KR210GREYY800Y8  YUY2YUYVYUNVYVYUUYVYUYNVVYUYHDYCY422V422"
     "P422Y42BYV162VUYYUVSYUV2V210V216P210P216Y211YV12I420IYUVNV12NV21P010P016IMC1IMC2"
     "IMC3IMC4YV24AYUVV308V408V410IYU1IYU2Y411Y41PY41BYUV9YVU9IF09AVUIAVUPAVRPAV1XBGRA"
     "ABGRB16GB48RB64AY216UNCV"sv,
        {"Raw video"}},
    {"CLJR", {"Cirrus Logic AccuPak"}},
    {"EVC1", {"EVC"}},
    {"LVC1", {"LCEVC"}},
    {"APV1", {"APV"}},
    {"AP4X", {"ProRes", "4444 XQ"}},
    {"APRNAPRH", {"ProRes RAW"}},
    {"ICOD", {"Apple Intermediate Codec"}},
    {"8BPS", {"Planar RGB"}},
    {"QDRW", {"QuickDraw"}},
    {"HAP1HAP5HAPYHAPAHAPM", {"Hap"}},
    {"DXD3DXDI", {"Resolume DXV"}},
    {"SHR0SHR1SHR2SHR3SHR4SHR5SHR6SHR7", {"SheerVideo"}},
    {"JXSM", {"JPEG XS"}},
    {"MNG ", {"MNG"}},
    {"TIFF", {"TIFF"}},
    {"GIF ", {"GIF"}},
    {"SGI ", {"SGI"}},
    {"DPX ", {"DPX"}},
    {"EXR ", {"OpenEXR"}},
    {"KPCD", {"Photo CD"}},
};

constexpr FourccRow audio_codes[] = {
    {"MP4AAAC ", {"AAC"}},
    {"AACHAACP", {"AAC", "HE-AAC"}},
    {"AACL", {"AAC", "LD"}},
    {"AACEAACF", {"AAC", "ELD"}},
    {"USAC", {"AAC", "xHE-AAC"}},
    {".MP1", {"MP1"}},
    {".MP2", {"MP2"}},
    {".MP3MP3 ", {"MP3"}},
    {"MHA1MHA2MHM1MHM2", {"MPEG-H 3D Audio"}},
    {"AC-3SAC3CAC3DNET", {"AC-3"}},
    {"EC-3EC+3", {"E-AC-3"}},
    {"AC-4", {"AC-4"}},
    {"MLPA", {"TrueHD"}},
    {"DTSCDTS-DTS+DTS ", {"DTS"}},
    {"DTSH", {"DTS", "HD HRA"}},
    {"DTSL", {"DTS", "HD MA"}},
    {"DTSE", {"DTS", "Express"}},
    {"DTSXDTSY", {"DTS-UHD"}},
    {"LPCMIPCMFPCMSOWTTWOSIN24IN32FL32FL64RAW NONE", {"PCM"}},
    {"ALAW", {"A-law"}},
    {"ULAW", {"mu-law"}},
    {"ALAC", {"ALAC"}},
    {"FLAC", {"FLAC"}},
    {"SAMR", {"AMR-NB"}},
    {"SAWB", {"AMR-WB"}},
    {"SAWP", {"AMR-WB+"}},
    {"SEVS", {"EVS"}},
    {"SEVC", {"EVRC"}},
    {"SQCPQCLPQCLQ", {"QCELP"}},
    {"SSMV", {"SMV"}},
    {"SVMR", {"VMR-WB"}},
    {"G719", {"G.719"}},
    {"AGSM", {"GSM 6.10"}},
    {"ILBC", {"iLBC"}},
    {"SPEXSPXN", {"Speex"}},
    {"OPUS", {"Opus"}},
    {"OGGV", {"Vorbis"}},
    {"IAMF", {"IAMF"}},
    {"IMA4", {"ADPCM", "IMA"}},
    {"MAC3", {"MACE 3:1"}},
    {"MAC6", {"MACE 6:1"}},
    {"QDMC", {"QDesign Music"}},
    {"QDM2", {"QDesign Music 2"}},
    {"DVCAVDVA", {"DV Audio"}},
    {"NMOSNELL", {"Nellymoser"}},
    {"WMA2", {"WMA2"}},
    {"WMA ", {"WMA1"}},
    {"OWMA", {"WMA Pro"}},
    {"14_414.4LPCJ", {"RealAudio 14.4"}},
    {"28_828.8", {"RealAudio 28.8"}},
    {"SIPR", {"RealAudio Sipro"}},
    {"COOKWHRL", {"RealAudio Cook"}},
    {"ATRC", {"ATRAC3"}},
    {"RTRC", {"RealAudio 8 (RTRC)"}},
    {"RALF", {"RealAudio Lossless"}},
    {"RAAC", {"AAC"}},
    {"RACP", {"AAC", "HE-AAC"}},
};

// As codes alone tell them: some more are lossless only by their streams.
constexpr std::string_view lossless_codecs[] = {"ALAC", "DST", "FLAC", "MLP", "Monkey's Audio",
    "RealAudio Lossless", "TAK", "TTA", "TrueHD", "WMA Lossless"};

template <size_t N>
CodecName find_code(const FourccRow (&rows)[N], uint32_t code) {
    const char wanted[4] = {ascii_upper(static_cast<char>(code >> 24)),
        ascii_upper(static_cast<char>(code >> 16)), ascii_upper(static_cast<char>(code >> 8)),
        ascii_upper(static_cast<char>(code))};
    const std::string_view key(wanted, sizeof wanted);
    for (const FourccRow& row : rows) {
        for (size_t at = 0; at < row.codes.size(); at += key.size()) {
            if (text_from(row.codes, at).starts_with(key)) {
                return row.name;
            }
        }
    }
    return {};
}

template <size_t N>
constexpr bool is_well_formed(const FourccRow (&rows)[N]) {
    for (const FourccRow& row : rows) {
        for (const char c : row.codes) {
            if (ascii_upper(c) != c) {
                return false;
            }
        }
        if (row.codes.size() % 4 != 0 || row.name.codec.size() > 31 ||
            row.name.profile.size() > 31) {
            return false;
        }
    }
    return true;
}
static_assert(is_well_formed(video_codes) && is_well_formed(audio_codes));

} // namespace

CodecName video_fourcc_name(uint32_t code) {
    return find_code(video_codes, code);
}

CodecName audio_fourcc_name(uint32_t code) {
    return find_code(audio_codes, code);
}

CodecName video_entry_name(uint32_t code) {
    return code == fourcc("rle ") ? CodecName{"Apple Animation (RLE)"} : video_fourcc_name(code);
}

void set_codec(ZatStream* stream, const CodecName& name) {
    copy_utf8(stream->codec, name.codec);
    if (!name.profile.empty()) {
        copy_utf8(stream->profile, name.profile);
    }
    if (std::find(std::begin(lossless_codecs), std::end(lossless_codecs), name.codec) !=
        std::end(lossless_codecs)) {
        stream->flags |= ZAT_FLAG_LOSSLESS;
    }
}

void set_fourcc_codec(ZatStream* stream, uint32_t code) {
    char text[fourcc_text_size];
    printable_fourcc_text(code, text);
    copy_utf8(stream->codec_id, text);
    const CodecName name =
        stream->kind == ZAT_STREAM_VIDEO ? video_fourcc_name(code) : audio_fourcc_name(code);
    set_codec(stream, name.codec.empty() ? CodecName{text} : name);
}

void set_format_tag_codec(ZatStream* stream, uint16_t tag, uint32_t bits) {
    constexpr uint16_t tag_pcm = 1;
    constexpr uint16_t tag_float = 3;
    format_text(stream->codec_id, sizeof stream->codec_id, "0x%04x", tag);
    if (tag == tag_pcm || tag == tag_float) {
        set_pcm(stream,
            tag == tag_float ? PcmKind::floating
            : bits <= 8      ? PcmKind::unsigned_integer
                             : PcmKind::signed_integer,
            bits, std::endian::little);
        return;
    }
    const CodecName name = format_tag_name(tag);
    set_codec(stream, name.codec.empty() ? CodecName{stream->codec_id} : name);
}

void set_pcm(ZatStream* stream, PcmKind kind, uint32_t bits, std::endian order) {
    constexpr uint32_t most_bits = 64;
    static constexpr const char* kinds[] = {"signed", "unsigned", "float"};
    copy_utf8(stream->codec, "PCM");
    if (bits != 0 && bits <= most_bits) {
        stream->bit_depth = bits;
        format_text(stream->profile, sizeof stream->profile, "%s %u%s",
            kinds[static_cast<int>(kind)], bits,
            bits <= 8                   ? ""
            : order == std::endian::big ? " BE"
                                        : " LE");
    }
}

} // namespace zat
