#include "container/ogg/comments.h"

#include "common/bytes/tables.h"
#include "common/text/text.h"
#include "common/text/text_codes.h"

#include <algorithm>

namespace zat::ogg {

namespace {

using namespace std::string_view_literals;

// The packet's useful part: pictures, which can span many pages, are stepped over.
constexpr uint32_t packet_limit = 24576;
constexpr uint32_t item_limit = 2048;
constexpr uint32_t item_count_limit = 1024;

struct CommentRow {
    Coding coding;
    uint8_t packet;          // of the stream, counted from 0
    std::string_view prefix; // before the vendor's length
};

constexpr CommentRow rows[] = {
    {Coding::vorbis, 1, "\3vorbis"sv},
    {Coding::opus, 1, "OpusTags"sv},
    {Coding::speex, 1, ""sv},
    {Coding::celt, 1, ""sv},
    {Coding::theora, 1, "\x81theora"sv},
    {Coding::vp8, 1, "OVP80\2 "sv},
    {Coding::flac, 1, "\4***"sv},     // a metadata block's header
    {Coding::old_flac, 2, "\4***"sv}, // '*' stands for any byte
    {Coding::kate, 1, "\x81kate\0\0\0\0"sv},
    {Coding::ogm_video, 1, "\3vorbis"sv},
    {Coding::ogm_audio, 1, "\3vorbis"sv},
    {Coding::ogm_text, 1, "\3vorbis"sv},
};

bool skip_prefix(PacketCursor* cursor, std::string_view prefix) {
    uint8_t bytes[16];
    const auto length = static_cast<uint32_t>(prefix.size());
    if (read_packet(cursor, bytes, length) != length) {
        return false;
    }
    if (prefix.ends_with('*')) {
        bytes[0] &= 0x7F; // above the type of a FLAC block a bit says that it is the last one
    }
    for (uint32_t i = 0; i < length; ++i) {
        if (prefix[i] != '*' && static_cast<uint8_t>(prefix[i]) != bytes[i]) {
            return false;
        }
    }
    return true;
}

// A packet with its long items cut.
struct Packet {
    uint8_t bytes[packet_limit];
    uint32_t length = 0;
};

void put_number(Packet* packet, uint32_t at, uint32_t value) {
    for (int i = 0; i < 4; ++i) {
        packet->bytes[at + static_cast<uint32_t>(i)] = static_cast<uint8_t>(value >> (8 * i));
    }
}

// Copies a length and the text behind it. False when there is no room, or the packet ends.
bool copy_item(PacketCursor* cursor, Packet* packet) {
    uint8_t field[4];
    if (read_packet(cursor, field, sizeof field) != sizeof field ||
        packet->length + sizeof field + item_limit > sizeof packet->bytes) {
        return false;
    }
    const uint32_t length = ReadLE32(field);
    const uint32_t kept = std::min(length, item_limit);
    const uint32_t got = read_packet(cursor, packet->bytes + packet->length + sizeof field, kept);
    put_number(packet, packet->length, got);
    packet->length += static_cast<uint32_t>(sizeof field) + got;
    return got == kept && read_packet(cursor, nullptr, length - kept) == length - kept;
}

void copy_packet(PacketCursor* cursor, Packet* packet) {
    uint8_t field[4];
    if (!copy_item(cursor, packet)) {
        packet->length = 0; // without a whole writer's name it is no list of comments
        return;
    }
    if (read_packet(cursor, field, sizeof field) != sizeof field) {
        return;
    }
    const uint32_t count_at = packet->length;
    const uint32_t count = std::min(ReadLE32(field), item_count_limit);
    packet->length += 4;
    uint32_t copied = 0;
    put_number(packet, count_at, 0);
    while (copied < count && copy_item(cursor, packet)) {
        put_number(packet, count_at, ++copied);
    }
}

bool names(const VorbisComment& comment, std::string_view name) {
    return comment.name.size() == name.size() &&
           std::equal(name.begin(), name.end(), comment.name.begin(),
               [](char a, char b) { return a == ascii_upper(b); });
}

// CHAPTER001 is a time, CHAPTER001NAME its name.
bool is_chapter_time(std::string_view name) {
    return name.size() > 7 &&
           std::equal(name.begin(), name.begin() + 7, "CHAPTER",
               [](char a, char b) { return ascii_upper(a) == b; }) &&
           std::all_of(name.begin() + 7, name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

void take_items(Bytes block, StreamComments* comments) {
    VorbisComments walk;
    open_comments(&walk, block);
    copy_text(comments->writer, walk.writer);
    VorbisComment comment;
    while (next_comment(&walk, &comment)) {
        take_comment_text(comment, &comments->texts);
        if (names(comment, "ENCODER")) {
            unknown_to_utf8(comment.value, comments->writer);
        } else if (names(comment, "LANGUAGE") && comments->language[0] == '\0') {
            unknown_to_utf8(comment.value, comments->language);
        } else if (is_chapter_time(comment.name)) {
            ++comments->chapters;
        }
    }
}

} // namespace

void read_comments(Reader* reader, const LogicalStream& stream, StreamComments* comments) {
    const CommentRow* row = find_row(rows, &CommentRow::coding, stream.coding);
    PacketCursor cursor;
    if (row == nullptr) {
        return;
    }
    start_packet(&cursor, reader, stream.first_page, 0);
    for (uint32_t i = 0; i < row->packet; ++i) {
        if (!next_packet(&cursor)) {
            return;
        }
    }
    if (!skip_prefix(&cursor, row->prefix)) {
        return;
    }
    Packet packet;
    copy_packet(&cursor, &packet);
    take_items({packet.bytes, packet.length}, comments);
}

} // namespace zat::ogg
