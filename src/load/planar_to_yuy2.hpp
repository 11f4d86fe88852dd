// Planar YV12 frame to a YUY2 surface: plain, adjusted, luma-only and half-width members.
// All four drift: width must be a multiple of 16.
#pragma once

#include "load/common.hpp"

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
         s.y += y_next, s.u += c_next, s.v += c_next, dst += d_next) {
        for (uint32_t i = 0; i < blocks; ++i) {
            const uint8_t* u = s.u + i * yuy2_block / 2;
            const uint8_t* v = s.v + i * yuy2_block / 2;
            uint8_t* d = dst + i * 2 * yuy2_block;
            uint8_t odd_row[2 * yuy2_block];
            V::join_yuy2(s.y + i * yuy2_block, u, v, d, yuy2_block);
            V::join_yuy2(s.y + src_stride + i * yuy2_block, u, v, odd_row, yuy2_block);
            // Deliberate: the first 8 bytes of every block of an odd row are left unwritten.
            V::copy(odd_row + 8, d + dst_stride + 8, 2 * yuy2_block - 8);
        }
    }
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
        for (uint32_t i = 0; i < blocks; ++i) {
            uint8_t y[yuy2_block], u[yuy2_block / 2], v[yuy2_block / 2];
            V::adjust(s.y + i * yuy2_block, y, yuy2_block, a.luma_gain, a.luma_offset);
            V::adjust(s.u + i * yuy2_block / 2, u, yuy2_block / 2, a.chroma_gain, a.u_offset);
            V::adjust(s.v + i * yuy2_block / 2, v, yuy2_block / 2, a.chroma_gain, a.v_offset);
            V::join_yuy2(y, u, v, dst + i * 2 * yuy2_block, yuy2_block);
        }
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
    uint8_t grey[yuy2_block / 2];
    V::fill(grey, 128, yuy2_block / 2);

    // The chroma planes are never read: the picture is grey whatever the chroma settings.
    for (uint32_t row = 0; row < 2 * loop_count(height, 2); ++row, y_row += y_next, dst += d_next) {
        for (uint32_t i = 0; i < blocks; ++i) {
            uint8_t y[yuy2_block];
            V::adjust(y_row + i * yuy2_block, y, yuy2_block, a.luma_gain, a.luma_offset);
            V::join_yuy2(y, grey, grey, dst + i * 2 * yuy2_block, yuy2_block);
        }
    }
}

template <class V>
void loadimage_half_yuy2_ajust(void* src_y, void* src_u, void* src_v, void* dst_, int32_t width,
                               int32_t height, int32_t src_stride, int32_t dst_stride,
                               ajust_contrast_info*) {
    constexpr int out = yuy2_block / 2;  // output pixels per block
    const AdjustConstants a = load_adjust_constants();
    PlanarSource s{static_cast<const uint8_t*>(src_y), static_cast<const uint8_t*>(src_u),
                   static_cast<const uint8_t*>(src_v)};
    auto* dst = static_cast<uint8_t*>(dst_);
    const uint32_t blocks = loop_count(width, yuy2_block);
    const ptrdiff_t y_next = drift_step(blocks, yuy2_block, width, src_stride);
    const ptrdiff_t c_next = drift_step(blocks, yuy2_block / 2, 0, (src_stride - width) >> 1);
    const ptrdiff_t d_next = drift_step(blocks, 2 * out, width, dst_stride);

    for (uint32_t row = 0; row < 2 * loop_count(height, 2); ++row, s.y += y_next, dst += d_next) {
        for (uint32_t i = 0; i < blocks; ++i) {
            uint8_t y[out], u[out / 2], v[out / 2];
            V::average_pairs(s.y + i * yuy2_block, y, out);
            V::average_pairs(s.u + i * yuy2_block / 2, u, out / 2);
            V::average_pairs(s.v + i * yuy2_block / 2, v, out / 2);
            V::adjust(y, y, out, a.luma_gain, a.luma_offset);
            V::adjust(u, u, out / 2, a.chroma_gain, a.u_offset);
            V::adjust(v, v, out / 2, a.chroma_gain, a.v_offset);
            V::join_yuy2(y, u, v, dst + i * 2 * out, out);
        }
        if (row & 1) s.u += c_next, s.v += c_next;
    }
}

}  // namespace
}  // namespace dispconv::kernels
