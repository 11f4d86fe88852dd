// Planar YV12 frame to an RGB surface of twice the height, adjusted before the rounded
// two-row interpolation and converted in the same pass. The picture is walked in vertical
// strips 16 pixels wide so that each source sample is adjusted once per strip; where the
// destination rows do not overlap, the order does not show and the picture goes row by row.
#pragma once

#include <utility>

#include "core/walk.hpp"
#include "stretch/common.hpp"

namespace dispconv::kernels { namespace {

constexpr int rgb_strip = 16;             // pixels

// One strip, top to bottom, on the double-height schedule with the last row repeated.
template <class V, class Format>
void rgb_strip_rows(const uint8_t* src_y, const uint8_t* src_u, const uint8_t* src_v,
                    uint8_t* dst, int32_t pairs, ptrdiff_t y_pitch, ptrdiff_t c_pitch,
                    ptrdiff_t dst_pitch, const AdjustConstants& a, const Rgb16Layout& layout) {
    constexpr int n = rgb_strip, c = n / 2;
    uint8_t y_buf[3][n], u_buf[2][c], v_buf[2][c];
    uint8_t y_mid[n], u_mid[c], v_mid[c];
    uint8_t *y_top = y_buf[0], *y_bottom = y_buf[1], *y_next = y_buf[2];
    uint8_t *u_top = u_buf[0], *u_next = u_buf[1], *v_top = v_buf[0], *v_next = v_buf[1];
    auto load = [&](const uint8_t* src, uint8_t* out, int count, Channel ch) {
        V::adjust(src, out, count, ch.gain, ch.offset);
    };
    auto store = [&](int32_t r, const uint8_t* y, const uint8_t* u, const uint8_t* v) {
        V::template yuv_to_rgb_store<Format>(y, u, v, n, dst + r * dst_pitch, layout);
    };
    load(src_y, y_top, n, luma_channel(a));
    load(src_u, u_top, c, u_channel(a));
    load(src_v, v_top, c, v_channel(a));
    int32_t k = 0;
    for (; k + 1 < pairs; ++k) {
        load(src_y + (2 * k + 1) * y_pitch, y_bottom, n, luma_channel(a));
        load(src_y + (2 * k + 2) * y_pitch, y_next, n, luma_channel(a));
        load(src_u + (k + 1) * c_pitch, u_next, c, u_channel(a));
        load(src_v + (k + 1) * c_pitch, v_next, c, v_channel(a));
        store(4 * k, y_top, u_top, v_top);
        V::average(y_top, y_bottom, y_mid, n);
        store(4 * k + 1, y_mid, u_top, v_top);
        V::average(u_top, u_next, u_mid, c);
        V::average(v_top, v_next, v_mid, c);
        store(4 * k + 2, y_bottom, u_mid, v_mid);
        V::average(y_bottom, y_next, y_mid, n);
        store(4 * k + 3, y_mid, u_mid, v_mid);
        std::swap(y_top, y_next);
        std::swap(u_top, u_next);
        std::swap(v_top, v_next);
    }
    load(src_y + (2 * k + 1) * y_pitch, y_bottom, n, luma_channel(a));
    store(4 * k, y_top, u_top, v_top);
    V::average(y_top, y_bottom, y_mid, n);
    store(4 * k + 1, y_mid, u_top, v_top);
    store(4 * k + 2, y_bottom, u_top, v_top);
    // Deliberate: the bottom row repeats the one above it.
    store(4 * k + 3, y_bottom, u_top, v_top);
}

// Where destination rows do not overlap, the strips' order does not show in the result: the
// whole width then goes down row by row, four destination rows per source pair in one pass.
template <class V, class Format>
void rgb_rows(const uint8_t* src_y, const uint8_t* src_u, const uint8_t* src_v, uint8_t* dst, int n,
              int32_t pairs, ptrdiff_t y_pitch, ptrdiff_t c_pitch, ptrdiff_t dst_pitch,
              const AdjustConstants& a, const Rgb16Layout& layout) {
    for (int32_t k = 0; k < pairs; ++k) {
        const bool last = k + 1 == pairs;
        const uint8_t* top = src_y + 2 * k * y_pitch;
        const uint8_t* bottom = top + y_pitch;
        const uint8_t* u0 = src_u + k * c_pitch;
        const uint8_t* v0 = src_v + k * c_pitch;
        uint8_t* const rows[4] = {dst + 4 * k * dst_pitch, dst + (4 * k + 1) * dst_pitch,
                                  dst + (4 * k + 2) * dst_pitch, dst + (4 * k + 3) * dst_pitch};
        // The last pair has no rows below: averaging with itself gives the copies it needs,
        // the bottom row repeating the one above it.
        V::template rgb_double_rows<Format>(top, bottom, last ? bottom : bottom + y_pitch, u0,
                                            last ? u0 : u0 + c_pitch, v0, last ? v0 : v0 + c_pitch,
                                            rows, n, a, layout);
    }
}

// Strips end when the counter (width, lowered by 16 per strip) is no longer above zero, or,
// for the 24- and 16-bit surfaces, only when it reaches zero exactly.
template <class V, class Format, bool exact_end>
void stretch_1x2_rgb(void* src_y, void* src_u, void* src_v, void* dst, int32_t width,
                     int32_t height, int32_t src_stride, int32_t dst_stride,
                     ajust_contrast_info* adjust) {
    if (height < 12) return;
    Rgb16Layout layout;
    if (!destination_layout<Format>(adjust, layout)) return;
    const AdjustConstants a = load_adjust_constants();
    constexpr int bpp = Format::bytes_per_pixel;
    const int32_t pairs = int32_t(loop_count(height, 2));
    auto* y = static_cast<const uint8_t*>(src_y);
    auto* u = static_cast<const uint8_t*>(src_u);
    auto* v = static_cast<const uint8_t*>(src_v);
    auto* d = static_cast<uint8_t*>(dst);
    const ptrdiff_t c_pitch = chroma_pitch(src_stride);
    // The strip count, when the loop ends by itself (an exact end needs a positive multiple
    // of 16; other widths never end, and run strip by strip as they always have).
    const bool known_end = !exact_end || (width > 0 && width % rgb_strip == 0);
    uint32_t strips = exact_end ? uint32_t(width) / rgb_strip : loop_count(width, rgb_strip);
    const ptrdiff_t row_bytes = ptrdiff_t(strips) * rgb_strip * bpp;
    if (known_end && (dst_stride >= row_bytes || -ptrdiff_t(dst_stride) >= row_bytes)) {
        rgb_rows<V, Format>(y, u, v, d, int(strips) * rgb_strip, pairs, src_stride, c_pitch, dst_stride, a, layout);
        return;
    }
    uint32_t counter = static_cast<uint32_t>(width);
    strips = exact_end ? 0 : loop_count(width, rgb_strip);
    do {
        rgb_strip_rows<V, Format>(y, u, v, d, pairs, src_stride, c_pitch, dst_stride, a, layout);
        y += rgb_strip, u += rgb_strip / 2, v += rgb_strip / 2, d += rgb_strip * bpp;
        counter -= rgb_strip;
    } while (exact_end ? counter != 0 : --strips != 0);
}

template <class V> constexpr auto strech_picture_1X2_yuy2_ajust_rgb32 = stretch_1x2_rgb<V, Rgb32, false>;
template <class V> constexpr auto strech_picture_1X2_yuy2_ajust_rgb24 = stretch_1x2_rgb<V, Rgb24, true>;
template <class V> constexpr auto strech_picture_1X2_yuy2_ajust_rgb16 = stretch_1x2_rgb<V, Rgb16, true>;

} }  // namespace dispconv::kernels
