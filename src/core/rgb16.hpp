// The four 16-bit RGB layouts: each channel keeps its top bits, truncated.
#pragma once

#include <cstdint>

#include "dispconv.h"

namespace dispconv { namespace {

struct Rgb16Layout {
    uint8_t r_mask, g_mask, b_mask;
    uint8_t g_shift_left, b_shift_right;
};

// Layout 1 keeps its spare bit at the bottom and layouts 2 and 3 give red six bits, as defined.
constexpr Rgb16Layout rgb16_layouts[4] = {
    {0xF8, 0xFC, 0xF8, 3, 3},  // 0: 5-6-5
    {0xF8, 0xF8, 0xF8, 3, 2},  // 1: 5-5-5, bit 0 clear
    {0xFC, 0xFC, 0xF0, 2, 4},  // 2: 6-6-4
    {0xFC, 0xF8, 0xF8, 2, 3},  // 3: 6-5-5
};

// The selector is compared unsigned, so negative values are refused too.
constexpr bool select_rgb16_layout(int32_t selector, Rgb16Layout& out) {
    if (static_cast<uint32_t>(selector) > 3u) return false;
    out = rgb16_layouts[selector];
    return true;
}

constexpr uint16_t pack_rgb16(uint8_t r, uint8_t g, uint8_t b, const Rgb16Layout& l) {
    return static_cast<uint16_t>(((r & l.r_mask) << 8) | ((g & l.g_mask) << l.g_shift_left) |
                                 ((b & l.b_mask) >> l.b_shift_right));
}

} }  // namespace dispconv
