#include "video/divx_probe.h"

#include "common/text/messages.h"
#include "common/text/text.h"
#include "video/mpeg4_visual.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace zat {

namespace {

constexpr char divx_mark[] = "DivX";
constexpr char xvid_mark[] = "XviD";
constexpr int no_string = -1;
constexpr int per_string = 2;

// The values of DivxProbe::lookup_result.
constexpr uint32_t lookup_not_listed = 1;
constexpr uint32_t lookup_no_catalogue = 2;

// Copies the text that starts at `from` and ends at its zero byte, without a final "p" (the
// encoders' sign of a packed bitstream).
void copy_encoder_string(char (&out)[16], Bytes bytes, size_t from) {
    const Bytes left = bytes.subspan(from);
    std::string_view text =
        bounded_text(reinterpret_cast<const char*>(left.data()), std::min(left.size(), sizeof out));
    if (text.ends_with('p')) {
        text.remove_suffix(1);
    }
    copy_text(out, text);
}

// Position of the first 'v' at or after `from`, or the size. Both marks hold one; looking for that
// alone leaves the work to memchr.
size_t find_mark_letter(Bytes bytes, size_t from) {
    const void* hit =
        from < bytes.size() ? std::memchr(&bytes[from], 'v', bytes.size() - from) : nullptr;
    return hit == nullptr ? bytes.size()
                          : static_cast<size_t>(static_cast<const uint8_t*>(hit) - bytes.data());
}

// Keeps the last string of each kind, two strings in all.
int find_marks(Bytes bytes, DivxProbe* probe) {
    int result = no_string;
    for (size_t i = find_mark_letter(bytes, 0); i < bytes.size() && result <= per_string;
         i = find_mark_letter(bytes, i + 1)) {
        if (i >= 2 && has_at(bytes, i - 2, divx_mark)) {
            probe->divx_pos = static_cast<uint32_t>(i - 2);
            probe->divx_found = 1;
            copy_encoder_string(probe->divx_string, bytes, i - 2);
            result += per_string;
        } else if (i >= 1 && has_at(bytes, i - 1, xvid_mark)) {
            probe->xvid_pos = static_cast<uint32_t>(i - 1);
            probe->xvid_found = 1;
            copy_encoder_string(probe->xvid_string, bytes, i - 1);
            result += per_string;
        }
    }
    return result;
}

bool is_xvid(const DivxProbe* probe) {
    return bounded_text(probe->fourcc) == "XVID";
}

// A name for a string that the catalogue did not name, for the stream that the name is meant for.
template <size_t N>
void write_fallback_name(char (&name)[N], const DivxProbe* probe, const char* text, bool wanted) {
    if (probe->lookup_result == lookup_not_listed && wanted) {
        format_text(name, N, message::not_listed, text);
    } else if (probe->lookup_result == lookup_no_catalogue) {
        format_text(name, N, message::no_catalogue, text);
    }
}

VolAspect aspect_of(const DivxProbe& probe) {
    return {probe.vol_found != 0, probe.vol_done != 0, probe.aspect_ratio_info, probe.par_width,
        probe.par_height};
}

} // namespace

void Mpeg4AspectName(DivxProbe* probe) {
    vol_aspect_name(aspect_of(*probe), probe->aspect_text);
}

void FindDivxVolAspect(Bytes buffer, DivxProbe* probe) {
    VolAspect aspect = aspect_of(*probe);
    find_vol_aspect(buffer, &aspect);
    probe->vol_found = aspect.found ? 1 : 0;
    probe->vol_done = aspect.complete ? 1 : 0;
    probe->aspect_ratio_info = aspect.aspect_ratio_info;
    probe->par_width = aspect.par_width;
    probe->par_height = aspect.par_height;
}

int find_divx_strings(Bytes bytes, DivxProbe* probe) {
    const int result = find_marks(bytes, probe);
    if (result != no_string || IsDivxFamilyFourcc(probe->fourcc) == 0) {
        FindDivxVolAspect(bytes, probe);
        Mpeg4AspectName(probe);
    }
    return result;
}

int FindDivxStrings(FileRecord* file, DivxProbe* probe) {
    const int64_t left = file->size - int64_t{probe->movi_pos};
    probe->search_len =
        static_cast<uint32_t>(std::clamp(left, int64_t{0}, int64_t{divx_search_limit}));
    uint8_t* memory =
        probe->search_len == 0 ? nullptr : reserve_memory(probe->search_len, probe->search_len);
    Bytes bytes;
    if (memory != nullptr) {
        bytes = {memory, read_at(file, probe->movi_pos, memory, probe->search_len)};
    }
    const int result = find_divx_strings(bytes, probe);
    release_memory(memory, probe->search_len);
    return result;
}

void ComposeDivxCodecName(DivxProbe* probe) {
    const bool xvid = is_xvid(probe);
    if (probe->xvid_found != 0) {
        write_fallback_name(probe->xvid_name, probe, probe->xvid_string, xvid);
        if (xvid) {
            copy_text(probe->codec_name, bounded_text(probe->xvid_name));
        }
    }
    if (probe->divx_found != 0) {
        write_fallback_name(probe->divx_name, probe, probe->divx_string, !xvid);
        if (!xvid) {
            copy_text(probe->codec_name, bounded_text(probe->divx_name));
        }
    }
    // An XviD encode marks its packed bitstream the way that DivX decoders look for.
    if (probe->xvid_found != 0 && bounded_text(probe->divx_string).starts_with("DivX999b000")) {
        copy_text(probe->codec_name, bounded_text(probe->xvid_name));
        append_text(probe->codec_name, "(BVOP)");
    }
}

int IsDivxFamilyFourcc(const char* fourcc) {
    const std::string_view text = bounded_text(fourcc, 4);
    return text == "DX50" || text.starts_with("DIV") || text == "XVID" ? 0 : -1;
}

} // namespace zat
