// Planar YV12 frame to a YUY2 surface of twice the width and height. Rows are doubled
// horizontally first and the doubled rows then averaged; the adjusting kernel adjusts the
// source samples before any interpolation.
#pragma once

#include "stretch/planar_1x2.hpp"

namespace dispconv::kernels {
namespace {

// n source samples (adjusted if enabled) doubled into 2n. The neighbour of the last sample is
// the sample after the run, or the last sample itself at the right edge.
template <class V, class Adjust>
void doubled_run(const uint8_t* src, int n, bool right_edge, Channel c, uint8_t* out) {
    uint8_t s[stretch_block + 1];
    V::copy(src, s, right_edge ? n : n + 1);
    maybe_adjust<V, Adjust>(s, right_edge ? n : n + 1, c);
    V::double_run(s, right_edge ? s[n - 1] : s[n], out, n);
}

// The doubled row that `taps` names (one row, or the average of two doubled rows).
template <class V, class Adjust>
void doubled_rows(const PlaneRows& plane, Taps taps, ptrdiff_t x, int n, bool right_edge,
                  Channel c, uint8_t* out) {
    doubled_run<V, Adjust>(plane.row(taps.first) + x, n, right_edge, c, out);
    if (taps.count == 1) return;
    uint8_t below[2 * stretch_block];
    doubled_run<V, Adjust>(plane.row(taps.first + 1) + x, n, right_edge, c, below);
    V::average(out, below, out, 2 * n);
}

template <class V, class Adjust>
void double_size_row(const PlanarStretch& s, const AdjustConstants& a, int32_t r, Taps luma,
                     Taps chroma) {
    constexpr int n = stretch_block;
    uint8_t* d = s.dst_row(r);
    for (uint32_t i = 0; i < s.blocks; ++i) {
        const bool last = i + 1 == s.blocks;
        uint8_t y[2 * n], u[n], v[n];
        doubled_rows<V, Adjust>(s.y, luma, ptrdiff_t(i) * n, n, last, luma_channel(a), y);
        doubled_rows<V, Adjust>(s.u, chroma, ptrdiff_t(i) * n / 2, n / 2, last, u_channel(a), u);
        doubled_rows<V, Adjust>(s.v, chroma, ptrdiff_t(i) * n / 2, n / 2, last, v_channel(a), v);
        V::join_yuy2(y, u, v, d + ptrdiff_t(i) * 4 * n, 2 * n);
    }
}

template <class V, class Adjust>
void stretch_2x2_planar(void* src_y, void* src_u, void* src_v, void* dst, int32_t width,
                        int32_t height, int32_t src_stride, int32_t dst_stride) {
    if (height < 8) return;
    const AdjustConstants a = adjust_snapshot<Adjust>();
    // Blocks that read the next block's first sample, then the last block; a width of 16
    // still runs two blocks.
    const uint32_t blocks = loop_count((width >> 1) - stretch_block / 2, stretch_block / 2) + 1;
    const PlanarStretch s = planar_stretch(src_y, src_u, src_v, dst, width, src_stride, dst_stride,
                                           blocks, 4 * stretch_block);
    double_height_rows(int32_t(loop_count(height, 2)), [&](int32_t r, Taps luma, Taps chroma) {
        double_size_row<V, Adjust>(s, a, r, luma, chroma);
    });
}

template <class V>
void strech_picture_2X2_yuy2(void* src_y, void* src_u, void* src_v, void* dst, int32_t width,
                             int32_t height, int32_t src_stride, int32_t dst_stride,
                             ajust_contrast_info*) {
    stretch_2x2_planar<V, Plain>(src_y, src_u, src_v, dst, width, height, src_stride, dst_stride);
}

template <class V>
void strech_picture_2X2_yuy2_ajust(void* src_y, void* src_u, void* src_v, void* dst,
                                   int32_t width, int32_t height, int32_t src_stride,
                                   int32_t dst_stride, ajust_contrast_info*) {
    stretch_2x2_planar<V, Adjusted>(src_y, src_u, src_v, dst, width, height, src_stride, dst_stride);
}

}  // namespace
}  // namespace dispconv::kernels
