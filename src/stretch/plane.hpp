// Single-plane stretchers (twice the width and height, or twice the height) and the YV12
// wrappers that run them on the three planes of a frame.
#pragma once

#include <utility>

#include "stretch/common.hpp"

namespace dispconv::kernels { namespace {

constexpr int plane_strip = 8;  // source columns per strip or block

// One strip (n = plane_strip source columns), top to bottom. Ordinary strips double with the
// next strip's first sample as the right neighbour; the last strip repeats its own last sample.
template <class V>
void plane_strip_rows(const uint8_t* src, uint8_t* dst, int n, int32_t height, ptrdiff_t src_pitch,
                      ptrdiff_t dst_pitch, bool last_strip) {
    uint8_t buf[2][2 * plane_strip];
    uint8_t *above = buf[0], *row = buf[1];
    auto doubled = [&](const uint8_t* s, uint8_t* out) {
        V::double_run(s, last_strip, out, n);
    };
    doubled(src, above);
    for (int32_t r = 0; r + 1 < height; ++r) {
        V::copy(above, dst + 2 * r * dst_pitch, 2 * n);
        doubled(src + (r + 1) * src_pitch, row);
        V::average(above, row, dst + (2 * r + 1) * dst_pitch, 2 * n);
        std::swap(above, row);
    }
    V::copy(above, dst + (2 * ptrdiff_t(height) - 2) * dst_pitch, 2 * n);
    // Deliberate: only the last strip repeats the bottom row in place; the others write the
    // copy one row below the picture and leave row 2 * height - 1 as it was.
    V::copy(above, dst + (2 * ptrdiff_t(height) - (last_strip ? 1 : 0)) * dst_pitch, 2 * n);
}

// Strips are independent columns, so where destination rows do not overlap their order does
// not show: the picture then goes row by row over all strips at once, the same bytes.
template <class V>
void strech_pic_2X2(uint8_t* src, uint8_t* dst, int32_t width, int32_t height, int32_t src_stride,
                    int32_t dst_stride) {
    const uint32_t ordinary = loop_count(width - plane_strip, plane_strip);
    const ptrdiff_t row_bytes = 2 * plane_strip * (ptrdiff_t(ordinary) + 1);
    const bool by_rows = width >= 2 * plane_strip && (dst_stride >= row_bytes || -ptrdiff_t(dst_stride) >= row_bytes);
    if (by_rows) {
        // Only the last strip repeats its edge; the others take the next strip's first sample.
        const int n = int(ordinary + 1) * plane_strip;
        const ptrdiff_t sp = src_stride, dp = dst_stride;
        for (int32_t r = 0; r + 1 < height; ++r)
            V::double_pair(src + r * sp, src + (r + 1) * sp, dst + 2 * r * dp, dst + (2 * r + 1) * dp, n);
        const uint8_t* last = src + (height > 1 ? height - 1 : 0) * sp;
        uint8_t* bottom = dst + (2 * ptrdiff_t(height) - 2) * dp;
        V::double_run(last, true, bottom, n);
        // Deliberate: the ordinary strips repeat the bottom row one row below the picture and
        // leave row 2 * height - 1 as it was; only the last strip repeats it in place.
        const int ordinary_bytes = 2 * (n - plane_strip);
        V::copy(bottom, bottom + 2 * dp, ordinary_bytes);
        V::copy(bottom + ordinary_bytes, bottom + dp + ordinary_bytes, 2 * plane_strip);
        return;
    }
    for (uint32_t i = 0; i < ordinary; ++i)
        plane_strip_rows<V>(src + ptrdiff_t(i) * plane_strip, dst + ptrdiff_t(i) * 2 * plane_strip, plane_strip,
                            height, src_stride, dst_stride, false);
    plane_strip_rows<V>(src + ptrdiff_t(ordinary) * plane_strip,
                        dst + ptrdiff_t(ordinary) * 2 * plane_strip, plane_strip, height, src_stride,
                        dst_stride, true);
}

// Deliberate: every plane takes the luma gain; `plane` picks only the offset (1 luma, 2 U,
// 3 V). Other values are unsupported and get no offset.
inline Channel plane_channel(const AdjustConstants& a, int32_t plane) {
    const int16_t offset = plane == 1   ? a.luma_offset
                           : plane == 2 ? a.u_offset
                           : plane == 3 ? a.v_offset
                                        : int16_t(0);
    return {a.luma_gain, offset};
}

// The row pairs below a plane stretcher's first destination row: source row s (a copy) and its
// average with the row `src_stride` below, pair after pair `src_next` and `dst_next` on.
// Deliberate: then one step back, the next-to-last source row over the last average and once
// more `row_bytes` after it, without a row step.
template <class Row>
void plane_row_pairs(const uint8_t* s, uint8_t* d, int32_t height, ptrdiff_t src_stride, ptrdiff_t dst_stride,
                     ptrdiff_t src_next, ptrdiff_t dst_next, ptrdiff_t row_bytes, Row&& row) {
    for (uint32_t pair = loop_count(height - 1, 1); pair--; s += src_next, d += dst_next) {
        row(s, s, d);
        row(s, s + src_stride, d + dst_stride);
    }
    s -= src_next;
    d -= dst_stride;
    row(s, s, d);
    row(s, s, d + row_bytes);
}

// The plane walks take the channel from their caller, so that a YV12 wrapper adjusts its three
// planes with one snapshot of the constants.
template <class V>
void stretch_plane_2x2(uint8_t* src, uint8_t* dst, int32_t width, int32_t height,
                       int32_t src_stride, int32_t dst_stride, Channel ch) {
    constexpr int block = 2 * plane_strip;  // source samples per block of the row pairs

    // Row 0 in 8-sample blocks; the last sample of the row is averaged with the byte after it.
    V::double_adjust(src, src, dst, int(loop_count(width, plane_strip)) * plane_strip, ch.gain, ch.offset);

    // The row pairs: whole 16-sample blocks (at least one), each reading the byte after it,
    // then, for a width off the block, the row's last 16 samples copied and averaged without
    // doubling. A row given twice is doubled (or copied) as it is.
    const int32_t whole = width >= 2 * block ? width / block * block : block;
    const int32_t rem = width % block;
    // Inlined at its four calls: the row operations' constants then stay in registers.
    auto row = [&](const uint8_t* s, const uint8_t* below, uint8_t* d) __attribute__((always_inline)) {
        V::double_adjust(s, below, d, whole, ch.gain, ch.offset);
        const int32_t back = whole - (block - rem);
        if (rem) V::average_adjust(s + back, below + back, d + 2 * whole - (block - rem), block, ch.gain, ch.offset);
    };
    // Deliberate: row k is found at the end of row k - 1 (only the lower neighbour uses
    // src_stride), and a width off the block moves each row pair `rem` bytes further left.
    const ptrdiff_t src_next = whole + (rem ? rem : 0);
    const ptrdiff_t dst_next = 2 * ptrdiff_t(dst_stride) + 2 * whole + (rem ? rem : 0) - 2 * width;
    // The last source row only shows in the overwritten average.
    plane_row_pairs(src, dst + dst_stride, height, src_stride, dst_stride, src_next, dst_next,
                    2 * ptrdiff_t(width), row);
}

template <class V>
void stretch_plane_1x2(uint8_t* src, uint8_t* dst, int32_t width, int32_t height,
                       int32_t src_stride, int32_t dst_stride, Channel ch) {
    constexpr int block = 2 * plane_strip;
    // Blocks of 16; the last one is moved back to end at the row's last sample. A row given
    // twice is copied.
    const int head = int(loop_count(width, block) - 1) * block;
    auto row = [&](const uint8_t* s, const uint8_t* below, uint8_t* d) __attribute__((always_inline)) {  // as above
        V::average_adjust(s, below, d, head, ch.gain, ch.offset);
        V::average_adjust(s + width - block, below + width - block, d + width - block, block, ch.gain, ch.offset);
    };
    row(src, src, dst);
    // The last source row is never shown.
    plane_row_pairs(src, dst + dst_stride, height, src_stride, dst_stride, src_stride,
                    2 * ptrdiff_t(dst_stride), width, row);
}

// A plane walk, as the kernels below run it: on one plane (its channel picked by `plane`),
// or on the three planes of a YV12 frame.
using PlaneWalk = void (*)(uint8_t*, uint8_t*, int32_t, int32_t, int32_t, int32_t, Channel);

template <PlaneWalk stretch_plane>
void stretch_one_plane(uint8_t* src, uint8_t* dst, int32_t width, int32_t height, int32_t src_stride,
                       int32_t dst_stride, ajust_contrast_info*, int32_t plane) {
    stretch_plane(src, dst, width, height, src_stride, dst_stride, plane_channel(load_adjust_constants(), plane));
}

template <class V> constexpr auto strech_pic_2X2_adjust = stretch_one_plane<stretch_plane_2x2<V>>;
template <class V> constexpr auto strech_pic_1X2_adjust = stretch_one_plane<stretch_plane_1x2<V>>;

// YV12 wrappers: the enlarged Y plane, then V, then U in one buffer, chroma planes with half
// the sizes and strides.
template <PlaneWalk stretch_plane>
void stretch_yv12_planes(void* src_y, void* src_u, void* src_v, void* dst_, int32_t width,
                         int32_t height, int32_t src_stride, int32_t dst_stride, ajust_contrast_info*) {
    const AdjustConstants a = load_adjust_constants();
    auto* dst = static_cast<uint8_t*>(dst_);
    const ptrdiff_t luma_area = 2 * ptrdiff_t(height) * dst_stride;
    stretch_plane(static_cast<uint8_t*>(src_y), dst, width, height, src_stride, dst_stride,
                  plane_channel(a, 1));
    // Deliberate: the plane from src_v takes the U offset and the plane from src_u the V offset.
    stretch_plane(static_cast<uint8_t*>(src_v), dst + luma_area, width >> 1, height >> 1,
                  src_stride >> 1, dst_stride >> 1, plane_channel(a, 2));
    stretch_plane(static_cast<uint8_t*>(src_u), dst + luma_area + (luma_area >> 2), width >> 1,
                  height >> 1, src_stride >> 1, dst_stride >> 1, plane_channel(a, 3));
}

template <class V> constexpr auto strech_picture_2X2_yv12_ajust = stretch_yv12_planes<stretch_plane_2x2<V>>;
template <class V> constexpr auto strech_picture_1X2_yv12_ajust = stretch_yv12_planes<stretch_plane_1x2<V>>;

} }  // namespace dispconv::kernels
