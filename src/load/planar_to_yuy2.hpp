// Planar YV12 frame to a YUY2 surface: plain, adjusted, luma-only and half-width members.
// All four drift: width must be a multiple of 16.
#pragma once

#include "core/walk.hpp"

namespace dispconv::kernels {
namespace {

constexpr int yuy2_block = 16;  // source pixels

struct PlanarSource {
    const uint8_t* y;
    const uint8_t* u;
    const uint8_t* v;
};

template <class V>
void loadimage_yuy2(void* src_y, void* src_u, void* src_v, void* dst_, int32_t width,
                    int32_t height, int32_t src_stride, int32_t dst_stride, ajust_contrast_info*) {
    PlanarSource s{static_cast<const uint8_t*>(src_y), static_cast<const uint8_t*>(src_u),
                   static_cast<const uint8_t*>(src_v)};
    auto* dst = static_cast<uint8_t*>(dst_);
    const uint32_t blocks = loop_count(width, yuy2_block);
    const ptrdiff_t y_next = drift_step(blocks, yuy2_block, width, 2 * ptrdiff_t(src_stride));
    const ptrdiff_t c_next = drift_step(blocks, yuy2_block / 2, 0, (src_stride - width) >> 1);
    const ptrdiff_t d_next = drift_step(blocks, 2 * yuy2_block, 2 * width, 2 * ptrdiff_t(dst_stride));

    for (uint32_t pair = loop_count(height, 2); pair--;
         s.y += y_next, s.u += c_next, s.v += c_next, dst += d_next)
        in_block_order(dst, dst + dst_stride, ptrdiff_t(blocks) * 32, blocks, [&](uint32_t i, uint32_t n) {
            V::planar_pair_to_yuy2_gapped(s.y + 16 * i, s.y + src_stride + 16 * i, s.u + 8 * i, s.v + 8 * i,
                                          dst + 32 * i, dst + dst_stride + 32 * i, n);
        });
}

template <class V>
void loadimage_yuy2_ajust(void* src_y, void* src_u, void* src_v, void* dst_, int32_t width,
                          int32_t height, int32_t src_stride, int32_t dst_stride,
                          ajust_contrast_info*) {
    if (height <= 8 || (height & 1)) return;
    const AdjustConstants a = load_adjust_constants();
    PlanarSource s{static_cast<const uint8_t*>(src_y), static_cast<const uint8_t*>(src_u),
                   static_cast<const uint8_t*>(src_v)};
    auto* dst = static_cast<uint8_t*>(dst_);
    const uint32_t blocks = loop_count(width, yuy2_block);
    const ptrdiff_t y_next = drift_step(blocks, yuy2_block, width, src_stride);
    const ptrdiff_t c_next = drift_step(blocks, yuy2_block / 2, 0, (src_stride - width) >> 1);
    const ptrdiff_t d_next = drift_step(blocks, 2 * yuy2_block, 2 * width, dst_stride);

    for (uint32_t row = 0; row < 2 * loop_count(height, 2); ++row, s.y += y_next, dst += d_next) {
        // Each row re-reads and re-adjusts its chroma row; the odd row then moves chroma on.
        V::planar_row_to_yuy2_adjusted(s.y, s.u, s.v, dst, blocks, a);
        if (row & 1) s.u += c_next, s.v += c_next;
    }
}

template <class V>
void loadimage_yuy2_mono_ajust(void* src_y, void*, void*, void* dst_, int32_t width,
                               int32_t height, int32_t src_stride, int32_t dst_stride,
                               ajust_contrast_info*) {
    const AdjustConstants a = load_adjust_constants();
    const auto* y_row = static_cast<const uint8_t*>(src_y);
    auto* dst = static_cast<uint8_t*>(dst_);
    const uint32_t blocks = loop_count(width, yuy2_block);
    const ptrdiff_t y_next = drift_step(blocks, yuy2_block, width, src_stride);
    const ptrdiff_t d_next = drift_step(blocks, 2 * yuy2_block, 2 * width, dst_stride);
    // The chroma planes are never read: the picture is grey whatever the chroma settings.
    for (uint32_t row = 0; row < 2 * loop_count(height, 2); ++row, y_row += y_next, dst += d_next)
        V::luma_row_to_grey_yuy2(y_row, dst, blocks, a);
}

template <class V>
void loadimage_half_yuy2_ajust(void* src_y, void* src_u, void* src_v, void* dst_, int32_t width,
                               int32_t height, int32_t src_stride, int32_t dst_stride,
                               ajust_contrast_info*) {
    const AdjustConstants a = load_adjust_constants();
    PlanarSource s{static_cast<const uint8_t*>(src_y), static_cast<const uint8_t*>(src_u),
                   static_cast<const uint8_t*>(src_v)};
    auto* dst = static_cast<uint8_t*>(dst_);
    const uint32_t blocks = loop_count(width, yuy2_block);
    const ptrdiff_t y_next = drift_step(blocks, yuy2_block, width, src_stride);
    const ptrdiff_t c_next = drift_step(blocks, yuy2_block / 2, 0, (src_stride - width) >> 1);
    const ptrdiff_t d_next = drift_step(blocks, yuy2_block, width, dst_stride);

    for (uint32_t row = 0; row < 2 * loop_count(height, 2); ++row, s.y += y_next, dst += d_next) {
        V::planar_row_to_half_yuy2(s.y, s.u, s.v, dst, blocks, a);
        if (row & 1) s.u += c_next, s.v += c_next;
    }
}

}  // namespace
}  // namespace dispconv::kernels
