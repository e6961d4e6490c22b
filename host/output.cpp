#include "output.h"

#include "details_json.h"
#include "encoding.h"
#include "type_names.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace host {

namespace {

// Raised whenever a reader of the output would have to change; docs/zat.schema.json describes it.
constexpr int schema_version = 2;

std::string report_text(const Library& library, const InfoRecord& record) {
    std::string report(library.reform_full_bounded(&record, nullptr, 0) + 1, '\0');
    library.reform_full_bounded(&record, report.data(), static_cast<uint32_t>(report.size()));
    report.pop_back();
    return report;
}

std::string without_carriage_returns(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r' || i + 1 == text.size() || text[i + 1] != '\n') {
            out += text[i];
        }
    }
    return out;
}

std::string text_output(
    const Library& library, const Options& options, const Description& description, bool several) {
    if (!description.error.empty()) {
        return ""; // the message on standard error says it
    }
    std::string out;
    if (several) {
        out =
            "==> " + (options.raw ? description.path : repaired_utf8(description.path)) + " <==\n";
    }
    const std::string report = report_text(library, description.record);
    return out + (options.raw ? report : without_carriage_returns(utf8_of_shift_jis(report)));
}

template <size_t Slots>
nlohmann::ordered_json lines_of(const char (&lines)[Slots][ZAT_LINE_SIZE], int32_t count) {
    auto out = nlohmann::ordered_json::array();
    for (int32_t i = 0; i < count && i < static_cast<int32_t>(Slots); ++i) {
        out.push_back(utf8_of_shift_jis(lines[i]));
    }
    return out;
}

// RFC 3986, section 2.1: every byte that is neither unreserved nor a slash as %XX.
std::string percent_encoded(const std::string& bytes) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string out;
    for (const char c : bytes) {
        const auto code = static_cast<unsigned char>(c);
        const bool plain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') ||
                           (c >= 'a' && c <= 'z') || c == '-' || c == '.' || c == '_' || c == '~' ||
                           c == '/';
        if (plain) {
            out += c;
        } else {
            out += {'%', digits[code >> 4], digits[code & 15]};
        }
    }
    return out;
}

nlohmann::ordered_json json_of(
    const Library& library, const Options& options, const Description& description) {
    const InfoRecord& record = description.record;
    nlohmann::ordered_json out;
    out["schema"] = schema_version;
    out["path"] = repaired_utf8(description.path);
    if (!is_utf8(description.path)) {
        out["path_percent"] = percent_encoded(description.path);
    }
    if (!description.error.empty()) {
        out["error"] = repaired_utf8(description.error);
        return out;
    }
    const std::string name = type_name(record.type_code);
    out["type"]["code"] = record.type_code;
    out["type"]["name"] =
        name.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(name);
    out["label"] = utf8_of_shift_jis(record.label);
    out["general"] = lines_of(record.general, record.general_count);
    out["video"] = lines_of(record.video, record.video_count);
    out["audio"] = lines_of(record.audio, record.audio_count);
    out["extra_info"] = utf8_of_shift_jis(record.extra_info);
    out["extra"] = lines_of(record.extra, record.extra_count);
    out["play_time"] = std::isfinite(record.play_time) ? nlohmann::ordered_json(record.play_time)
                                                       : nlohmann::ordered_json(nullptr);
    out["data_size"] = record.data_size;
    out["file_size"] = record.file_size;
    if (description.details != nullptr) {
        add_details(*description.details, &out);
    }
    if (options.with_report) {
        out["report"] = utf8_of_shift_jis(report_text(library, record));
    }
    return out;
}

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

struct Stream {
    const char* kind;
    int32_t number;
    std::string line;
};

template <size_t Slots>
void add_streams(std::vector<Stream>* streams, const char* kind,
    const char (&lines)[Slots][ZAT_LINE_SIZE], int32_t count) {
    for (int32_t i = 0; i < count && i < static_cast<int32_t>(Slots); ++i) {
        streams->push_back({kind, i + 1, utf8_of_shift_jis(lines[i])});
    }
}

std::string csv_of(const Description& description) {
    const InfoRecord& record = description.record;
    std::vector<Stream> streams;
    if (!description.error.empty()) {
        streams.push_back({"error", 1, repaired_utf8(description.error)});
    }
    add_streams(&streams, "general", record.general, record.general_count);
    add_streams(&streams, "video", record.video, record.video_count);
    add_streams(&streams, "audio", record.audio, record.audio_count);
    if (record.extra_info[0] != '\0') {
        streams.push_back({"extra_info", 1, utf8_of_shift_jis(record.extra_info)});
    }
    add_streams(&streams, "extra", record.extra, record.extra_count);
    if (streams.empty()) {
        streams.push_back({"", 0, ""});
    }
    const std::string time =
        std::isfinite(record.play_time) ? nlohmann::json(record.play_time).dump() : std::string();
    const std::string head = csv_field(repaired_utf8(description.path)) + "," +
                             std::to_string(record.type_code) + "," + type_name(record.type_code) +
                             "," + csv_field(utf8_of_shift_jis(record.label)) + ",";
    const std::string tail = "," + time + "," + std::to_string(record.data_size) + "," +
                             std::to_string(record.file_size) + "\r\n";
    std::string out;
    for (const Stream& stream : streams) {
        out += head;
        out += stream.kind;
        out += ',';
        out += stream.number == 0 ? "" : std::to_string(stream.number);
        out += ',';
        out += csv_field(stream.line);
        out += tail;
    }
    return out;
}

} // namespace

Query query_of(const Options& options) {
    if (options.detect_only) {
        return Query::type;
    }
    return options.format == Format::text ? Query::record : Query::details;
}

std::string output_head(const Options& options) {
    switch (options.format) {
    case Format::json:
        return "[\n";
    case Format::csv:
        return "path,type_code,type_name,label,kind,number,line,play_time,data_size,file_size\r\n";
    default:
        return "";
    }
}

std::string output_separator(const Options& options) {
    switch (options.format) {
    case Format::json:
        return ",\n";
    case Format::text:
        return "\n";
    default:
        return "";
    }
}

std::string output_tail(const Options& options) {
    return options.format == Format::json ? "\n]\n" : "";
}

std::string output_of(
    const Library& library, const Options& options, const Description& description, bool several) {
    switch (options.format) {
    case Format::json:
        return json_of(library, options, description).dump();
    case Format::jsonl:
        return json_of(library, options, description).dump() + "\n";
    case Format::csv:
        return csv_of(description);
    default:
        return text_output(library, options, description, several);
    }
}

} // namespace host
