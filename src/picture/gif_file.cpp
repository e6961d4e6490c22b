#include "picture/gif_file.h"

#include "common/bytes/numbers.h"
#include "common/text/text.h"
#include "picture/picture_file.h"

#include <algorithm>

namespace zat {

namespace {

// Of larger files the frames behind this are estimated.
constexpr int64_t counted_size = 4'194'304;

constexpr uint32_t screen_size = 13; // signature and logical screen descriptor
constexpr uint32_t image_size = 10;  // image descriptor
constexpr uint32_t control_size = 8; // graphic control extension

enum Introducer : uint8_t { extension = 0x21, image = 0x2C, trailer = 0x3B };
constexpr uint8_t graphic_control = 0xF9;

// Hundredths of a second. A frame that tells less than the first is shown for the second: that is
// what viewers do.
constexpr uint32_t least_delay = 2;
constexpr uint32_t usual_delay = 10;

struct Animation {
    uint64_t frames = 0;
    uint64_t time = 0;          // hundredths of a second
    uint32_t delay = 0;         // told for the next frame
    uint32_t common_delay = 0;  // of all frames so far; 0 when they differ
    bool assumed_delay = false; // of some frames
    int64_t first_block = 0;    // position
    int64_t counted_to = 0;     // position behind the last frame
    bool sampled = false;       // there is more than was read
};

constexpr bool has_colours(uint8_t flags) {
    return (flags & 0x80) != 0;
}
constexpr uint32_t colour_bits(uint8_t flags) {
    return (flags & 0x07U) + 1;
}
constexpr int64_t colour_table_size(uint8_t flags) {
    return has_colours(flags) ? int64_t{3} << colour_bits(flags) : 0;
}

// Moves behind the data blocks, each of which begins with its size, and the empty one behind them.
// False when the readable part ends before that.
bool skip_blocks(PictureFile* gif, Span readable, int64_t* at) {
    for (;;) {
        const Bytes size = read_view(&gif->reader, readable, *at, 1);
        if (size.empty()) {
            return false;
        }
        *at += 1 + int64_t{size[0]};
        if (size[0] == 0) {
            return true;
        }
    }
}

void count_frame(Animation* animation) {
    const bool assumed = animation->delay < least_delay;
    const uint32_t delay = assumed ? usual_delay : animation->delay;
    animation->common_delay =
        animation->frames == 0 || animation->common_delay == delay ? delay : 0;
    animation->assumed_delay = animation->assumed_delay || assumed;
    animation->time += delay;
    animation->delay = 0;
    ++animation->frames;
}

// A frame up to its end; what the logical screen does not tell, the first one does.
bool take_image(PictureFile* gif, Span readable, int64_t* at, Animation* animation) {
    const Bytes header = read_view(&gif->reader, readable, *at, image_size);
    if (header.size() < image_size) {
        return false;
    }
    const uint8_t flags = header[9];
    if (gif->facts.width == 0 || gif->facts.height == 0) {
        gif->facts.width = ReadLE16(&header[5]);
        gif->facts.height = ReadLE16(&header[7]);
    }
    if (gif->bits == 0 && has_colours(flags)) {
        gif->bits = colour_bits(flags);
    }
    *at += image_size + colour_table_size(flags) + 1; // LZW minimum code size
    if (!skip_blocks(gif, readable, at)) {
        return false;
    }
    count_frame(animation);
    animation->counted_to = *at;
    return true;
}

bool take_extension(PictureFile* gif, Span readable, int64_t* at, Animation* animation) {
    const Bytes header = read_view(&gif->reader, readable, *at, control_size);
    if (header.size() >= control_size && header[1] == graphic_control && header[2] == 4) {
        animation->delay = ReadLE16(&header[4]);
    }
    *at += 2;
    return skip_blocks(gif, readable, at);
}

// Walks the blocks of the readable part. False when it ends inside one.
bool read_blocks(PictureFile* gif, Span readable, int64_t at, Animation* animation) {
    for (;;) {
        const Bytes introducer = read_view(&gif->reader, readable, at, 1);
        if (introducer.empty()) {
            return at == size_of(readable);
        }
        bool whole = true;
        switch (introducer[0]) {
        case 0: // some writers leave one between blocks
            ++at;
            break;
        case extension:
            whole = take_extension(gif, readable, &at, animation);
            break;
        case image:
            whole = take_image(gif, readable, &at, animation);
            break;
        default: // the trailer, or what is no GIF any more
            return true;
        }
        if (!whole) {
            return false;
        }
    }
}

// The logical screen: position of the first block, 0 when it is cut.
int64_t read_screen(PictureFile* gif) {
    const Bytes screen = read_view(&gif->reader, gif->span, 0, screen_size);
    if (has_at(screen, 0, "GIF87a") || has_at(screen, 0, "GIF89a")) {
        copy_text(gif->format_profile, text_of(screen.subspan(3, 3)));
        add_picture_word(gif, bounded_text(gif->format_profile));
    }
    if (screen.size() < screen_size) {
        return 0;
    }
    const uint8_t flags = screen[10];
    const uint8_t aspect = screen[12];
    gif->facts.width = ReadLE16(&screen[6]);
    gif->facts.height = ReadLE16(&screen[8]);
    gif->bits = has_colours(flags) ? colour_bits(flags) : 0;
    if (aspect != 0) {
        set_pixel_aspect(&gif->facts, aspect + 15U, 64);
    }
    return screen_size + colour_table_size(flags);
}

// Frames and their time, of the whole file.
void set_times(const Animation& animation, PictureFile* gif) {
    ZatStream* facts = &gif->facts;
    double share = 1;
    if (animation.sampled && animation.frames != 0) {
        share = divide(static_cast<double>(size_of(gif->span) - animation.first_block),
            static_cast<double>(animation.counted_to - animation.first_block));
        facts->estimated |= ZAT_ESTIMATED_FRAMES | ZAT_ESTIMATED_DURATION;
    }
    facts->frames = clamp_to_integer<uint64_t>(static_cast<double>(animation.frames) * share + 0.5);
    const bool still = facts->frames < 2;
    if (still && animation.assumed_delay) {
        return;
    }
    facts->duration = static_cast<double>(animation.time) * share / 100;
    if (animation.assumed_delay) {
        facts->estimated |= ZAT_ESTIMATED_DURATION | ZAT_ESTIMATED_FRAME_RATE;
    }
    if (still) {
        return;
    }
    set_frame_rate(facts, animation.frames * 100, animation.time);
    if (animation.sampled && animation.common_delay == 0) {
        facts->estimated |= ZAT_ESTIMATED_FRAME_RATE;
    }
}

void describe(PictureFile* gif, bool thorough) {
    Animation animation;
    animation.first_block = read_screen(gif);
    if (animation.first_block == 0) {
        gif->truncated = true;
        return;
    }
    const Span readable = sub_span(gif->span, 0, thorough ? INT64_MAX : counted_size);
    const bool whole = read_blocks(gif, readable, animation.first_block, &animation);
    const bool stopped_early = gif->reader.limited || size_of(readable) < size_of(gif->span);
    animation.sampled = !whole && stopped_early;
    gif->truncated = !whole && !stopped_early;
    gif->facts.bit_depth = gif->bits;
    set_times(animation, gif);
}

} // namespace

int AnalyzeGifFile(FileRecord* file, const Output& out) {
    PictureFile gif;
    open_picture_file(&gif, file);
    copy_text(gif.name, "GIF");
    copy_utf8(gif.facts.codec, "GIF");
    describe(&gif, is_thorough(*out.record));
    write_picture_file(&gif, "[GIF]", out);
    return 0;
}

} // namespace zat
