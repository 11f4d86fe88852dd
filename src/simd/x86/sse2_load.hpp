// The SSE2 vocabulary: the portable one with its hot operations replaced.
#pragma once

#include "core/geometry.hpp"
#include "simd/generic/load_rows.hpp"
#include "simd/portable.hpp"
#include "simd/x86/sse2_ops.hpp"

namespace dispconv::simd {
namespace {

struct Sse2Core : PortableCore {
    static void adjust(const uint8_t* src, uint8_t* dst, int n, int16_t gain, int16_t offset) {
        const __m128i g = _mm_set1_epi16(gain), o = _mm_set1_epi16(offset);
        int i = 0;
        for (; i + 16 <= n; i += 16) x86::store16(dst + i, x86::adjust_bytes(x86::load16(src + i), g, o));
        if (i + 8 <= n) x86::store8(dst + i, x86::adjust_bytes(x86::load8(src + i), g, o)), i += 8;
        if (i < n) PortableCore::adjust(src + i, dst + i, n - i, gain, offset);
    }

    static void average(const uint8_t* a, const uint8_t* b, uint8_t* dst, int n) {
        int i = 0;
        for (; i + 16 <= n; i += 16) x86::store16(dst + i, _mm_avg_epu8(x86::load16(a + i), x86::load16(b + i)));
        if (i < n) PortableCore::average(a + i, b + i, dst + i, n - i);
    }

    static void split_yuy2(const uint8_t* src, uint8_t* y, uint8_t* u, uint8_t* v, int pixels) {
        int p = 0;
        for (; p + 16 <= pixels; p += 16) {
            const x86::Yuy2Split s = x86::split_yuy2_16(src + 2 * p);
            x86::store16(y + p, s.y), x86::store8(u + p / 2, s.u), x86::store8(v + p / 2, s.v);
        }
        if (p < pixels) PortableCore::split_yuy2(src + 2 * p, y + p, u + p / 2, v + p / 2, pixels - p);
    }

    static void join_yuy2(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* dst, int pixels) {
        int p = 0;
        for (; p + 16 <= pixels; p += 16)
            x86::join_yuy2_16(dst + 2 * p, x86::load16(y + p), x86::load8(u + p / 2), x86::load8(v + p / 2));
        if (p < pixels) PortableCore::join_yuy2(y + p, u + p / 2, v + p / 2, dst + 2 * p, pixels - p);
    }

    template <class Format>
    static void yuv_to_rgb_store(const uint8_t* y, const uint8_t* u, const uint8_t* v, int pixels,
                                 uint8_t* dst, const Rgb16Layout& layout) {
        const x86::Rgb16Lanes lanes = x86::rgb16_lanes(layout);
        int p = 0;
        for (; p + 16 <= pixels; p += 16) {
            const x86::ChromaWords c = x86::chroma_words(x86::load8(u + p / 2), x86::load8(v + p / 2));
            x86::store_rgb_16<Format>(dst + p * Format::bytes_per_pixel, x86::luma_to_rgb(x86::load16(y + p), c), lanes);
        }
        if (p < pixels)
            PortableCore::yuv_to_rgb_store<Format>(y + p, u + p / 2, v + p / 2, pixels - p,
                                                   dst + p * Format::bytes_per_pixel, layout);
    }
};

struct Sse2LoadPrimitives : PortableLoad {
    static void average_pairs(const uint8_t* src, uint8_t* dst, int out_count) {
        const __m128i m = x86::low_bytes_mask();
        int i = 0;
        for (; i + 8 <= out_count; i += 8) {
            const __m128i x = x86::load16(src + 2 * i);
            const __m128i avg = _mm_avg_epu16(_mm_and_si128(x, m), _mm_srli_epi16(x, 8));
            x86::store8(dst + i, _mm_packus_epi16(avg, avg));
        }
        if (i < out_count) PortableLoad::average_pairs(src + 2 * i, dst + i, out_count - i);
    }

