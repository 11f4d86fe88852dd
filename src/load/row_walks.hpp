// The row walks the frame loaders share. Each hands its rows, or runs of blocks of them, to the
// kernel's operation; the steps between rows are the kernels' own, drift and pull-back included.
#pragma once

#include "core/walk.hpp"

namespace dispconv::kernels { namespace {

constexpr int planar_block = 16;  // source pixels per step of the planar walks

struct PlanarSource {
    const uint8_t* y;
    const uint8_t* u;
    const uint8_t* v;
};

inline PlanarSource planar_source(void* y, void* u, void* v) {
    return {static_cast<const uint8_t*>(y), static_cast<const uint8_t*>(u), static_cast<const uint8_t*>(v)};
}

// The blocks of a planar row and how far each pointer moves per step of `rows` luma and
// destination rows (chroma: one row per step). The steps are those of an exact width, so a
// width off the block drifts.
struct PlanarSteps {
    uint32_t blocks;
    ptrdiff_t y, chroma, dst;
};

template <int bytes_per_px>
PlanarSteps planar_steps(int32_t width, int32_t src_stride, int32_t dst_stride, int rows) {
    constexpr int block = planar_block;
    const uint32_t blocks = loop_count(width, block);
    return {blocks, drift_step(blocks, block, width, rows * ptrdiff_t(src_stride)),
            drift_step(blocks, block / 2, 0, (src_stride - width) >> 1),
            drift_step(blocks, block * bytes_per_px, width * bytes_per_px, rows * ptrdiff_t(dst_stride))};
}

// Planar luma rows in pairs sharing one chroma row, `bpp` destination bytes per pixel; every
// pointer drifts, so the width must be a multiple of the block.
// pair(y0, y1, u, v, d0, d1, n) converts n blocks of the pair.
template <int bpp, class Pair>
void planar_row_pairs(void* src_y, void* src_u, void* src_v, void* dst_, int32_t width, int32_t height,
                      int32_t src_stride, int32_t dst_stride, Pair&& pair) {
    constexpr int block = planar_block;
    PlanarSource s = planar_source(src_y, src_u, src_v);
    auto* dst = static_cast<uint8_t*>(dst_);
    const PlanarSteps next = planar_steps<bpp>(width, src_stride, dst_stride, 2);

    for (uint32_t p = loop_count(height, 2); p--; s.y += next.y, s.u += next.chroma, s.v += next.chroma, dst += next.dst) {
        const uint8_t* y1 = s.y + src_stride;
        uint8_t* d1 = dst + dst_stride;
        in_block_order(dst, d1, ptrdiff_t(next.blocks) * block * bpp, next.blocks, [&](uint32_t i, uint32_t n) {
            pair(s.y + block * i, y1 + block * i, s.u + block / 2 * i, s.v + block / 2 * i, dst + i * block * bpp,
                 d1 + i * block * bpp, n);
        });
    }
}

// Planar rows one at a time, `bytes_per_px` destination bytes per source pixel; each row
// re-reads its chroma row, which moves on after every odd row. Every pointer drifts.
// row(source, d, blocks) makes one row.
template <int bytes_per_px, class Row>
void planar_rows(void* src_y, void* src_u, void* src_v, void* dst_, int32_t width, int32_t height,
                 int32_t src_stride, int32_t dst_stride, Row&& row) {
    PlanarSource s = planar_source(src_y, src_u, src_v);
    auto* dst = static_cast<uint8_t*>(dst_);
    const PlanarSteps next = planar_steps<bytes_per_px>(width, src_stride, dst_stride, 1);

    for (uint32_t r = 0; r < 2 * loop_count(height, 2); ++r, s.y += next.y, dst += next.dst) {
        row(s, dst, next.blocks);
        if (r & 1) s.u += next.chroma, s.v += next.chroma;
    }
}

// Packed YUY2 rows in pairs, the rows of a pair 2 * src_stride bytes apart, `block` pixels a
// step and `bpp` destination bytes per pixel. A width off the block is pulled back, so each
// pair starts exactly two pitches on. pair(s0, s1, d0, d1, n) converts n blocks of the pair.
template <int block, int bpp, class Pair>
void packed_row_pairs(void* src_y, void* dst_, int32_t width, int32_t height, int32_t src_stride,
                      int32_t dst_stride, Pair&& pair) {
    const auto* src = static_cast<const uint8_t*>(src_y);
    auto* dst = static_cast<uint8_t*>(dst_);
    const ptrdiff_t src_pitch = 2 * ptrdiff_t(src_stride);
    const uint32_t blocks = loop_count(2 * width, 2 * block);
    const ptrdiff_t src_next = pull_back_step(blocks, block, width, 2, 2 * src_pitch);
    const ptrdiff_t dst_next = pull_back_step(blocks, block, width, bpp, 2 * ptrdiff_t(dst_stride));

    for (uint32_t p = loop_count(height, 2); p--; src += src_next, dst += dst_next) {
        const uint8_t* s1 = src + src_pitch;
        uint8_t* d1 = dst + dst_stride;
        in_block_order(dst, d1, ptrdiff_t(blocks) * block * bpp, blocks, [&](uint32_t i, uint32_t n) {
            pair(src + 2 * block * i, s1 + 2 * block * i, dst + i * block * bpp, d1 + i * block * bpp, n);
        });
    }
}

} }  // namespace dispconv::kernels
