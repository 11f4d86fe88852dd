// Planar YV12 frame to a YUY2 surface of twice the width and height. Rows are doubled
// horizontally first and the doubled rows then averaged; the adjusting kernel adjusts the
// source samples before any interpolation.
#pragma once

#include <utility>

#include "stretch/planar_1x2.hpp"

namespace dispconv::kernels { namespace {

// One destination row: each plane's row, or the average of two doubled rows, doubled.
template <class V, class Adjust>
void double_size_row(const PlanarStretch& s, const AdjustConstants& a, int32_t r, Taps luma,
                     Taps chroma) {
    auto rows = [](const PlaneRows& p, Taps t) {
        const uint8_t* r0 = p.row(t.first);
        return std::pair{r0, t.count == 1 ? r0 : p.row(t.first + 1)};
    };
    const auto [y0, y1] = rows(s.y, luma);
    const auto [u0, u1] = rows(s.u, chroma);
    const auto [v0, v1] = rows(s.v, chroma);
    V::template double_size_yuy2_row<Adjust::enabled>(y0, y1, u0, u1, v0, v1, s.dst_row(r), s.blocks, a);
}

template <class V, class Adjust>
void stretch_2x2_planar(void* src_y, void* src_u, void* src_v, void* dst, int32_t width,
                        int32_t height, int32_t src_stride, int32_t dst_stride, ajust_contrast_info*) {
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

template <class V> constexpr auto strech_picture_2X2_yuy2 = stretch_2x2_planar<V, Plain>;
template <class V> constexpr auto strech_picture_2X2_yuy2_ajust = stretch_2x2_planar<V, Adjusted>;

} }  // namespace dispconv::kernels
