// Packed YUY2 frame to a YUY2 surface: each odd row takes the chroma of the row above it.
#pragma once

#include "load/common.hpp"

namespace dispconv::kernels {
namespace {

template <class V, class Adjust>
void yuy2_to_yuy2(const uint8_t* src, uint8_t* dst, int32_t width, int32_t height,
                  int32_t src_stride, int32_t dst_stride) {
    constexpr int block = 8;  // pixels
    const AdjustConstants a = adjust_snapshot<Adjust>();
    const ptrdiff_t src_pitch = 2 * ptrdiff_t(src_stride);
    const uint32_t blocks = loop_count(2 * width, 2 * block);
    const ptrdiff_t src_next = pull_back_step(blocks, block, width, 2, 2 * src_pitch);
    const ptrdiff_t dst_next = pull_back_step(blocks, block, width, 2, 2 * ptrdiff_t(dst_stride));

    for (uint32_t pair = loop_count(height, 2); pair--; src += src_next, dst += dst_next) {
        for (uint32_t i = 0; i < blocks; ++i) {
            const uint8_t* s = src + i * 2 * block;
            uint8_t* d = dst + i * 2 * block;
            uint8_t y_top[block], y_bottom[block], u[block / 2], v[block / 2], unused[block / 2];
            V::split_yuy2(s, y_top, u, v, block);
            V::split_yuy2(s + src_pitch, y_bottom, unused, unused, block);
            if constexpr (Adjust::enabled) {
                V::adjust(y_top, y_top, block, a.luma_gain, a.luma_offset);
                V::adjust(y_bottom, y_bottom, block, a.luma_gain, a.luma_offset);
                V::adjust(u, u, block / 2, a.chroma_gain, a.u_offset);
                V::adjust(v, v, block / 2, a.chroma_gain, a.v_offset);
            }
            V::join_yuy2(y_top, u, v, d, block);
            V::join_yuy2(y_bottom, u, v, d + dst_stride, block);
        }
    }
}

template <class V>
void LoadYUY2_YUY2(void* src_y, void*, void*, void* dst, int32_t width, int32_t height,
                   int32_t src_stride, int32_t dst_stride, ajust_contrast_info*) {
    yuy2_to_yuy2<V, Plain>(static_cast<const uint8_t*>(src_y), static_cast<uint8_t*>(dst), width,
                           height, src_stride, dst_stride);
}

template <class V>
void LoadYUY2_YUY2_adjust(void* src_y, void*, void*, void* dst, int32_t width, int32_t height,
                          int32_t src_stride, int32_t dst_stride, ajust_contrast_info*) {
    yuy2_to_yuy2<V, Adjusted>(static_cast<const uint8_t*>(src_y), static_cast<uint8_t*>(dst),
                              width, height, src_stride, dst_stride);
}

}  // namespace
}  // namespace dispconv::kernels
