// SSE2 building blocks on 16 bytes / 8 words, the same lane arithmetic as the scalar
// definitions. Also used by the AVX2 vocabulary for single blocks.
#pragma once

#include <emmintrin.h>
#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstdint>
#include <cstring>

#include "core/rgb16.hpp"

namespace dispconv::simd::x86 {
namespace {

inline __m128i load8(const uint8_t* p) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)); }
inline __m128i load16(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline __m128i load4(const uint8_t* p) {
    int32_t v;
    std::memcpy(&v, p, 4);
    return _mm_cvtsi32_si128(v);
}
inline void store8(uint8_t* p, __m128i v) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v); }
inline void store16(uint8_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
inline void store4(uint8_t* p, __m128i v) {
    const int32_t x = _mm_cvtsi128_si32(v);
    std::memcpy(p, &x, 4);
}

inline __m128i low_bytes_mask() { return _mm_set1_epi16(0x00FF); }

// Adjustment of words holding bytes: product kept to 16 bits, logical shift by 6, offset added
// with signed saturation (the caller narrows with unsigned saturation).
inline __m128i adjust_words(__m128i w, __m128i gain, __m128i offset) {
    return _mm_adds_epi16(_mm_srli_epi16(_mm_mullo_epi16(w, gain), 6), offset);
}
inline __m128i adjust_bytes(__m128i bytes, __m128i gain, __m128i offset) {
    const __m128i zero = _mm_setzero_si128();
    return _mm_packus_epi16(adjust_words(_mm_unpacklo_epi8(bytes, zero), gain, offset),
                            adjust_words(_mm_unpackhi_epi8(bytes, zero), gain, offset));
}
// Words clamped to 0..255, as a pack with unsigned saturation would.
inline __m128i clamp_words(__m128i w) {
    return _mm_max_epi16(_mm_min_epi16(w, _mm_set1_epi16(255)), _mm_setzero_si128());
}

struct AdjustLanes {
    __m128i luma_gain, chroma_gain, luma_offset, u_offset, v_offset, uv_offset;
};
inline AdjustLanes adjust_lanes(int16_t luma_gain, int16_t chroma_gain, int16_t luma_offset,
                                int16_t u_offset, int16_t v_offset) {
    return {_mm_set1_epi16(luma_gain), _mm_set1_epi16(chroma_gain), _mm_set1_epi16(luma_offset),
            _mm_set1_epi16(u_offset), _mm_set1_epi16(v_offset),
            _mm_set_epi16(v_offset, u_offset, v_offset, u_offset, v_offset, u_offset, v_offset, u_offset)};
}

// The chroma terms of eight pixel pairs, each word repeated for the pair's two pixels.
struct ChromaWords {
    __m128i gu_lo, gu_hi, gv_lo, gv_hi, bu_lo, bu_hi, rv_lo, rv_hi;
};
inline ChromaWords chroma_words(__m128i u8, __m128i v8) {
    const __m128i zero = _mm_setzero_si128(), bias = _mm_set1_epi16(128);
    const __m128i cu = _mm_sub_epi16(_mm_unpacklo_epi8(u8, zero), bias);
    const __m128i cv = _mm_sub_epi16(_mm_unpacklo_epi8(v8, zero), bias);
    const __m128i gu = _mm_mulhi_epi16(cu, _mm_set1_epi16(25625));
    const __m128i bu = _mm_mulhi_epi16(_mm_slli_epi16(cu, 3), _mm_set1_epi16(16532));
    const __m128i gv = _mm_mulhi_epi16(_mm_slli_epi16(cv, 1), _mm_set1_epi16(26641));
    const __m128i rv = _mm_mulhi_epi16(_mm_slli_epi16(cv, 2), _mm_set1_epi16(26149));
    return {_mm_unpacklo_epi16(gu, gu), _mm_unpackhi_epi16(gu, gu), _mm_unpacklo_epi16(gv, gv),
            _mm_unpackhi_epi16(gv, gv), _mm_unpacklo_epi16(bu, bu), _mm_unpackhi_epi16(bu, bu),
            _mm_unpacklo_epi16(rv, rv), _mm_unpackhi_epi16(rv, rv)};
}

struct RgbVectors {
    __m128i r, g, b;  // 16 pixels each
};
inline RgbVectors luma_to_rgb(__m128i y16, const ChromaWords& c) {
    const __m128i zero = _mm_setzero_si128(), black = _mm_set1_epi16(16), scale = _mm_set1_epi16(19071);
    const __m128i yy_lo = _mm_mulhi_epi16(_mm_slli_epi16(_mm_sub_epi16(_mm_unpacklo_epi8(y16, zero), black), 2), scale);
    const __m128i yy_hi = _mm_mulhi_epi16(_mm_slli_epi16(_mm_sub_epi16(_mm_unpackhi_epi8(y16, zero), black), 2), scale);
    return {_mm_packus_epi16(_mm_adds_epi16(yy_lo, c.rv_lo), _mm_adds_epi16(yy_hi, c.rv_hi)),
            _mm_packus_epi16(_mm_subs_epi16(_mm_subs_epi16(yy_lo, c.gu_lo), c.gv_lo),
                             _mm_subs_epi16(_mm_subs_epi16(yy_hi, c.gu_hi), c.gv_hi)),
            _mm_packus_epi16(_mm_adds_epi16(yy_lo, c.bu_lo), _mm_adds_epi16(yy_hi, c.bu_hi))};
}

// Four vectors of four B, G, R, 0 pixels.
struct Rgb32Vectors {
    __m128i p0, p1, p2, p3;
};
inline Rgb32Vectors to_rgb32(const RgbVectors& c) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i bg_lo = _mm_unpacklo_epi8(c.b, c.g), bg_hi = _mm_unpackhi_epi8(c.b, c.g);
    const __m128i r0_lo = _mm_unpacklo_epi8(c.r, zero), r0_hi = _mm_unpackhi_epi8(c.r, zero);
    return {_mm_unpacklo_epi16(bg_lo, r0_lo), _mm_unpackhi_epi16(bg_lo, r0_lo),
            _mm_unpacklo_epi16(bg_hi, r0_hi), _mm_unpackhi_epi16(bg_hi, r0_hi)};
}

