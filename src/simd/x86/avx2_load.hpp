// The AVX2 vocabulary: the SSE2 one with the row loops widened to two blocks at a time, each
// block in one 128-bit lane, so that every lane computes exactly what one SSE2 block does.
#pragma once

#include <immintrin.h>

#include "simd/x86/avx2_ops.hpp"
#include "simd/x86/sse2_load.hpp"

namespace dispconv::simd {
namespace {

template <class V>
struct Avx2LoadRows : Sse2LoadRows<V> {
    using Base = Sse2LoadRows<V>;

    // 32 pixels placed as x86w::spread_for<Format>: lumas as words, U and V as words repeated
    // for each pixel pair. Adjusted words are clamped as the narrowing to bytes would.
    template <class Adjust>
    static __m256i adjusted(__m256i w, __m256i gain, __m256i offset) {
        if constexpr (!Adjust::enabled) return w;
        return _mm256_max_epi16(_mm256_min_epi16(x86w::adjust_words(w, gain, offset), _mm256_set1_epi16(255)),
                                _mm256_setzero_si256());
    }
    template <class Adjust>
    static x86w::ChromaWords chroma_terms(__m256i u_lo, __m256i u_hi, __m256i v_lo, __m256i v_hi, const x86w::Lanes& l) {
        return x86w::pixel_chroma_words(adjusted<Adjust>(u_lo, l.chroma_gain, l.u_offset), adjusted<Adjust>(u_hi, l.chroma_gain, l.u_offset),
                                        adjusted<Adjust>(v_lo, l.chroma_gain, l.v_offset), adjusted<Adjust>(v_hi, l.chroma_gain, l.v_offset));
    }
    template <class Format, class Adjust>
    static void store_row(__m256i y_lo, __m256i y_hi, const x86w::ChromaWords& c, uint8_t* d, const x86w::Lanes& l,
                          const x86::Rgb16Lanes& layout) {
        x86w::store_rgb_spread<Format>(
            d, x86w::luma_words_to_rgb(adjusted<Adjust>(y_lo, l.luma_gain, l.luma_offset), adjusted<Adjust>(y_hi, l.luma_gain, l.luma_offset), c),
            layout);
    }

    // Blocks of 8 pixels are 16 bytes: two blocks fill one register, one per lane.
    template <class Adjust>
    static void yuy2_row_to_yuy2(const uint8_t* luma, const uint8_t* chroma, uint8_t* d, uint32_t blocks,
                                 const AdjustConstants& a) {
        const __m256i m = _mm256_set1_epi16(0x00FF);
        const __m256i zero = _mm256_setzero_si256(), top_byte = _mm256_set1_epi16(255);
        const x86w::Lanes l = x86w::lanes(a);
        const __m256i uv_offset = _mm256_unpacklo_epi16(l.u_offset, l.v_offset);
        auto clamp = [&](__m256i w) { return _mm256_max_epi16(_mm256_min_epi16(w, top_byte), zero); };
        for (; blocks >= 2; blocks -= 2, luma += 32, chroma += 32, d += 32) {
            const __m256i c = x86w::load32(chroma), y = x86w::load32(luma);
            if constexpr (Adjust::enabled) {
                const __m256i ca = clamp(x86w::adjust_words(_mm256_srli_epi16(c, 8), l.chroma_gain, uv_offset));
                const __m256i ya = clamp(x86w::adjust_words(_mm256_and_si256(y, m), l.luma_gain, l.luma_offset));
                x86w::store32(d, _mm256_or_si256(ya, _mm256_slli_epi16(ca, 8)));
            } else {
                x86w::store32(d, _mm256_or_si256(_mm256_and_si256(y, m), _mm256_andnot_si256(m, c)));
            }
        }
        if (blocks) Base::template yuy2_row_to_yuy2<Adjust>(luma, chroma, d, 1, a);
    }

