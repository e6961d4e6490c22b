#include "video/container_aspect.h"

#include "common/bytes/numbers.h"
#include "common/record/details.h"
#include "common/text/text.h"
#include "video/avc_names.h"

#include <cmath>

namespace zat {

namespace {

constexpr double rounding = 0.005; // of containers
constexpr double visible = 0.01;
constexpr int named_aspects = 16;

bool is_near(double a, double b, double tolerance) {
    return std::abs(a - b) <= tolerance * b;
}

double ratio_of(uint64_t width, uint64_t height) {
    return divide(static_cast<double>(width), static_cast<double>(height));
}

} // namespace

void set_container_aspect(ZatStream* stream, uint64_t display_width, uint64_t display_height) {
    if (display_width == 0 || display_height == 0 || display_width > UINT32_MAX ||
        display_height > UINT32_MAX || stream->width == 0 || stream->height == 0) {
        return;
    }
    const uint64_t width = display_width * stream->height;
    const uint64_t height = display_height * stream->width;
    const double told = ratio_of(width, height);
    const uint32_t own_width = stream->pixel_aspect_width;
    const uint32_t own_height = stream->pixel_aspect_height;
    if (own_width != 0 && is_near(told, ratio_of(own_width, own_height), rounding)) {
        set_pixel_aspect(stream, own_width, own_height);
        return;
    }
    for (int idc = 1; idc <= named_aspects; ++idc) {
        const SampleAspect named = avc_sample_aspect(idc);
        if (is_near(told, ratio_of(named.width, named.height), rounding)) {
            set_pixel_aspect(stream, named.width, named.height);
            return;
        }
    }
    set_display_aspect(stream, display_width, display_height);
}

void set_aspect_text(const ZatStream& stream, AvcSequenceInfo* info) {
    if (stream.pixel_aspect_width != 0) {
        format_text(info->aspect, sizeof info->aspect, "%d:%d",
            static_cast<int32_t>(stream.pixel_aspect_width),
            static_cast<int32_t>(stream.pixel_aspect_height));
    }
}

bool is_stretched(const ZatStream& stream) {
    return stream.pixel_aspect_width != 0 &&
           !is_near(ratio_of(stream.pixel_aspect_width, stream.pixel_aspect_height), 1, visible);
}

DisplaySize square_size(const ZatStream& stream) {
    if (stream.pixel_aspect_width == 0) {
        return {};
    }
    const double width =
        static_cast<double>(stream.width) * stream.pixel_aspect_width / stream.pixel_aspect_height;
    return {clamp_to_integer<uint32_t>(width + 0.5), stream.height};
}

} // namespace zat
