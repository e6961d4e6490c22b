#include "picture/bmp_file.h"

#include "common/text/text.h"
#include "picture/picture_file.h"
#include "video/bitmap_info.h"

#include <algorithm>

namespace zat {

namespace {

constexpr uint32_t file_header_size = 14;
constexpr uint32_t core_header_size = 12;     // BITMAPCOREHEADER
constexpr uint32_t shortest_header_size = 16; // of OS/2 2.x, up to the depth
constexpr uint32_t wanted_size = 20;          // of longer ones: with the compression
constexpr uint32_t os2_header_size = 64;      // OS/2 2.x, whose compressions 3 and 4 are its own
constexpr uint32_t largest_header = 124;      // BITMAPV5HEADER
constexpr uint32_t largest_side = 65535;
constexpr uint32_t most_bits = 64;

constexpr const char* compressions[] = {"", "RLE8", "RLE4", "", "JPEG", "PNG", ""};
constexpr const char* os2_compressions[] = {"", "RLE8", "RLE4", "Huffman", "RLE24"};

struct Layout {
    BitmapInfo info;
    uint32_t compression = 0;
    const char* compression_name = "";
};

const char* compression_name(uint32_t header_size, uint32_t compression) {
    const std::span<const char* const> names = header_size == os2_header_size
                                                   ? std::span<const char* const>(os2_compressions)
                                                   : std::span<const char* const>(compressions);
    return compression < names.size() ? names[compression] : "";
}

// The header behind the file header. False when it is cut or impossible.
bool read_layout(Bytes header, Layout* layout) {
    if (header.size() < core_header_size) {
        return false;
    }
    const uint32_t size = ReadLE32(header.data());
    BitmapInfo* info = &layout->info;
    if (size == core_header_size) {
        info->width = ReadLE16(&header[4]);
        info->height = ReadLE16(&header[6]);
        info->bits = ReadLE16(&header[10]);
        return true;
    }
    // Headers of OS/2 may end anywhere: what they leave out is 0.
    uint8_t fields[bitmap_info_size] = {};
    std::copy_n(header.begin(), std::min<size_t>({size, header.size(), sizeof fields}), fields);
    if (size < shortest_header_size || header.size() < std::min(size, wanted_size) ||
        !read_bitmap_info(fields, info)) {
        return false;
    }
    layout->compression = ReadLE32(info->compression);
    layout->compression_name = compression_name(size, layout->compression);
    return true;
}

// Bytes of the picture: rows are filled up to four bytes; packed pictures tell their size.
uint64_t picture_size(const Layout& layout) {
    if (layout.compression_name[0] != '\0') {
        return layout.info.image_size;
    }
    const uint64_t row = (uint64_t{layout.info.width} * layout.info.bits + 31) / 32 * 4;
    return row * layout.info.height;
}

void note_missing(const Layout& layout, uint32_t data_at, PictureFile* bmp) {
    const auto size = static_cast<uint64_t>(size_of(bmp->span));
    const uint64_t end = data_at + picture_size(layout);
    bmp->missing_bytes = end > size ? end - size : 0;
}

void describe(PictureFile* bmp) {
    const Bytes file = read_view(&bmp->reader, bmp->span, 0, file_header_size + largest_header);
    Layout layout;
    if (file.size() <= file_header_size || !read_layout(file.subspan(file_header_size), &layout)) {
        bmp->truncated = file.size() < file_header_size + bitmap_info_size;
        bmp->damaged = !bmp->truncated;
        return;
    }
    const BitmapInfo& info = layout.info;
    if (info.width > largest_side || info.height > largest_side || info.bits >= most_bits) {
        bmp->damaged = true;
        return;
    }
    add_picture_word(bmp, layout.compression_name);
    bmp->facts.width = info.width;
    bmp->facts.height = info.height;
    bmp->bits = info.bits;
    // Of a palette's index, or of each colour.
    constexpr uint32_t colour_bits = 8;
    bmp->facts.bit_depth = info.bits >= 24 ? colour_bits : info.bits <= colour_bits ? info.bits : 0;
    note_missing(layout, ReadLE32(&file[10]), bmp);
}

} // namespace

int AnalyzeBmpFile(FileRecord* file, const Output& out) {
    PictureFile bmp;
    open_picture_file(&bmp, file);
    copy_text(bmp.name, "BMP");
    copy_utf8(bmp.facts.codec, "BMP");
    describe(&bmp);
    write_picture_file(&bmp, "[BMP]", out);
    return 0;
}

} // namespace zat
