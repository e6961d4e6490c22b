// Goes through the library as a host does: a file, GetDetails, both reports. Aborts when the record
// that comes back is not sound, so that a fuzzer sees more than memory errors.
#include "target.h"
#include "zat/details.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sys/mman.h>
#include <unistd.h>

namespace {

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "unsound record: %s\n", what);
        std::abort();
    }
}

template <size_t Slots>
void require_lines(
    const char (&lines)[Slots][ZAT_LINE_SIZE], int32_t count, int32_t expected_slots) {
    require(count >= 0 && count <= expected_slots, "a count leaves its array");
    for (const auto& line : lines) {
        require(std::memchr(line, '\0', sizeof line) != nullptr, "a line lacks its terminator");
    }
}

void require_sound(const InfoRecord& record) {
    require_lines(record.general, record.general_count, 2);
    require_lines(record.video, record.video_count, ZAT_LINE_COUNT);
    require_lines(record.audio, record.audio_count, ZAT_LINE_COUNT);
    require_lines(record.extra, record.extra_count, ZAT_LINE_COUNT);
    require(std::memchr(record.label, '\0', sizeof record.label) != nullptr, "the label's end");
    require(
        std::memchr(record.extra_info, '\0', sizeof record.extra_info) != nullptr, "extra info");
    for (const uint8_t byte : record.reserved) {
        require(byte == 0xA5, "the reserved area was written");
    }
    for (const uint8_t byte : record.unused) {
        require(byte == 0xA5, "the unused area was written");
    }
}

template <size_t N>
void require_text(const char (&text)[N]) {
    require(std::memchr(text, '\0', N) != nullptr, "a text of the details lacks its terminator");
}

void require_sound(const ZatDetails& details) {
    require_text(details.format);
    require_text(details.format_profile);
    require_text(details.title);
    require_text(details.artist);
    require_text(details.writer);
    require_text(details.created);
    require_text(details.notes);
    require(std::isfinite(details.duration) && details.duration >= 0, "the details' duration");
    for (uint32_t i = 0; i < std::min<uint32_t>(details.stream_count, ZAT_STREAM_SLOTS); ++i) {
        const ZatStream& stream = details.streams[i];
        require(stream.kind >= ZAT_STREAM_VIDEO && stream.kind <= ZAT_STREAM_DATA, "a kind");
        require(std::isfinite(stream.duration) && stream.duration >= 0, "a duration");
        require(std::isfinite(stream.frame_rate) && stream.frame_rate >= 0, "a frame rate");
        require(!std::isinf(stream.start), "a start");
        require_text(stream.codec);
        require_text(stream.codec_id);
        require_text(stream.profile);
        require_text(stream.level);
        require_text(stream.language);
        require_text(stream.title);
        require_text(stream.encoder);
        require_text(stream.layout);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int file = memfd_create("zat-fuzz", MFD_CLOEXEC);
    if (ftruncate(file, 0) != 0 || pwrite(file, data, size, 0) != static_cast<ssize_t>(size)) {
        return 0;
    }
    const auto record = std::make_unique<InfoRecord>();
    std::memset(record->reserved, 0xA5, sizeof record->reserved);
    std::memset(record->unused, 0xA5, sizeof record->unused);
    std::snprintf(record->path, sizeof record->path, "/proc/self/fd/%d", file);
    const auto details = std::make_unique<ZatDetails>();
    details->size = sizeof(ZatDetails);
    GetDetails(record.get(), details.get());
    require_sound(*record);
    require_sound(*details);
    const auto report = std::make_unique<char[]>(ZAT_REPORT_SIZE);
    ReFormFull(record.get(), report.get());
    const uint32_t length = ReFormFullBounded(record.get(), nullptr, 0);
    const auto whole = std::make_unique<char[]>(size_t{length} + 1);
    require(ReFormFullBounded(record.get(), whole.get(), length + 1) == length, "report length");
    require(std::strlen(whole.get()) <= length, "report text");
    return 0;
}
