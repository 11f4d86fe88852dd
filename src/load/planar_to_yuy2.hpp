// Planar YV12 frame to a YUY2 surface: plain, adjusted, luma-only and half-width members.
// All four drift: width must be a multiple of 16.
#pragma once

#include "load/row_walks.hpp"

namespace dispconv::kernels { namespace {

constexpr int yuy2_block = planar_block;  // source pixels

template <class V>
void loadimage_yuy2(void* src_y, void* src_u, void* src_v, void* dst, int32_t width, int32_t height,
                    int32_t src_stride, int32_t dst_stride, ajust_contrast_info*) {
    planar_row_pairs<2>(src_y, src_u, src_v, dst, width, height, src_stride, dst_stride,
                        [](const uint8_t* y0, const uint8_t* y1, const uint8_t* u, const uint8_t* v, uint8_t* d0,
                           uint8_t* d1, uint32_t n) { V::planar_pair_to_yuy2_gapped(y0, y1, u, v, d0, d1, n); });
}

// Row by row, adjusted: each full-width row re-reads and re-adjusts its chroma row; the half-width
// member averages neighbouring pixels.
template <class V, bool half>
void planar_to_yuy2_adjusted(void* src_y, void* src_u, void* src_v, void* dst, int32_t width, int32_t height,
                             int32_t src_stride, int32_t dst_stride, ajust_contrast_info*) {
    if (!half && (height <= 8 || (height & 1))) return;
    const AdjustConstants a = load_adjust_constants();
    if constexpr (!half) {
        // A row pair can share its adjusted chroma where that changes no byte: nothing drifts
        // and the two rows of a pair share no byte.
        auto* d = static_cast<uint8_t*>(dst);
        if (width > 0 && width % yuy2_block == 0 && !runs_overlap(d, d + dst_stride, 2 * ptrdiff_t(width)))
            return planar_row_pairs<2>(src_y, src_u, src_v, dst, width, height, src_stride, dst_stride,
                                       [&](const uint8_t* y0, const uint8_t* y1, const uint8_t* u, const uint8_t* v,
                                           uint8_t* d0, uint8_t* d1, uint32_t n) {
                                           V::planar_pair_to_yuy2_adjusted(y0, y1, u, v, d0, d1, n, a);
                                       });
    }
    planar_rows<half ? 1 : 2>(src_y, src_u, src_v, dst, width, height, src_stride, dst_stride,
                              [&](PlanarSource s, uint8_t* d, uint32_t blocks) {
                                  if constexpr (half) V::planar_row_to_half_yuy2(s.y, s.u, s.v, d, blocks, a);
                                  else V::planar_row_to_yuy2_adjusted(s.y, s.u, s.v, d, blocks, a);
                              });
}
template <class V> constexpr auto loadimage_yuy2_ajust = planar_to_yuy2_adjusted<V, false>;
template <class V> constexpr auto loadimage_half_yuy2_ajust = planar_to_yuy2_adjusted<V, true>;

template <class V>
void loadimage_yuy2_mono_ajust(void* src_y, void*, void*, void* dst_, int32_t width,
                               int32_t height, int32_t src_stride, int32_t dst_stride,
                               ajust_contrast_info*) {
    const AdjustConstants a = load_adjust_constants();
    const auto* y_row = static_cast<const uint8_t*>(src_y);
    auto* dst = static_cast<uint8_t*>(dst_);
    const PlanarSteps next = planar_steps<2>(width, src_stride, dst_stride, 1);
    // The chroma planes are never read: the picture is grey whatever the chroma settings.
    for (uint32_t row = 0; row < 2 * loop_count(height, 2); ++row, y_row += next.y, dst += next.dst)
        V::luma_row_to_grey_yuy2(y_row, dst, next.blocks, a);
}

} }  // namespace dispconv::kernels
