// Portable vocabulary operations used only by the frame-loading kernels: sample operations,
// and the row operations composed from the vocabulary's run operations (LoadRows<Itself>).
#pragma once

#include "core/adjust.hpp"
#include "simd/portable/core.hpp"

namespace dispconv::simd { namespace {

struct PortableLoad {
    // The reference adjusts every gain one way.
    static constexpr bool small_gain_multiply = false;

    // Rounded averages of neighbouring pairs: dst[i] = avg(src[2i], src[2i + 1]).
    static void average_pairs(const uint8_t* src, uint8_t* dst, int out_count) {
        for (int i = 0; i < out_count; ++i) dst[i] = avg_u8(src[2 * i], src[2 * i + 1]);
    }

    // The odd samples of a run: dst[i] = src[2i + 1].
    static void keep_odd(const uint8_t* src, uint8_t* dst, int out_count) {
        for (int i = 0; i < out_count; ++i) dst[i] = src[2 * i + 1];
    }
};

template <class V>
struct LoadRows {
    // One packed row from the luma of one source row and the chroma of another, blocks of 8
    // pixels.
    template <class Adjust>
    static void yuy2_row_to_yuy2(const uint8_t* luma, const uint8_t* chroma, uint8_t* d, uint32_t blocks,
                                 const AdjustConstants& a) {
        for (uint32_t i = 0; i < blocks; ++i, luma += 16, chroma += 16, d += 16) {
            uint8_t y[8], u[4], v[4], unused[4];
            V::split_yuy2(chroma, y, u, v, 8);
            V::split_yuy2(luma, y, unused, unused, 8);
            if constexpr (Adjust::enabled) adjust_yuv<V>(y, u, v, y, u, v, 8, a);
            V::join_yuy2(y, u, v, d, 8);
        }
    }

    // Blocks of 16 pixels of two rows sharing one run of chroma, adjusted (chroma once, for
    // both rows), converted and stored.
    template <class Format, class Adjust>
    static void rgb_pair_block(uint8_t* y0, uint8_t* y1, uint8_t* u, uint8_t* v, uint8_t* d0,
                               uint8_t* d1, const AdjustConstants& a, const Rgb16Layout& layout) {
        if constexpr (Adjust::enabled) {
            adjust_yuv<V>(y0, u, v, y0, u, v, 16, a);
            V::adjust(y1, y1, 16, a.luma_gain, a.luma_offset);
        }
        V::template yuv_to_rgb_store<Format>(y0, u, v, 16, d0, layout);
        V::template yuv_to_rgb_store<Format>(y1, u, v, 16, d1, layout);
    }

    // Two packed rows to RGB, blocks of 16 pixels; the second row's chroma is never used.
    template <class Format, class Adjust>
    static void yuy2_pair_to_rgb(const uint8_t* s0, const uint8_t* s1, uint8_t* d0, uint8_t* d1,
                                 uint32_t blocks, const AdjustConstants& a, const Rgb16Layout& layout) {
        constexpr int step = 16 * Format::bytes_per_pixel;
        for (uint32_t i = 0; i < blocks; ++i, s0 += 32, s1 += 32, d0 += step, d1 += step) {
            uint8_t y0[16], y1[16], u[8], v[8], unused[8];
            V::split_yuy2(s0, y0, u, v, 16);
            V::split_yuy2(s1, y1, unused, unused, 16);
            rgb_pair_block<Format, Adjust>(y0, y1, u, v, d0, d1, a, layout);
        }
    }

    // Two planar luma rows and one chroma row to RGB, blocks of 16 pixels.
    template <class Format, class Adjust>
    static void planar_pair_to_rgb(const uint8_t* y0, const uint8_t* y1, const uint8_t* u,
                                   const uint8_t* v, uint8_t* d0, uint8_t* d1, uint32_t blocks,
                                   const AdjustConstants& a, const Rgb16Layout& layout) {
        constexpr int step = 16 * Format::bytes_per_pixel;
        for (uint32_t i = 0; i < blocks; ++i, y0 += 16, y1 += 16, u += 8, v += 8, d0 += step, d1 += step) {
            uint8_t ya[16], yb[16], ua[8], va[8];
            V::copy(y0, ya, 16);
            V::copy(y1, yb, 16);
            V::copy(u, ua, 8);
            V::copy(v, va, 8);
            rgb_pair_block<Format, Adjust>(ya, yb, ua, va, d0, d1, a, layout);
        }
    }