    template <class Format, class Adjust>
    static void planar_pair_to_rgb(const uint8_t* y0, const uint8_t* y1, const uint8_t* u,
                                   const uint8_t* v, uint8_t* d0, uint8_t* d1, uint32_t blocks,
                                   const AdjustConstants& a, const Rgb16Layout& layout) {
        constexpr int step = 32 * Format::bytes_per_pixel;
        if (runs_overlap(d0, d1, ptrdiff_t(blocks) * step / 2))
            return Base::template planar_pair_to_rgb<Format, Adjust>(y0, y1, u, v, d0, d1, blocks, a, layout);
        const x86w::Lanes l = x86w::lanes(a);
        const x86::Rgb16Lanes lanes = x86::rgb16_lanes(layout);
        constexpr x86w::Spread spread = x86w::spread_for<Format>;
        const __m256i zero = _mm256_setzero_si256();
        const uint32_t pairs_end = blocks & ~1u;
        auto luma = [&](const uint8_t* y, uint32_t i, __m256i& lo, __m256i& hi) {
            const __m256i spread_y = x86w::spread_luma<spread>(x86w::load32(y + 16 * i));
            lo = _mm256_unpacklo_epi8(spread_y, zero), hi = _mm256_unpackhi_epi8(spread_y, zero);
        };
        auto chroma = [&](uint32_t i) {
            const __m256i uu = _mm256_broadcastsi128_si256(x86::load16(u + 8 * i));
            const __m256i vv = _mm256_broadcastsi128_si256(x86::load16(v + 8 * i));
            return chroma_terms<Adjust>(x86w::spread_chroma<spread, 0>(uu), x86w::spread_chroma<spread, 1>(uu),
                                        x86w::spread_chroma<spread, 0>(vv), x86w::spread_chroma<spread, 1>(vv), l);
        };
        // The chroma terms once for both rows.
        __m256i lo, hi;
        for (uint32_t i = 0; i < pairs_end; i += 2) {
            const x86w::ChromaWords c = chroma(i);
            luma(y0, i, lo, hi);
            store_row<Format, Adjust>(lo, hi, c, d0 + ptrdiff_t(i) * step / 2, l, lanes);
            luma(y1, i, lo, hi);
            store_row<Format, Adjust>(lo, hi, c, d1 + ptrdiff_t(i) * step / 2, l, lanes);
        }
        y0 += 16 * pairs_end, y1 += 16 * pairs_end, u += 8 * pairs_end, v += 8 * pairs_end;
        d0 += ptrdiff_t(pairs_end) * step / 2, d1 += ptrdiff_t(pairs_end) * step / 2, blocks -= pairs_end;
        if (blocks) Base::template planar_pair_to_rgb<Format, Adjust>(y0, y1, u, v, d0, d1, 1, a, layout);
    }

    template <class Format, class Adjust>
    static void yuy2_pair_to_rgb(const uint8_t* s0, const uint8_t* s1, uint8_t* d0, uint8_t* d1,
                                 uint32_t blocks, const AdjustConstants& a, const Rgb16Layout& layout) {
        constexpr int step = 32 * Format::bytes_per_pixel;
        if (runs_overlap(d0, d1, ptrdiff_t(blocks) * step / 2))
            return Base::template yuy2_pair_to_rgb<Format, Adjust>(s0, s1, d0, d1, blocks, a, layout);
        const x86w::Lanes l = x86w::lanes(a);
        const x86::Rgb16Lanes lanes = x86::rgb16_lanes(layout);
        const __m256i m = _mm256_set1_epi16(0x00FF);
        constexpr x86w::Spread spread = x86w::spread_for<Format>;
        const uint32_t pairs_end = blocks & ~1u;
        // Both rows take the first row's chroma. Y U Y V: U at bytes 1, 5, 9, 13, V at 3, 7, 11, 15.
        auto chroma = [&](__m256i a0, __m256i b0) {
            return chroma_terms<Adjust>(x86w::yuy2_chroma_words<1>(a0), x86w::yuy2_chroma_words<1>(b0),
                                        x86w::yuy2_chroma_words<3>(a0), x86w::yuy2_chroma_words<3>(b0), l);
        };
        auto row = [&](const uint8_t* s, uint32_t i, __m256i& a, __m256i& b) {
            a = x86w::spread_yuy2<spread, 0>(s + 32 * i), b = x86w::spread_yuy2<spread, 1>(s + 32 * i);
        };
        __m256i a0, b0, a1, b1;
        for (uint32_t i = 0; i < pairs_end; i += 2) {
            row(s0, i, a0, b0), row(s1, i, a1, b1);
            const x86w::ChromaWords c = chroma(a0, b0);
            store_row<Format, Adjust>(_mm256_and_si256(a0, m), _mm256_and_si256(b0, m), c, d0 + ptrdiff_t(i) * step / 2, l, lanes);
            store_row<Format, Adjust>(_mm256_and_si256(a1, m), _mm256_and_si256(b1, m), c, d1 + ptrdiff_t(i) * step / 2, l, lanes);
        }
        s0 += 32 * pairs_end, s1 += 32 * pairs_end, blocks -= pairs_end;
        d0 += ptrdiff_t(pairs_end) * step / 2, d1 += ptrdiff_t(pairs_end) * step / 2;
        if (blocks) Base::template yuy2_pair_to_rgb<Format, Adjust>(s0, s1, d0, d1, 1, a, layout);
    }

