// Planar YV12 frame to a YUY2 surface of twice the height: rounded two-row averages, or the
// four-row filter with adjustment after interpolation.
#pragma once

#include "stretch/common.hpp"

namespace dispconv::kernels { namespace {

constexpr int stretch_block = 16;  // source pixels per block

// The three source planes and the destination of a row-by-row planar stretch. After each row
// the positions move back by what a row of exactly `width` pixels consumed, so a width off
// the block makes every following row start further right.
struct PlanarStretch {
    PlaneRows y, u, v;
    uint8_t* dst;
    ptrdiff_t dst_step;
    uint32_t blocks;
    uint8_t* dst_row(int32_t r) const { return dst + r * dst_step; }
};

inline PlanarStretch planar_stretch(void* src_y, void* src_u, void* src_v, void* dst,
                                    int32_t width, int32_t src_stride, int32_t dst_stride,
                                    uint32_t blocks, int dst_bytes_per_block) {
    const ptrdiff_t y_step = drift_step(blocks, stretch_block, width, src_stride);
    const ptrdiff_t c_step = drift_step(blocks, stretch_block / 2, width >> 1, chroma_pitch(src_stride));
    const int32_t dst_row_bytes = width * (dst_bytes_per_block / stretch_block);
    return {{static_cast<const uint8_t*>(src_y), y_step},
            {static_cast<const uint8_t*>(src_u), c_step},
            {static_cast<const uint8_t*>(src_v), c_step},
            static_cast<uint8_t*>(dst),
            drift_step(blocks, dst_bytes_per_block, dst_row_bytes, dst_stride),
            blocks};
}

// One YUY2 destination row of the double-height stretch, interpolated, then adjusted, in runs
// of up to `stretch_chunk` blocks.
constexpr uint32_t stretch_chunk = 32;

template <class V, class Adjust>
void double_height_row(const PlanarStretch& s, const AdjustConstants& a, int32_t r, Taps luma,
                       Taps chroma) {
    constexpr int n = stretch_block;
    uint8_t* d = s.dst_row(r);
    if constexpr (!Adjust::enabled) {
        // Copies and averages only: one pass, a copied row averaged with itself.
        const uint8_t* y0 = s.y.row(luma.first);
        const uint8_t* y1 = luma.count == 1 ? y0 : s.y.row(luma.first + 1);
        const uint8_t *u0 = s.u.row(chroma.first), *v0 = s.v.row(chroma.first);
        const uint8_t* u1 = chroma.count == 1 ? u0 : s.u.row(chroma.first + 1);
        const uint8_t* v1 = chroma.count == 1 ? v0 : s.v.row(chroma.first + 1);
        V::join_yuy2_averaged(y0, y1, u0, u1, v0, v1, d, int(s.blocks) * n);
        return;
    }
    for (uint32_t i = 0; i < s.blocks; i += stretch_chunk) {
        const int count = int(s.blocks - i < stretch_chunk ? s.blocks - i : stretch_chunk);
        const int ny = count * n, nc = count * n / 2;
        uint8_t y[stretch_chunk * n], u[stretch_chunk * n / 2], v[stretch_chunk * n / 2];
        vertical<V>(s.y, luma, ptrdiff_t(i) * n, y, ny);
        vertical<V>(s.u, chroma, ptrdiff_t(i) * n / 2, u, nc);
        vertical<V>(s.v, chroma, ptrdiff_t(i) * n / 2, v, nc);
        if constexpr (Adjust::enabled) adjust_yuv<V>(y, u, v, y, u, v, ny, a);
        V::join_yuy2(y, u, v, d + ptrdiff_t(i) * 2 * n, ny);
    }
}

template <class V>
void strech_picture_1X2_yuy2(void* src_y, void* src_u, void* src_v, void* dst, int32_t width,
                             int32_t height, int32_t src_stride, int32_t dst_stride,
                             ajust_contrast_info*) {
    if (height < 8) return;
    const PlanarStretch s = planar_stretch(src_y, src_u, src_v, dst, width, src_stride, dst_stride,
                                           loop_count(width >> 1, stretch_block / 2), 2 * stretch_block);
    const AdjustConstants none{};
    double_height_rows(int32_t(loop_count(height, 2)), [&](int32_t r, Taps luma, Taps chroma) {
        double_height_row<V, Plain>(s, none, r, luma, chroma);
    });
}

template <class V>
void strech_picture_1X2_yuy2_ajust(void* src_y, void* src_u, void* src_v, void* dst,
                                   int32_t width, int32_t height, int32_t src_stride,
                                   int32_t dst_stride, ajust_contrast_info*) {
    if (height < 8) return;
    const AdjustConstants a = load_adjust_constants();
    const PlanarStretch s = planar_stretch(src_y, src_u, src_v, dst, width, src_stride, dst_stride,
                                           loop_count(width >> 1, stretch_block / 2), 2 * stretch_block);
    filtered_double_height_rows(int32_t(loop_count(height - 6, 2)),
                                [&](int32_t r, Taps luma, Taps chroma) {
                                    double_height_row<V, Adjusted>(s, a, r, luma, chroma);
                                });
}

} }  // namespace dispconv::kernels