#if defined(__SSSE3__)
// Four B, G, R, 0 pixels to their 12 B, G, R bytes in the low part of the vector.
inline __m128i compact_rgb24(__m128i p) {
    return _mm_shuffle_epi8(p, _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
}
#endif

inline void store_rgb24_16(uint8_t* d, const Rgb32Vectors& p) {
#if defined(__SSSE3__)
    const __m128i c0 = compact_rgb24(p.p0), c1 = compact_rgb24(p.p1);
    const __m128i c2 = compact_rgb24(p.p2), c3 = compact_rgb24(p.p3);
    store16(d, _mm_or_si128(c0, _mm_slli_si128(c1, 12)));
    store16(d + 16, _mm_or_si128(_mm_srli_si128(c1, 4), _mm_slli_si128(c2, 8)));
    store16(d + 32, _mm_or_si128(_mm_srli_si128(c2, 8), _mm_slli_si128(c3, 4)));
#else
    // Pixel pairs 2k, 2k + 1 squeezed to 6 bytes per 64-bit half, the halves holding pairs k
    // and k + 4; the output's 64-bit words (the pattern repeats every 24 bytes) then come from
    // 64-bit shifts, which leave the byte-shuffle unit free.
    const __m128i low3 = _mm_set1_epi64x(0x0000000000FFFFFF), next3 = _mm_set1_epi64x(0x0000FFFFFF000000);
    auto squeeze = [&](__m128i q) {
        return _mm_or_si128(_mm_and_si128(q, low3), _mm_and_si128(_mm_srli_epi64(q, 8), next3));
    };
    const __m128i x = squeeze(_mm_unpacklo_epi64(p.p0, p.p2)), y = squeeze(_mm_unpackhi_epi64(p.p0, p.p2));
    const __m128i z = squeeze(_mm_unpacklo_epi64(p.p1, p.p3)), w = squeeze(_mm_unpackhi_epi64(p.p1, p.p3));
    const __m128i q03 = _mm_or_si128(x, _mm_slli_epi64(y, 48));
    const __m128i q14 = _mm_or_si128(_mm_srli_epi64(y, 16), _mm_slli_epi64(z, 32));
    const __m128i q25 = _mm_or_si128(_mm_srli_epi64(z, 32), _mm_slli_epi64(w, 16));
    store16(d, _mm_unpacklo_epi64(q03, q14));
    store16(d + 16, _mm_castpd_si128(_mm_move_sd(_mm_castsi128_pd(q03), _mm_castsi128_pd(q25))));
    store16(d + 32, _mm_unpackhi_epi64(q14, q25));
#endif
}

struct Rgb16Lanes {
    __m128i r_mask, g_mask, b_mask, g_shift, b_shift;
};
inline Rgb16Lanes rgb16_lanes(const Rgb16Layout& l) {
    return {_mm_set1_epi8(static_cast<char>(l.r_mask)), _mm_set1_epi8(static_cast<char>(l.g_mask)),
            _mm_set1_epi8(static_cast<char>(l.b_mask)), _mm_cvtsi32_si128(l.g_shift_left),
            _mm_cvtsi32_si128(l.b_shift_right)};
}
inline void store_rgb16_16(uint8_t* d, const RgbVectors& c, const Rgb16Lanes& l) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i r = _mm_and_si128(c.r, l.r_mask), g = _mm_and_si128(c.g, l.g_mask), b = _mm_and_si128(c.b, l.b_mask);
    const __m128i lo = _mm_or_si128(_mm_or_si128(_mm_unpacklo_epi8(zero, r), _mm_sll_epi16(_mm_unpacklo_epi8(g, zero), l.g_shift)),
                                    _mm_srl_epi16(_mm_unpacklo_epi8(b, zero), l.b_shift));
    const __m128i hi = _mm_or_si128(_mm_or_si128(_mm_unpackhi_epi8(zero, r), _mm_sll_epi16(_mm_unpackhi_epi8(g, zero), l.g_shift)),
                                    _mm_srl_epi16(_mm_unpackhi_epi8(b, zero), l.b_shift));
    store16(d, lo);
    store16(d + 16, hi);
}