    // Two planar luma rows and one chroma row to YUY2, blocks of 16 pixels; on the second row
    // the first 8 bytes of every block are deliberately left unwritten.
    static void planar_pair_to_yuy2_gapped(const uint8_t* y0, const uint8_t* y1, const uint8_t* u,
                                           const uint8_t* v, uint8_t* d0, uint8_t* d1,
                                           uint32_t blocks) {
        for (uint32_t i = 0; i < blocks; ++i, y0 += 16, y1 += 16, u += 8, v += 8, d0 += 32, d1 += 32) {
            uint8_t second[32];
            V::join_yuy2(y0, u, v, d0, 16);
            V::join_yuy2(y1, u, v, second, 16);
            V::copy(second + 8, d1 + 8, 24);
        }
    }

    // One planar row to YUY2, every sample adjusted, blocks of 16 pixels.
    static void planar_row_to_yuy2_adjusted(const uint8_t* y, const uint8_t* u, const uint8_t* v,
                                            uint8_t* d, uint32_t blocks, const AdjustConstants& a) {
        for (uint32_t i = 0; i < blocks; ++i, y += 16, u += 8, v += 8, d += 32) {
            uint8_t ya[16], ua[8], va[8];
            adjust_yuv<V>(y, u, v, ya, ua, va, 16, a);
            V::join_yuy2(ya, ua, va, d, 16);
        }
    }

    // Two planar rows sharing a chroma row, each as above.
    static void planar_pair_to_yuy2_adjusted(const uint8_t* y0, const uint8_t* y1, const uint8_t* u,
                                             const uint8_t* v, uint8_t* d0, uint8_t* d1, uint32_t blocks,
                                             const AdjustConstants& a) {
        planar_row_to_yuy2_adjusted(y0, u, v, d0, blocks, a);
        planar_row_to_yuy2_adjusted(y1, u, v, d1, blocks, a);
    }

    // One luma row to YUY2 with adjusted luma and every chroma byte 128.
    static void luma_row_to_grey_yuy2(const uint8_t* y, uint8_t* d, uint32_t blocks,
                                      const AdjustConstants& a) {
        uint8_t grey[8];
        V::fill(grey, 128, 8);
        for (uint32_t i = 0; i < blocks; ++i, y += 16, d += 32) {
            uint8_t ya[16];
            V::adjust(y, ya, 16, a.luma_gain, a.luma_offset);
            V::join_yuy2(ya, grey, grey, d, 16);
        }
    }

    // One planar row to half-width YUY2: neighbouring pairs averaged, then adjusted; each block
    // reads 16 pixels and writes 8.
    static void planar_row_to_half_yuy2(const uint8_t* y, const uint8_t* u, const uint8_t* v,
                                        uint8_t* d, uint32_t blocks, const AdjustConstants& a) {
        for (uint32_t i = 0; i < blocks; ++i, y += 16, u += 8, v += 8, d += 16) {
            uint8_t ya[8], ua[4], va[4];
            V::average_pairs(y, ya, 8);
            V::average_pairs(u, ua, 4);
            V::average_pairs(v, va, 4);
            adjust_yuv<V>(ya, ua, va, ya, ua, va, 8, a);
            V::join_yuy2(ya, ua, va, d, 8);
        }
    }

    // The odd samples of 2 * out_count bytes, adjusted.
    static void keep_odd_adjusted(const uint8_t* src, uint8_t* dst, int out_count, int16_t gain,
                                  int16_t offset) {
        uint8_t kept[16];
        for (int i = 0; i < out_count; i += 16, src += 32, dst += 16) {
            const int n = out_count - i < 16 ? out_count - i : 16;
            V::keep_odd(src, kept, n);
            V::adjust(kept, dst, n, gain, offset);
        }
    }
};

} }  // namespace dispconv::simd