    static void planar_pair_to_yuy2_gapped(const uint8_t* y0, const uint8_t* y1, const uint8_t* u,
                                           const uint8_t* v, uint8_t* d0, uint8_t* d1, uint32_t blocks) {
        if (runs_overlap(d0, d1, ptrdiff_t(blocks) * 32)) return Base::planar_pair_to_yuy2_gapped(y0, y1, u, v, d0, d1, blocks);
        for (; blocks >= 2; blocks -= 2, y0 += 32, y1 += 32, u += 16, v += 16, d0 += 64, d1 += 64) {
            const __m128i u16 = x86::load16(u), v16 = x86::load16(v);
            const __m256i uv = _mm256_set_m128i(_mm_unpackhi_epi8(u16, v16), _mm_unpacklo_epi8(u16, v16));
            const __m256i top = x86w::load32(y0), bottom = x86w::load32(y1);
            x86w::store_lanes(d0, d0 + 32, _mm256_unpacklo_epi8(top, uv), _mm256_unpackhi_epi8(top, uv));
            const __m256i lo = _mm256_unpacklo_epi8(bottom, uv), hi = _mm256_unpackhi_epi8(bottom, uv);
            // Deliberate: the first 8 bytes of each block of the second row stay unwritten.
            x86::store8(d1 + 8, _mm_srli_si128(_mm256_castsi256_si128(lo), 8));
            x86::store16(d1 + 16, _mm256_castsi256_si128(hi));
            x86::store8(d1 + 40, _mm_srli_si128(_mm256_extracti128_si256(lo, 1), 8));
            x86::store16(d1 + 48, _mm256_extracti128_si256(hi, 1));
        }
        if (blocks) Base::planar_pair_to_yuy2_gapped(y0, y1, u, v, d0, d1, 1);
    }

    static void planar_row_to_yuy2_adjusted(const uint8_t* y, const uint8_t* u, const uint8_t* v,
                                            uint8_t* d, uint32_t blocks, const AdjustConstants& a) {
        const x86w::Lanes l = x86w::lanes(a);
        for (; blocks >= 2; blocks -= 2, y += 32, u += 16, v += 16, d += 64) {
            const __m256i ya = x86w::adjust_bytes(x86w::load32(y), l.luma_gain, l.luma_offset);
            const __m256i ua = x86w::adjust_chroma_words(x86w::chroma_pair_words(u), l.chroma_gain, l.u_offset);
            const __m256i va = x86w::adjust_chroma_words(x86w::chroma_pair_words(v), l.chroma_gain, l.v_offset);
            const __m256i uv = _mm256_unpacklo_epi8(ua, va);
            x86w::store_lanes(d, d + 32, _mm256_unpacklo_epi8(ya, uv), _mm256_unpackhi_epi8(ya, uv));
        }
        if (blocks) Base::planar_row_to_yuy2_adjusted(y, u, v, d, 1, a);
    }

    static void planar_row_to_half_yuy2(const uint8_t* y, const uint8_t* u, const uint8_t* v,
                                        uint8_t* d, uint32_t blocks, const AdjustConstants& a) {
        const x86w::Lanes l = x86w::lanes(a);
        const __m256i m = _mm256_set1_epi16(0x00FF), zero = _mm256_setzero_si256();
        auto pairs = [&m](__m256i x) { return _mm256_avg_epu16(_mm256_and_si256(x, m), _mm256_srli_epi16(x, 8)); };
        // Each block's 8 chroma bytes into the low half of its lane.
        auto chroma = [](const uint8_t* p) { return _mm256_permute4x64_epi64(_mm256_castsi128_si256(x86::load16(p)), 0x10); };
        for (; blocks >= 2; blocks -= 2, y += 32, u += 16, v += 16, d += 32) {
            const __m256i ya = _mm256_packus_epi16(x86w::adjust_words(pairs(x86w::load32(y)), l.luma_gain, l.luma_offset), zero);
            const __m256i ua = _mm256_packus_epi16(x86w::adjust_words(pairs(chroma(u)), l.chroma_gain, l.u_offset), zero);
            const __m256i va = _mm256_packus_epi16(x86w::adjust_words(pairs(chroma(v)), l.chroma_gain, l.v_offset), zero);
            x86w::store32(d, _mm256_unpacklo_epi8(ya, _mm256_unpacklo_epi8(ua, va)));
        }
        if (blocks) Base::planar_row_to_half_yuy2(y, u, v, d, 1, a);
    }

    static void keep_odd_adjusted(const uint8_t* src, uint8_t* dst, int out_count, int16_t gain, int16_t offset) {
        const __m256i g = _mm256_set1_epi16(gain), o = _mm256_set1_epi16(offset);
        auto odd = [&](const uint8_t* p) { return x86w::adjust_words(_mm256_srli_epi16(x86w::load32(p), 8), g, o); };
        int i = 0;
        for (; i + 32 <= out_count; i += 32)  // the pack interleaves the two loads' lanes
            x86w::store32(dst + i, _mm256_permute4x64_epi64(_mm256_packus_epi16(odd(src + 2 * i), odd(src + 2 * i + 32)), 0xD8));
        if (i < out_count) Base::keep_odd_adjusted(src + 2 * i, dst + i, out_count - i, gain, offset);
    }
};


}  // namespace
}  // namespace dispconv::simd
