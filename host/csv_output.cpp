#include "csv_output.h"

#include "details_json.h"
#include "encoding.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

namespace host {

namespace {

constexpr char record_columns[] =
    "path,type_code,type_name,label,kind,number,line,play_time,data_size,file_size";

// Members of a stream, by their names in JSON.
constexpr const char* stream_columns[] = {"codec", "codec_id", "profile", "level", "width",
    "height", "pixel_aspect", "frame_rate", "frames", "scan", "bit_depth", "sample_rate",
    "channels", "layout", "bit_rate", "duration", "language", "title"};

// RFC 4180: a field with a comma, a quote or a line break is quoted.
std::string csv_field(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string out = "\"";
    for (const char c : text) {
        out += c == '"' ? "\"\"" : std::string(1, c);
    }
    return out + '"';
}

// Members of a file and of its first streams, by their names in JSON.
constexpr const char* file_members[] = {"format", "format_profile", "duration", "bit_rate", "title",
    "artist", "writer", "created", "chapters", "pictures"};
constexpr const char* video_members[] = {
    "codec", "profile", "width", "height", "frame_rate", "bit_depth", "bit_rate"};
constexpr const char* audio_members[] = {
    "codec", "profile", "sample_rate", "channels", "bit_depth", "bit_rate", "language"};
constexpr const char* text_members[] = {"codec", "language"};

struct StreamColumns {
    const char* name;
    uint32_t kind;
    std::span<const char* const> members;
};

constexpr StreamColumns stream_kinds[] = {
    {"video", ZAT_STREAM_VIDEO, video_members},
    {"audio", ZAT_STREAM_AUDIO, audio_members},
    {"text", ZAT_STREAM_TEXT, text_members},
};

struct Row {
    const char* kind;
    size_t number;
    std::string line;
    const ZatStream* stream = nullptr;
};

std::vector<const ZatStream*> streams_of(const Description& description, uint32_t kind) {
    std::vector<const ZatStream*> out;
    const ZatDetails* details = description.details.get();
    const uint32_t count =
        details != nullptr ? std::min<uint32_t>(details->stream_count, ZAT_STREAM_SLOTS) : 0;
    for (uint32_t i = 0; i < count; ++i) {
        if (details->streams[i].kind == kind) {
            out.push_back(&details->streams[i]);
        }
    }
    return out;
}

// The lines of a kind and its streams are in the same order; either may be more.
void add_rows(std::vector<Row>* rows, const char* kind, const std::vector<std::string>& lines,
    const std::vector<const ZatStream*>& streams = {}) {
    for (size_t i = 0; i < std::max(lines.size(), streams.size()); ++i) {
        rows->push_back({kind, i + 1, i < lines.size() ? lines[i] : "",
            i < streams.size() ? streams[i] : nullptr});
    }
}

std::vector<Row> rows_of(const Description& description) {
    const InfoRecord& record = description.record;
    std::vector<Row> rows;
    if (!description.error.empty()) {
        add_rows(&rows, "error", {description.error});
    }
    if (description.error.empty() || is_refused(description)) {
        add_rows(&rows, "general", lines_of(record.general, record.general_count));
    }
    add_rows(&rows, "video", lines_of(record.video, record.video_count),
        streams_of(description, ZAT_STREAM_VIDEO));
    add_rows(&rows, "audio", lines_of(record.audio, record.audio_count),
        streams_of(description, ZAT_STREAM_AUDIO));
    add_rows(&rows, "text", {}, streams_of(description, ZAT_STREAM_TEXT));
    add_rows(&rows, "data", {}, streams_of(description, ZAT_STREAM_DATA));
    if (record.extra_info[0] != '\0') {
        add_rows(&rows, "extra_info", {utf8_of_shift_jis(record.extra_info)});
    }
    add_rows(&rows, "extra", lines_of(record.extra, record.extra_count));
    if (rows.empty()) {
        rows.push_back({"", 0, ""});
    }
    return rows;
}

// Each behind a comma; those that are not known are empty.
std::string fields_of(const nlohmann::ordered_json& members, std::span<const char* const> columns) {
    std::string out;
    for (const char* column : columns) {
        out += ',';
        const auto found = members.find(column);
        if (found != members.end()) {
            out += csv_field(found->is_string() ? found->get<std::string>() : found->dump());
        }
    }
    return out;
}

nlohmann::ordered_json members_of(const ZatStream* stream) {
    return stream != nullptr ? stream_json(*stream) : nlohmann::ordered_json::object();
}

} // namespace

std::string csv_head() {
    std::string out = record_columns;
    for (const char* column : stream_columns) {
        out += std::string(",") + column;
    }
    return out + "\r\n";
}

std::string csv_of(const Description& description) {
    const InfoRecord& record = description.record;
    const bool is_examined = description.error.empty() || is_refused(description);
    const bool is_known = description.error.empty() && !description.unknown;
    const std::string time = is_known && std::isfinite(record.play_time)
                                 ? nlohmann::json(record.play_time).dump()
                                 : std::string();
    const std::string type = is_examined ? std::to_string(record.type_code) : std::string();
    const std::string head = csv_field(repaired_utf8(description.path)) + "," + type + "," +
                             (is_examined ? full_type_name(description) : "") + "," +
                             csv_field(utf8_of_shift_jis(record.label)) + ",";
    const std::string tail = "," + time + "," +
                             (is_known ? std::to_string(record.data_size) : std::string()) + "," +
                             (is_examined ? std::to_string(record.file_size) : std::string());
    std::string out;
    for (const Row& row : rows_of(description)) {
        out += head;
        out += row.kind;
        out += ',';
        out += row.number == 0 ? "" : std::to_string(row.number);
        out += ',';
        out += csv_field(row.line);
        out += tail;
        out += fields_of(members_of(row.stream), stream_columns);
        out += "\r\n";
    }
    return out;
}

std::string csv_file_head() {
    std::string out = "path,type_code,type_name,file_size";
    for (const char* column : file_members) {
        out += std::string(",") + column;
    }
    for (const StreamColumns& columns : stream_kinds) {
        out += std::string(",") + columns.name + "_streams";
        for (const char* column : columns.members) {
            out += std::string(",") + columns.name + "_" + column;
        }
    }
    return out + ",error_code,error\r\n";
}

std::string csv_file_row(const Description& description) {
    const bool is_examined = description.error.empty() || is_refused(description);
    const InfoRecord& record = description.record;
    nlohmann::ordered_json members = nlohmann::ordered_json::object();
    if (description.details != nullptr) {
        add_file_details(*description.details, &members);
    } else if (!description.format.empty()) {
        members["format"] = description.format;
    }
    std::string out = csv_field(repaired_utf8(description.path)) + ",";
    out += (is_examined ? std::to_string(record.type_code) : "") + ",";
    out += (is_examined ? full_type_name(description) : "") + ",";
    out += is_examined ? std::to_string(record.file_size) : "";
    out += fields_of(members, file_members);
    for (const StreamColumns& columns : stream_kinds) {
        const std::vector<const ZatStream*> streams = streams_of(description, columns.kind);
        const ZatStream* first = streams.empty() ? nullptr : streams.front();
        out += ',';
        out += description.details != nullptr ? std::to_string(streams.size()) : "";
        out += fields_of(members_of(first), columns.members);
    }
    const std::string& why = description.unknown ? description.refusal : description.error;
    return out + "," + description.reason + "," + csv_field(why) + "\r\n";
}

} // namespace host
