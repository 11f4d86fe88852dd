// Packed YUY2 frame to a YUY2 surface: each odd row takes the chroma of the row above it.
#pragma once

#include "load/row_walks.hpp"

namespace dispconv::kernels { namespace {

template <class V, class Adjust>
void yuy2_to_yuy2(void* src_y, void*, void*, void* dst, int32_t width, int32_t height, int32_t src_stride,
                  int32_t dst_stride, ajust_contrast_info*) {
    constexpr int block = 8;  // pixels
    const AdjustConstants a = adjust_snapshot<Adjust>();
    packed_row_pairs<block, 2>(src_y, dst, width, height, src_stride, dst_stride,
                               [&](const uint8_t* s0, const uint8_t* s1, uint8_t* d0, uint8_t* d1, uint32_t n) {
                                   // Row 0 keeps its own chroma (a copy when plain); row 1 takes row 0's.
                                   if constexpr (Adjust::enabled) V::template yuy2_row_to_yuy2<Adjust>(s0, s0, d0, n, a);
                                   else V::copy(s0, d0, int(2 * block * n));
                                   V::template yuy2_row_to_yuy2<Adjust>(s1, s0, d1, n, a);
                               });
}

template <class V> constexpr auto LoadYUY2_YUY2 = yuy2_to_yuy2<V, Plain>;
template <class V> constexpr auto LoadYUY2_YUY2_adjust = yuy2_to_yuy2<V, Adjusted>;

} }  // namespace dispconv::kernels
