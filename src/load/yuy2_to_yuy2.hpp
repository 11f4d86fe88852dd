// Packed YUY2 frame to a YUY2 surface: each odd row takes the chroma of the row above it.
#pragma once

#include "core/walk.hpp"

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
        const uint8_t* s0 = src;
        const uint8_t* s1 = src + src_pitch;
        uint8_t* d1 = dst + dst_stride;
        // Row 0 keeps its own chroma (a copy when plain); row 1 takes row 0's.
        in_block_order(dst, d1, ptrdiff_t(blocks) * 16, blocks, [&](uint32_t i, uint32_t n) {
            if constexpr (Adjust::enabled) V::template yuy2_row_to_yuy2<Adjust>(s0 + 16 * i, s0 + 16 * i, dst + 16 * i, n, a);
            else V::copy(s0 + 16 * i, dst + 16 * i, int(16 * n));
            V::template yuy2_row_to_yuy2<Adjust>(s1 + 16 * i, s0 + 16 * i, d1 + 16 * i, n, a);
        });
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
