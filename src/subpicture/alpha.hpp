// The opacity plane to and from an RGB bitmap whose blue component carries the level.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/geometry.hpp"
#include "dispconv.h"

namespace dispconv::kernels { namespace {

// The walk shared by the six: blocks of `block` pixels per row, the opacity plane stepping by
// half of (frame_stride - width), and a row count that either stays private or is counted
// down in the record. `step(opacity, bitmap, pixels)` moves a row's blocks in one run.
template <int block, int bpp, bool count_in_record, class Step>
void alpha_walk(MIX_INFO* info, Step step) {
    const int32_t width = info->width;
    // Deliberate: the opacity plane's row step comes from frame_stride, not sub_stride.
    const ptrdiff_t alpha_skip = (info->frame_stride - width) >> 1;
    const ptrdiff_t image_skip = ptrdiff_t(info->image_stride) - ptrdiff_t(width) * bpp;
    const uint32_t blocks = loop_count(width, block);
    uint8_t* opacity = info->sub_opacity;
    uint8_t* bitmap = info->image;

    // Counted down to zero after each row (height 0 runs on: caller error); a bitmap stride
    // shorter than the row ends the loop after the first row.
    uint32_t rows = static_cast<uint32_t>(info->height);
    bool more;
    do {
        step(opacity, bitmap, int(blocks * block));
        opacity += blocks * block, bitmap += ptrdiff_t(blocks) * block * bpp;
        opacity += alpha_skip, bitmap += image_skip;
        more = --rows != 0 && image_skip >= 0;
        if constexpr (count_in_record) info->height = static_cast<int32_t>(rows);
    } while (more);
}

template <class V>
void load_subpicture_alpha_rgb32(MIX_INFO* info) {
    alpha_walk<16, 4, false>(info, [](uint8_t* a, uint8_t* p, int n) { V::template spread_bytes<4>(a, p, n); });
}
template <class V>
void load_subpicture_alpha_rgb24(MIX_INFO* info) {
    alpha_walk<16, 3, true>(info, [](uint8_t* a, uint8_t* p, int n) { V::template spread_bytes<3>(a, p, n); });
}
// Levels are written as whole 16-bit values: above 31 they spill into the green field.
template <class V>
void load_subpicture_alpha_rgb16_565(MIX_INFO* info) {
    alpha_walk<16, 2, false>(info, [](uint8_t* a, uint8_t* p, int n) { V::template spread_bytes<2>(a, p, n); });
}

template <class V>
void Restore_RGB32_To_Alpha(MIX_INFO* info) {
    alpha_walk<8, 4, false>(info, [](uint8_t* a, uint8_t* p, int n) { V::template pick_bytes<4, 0, 0xFF>(p, a, n); });
}
// Deliberate: each level is the top byte of the pixel's 32-bit word, the next pixel's blue,
// so levels come back one pixel to the left and the row's last one reads past the row.
template <class V>
void Restore_RGB24_To_Alpha(MIX_INFO* info) {
    alpha_walk<8, 3, true>(info, [](uint8_t* a, uint8_t* p, int n) { V::template pick_bytes<3, 3, 0xFF>(p, a, n); });
}
template <class V>
void Restore_RGB16_565_To_Alpha(MIX_INFO* info) {
    alpha_walk<16, 2, false>(info, [](uint8_t* a, uint8_t* p, int n) { V::template pick_bytes<2, 0, 0x1F>(p, a, n); });
}

} }  // namespace dispconv::kernels
