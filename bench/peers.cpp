#include "peers.h"

#if BENCH_LIBAVFORMAT
extern "C" {
#include <libavformat/avformat.h>
}
#endif
#if BENCH_LIBMEDIAINFO
#define UNICODE // as the library is built
#include <MediaInfo/MediaInfo.h>
#include <clocale>
#endif
#if BENCH_TAGLIB
#include <fileref.h>
#endif

namespace {

#if BENCH_LIBAVFORMAT
bool describe_by_libavformat(const std::string& path) {
    AVFormatContext* context = nullptr;
    if (avformat_open_input(&context, path.c_str(), nullptr, nullptr) != 0) {
        return false;
    }
    const bool known = avformat_find_stream_info(context, nullptr) >= 0 && context->nb_streams != 0;
    avformat_close_input(&context);
    return known;
}
#endif

#if BENCH_LIBMEDIAINFO
bool describe_by_libmediainfo(const std::string& path) {
    MediaInfoLib::MediaInfo info;
    const std::wstring wide(path.begin(), path.end());
    const bool known =
        info.Open(wide) != 0 && !info.Get(MediaInfoLib::Stream_General, 0, L"Format").empty();
    info.Close();
    return known;
}
#endif

#if BENCH_TAGLIB
bool describe_by_taglib(const std::string& path) {
    const TagLib::FileRef file(path.c_str(), true, TagLib::AudioProperties::Average);
    return !file.isNull() && file.audioProperties() != nullptr &&
           file.audioProperties()->sampleRate() != 0;
}
#endif

} // namespace

const Peer peers[] = {
#if BENCH_LIBAVFORMAT
    {"libavformat", describe_by_libavformat},
#endif
#if BENCH_LIBMEDIAINFO
    {"libmediainfo", describe_by_libmediainfo},
#endif
#if BENCH_TAGLIB
    {"TagLib", describe_by_taglib},
#endif
    {nullptr, nullptr},
};

const size_t peer_count = sizeof peers / sizeof *peers - 1;

void set_up_peers() {
#if BENCH_LIBAVFORMAT
    av_log_set_level(AV_LOG_QUIET);
#endif
#if BENCH_LIBMEDIAINFO
    std::setlocale(LC_CTYPE, "C.UTF-8"); // its paths are wide
#endif
}
