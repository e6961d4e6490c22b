// Describes files in C++, linked with the library: host_cpp CATALOGUE_DIRECTORY/ FILE...
#include <algorithm>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>
#include <zat/details.h>

namespace {

void print_stream(const ZatStream& stream) {
    std::cout << "  " << std::left << std::setw(14) << stream.codec << std::setw(10)
              << stream.profile;
    if (stream.kind == ZAT_STREAM_VIDEO) {
        std::cout << stream.width << 'x' << stream.height << ", " << stream.frame_rate << " fps";
    } else if (stream.kind == ZAT_STREAM_AUDIO) {
        std::cout << stream.sample_rate << " Hz, " << stream.channels << " channels";
    }
    std::cout << '\n';
}

} // namespace

int main(int argc, char** argv) {
    SetPath(argc > 1 ? argv[1] : "");
    for (int i = 2; i < argc; ++i) {
        const auto record = std::make_unique<InfoRecord>(); // cleared to zero
        const auto details = std::make_unique<ZatDetails>();
        std::strncpy(record->path, argv[i], sizeof record->path - 1);
        details->size = sizeof *details;
        if (GetDetails(record.get(), details.get()) == 1) {
            std::cout << details->format << ", " << details->duration << " seconds\n";
        }
        const uint32_t kept = std::min<uint32_t>(details->stream_count, ZAT_STREAM_SLOTS);
        std::for_each(details->streams, details->streams + kept, print_stream);
        std::string report(ReFormFullBounded(record.get(), nullptr, 0) + 1, '\0');
        ReFormFullBounded(record.get(), report.data(), static_cast<uint32_t>(report.size()));
        std::cout << report.c_str();
    }
}
