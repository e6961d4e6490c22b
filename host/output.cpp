#include "output.h"

#include "csv_output.h"
#include "encoding.h"
#include "html_output.h"
#include "json_output.h"
#include "table_output.h"
#include "terminal.h"

namespace host {

namespace {

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
    if (!description.error.empty() && !is_refused(description)) {
        return ""; // the message on standard error says it
    }
    std::string out;
    if (several) {
        out =
            "==> " + (options.raw ? description.path : repaired_utf8(description.path)) + " <==\n";
    }
    const InfoRecord& record = description.record;
    // A record without lines, as detection alone leaves it, would show the type as a number only.
    if (!options.raw &&
        record.general_count + record.video_count + record.audio_count + record.extra_count == 0 &&
        !description.format.empty()) {
        out += description.format + "\n";
    }
    const std::string report = report_of(library, description.record);
    return out + (options.raw ? report : without_carriage_returns(utf8_of_shift_jis(report)));
}

} // namespace

Query query_of(const Options& options) {
    if (options.detect_only) {
        return Query::type;
    }
    return options.format == Format::text && options.types.empty() ? Query::record : Query::details;
}

bool shows_unknown_files(const Options& options) {
    return options.format != Format::text && options.format != Format::table;
}

std::string output_head(const Options& options) {
    switch (options.format) {
    case Format::json:
        return "[\n";
    case Format::csv:
        return (options.byte_order_mark ? "\xEF\xBB\xBF" : "") +
               (options.per_file ? csv_file_head() : csv_head());
    case Format::html:
        return std::string(html_head());
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
    switch (options.format) {
    case Format::json:
        return "\n]\n";
    case Format::html:
        return std::string(html_tail());
    default:
        return "";
    }
}

std::string output_of(
    const Library& library, const Options& options, const Description& description, bool several) {
    switch (options.format) {
    case Format::json:
        return json_of(library, description, options.with_report);
    case Format::jsonl:
        return json_of(library, description, options.with_report) + "\n";
    case Format::csv:
        return options.per_file ? csv_file_row(description) : csv_of(description);
    case Format::html:
        return html_of(library, description);
    case Format::table:
        return table_line(description, output_columns());
    default:
        return text_output(library, options, description, several);
    }
}

} // namespace host