    static void keep_odd(const uint8_t* src, uint8_t* dst, int out_count) {
        int i = 0;
        for (; i + 8 <= out_count; i += 8) {
            const __m128i odd = _mm_srli_epi16(x86::load16(src + 2 * i), 8);
            x86::store8(dst + i, _mm_packus_epi16(odd, odd));
        }
        if (i < out_count) PortableLoad::keep_odd(src + 2 * i, dst + i, out_count - i);
    }
};

// Fused row loops of the frame loaders: one pass over each block, nothing through memory.
template <class V>
struct Sse2LoadRows : LoadRows<V> {
    template <class Adjust>
    static void yuy2_pair_to_yuy2(const uint8_t* s0, const uint8_t* s1, uint8_t* d0, uint8_t* d1,
                                  uint32_t blocks, const AdjustConstants& a) {
        // One row after the other unless the rows share bytes: stores to two rows in step are
        // markedly slower than a row at a time.
        if (!runs_overlap(d0, d1, ptrdiff_t(blocks) * 16)) {
            if constexpr (Adjust::enabled) V::template yuy2_row_to_yuy2<Adjust>(s0, s0, d0, blocks, a);
            else std::memcpy(d0, s0, size_t(blocks) * 16);
            return V::template yuy2_row_to_yuy2<Adjust>(s1, s0, d1, blocks, a);
        }
        for (uint32_t i = 0; i < blocks; ++i, s0 += 16, s1 += 16, d0 += 16, d1 += 16) {
            V::template yuy2_row_to_yuy2<Adjust>(s0, s0, d0, 1, a);
            V::template yuy2_row_to_yuy2<Adjust>(s1, s0, d1, 1, a);
        }
    }

    // One YUY2 row from the luma of one source row and the chroma of another, blocks of 8 pixels.
    template <class Adjust>
    static void yuy2_row_to_yuy2(const uint8_t* luma, const uint8_t* chroma, uint8_t* d, uint32_t blocks,
                                 const AdjustConstants& a) {
        const __m128i m = x86::low_bytes_mask();
        const x86::AdjustLanes l = x86::adjust_lanes(a.luma_gain, a.chroma_gain, a.luma_offset, a.u_offset, a.v_offset);
        for (uint32_t i = 0; i < blocks; ++i, luma += 16, chroma += 16, d += 16) {
            const __m128i c = x86::load16(chroma), y = x86::load16(luma);
            if constexpr (Adjust::enabled) {
                const __m128i ca = x86::clamp_words(x86::adjust_words(_mm_srli_epi16(c, 8), l.chroma_gain, l.uv_offset));
                const __m128i ya = x86::clamp_words(x86::adjust_words(_mm_and_si128(y, m), l.luma_gain, l.luma_offset));
                x86::store16(d, _mm_or_si128(ya, _mm_slli_epi16(ca, 8)));
            } else {
                x86::store16(d, _mm_or_si128(_mm_and_si128(y, m), _mm_andnot_si128(m, c)));
            }
        }
    }

    template <class Format, class Adjust>
    static void rgb_pair_16(__m128i y0, __m128i y1, __m128i u, __m128i v, uint8_t* d0, uint8_t* d1,
                            const x86::AdjustLanes& l, const x86::Rgb16Lanes& layout) {
        if constexpr (Adjust::enabled) {
            u = x86::adjust_bytes(u, l.chroma_gain, l.u_offset);
            v = x86::adjust_bytes(v, l.chroma_gain, l.v_offset);
            y0 = x86::adjust_bytes(y0, l.luma_gain, l.luma_offset);
            y1 = x86::adjust_bytes(y1, l.luma_gain, l.luma_offset);
        }
        const x86::ChromaWords c = x86::chroma_words(u, v);
        x86::store_rgb_16<Format>(d0, x86::luma_to_rgb(y0, c), layout);
        x86::store_rgb_16<Format>(d1, x86::luma_to_rgb(y1, c), layout);
    }

    template <class Format, class Adjust>
    static void yuy2_pair_to_rgb(const uint8_t* s0, const uint8_t* s1, uint8_t* d0, uint8_t* d1,
                                 uint32_t blocks, const AdjustConstants& a, const Rgb16Layout& layout) {
        constexpr int step = 16 * Format::bytes_per_pixel;
        const x86::AdjustLanes l = x86::adjust_lanes(a.luma_gain, a.chroma_gain, a.luma_offset, a.u_offset, a.v_offset);
        const x86::Rgb16Lanes lanes = x86::rgb16_lanes(layout);
        for (uint32_t i = 0; i < blocks; ++i, s0 += 32, s1 += 32, d0 += step, d1 += step) {
            const x86::Yuy2Split top = x86::split_yuy2_16(s0);
            rgb_pair_16<Format, Adjust>(top.y, x86::lumas_of_yuy2_16(s1), top.u, top.v, d0, d1, l, lanes);
        }
    }

    template <class Format, class Adjust>
    static void planar_pair_to_rgb(const uint8_t* y0, const uint8_t* y1, const uint8_t* u,
                                   const uint8_t* v, uint8_t* d0, uint8_t* d1, uint32_t blocks,
                                   const AdjustConstants& a, const Rgb16Layout& layout) {
        constexpr int step = 16 * Format::bytes_per_pixel;
        const x86::AdjustLanes l = x86::adjust_lanes(a.luma_gain, a.chroma_gain, a.luma_offset, a.u_offset, a.v_offset);
        const x86::Rgb16Lanes lanes = x86::rgb16_lanes(layout);
        for (uint32_t i = 0; i < blocks; ++i, y0 += 16, y1 += 16, u += 8, v += 8, d0 += step, d1 += step)
            rgb_pair_16<Format, Adjust>(x86::load16(y0), x86::load16(y1), x86::load8(u), x86::load8(v), d0, d1, l, lanes);
    }

