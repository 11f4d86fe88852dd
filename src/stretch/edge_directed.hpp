// A planar frame described by a tagVideoFrame to a YUY2 surface of twice the height, the
// in-between rows made by edge-directed interpolation and every output sample adjusted.
#pragma once

#include "stretch/common.hpp"

namespace dispconv::kernels { namespace {

constexpr int edge_block = 16;  // pixels

// The row routines: each writes one destination row from the luma row `y` and the chroma
// rows `u`, `v`; an interpolating routine also reads the row below (2 * chroma_step bytes
// below for luma, chroma_step for chroma).
// Runs of blocks go to the vocabulary together, up to this many blocks per call.
constexpr uint32_t edge_chunk = 32;

template <class V>
void stretch_row_copy(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* dst,
                      int32_t width, ptrdiff_t, const AdjustConstants& a) {
    constexpr int n = edge_block, c = edge_block / 2;
    const uint32_t blocks = loop_count(width, n);
    for (uint32_t i = 0; i < blocks; i += edge_chunk) {
        const int count = int(blocks - i < edge_chunk ? blocks - i : edge_chunk);
        uint8_t yb[edge_chunk * n], ub[edge_chunk * c], vb[edge_chunk * c];
        adjust_yuv<V>(y + ptrdiff_t(i) * n, u + ptrdiff_t(i) * c, v + ptrdiff_t(i) * c, yb, ub, vb, count * n, a);
        V::join_yuy2(yb, ub, vb, dst + ptrdiff_t(i) * 2 * n, count * n);
    }
}

// n samples at `src`: a copy, or interpolated with the row `step` below it (edge-directed
// in the middle blocks, the plain average in the first and last blocks so that the search
// never reads outside the row).
template <class V>
void interpolated_run(const uint8_t* src, ptrdiff_t step, bool interpolate, bool edge_directed,
                      uint8_t* out, int n) {
    if (!interpolate) return V::copy(src, out, n);
    if (edge_directed) return V::edge_interpolate(src, src + step, out, n);
    V::average(src, src + step, out, n);
}

template <class V, bool luma_interp, bool chroma_interp>
void stretch_row_interp(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* dst,
                        int32_t width, ptrdiff_t chroma_step, const AdjustConstants& a) {
    constexpr int n = edge_block, c = edge_block / 2;
    const ptrdiff_t luma_step = 2 * chroma_step;
    // Blocks first .. first + count - 1, edge-directed when `middle`.
    auto blocks_at = [&](uint32_t first, uint32_t count, bool middle) {
        uint8_t yb[edge_chunk * n], ub[edge_chunk * c], vb[edge_chunk * c];
        const int ny = int(count) * n, nc = int(count) * c;
        interpolated_run<V>(y + ptrdiff_t(first) * n, luma_step, luma_interp, middle, yb, ny);
        interpolated_run<V>(u + ptrdiff_t(first) * c, chroma_step, chroma_interp, middle, ub, nc);
        interpolated_run<V>(v + ptrdiff_t(first) * c, chroma_step, chroma_interp, middle, vb, nc);
        adjust_yuv<V>(yb, ub, vb, yb, ub, vb, ny, a);
        V::join_yuy2(yb, ub, vb, dst + ptrdiff_t(first) * 2 * n, ny);
    };
    // First block, at least one middle block, last block.
    const uint32_t blocks = loop_count(width - 2 * n, n) + 2;
    blocks_at(0, 1, false);
    for (uint32_t i = 1; i + 1 < blocks; i += edge_chunk)
        blocks_at(i, blocks - 1 - i < edge_chunk ? blocks - 1 - i : edge_chunk, true);
    blocks_at(blocks - 1, 1, false);
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

    using Routine = void (*)(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, int32_t,
                             ptrdiff_t, const AdjustConstants&);
    // The double-height schedule; a row between two source rows of a plane is interpolated.
    double_height_rows(height >> 1, [&](int32_t out_row, Taps luma, Taps chroma) {
        const bool luma_interp = luma.count == 2, chroma_interp = chroma.count == 2;
        const Routine routine = !luma_interp && !chroma_interp ? stretch_row_copy<V>
                                : !chroma_interp             ? stretch_row_interp<V, true, false>
                                : !luma_interp               ? stretch_row_interp<V, false, true>
                                                             : stretch_row_interp<V, true, true>;
        routine(y0 + luma.first * row_step, u0 + chroma.first * chroma_step,
                v0 + chroma.first * chroma_step, dst + ptrdiff_t(out_row) * dst_stride, w,
                chroma_step, a);
    });
}

} }  // namespace dispconv::kernels
