// Describes files in C++, linked with the library: host_cpp CATALOGUE_DIRECTORY FILE...
#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <zat/zat.h>

int main(int argc, char** argv) {
    SetPath(argc > 1 ? argv[1] : "");
    for (int i = 2; i < argc; ++i) {
        const auto record = std::make_unique<InfoRecord>(); // cleared to zero
        std::strncpy(record->path, argv[i], sizeof record->path - 1);
        GetInfo(record.get());
        for (int line = 0; line < record->video_count; ++line) {
            std::cout << "video: " << record->video[line] << '\n';
        }
        for (int line = 0; line < record->audio_count; ++line) {
            std::cout << "audio: " << record->audio[line] << '\n';
        }
        std::string report(ReFormFullBounded(record.get(), nullptr, 0) + 1, '\0');
        ReFormFullBounded(record.get(), report.data(), static_cast<uint32_t>(report.size()));
        std::cout << report.c_str();
    }
}