    static void planar_pair_to_yuy2_gapped(const uint8_t* y0, const uint8_t* y1, const uint8_t* u,
                                           const uint8_t* v, uint8_t* d0, uint8_t* d1, uint32_t blocks) {
        for (uint32_t i = 0; i < blocks; ++i, y0 += 16, y1 += 16, u += 8, v += 8, d0 += 32, d1 += 32) {
            const __m128i uv = _mm_unpacklo_epi8(x86::load8(u), x86::load8(v));
            const __m128i top = x86::load16(y0), bottom = x86::load16(y1);
            x86::store16(d0, _mm_unpacklo_epi8(top, uv));
            x86::store16(d0 + 16, _mm_unpackhi_epi8(top, uv));
            // Deliberate: the first 8 bytes of the second row's block stay unwritten.
            x86::store8(d1 + 8, _mm_srli_si128(_mm_unpacklo_epi8(bottom, uv), 8));
            x86::store16(d1 + 16, _mm_unpackhi_epi8(bottom, uv));
        }
    }

    static void planar_row_to_yuy2_adjusted(const uint8_t* y, const uint8_t* u, const uint8_t* v,
                                            uint8_t* d, uint32_t blocks, const AdjustConstants& a) {
        const x86::AdjustLanes l = x86::adjust_lanes(a.luma_gain, a.chroma_gain, a.luma_offset, a.u_offset, a.v_offset);
        for (uint32_t i = 0; i < blocks; ++i, y += 16, u += 8, v += 8, d += 32)
            x86::join_yuy2_16(d, x86::adjust_bytes(x86::load16(y), l.luma_gain, l.luma_offset),
                              x86::adjust_bytes(x86::load8(u), l.chroma_gain, l.u_offset),
                              x86::adjust_bytes(x86::load8(v), l.chroma_gain, l.v_offset));
    }

    // Half width: each block's 16 pixels averaged in pairs, adjusted, 8 YUY2 pixels out.
    static void planar_row_to_half_yuy2(const uint8_t* y, const uint8_t* u, const uint8_t* v,
                                        uint8_t* d, uint32_t blocks, const AdjustConstants& a) {
        const x86::AdjustLanes l = x86::adjust_lanes(a.luma_gain, a.chroma_gain, a.luma_offset, a.u_offset, a.v_offset);
        const __m128i m = x86::low_bytes_mask(), zero = _mm_setzero_si128();
        auto pairs = [&m](__m128i x) { return _mm_avg_epu16(_mm_and_si128(x, m), _mm_srli_epi16(x, 8)); };
        for (uint32_t i = 0; i < blocks; ++i, y += 16, u += 8, v += 8, d += 16) {
            const __m128i ya = _mm_packus_epi16(x86::adjust_words(pairs(x86::load16(y)), l.luma_gain, l.luma_offset), zero);
            const __m128i ua = _mm_packus_epi16(x86::adjust_words(pairs(x86::load8(u)), l.chroma_gain, l.u_offset), zero);
            const __m128i va = _mm_packus_epi16(x86::adjust_words(pairs(x86::load8(v)), l.chroma_gain, l.v_offset), zero);
            x86::store16(d, _mm_unpacklo_epi8(ya, _mm_unpacklo_epi8(ua, va)));
        }
    }

    // The odd samples of 2 * out_count bytes (a multiple of 8), adjusted.
    static void keep_odd_adjusted(const uint8_t* src, uint8_t* dst, int out_count, int16_t gain, int16_t offset) {
        const __m128i g = _mm_set1_epi16(gain), o = _mm_set1_epi16(offset);
        auto odd = [&](const uint8_t* p) { return x86::adjust_words(_mm_srli_epi16(x86::load16(p), 8), g, o); };
        int i = 0;
        for (; i + 16 <= out_count; i += 16) x86::store16(dst + i, _mm_packus_epi16(odd(src + 2 * i), odd(src + 2 * i + 16)));
        if (i + 8 <= out_count) {
            const __m128i w = odd(src + 2 * i);
            x86::store8(dst + i, _mm_packus_epi16(w, w)), i += 8;
        }
        if (i < out_count) LoadRows<V>::keep_odd_adjusted(src + 2 * i, dst + i, out_count - i, gain, offset);
    }
};


}  // namespace
}  // namespace dispconv::simd
