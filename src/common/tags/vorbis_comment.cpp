#include "common/tags/vorbis_comment.h"

#include "common/text/text.h"
#include "common/text/text_codes.h"
#include "common/text/utf8.h"

#include <algorithm>

namespace zat {

namespace {

constexpr uint32_t comment_limit = 1024;
constexpr uint32_t text_limit = 2048; // bytes read of one item: no text that is shown is longer
constexpr int64_t length_size = 4;

int64_t comments_size(const VorbisComments& comments) {
    return comments.reader != nullptr ? size_of(comments.span)
                                      : static_cast<int64_t>(comments.bytes.size());
}

// Up to `count` bytes at `offset`.
Bytes view(VorbisComments* comments, int64_t offset, uint32_t count) {
    if (comments->reader != nullptr) {
        return read_view(comments->reader, comments->span, offset, count);
    }
    if (offset >= comments_size(*comments)) {
        return {};
    }
    const Bytes rest = comments->bytes.subspan(static_cast<size_t>(offset));
    return rest.first(std::min<size_t>(rest.size(), count));
}

// The field of 32 bits at the walk's position; false when the block ends before it does.
bool take_number(VorbisComments* comments, uint32_t* number) {
    const Bytes bytes = view(comments, comments->at, length_size);
    if (bytes.size() < length_size) {
        return false;
    }
    *number = ReadLE32(bytes.data());
    comments->at += length_size;
    return true;
}

// The text behind its length. False when it does not lie in the block.
bool take_text(VorbisComments* comments, std::string_view* text) {
    uint32_t length = 0;
    if (!take_number(comments, &length) || length > comments_size(*comments) - comments->at) {
        return false;
    }
    *text = text_of(view(comments, comments->at, std::min(length, text_limit)));
    if (length > text_limit) {
        *text = without_cut_character(*text);
    }
    comments->at += length;
    return true;
}

// A writer's name that does not fit leaves no items.
void start(VorbisComments* comments) {
    std::string_view writer;
    uint32_t count = 0;
    if (take_text(comments, &writer)) {
        unknown_to_utf8(writer, comments->writer);
        if (take_number(comments, &count)) {
            comments->left = std::min(count, comment_limit);
        }
    }
}

} // namespace

void open_comments(VorbisComments* comments, Bytes block) {
    *comments = {};
    comments->bytes = block;
    start(comments);
}

void open_comments(VorbisComments* comments, Reader* reader, Span block) {
    *comments = {};
    comments->reader = reader;
    comments->span = block;
    start(comments);
}

bool next_comment(VorbisComments* comments, VorbisComment* comment) {
    std::string_view text;
    if (comments->left == 0 || !take_text(comments, &text)) {
        comments->left = 0;
        return false;
    }
    --comments->left;
    ++comments->read;
    const size_t sign = text.find('=');
    comment->name = text.substr(0, sign == std::string_view::npos ? 0 : sign);
    comment->value = sign == std::string_view::npos ? text : text_from(text, sign + 1);
    return true;
}

} // namespace zat
