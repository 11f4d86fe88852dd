// Frames to RGB32, RGB24 or 16-bit RGB, in row pairs: a planar YV12 pair shares one chroma row;
// a packed YUY2 pair's second row uses the chroma of the first.
#pragma once

#include "load/row_walks.hpp"

namespace dispconv::kernels { namespace {

enum class Source { planar, packed };

template <class V, Source source, class Format, class Adjust>
void frame_to_rgb(void* src_y, void* src_u, void* src_v, void* dst, int32_t width, int32_t height,
                  int32_t src_stride, int32_t dst_stride, ajust_contrast_info* adjust) {
    Rgb16Layout layout;
    if (!destination_layout<Format>(adjust, layout)) return;
    const AdjustConstants a = adjust_snapshot<Adjust>();
    constexpr int bpp = Format::bytes_per_pixel;
    auto convert = [&]<class A>() {
        if constexpr (source == Source::planar) {
            planar_row_pairs<bpp>(
                src_y, src_u, src_v, dst, width, height, src_stride, dst_stride,
                [&](const uint8_t* y0, const uint8_t* y1, const uint8_t* u, const uint8_t* v, uint8_t* d0, uint8_t* d1,
                    uint32_t n) { V::template planar_pair_to_rgb<Format, A>(y0, y1, u, v, d0, d1, n, a, layout); });
        } else {
            constexpr int block = 16;  // pixels
            packed_row_pairs<block, bpp>(src_y, dst, width, height, src_stride, dst_stride,
                                         [&](const uint8_t* s0, const uint8_t* s1, uint8_t* d0, uint8_t* d1, uint32_t n) {
                                             V::template yuy2_pair_to_rgb<Format, A>(s0, s1, d0, d1, n, a, layout);
                                         });
        }
    };
    // The gains callers use (0..257) take a shorter adjustment; others keep the 16-bit wrap.
    if constexpr (Adjust::enabled && V::small_gain_multiply) {
        if (small_gains(a)) return convert.template operator()<AdjustedSmallGains>();
    }
    convert.template operator()<Adjust>();
}

template <class V> constexpr auto loadimage_rgb32 = frame_to_rgb<V, Source::planar, Rgb32, Plain>;
template <class V> constexpr auto loadimage_rgb32_ajust = frame_to_rgb<V, Source::planar, Rgb32, Adjusted>;
template <class V> constexpr auto loadimage_rgb24 = frame_to_rgb<V, Source::planar, Rgb24, Plain>;
template <class V> constexpr auto loadimage_rgb24_ajust = frame_to_rgb<V, Source::planar, Rgb24, Adjusted>;
template <class V> constexpr auto loadimage_rgb16 = frame_to_rgb<V, Source::planar, Rgb16, Plain>;
template <class V> constexpr auto loadimage_rgb16_ajust = frame_to_rgb<V, Source::planar, Rgb16, Adjusted>;
template <class V> constexpr auto LoadYUY2_RGB32 = frame_to_rgb<V, Source::packed, Rgb32, Plain>;
template <class V> constexpr auto LoadYUY2_RGB32_adjust = frame_to_rgb<V, Source::packed, Rgb32, Adjusted>;
template <class V> constexpr auto LoadYUY2_RGB24 = frame_to_rgb<V, Source::packed, Rgb24, Plain>;
template <class V> constexpr auto LoadYUY2_RGB24_adjust = frame_to_rgb<V, Source::packed, Rgb24, Adjusted>;
template <class V> constexpr auto LoadYUY2_RGB16 = frame_to_rgb<V, Source::packed, Rgb16, Plain>;
template <class V> constexpr auto LoadYUY2_RGB16_adjust = frame_to_rgb<V, Source::packed, Rgb16, Adjusted>;

} }  // namespace dispconv::kernels
