#include "container/mpeg_ts/service_text.h"

#include "common/record/stream_lines.h"
#include "common/text/text_codes.h"
#include "text/arib_text.h"
#include "text/dvb_text.h"

#include <iterator>

namespace zat::ts {

namespace {

DvbDefault default_table(const ServiceInfo& info) {
    return info.looks_like_8859_15 || info.is_latin_arib ? DvbDefault::iso8859_15
                                                         : DvbDefault::iso6937;
}

// content_nibble_level_1 (ETSI EN 300 468, table 28; ARIB STD-B10, annex H), in UTF-8.
const char* genre_name(bool arib, uint8_t genre) {
    static constexpr const char* dvb[] = {"", "Movie/Drama", "News", "Show", "Sports", "Children",
        "Music", "Arts", "Social", "Education", "Leisure", "Special"};
    static constexpr const char* japanese[] = {"ニュース／報道", "スポーツ", "情報／ワイドショー",
        "ドラマ", "音楽", "バラエティ", "映画", "アニメ／特撮", "ドキュメンタリー／教養",
        "劇場／公演", "趣味／教育", "福祉", "", "", "拡張", "その他"};
    if (arib) {
        return genre < std::size(japanese) ? japanese[genre] : "";
    }
    return genre < std::size(dvb) ? dvb[genre] : "";
}

struct Date {
    int32_t year;
    int32_t month;
    int32_t day;
};

// Modified Julian Date to the Gregorian calendar (ETSI EN 300 468, annex C), by the days of
// 400-year cycles that begin with March 2000.
Date date_of(int32_t mjd) {
    constexpr int32_t march_2000 = 51604; // MJD
    constexpr int32_t cycle = 146097;
    constexpr int32_t cycles_before = 1;
    const int32_t days = mjd - march_2000 + cycle * cycles_before;
    const int32_t day_of_cycle = days % cycle;
    const int32_t year_of_cycle =
        (day_of_cycle - day_of_cycle / 1460 + day_of_cycle / 36524 - day_of_cycle / 146096) / 365;
    const int32_t day_of_year =
        day_of_cycle - (365 * year_of_cycle + year_of_cycle / 4 - year_of_cycle / 100);
    const int32_t month_from_march = (5 * day_of_year + 2) / 153;
    Date date{};
    date.day = day_of_year - (153 * month_from_march + 2) / 5 + 1;
    date.month = month_from_march < 10 ? month_from_march + 3 : month_from_march - 9;
    date.year =
        2000 + (days / cycle - cycles_before) * 400 + year_of_cycle + (date.month <= 2 ? 1 : 0);
    return date;
}

// Two decimal digits, -1 for anything else.
int32_t bcd(uint8_t byte) {
    const int32_t tens = byte >> 4;
    const int32_t ones = byte & 0x0F;
    return tens <= 9 && ones <= 9 ? tens * 10 + ones : -1;
}

// Seconds of three BCD bytes, -1 when they are none.
int32_t seconds_of(const uint8_t* bytes) {
    const int32_t hours = bcd(bytes[0]);
    const int32_t minutes = bcd(bytes[1]);
    const int32_t seconds = bcd(bytes[2]);
    return hours < 0 || minutes < 0 || seconds < 0 ? -1 : hours * 3600 + minutes * 60 + seconds;
}

// Start and end; the first of them alone where the duration is not told.
void append_times(const ServiceInfo& info, const Event& event, char (&line)[line_size]) {
    constexpr int32_t day = 86400;
    const int32_t start = seconds_of(event.start + 2);
    if (start < 0 || start >= day || ReadBE16(event.start) == 0xFFFF) {
        return;
    }
    const Date date = date_of(ReadBE16(event.start));
    char text[64];
    format_text(text, sizeof text, "%04d/%02d/%02d %02d:%02d", date.year, date.month, date.day,
        start / 3600, start / 60 % 60);
    append_word(line, text);
    const int32_t duration = seconds_of(event.duration);
    if (duration >= 0) {
        const int32_t end = (start + duration) % day;
        format_text(text, sizeof text, "-%02d:%02d", end / 3600, end / 60 % 60);
        append_text(line, text);
    }
    if (!has_arib_text(&info) && !info.has_arib_signs) {
        append_word(line, "UTC");
    }
}

} // namespace

size_t service_utf8(const ServiceInfo& info, Bytes text, char* out, size_t size) {
    return has_arib_text(&info) ? arib_to_utf8(text, out, size)
                                : dvb_to_utf8(text, default_table(info), out, size);
}

size_t service_cp932(const ServiceInfo& info, Bytes text, char* out, size_t size) {
    if (has_arib_text(&info)) {
        return arib_to_cp932(text, out, size);
    }
    char utf8[service_text_size];
    const size_t length = dvb_to_utf8(text, default_table(info), utf8, sizeof utf8);
    return utf8_to_cp932({utf8, length}, out, size);
}

void service_line(
    const ServiceInfo& info, const Service& service, bool with_provider, char (&line)[line_size]) {
    char name[line_size];
    line[0] = '\0';
    if (service.is_atsc) {
        char utf8[service_text_size];
        const size_t length = utf16be_to_utf8(raw_bytes(service.name), utf8, sizeof utf8);
        utf8_to_cp932({utf8, length}, name, sizeof name);
        format_text(line, line_size, "%d.%d", service.major, service.minor);
        append_word(line, name);
        return;
    }
    char provider[line_size];
    service_cp932(info, raw_bytes(service.name), name, sizeof name);
    service_cp932(info, raw_bytes(service.provider), provider, sizeof provider);
    if (name[0] == '\0' && provider[0] == '\0') {
        return;
    }
    format_text(line, line_size, "%d", service.id);
    append_word(line, name);
    if (with_provider && provider[0] != '\0') {
        append_word(line, "(");
        append_text(line, provider);
        append_text(line, ")");
    }
}

void event_line(const ServiceInfo& info, const Event& event, char (&line)[line_size]) {
    line[0] = '\0';
    append_times(info, event, line);
    char name[line_size];
    service_cp932(info, raw_bytes(event.name), name, sizeof name);
    append_word(line, name);
    utf8_to_cp932(
        genre_name(info.has_arib_signs || has_arib_text(&info), event.genre), name, sizeof name);
    append_word(line, name);
}

void item_line(
    const ServiceInfo& info, const Event& event, uint32_t item, char (&line)[line_size]) {
    const EventItem& each = event.items[item];
    char text[line_size];
    service_cp932(info, {event.pool + each.heading, each.heading_length}, line, line_size);
    service_cp932(info, {event.pool + each.text, each.text_length}, text, sizeof text);
    if (line[0] != '\0' && text[0] != '\0') {
        append_text(line, ": ");
    }
    append_text(line, text);
}

} // namespace zat::ts
