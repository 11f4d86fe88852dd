// Planar YV12 frame to RGB32, RGB24 or 16-bit RGB; one chroma row serves a row pair.
#pragma once

#include "load/row_walks.hpp"

namespace dispconv::kernels {
namespace {

template <class V, class Format, class Adjust>
void planar_to_rgb(void* src_y, void* src_u, void* src_v, void* dst, int32_t width, int32_t height,
                   int32_t src_stride, int32_t dst_stride, ajust_contrast_info* adjust) {
    Rgb16Layout layout;
    if (!destination_layout<Format>(adjust, layout)) return;
    const AdjustConstants a = adjust_snapshot<Adjust>();
    planar_row_pairs<Format::bytes_per_pixel>(
        src_y, src_u, src_v, dst, width, height, src_stride, dst_stride,
        [&](const uint8_t* y0, const uint8_t* y1, const uint8_t* u, const uint8_t* v, uint8_t* d0, uint8_t* d1,
            uint32_t n) { V::template planar_pair_to_rgb<Format, Adjust>(y0, y1, u, v, d0, d1, n, a, layout); });
}

template <class V>
constexpr auto loadimage_rgb32 = planar_to_rgb<V, Rgb32, Plain>;
template <class V>
constexpr auto loadimage_rgb32_ajust = planar_to_rgb<V, Rgb32, Adjusted>;
template <class V>
constexpr auto loadimage_rgb24 = planar_to_rgb<V, Rgb24, Plain>;
template <class V>
constexpr auto loadimage_rgb24_ajust = planar_to_rgb<V, Rgb24, Adjusted>;
template <class V>
constexpr auto loadimage_rgb16 = planar_to_rgb<V, Rgb16, Plain>;
template <class V>
constexpr auto loadimage_rgb16_ajust = planar_to_rgb<V, Rgb16, Adjusted>;

}  // namespace
}  // namespace dispconv::kernels