// 16 pixels stored in a destination format.
template <class Format>
inline void store_rgb_16(uint8_t* d, const RgbVectors& c, const Rgb16Lanes& l) {
    if constexpr (Format::bytes_per_pixel == 4) {
        const Rgb32Vectors p = to_rgb32(c);
        store16(d, p.p0), store16(d + 16, p.p1), store16(d + 32, p.p2), store16(d + 48, p.p3);
    } else if constexpr (Format::bytes_per_pixel == 3) {
        store_rgb24_16(d, to_rgb32(c));
    } else {
        store_rgb16_16(d, c, l);
    }
}

// 32 bytes of packed YUY2 to 16 lumas and 8 U and 8 V (in the low halves).
struct Yuy2Split {
    __m128i y, u, v;
};
inline Yuy2Split split_yuy2_16(const uint8_t* s) {
    const __m128i a = load16(s), b = load16(s + 16), m = low_bytes_mask(), zero = _mm_setzero_si128();
    const __m128i c = _mm_packus_epi16(_mm_srli_epi16(a, 8), _mm_srli_epi16(b, 8));
    return {_mm_packus_epi16(_mm_and_si128(a, m), _mm_and_si128(b, m)),
            _mm_packus_epi16(_mm_and_si128(c, m), zero), _mm_packus_epi16(_mm_srli_epi16(c, 8), zero)};
}
inline __m128i lumas_of_yuy2_16(const uint8_t* s) {
    const __m128i m = low_bytes_mask();
    return _mm_packus_epi16(_mm_and_si128(load16(s), m), _mm_and_si128(load16(s + 16), m));
}
inline void join_yuy2_16(uint8_t* d, __m128i y, __m128i u, __m128i v) {
    const __m128i uv = _mm_unpacklo_epi8(u, v);
    store16(d, _mm_unpacklo_epi8(y, uv));
    store16(d + 16, _mm_unpackhi_epi8(y, uv));
}

}  // namespace
}  // namespace dispconv::simd::x86
