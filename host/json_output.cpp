#include "json_output.h"

#include "details_json.h"
#include "encoding.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace host {

namespace {

// Raised whenever a reader of the output would have to change.
constexpr int schema_version = 2;

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

} // namespace

std::string json_of(const Library& library, const Description& description, bool with_report) {
    const InfoRecord& record = description.record;
    Json out;
    out["schema"] = schema_version;
    out["path"] = repaired_utf8(description.path);
    if (!is_utf8(description.path)) {
        out["path_percent"] = percent_encoded(description.path);
    }
    if (!description.reason.empty()) {
        out["error_code"] = description.reason;
    }
    if (!description.error.empty()) {
        out["error"] = description.error;
        if (!is_refused(description)) {
            return out.dump();
        }
    }
    const std::string name = full_type_name(description);
    out["type"]["code"] = record.type_code;
    out["type"]["name"] = name.empty() ? Json(nullptr) : Json(name);
    out["label"] = utf8_of_shift_jis(record.label);
    out["general"] = lines_of(record.general, record.general_count);
    if (!description.error.empty()) {
        return out.dump();
    }
    out["video"] = lines_of(record.video, record.video_count);
    out["audio"] = lines_of(record.audio, record.audio_count);
    out["extra_info"] = utf8_of_shift_jis(record.extra_info);
    out["extra"] = lines_of(record.extra, record.extra_count);
    out["play_time"] = std::isfinite(record.play_time) ? Json(record.play_time) : Json(nullptr);
    out["data_size"] = record.data_size;
    out["file_size"] = record.file_size;
    if (description.details != nullptr) {
        add_details(*description.details, &out);
    } else if (!description.format.empty()) {
        out["format"] = description.format;
    }
    if (with_report) {
        out["report"] = utf8_of_shift_jis(report_of(library, record));
    }
    return out.dump();
}

} // namespace host
