#include "audio/apple_layout.h"

#include "common/bytes/tables.h"

namespace zat {

namespace {

// A layout's low half is the number of channels.
constexpr uint32_t layout_is_descriptions = 0;
constexpr uint32_t layout_is_bitmap = 0x10000;

constexpr size_t descriptions_at = 12;
constexpr size_t description_size = 20;

struct LayoutRow {
    uint32_t layout;
    uint32_t mask;
};

constexpr LayoutRow layouts[] = {
    {100 << 16 | 1, 0x4}, // mono, stereo
    {101 << 16 | 2, 0x3},
    {108 << 16 | 4, 0x33}, // quadraphonic
    {113 << 16 | 3, 0x7},  // MPEG 3.0 A, B
    {114 << 16 | 3, 0x7},
    {115 << 16 | 4, 0x107}, // MPEG 4.0 A, B
    {116 << 16 | 4, 0x107},
    {117 << 16 | 5, 0x607}, // MPEG 5.0 A to D
    {118 << 16 | 5, 0x607},
    {119 << 16 | 5, 0x607},
    {120 << 16 | 5, 0x607},
    {121 << 16 | 6, 0x60F}, // MPEG 5.1 A to D
    {122 << 16 | 6, 0x60F},
    {123 << 16 | 6, 0x60F},
    {124 << 16 | 6, 0x60F},
    {125 << 16 | 7, 0x70F}, // MPEG 6.1 A
    {126 << 16 | 8, 0x6CF}, // MPEG 7.1 A, B
    {127 << 16 | 8, 0x6CF},
    {128 << 16 | 8, 0x63F}, // MPEG 7.1 C
    {131 << 16 | 3, 0x103}, // ITU 2.1, 2.2
    {132 << 16 | 4, 0x603},
    {133 << 16 | 3, 0xB}, // DVD 4 to 6, 10, 11, 18
    {134 << 16 | 4, 0x10B},
    {135 << 16 | 5, 0x60B},
    {136 << 16 | 4, 0xF},
    {137 << 16 | 5, 0x10F},
    {138 << 16 | 5, 0x60B},
};

// Labels 1 to 18 are the bits of WAVE in their order.
uint32_t mask_of_label(uint32_t label) {
    constexpr uint32_t last_of_wave = 18;
    constexpr uint32_t mono = 42;
    if (label == mono) {
        return 0x4;
    }
    return label >= 1 && label <= last_of_wave ? 1U << (label - 1) : 0;
}

uint32_t mask_of_descriptions(Bytes layout) {
    uint32_t mask = 0;
    uint32_t count = layout.size() >= descriptions_at ? ReadBE32(&layout[8]) : 0;
    for (size_t at = descriptions_at; count != 0 && at + description_size <= layout.size();
         at += description_size, --count) {
        const uint32_t speaker = mask_of_label(ReadBE32(&layout[at]));
        if (speaker == 0) {
            return 0;
        }
        mask |= speaker;
    }
    return mask;
}

} // namespace

bool apple_layout_is_told(Bytes layout) {
    return layout.size() >= 4 && ReadBE32(layout.data()) != layout_is_descriptions;
}

uint32_t apple_layout_mask(Bytes layout) {
    if (layout.size() < 8) {
        return 0;
    }
    const uint32_t told = ReadBE32(layout.data());
    if (told == layout_is_descriptions) {
        return mask_of_descriptions(layout);
    }
    if (told == layout_is_bitmap) {
        return ReadBE32(&layout[4]);
    }
    const LayoutRow* row = find_row(layouts, &LayoutRow::layout, told);
    return row != nullptr ? row->mask : 0;
}

} // namespace zat
