// A planar frame described by a tagVideoFrame to a YUY2 surface of twice the height, the
// in-between rows made by edge-directed interpolation and every output sample adjusted.
#pragma once

#include "stretch/common.hpp"

namespace dispconv::kernels { namespace {

constexpr int edge_block = 16;  // pixels
// Runs of blocks go to the vocabulary together, up to this many blocks per call.
constexpr uint32_t edge_chunk = 32;
// Rows up to this many pixels keep their interpolated chroma for the next row, which has the
// same chroma rows.
constexpr uint32_t edge_kept_pixels = 4096;

// The chunks of an interpolated row of `blocks` blocks: the first block, the middle blocks up
// to edge_chunk at a time, the last block; f(first, count, middle). Only the middle blocks are
// edge-directed, so that the search never reads outside the row.
template <class F>
void for_edge_chunks(uint32_t blocks, F&& f) {
    f(0u, 1u, false);
    for (uint32_t i = 1; i + 1 < blocks; i += edge_chunk) f(i, blocks - 1 - i < edge_chunk ? blocks - 1 - i : edge_chunk, true);
    f(blocks - 1, 1u, false);
}

// n samples at `src` interpolated with the row `step` below it.
template <class V>
void interpolated_run(const uint8_t* src, ptrdiff_t step, bool edge_directed, uint8_t* out, int n) {
    if (edge_directed) return V::edge_interpolate(src, src + step, out, n);
    V::average(src, src + step, out, n);
}

// Both chroma rows `u`, `v` interpolated with the rows `step` below them, chunk by chunk.
template <class V>
void interpolated_chroma(const uint8_t* u, const uint8_t* v, ptrdiff_t step, uint32_t first, uint32_t count,
                         bool middle, uint8_t* ub, uint8_t* vb) {
    constexpr int c = edge_block / 2;
    interpolated_run<V>(u + ptrdiff_t(first) * c, step, middle, ub, int(count) * c);
    interpolated_run<V>(v + ptrdiff_t(first) * c, step, middle, vb, int(count) * c);
}

// Chroma for a row: the source rows, interpolated ones made per chunk, or whole interpolated
// rows made earlier (`kept`, U then V).
struct EdgeChroma {
    const uint8_t *u, *v;
    bool interpolate;
    const uint8_t* kept;
};

// One destination row from the luma row `y` (interpolated with the row below when
// `luma_interp`) and the chroma, adjusted and joined chunk by chunk.
template <class V>
void stretch_row(const uint8_t* y, bool luma_interp, const EdgeChroma& chroma, uint8_t* dst, int32_t width,
                 ptrdiff_t chroma_step, const AdjustConstants& a) {
    constexpr int n = edge_block, c = edge_block / 2;
    if (!luma_interp && !chroma.interpolate)
        return V::planar_row_to_yuy2_adjusted(y, chroma.u, chroma.v, dst, loop_count(width, n), a);
    const uint32_t blocks = loop_count(width - 2 * n, n) + 2;
    for_edge_chunks(blocks, [&](uint32_t first, uint32_t count, bool middle) {
        uint8_t yb[edge_chunk * n], ub[edge_chunk * c], vb[edge_chunk * c];
        const uint8_t* yp = y + ptrdiff_t(first) * n;
        if (luma_interp) interpolated_run<V>(yp, 2 * chroma_step, middle, yb, int(count) * n), yp = yb;
        const uint8_t *up = chroma.u + ptrdiff_t(first) * c, *vp = chroma.v + ptrdiff_t(first) * c;
        if (chroma.kept) {
            up = chroma.kept + ptrdiff_t(first) * c, vp = up + ptrdiff_t(blocks) * c;
        } else if (chroma.interpolate) {
            interpolated_chroma<V>(chroma.u, chroma.v, chroma_step, first, count, middle, ub, vb), up = ub, vp = vb;
        }
        V::planar_row_to_yuy2_adjusted(yp, up, vp, dst + ptrdiff_t(first) * 2 * n, count, a);
    });
}

template <class V>
void strech_opt_yuy2_ajust(tagVideoFrame* frame, int32_t start_line, int32_t height, uint8_t* dst,
                           int32_t dst_stride, ajust_contrast_info*) {
    if (height < 8) return;
    const AdjustConstants a = load_adjust_constants();
    const int32_t w = frame->frame_width;
    // A field is every second row; a progressive frame starts at half the luma offset.
    const bool field = frame->frame_structure == 1;
    const ptrdiff_t row_step = field ? 2 * ptrdiff_t(w) : ptrdiff_t(w);
    const int64_t start = int64_t(w) * start_line;
    const ptrdiff_t luma_offset = ptrdiff_t(field ? start : start >> 1);
    // Deliberate: the chroma start is a quarter of the luma offset, even when that falls
    // inside a chroma row.
    const uint8_t* y0 = frame->plane_y + luma_offset;
    const uint8_t* u0 = frame->plane_u + (luma_offset >> 2);
    const uint8_t* v0 = frame->plane_v + (luma_offset >> 2);
    const ptrdiff_t chroma_step = row_step >> 1;

    // The double-height schedule; a row between two source rows of a plane is interpolated.
    // Two neighbouring destination rows share their chroma rows: the interpolated chroma of
    // the first is kept for the second.
    const uint32_t blocks = loop_count(w - 2 * edge_block, edge_block) + 2;
    const bool keep = blocks <= edge_kept_pixels / edge_block;
    uint8_t kept[edge_kept_pixels];
    int32_t kept_row = -1;
    double_height_rows(height >> 1, [&](int32_t out_row, Taps luma, Taps chroma) {
        const uint8_t* u = u0 + chroma.first * chroma_step;
        const uint8_t* v = v0 + chroma.first * chroma_step;
        EdgeChroma c{u, v, chroma.count == 2, nullptr};
        if (c.interpolate && keep) {
            if (kept_row != chroma.first)
                for_edge_chunks(blocks, [&](uint32_t first, uint32_t count, bool middle) {
                    constexpr int n = edge_block / 2;
                    interpolated_chroma<V>(u, v, chroma_step, first, count, middle, kept + first * n,
                                           kept + (blocks + first) * n);
                });
            kept_row = chroma.first, c.kept = kept;
        }
        stretch_row<V>(y0 + luma.first * row_step, luma.count == 2, c, dst + ptrdiff_t(out_row) * dst_stride, w,
                       chroma_step, a);
    });
}

} }  // namespace dispconv::kernels
