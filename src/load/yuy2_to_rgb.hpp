// Packed YUY2 frame to RGB32, RGB24 or 16-bit RGB; odd rows use the chroma of the row above.
#pragma once

#include "load/row_walks.hpp"

namespace dispconv::kernels {
namespace {

template <class V, class Format, class Adjust>
void yuy2_to_rgb(void* src_y, void*, void*, void* dst, int32_t width, int32_t height, int32_t src_stride,
                 int32_t dst_stride, ajust_contrast_info* adjust) {
    Rgb16Layout layout;
    if (!destination_layout<Format>(adjust, layout)) return;
    const AdjustConstants a = adjust_snapshot<Adjust>();
    constexpr int block = 16;  // pixels
    packed_row_pairs<block, Format::bytes_per_pixel>(
        src_y, dst, width, height, src_stride, dst_stride,
        [&](const uint8_t* s0, const uint8_t* s1, uint8_t* d0, uint8_t* d1, uint32_t n) {
            V::template yuy2_pair_to_rgb<Format, Adjust>(s0, s1, d0, d1, n, a, layout);
        });
}

template <class V>
constexpr auto LoadYUY2_RGB32 = yuy2_to_rgb<V, Rgb32, Plain>;
template <class V>
constexpr auto LoadYUY2_RGB32_adjust = yuy2_to_rgb<V, Rgb32, Adjusted>;
template <class V>
constexpr auto LoadYUY2_RGB24 = yuy2_to_rgb<V, Rgb24, Plain>;
template <class V>
constexpr auto LoadYUY2_RGB24_adjust = yuy2_to_rgb<V, Rgb24, Adjusted>;
template <class V>
constexpr auto LoadYUY2_RGB16 = yuy2_to_rgb<V, Rgb16, Plain>;
template <class V>
constexpr auto LoadYUY2_RGB16_adjust = yuy2_to_rgb<V, Rgb16, Adjusted>;

}  // namespace
}  // namespace dispconv::kernels
