// AVX2 building blocks: two 16-pixel blocks per register, one per 128-bit lane, each lane
// computing exactly what the SSE2 building blocks compute for one block.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "core/adjust.hpp"
#include "core/geometry.hpp"
#include "simd/x86/sse2_ops.hpp"

namespace dispconv::simd {
namespace {
namespace x86w {

inline __m256i load32(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
inline void store32(uint8_t* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
// Two blocks' 8 chroma bytes (16 consecutive bytes), each zero-extended into its block's lane.
inline __m256i chroma_pair_words(const uint8_t* p) {
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
}
// Block k's 16 bytes at `block0` (k = 0) or `block1` (k = 1) in lane k: no lane crossing.
inline __m256i load_lanes(const uint8_t* block0, const uint8_t* block1) {
    return _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(block1), reinterpret_cast<const __m128i*>(block0));
}
// Stores the lane-0 halves of a and b as one block and the lane-1 halves as the next.
inline void store_lanes(uint8_t* block0, uint8_t* block1, __m256i a, __m256i b) {
    store32(block0, _mm256_permute2x128_si256(a, b, 0x20));
    store32(block1, _mm256_permute2x128_si256(a, b, 0x31));
}

inline __m256i adjust_words(__m256i w, __m256i gain, __m256i offset) {
    return _mm256_adds_epi16(_mm256_srli_epi16(_mm256_mullo_epi16(w, gain), 6), offset);
}
inline __m256i adjust_bytes(__m256i bytes, __m256i gain, __m256i offset) {
    const __m256i zero = _mm256_setzero_si256();
    return _mm256_packus_epi16(adjust_words(_mm256_unpacklo_epi8(bytes, zero), gain, offset),
                               adjust_words(_mm256_unpackhi_epi8(bytes, zero), gain, offset));
}
// Adjusted chroma words narrowed to bytes in the low half of each lane.
inline __m256i adjust_chroma_words(__m256i w, __m256i gain, __m256i offset) {
    const __m256i a = adjust_words(w, gain, offset);
    return _mm256_packus_epi16(a, a);
}

struct Lanes {
    __m256i luma_gain, chroma_gain, luma_offset, u_offset, v_offset;
};
inline Lanes lanes(const AdjustConstants& a) {
    return {_mm256_set1_epi16(a.luma_gain), _mm256_set1_epi16(a.chroma_gain), _mm256_set1_epi16(a.luma_offset),
            _mm256_set1_epi16(a.u_offset), _mm256_set1_epi16(a.v_offset)};
}

struct ChromaWords {
    __m256i gu_lo, gu_hi, gv_lo, gv_hi, bu_lo, bu_hi, rv_lo, rv_hi;
};
// From chroma bytes in the low half of each lane.
inline ChromaWords chroma_words(__m256i u8, __m256i v8) {
    const __m256i zero = _mm256_setzero_si256(), bias = _mm256_set1_epi16(128);
    const __m256i cu = _mm256_sub_epi16(_mm256_unpacklo_epi8(u8, zero), bias);
    const __m256i cv = _mm256_sub_epi16(_mm256_unpacklo_epi8(v8, zero), bias);
    const __m256i gu = _mm256_mulhi_epi16(cu, _mm256_set1_epi16(25625));
    const __m256i bu = _mm256_mulhi_epi16(_mm256_slli_epi16(cu, 3), _mm256_set1_epi16(16532));
    const __m256i gv = _mm256_mulhi_epi16(_mm256_slli_epi16(cv, 1), _mm256_set1_epi16(26641));
    const __m256i rv = _mm256_mulhi_epi16(_mm256_slli_epi16(cv, 2), _mm256_set1_epi16(26149));
    return {_mm256_unpacklo_epi16(gu, gu), _mm256_unpackhi_epi16(gu, gu), _mm256_unpacklo_epi16(gv, gv),
            _mm256_unpackhi_epi16(gv, gv), _mm256_unpacklo_epi16(bu, bu), _mm256_unpackhi_epi16(bu, bu),
            _mm256_unpacklo_epi16(rv, rv), _mm256_unpackhi_epi16(rv, rv)};
}

struct RgbVectors {
    __m256i r, g, b;
};
// From lumas as words (the block's first and second 8 pixels) and chroma terms per pixel.
inline RgbVectors luma_words_to_rgb(__m256i y_lo, __m256i y_hi, const ChromaWords& c) {
    const __m256i black = _mm256_set1_epi16(16), scale = _mm256_set1_epi16(19071);
    const __m256i yy_lo = _mm256_mulhi_epi16(_mm256_slli_epi16(_mm256_sub_epi16(y_lo, black), 2), scale);
    const __m256i yy_hi = _mm256_mulhi_epi16(_mm256_slli_epi16(_mm256_sub_epi16(y_hi, black), 2), scale);
    return {_mm256_packus_epi16(_mm256_adds_epi16(yy_lo, c.rv_lo), _mm256_adds_epi16(yy_hi, c.rv_hi)),
            _mm256_packus_epi16(_mm256_subs_epi16(_mm256_subs_epi16(yy_lo, c.gu_lo), c.gv_lo),
                                _mm256_subs_epi16(_mm256_subs_epi16(yy_hi, c.gu_hi), c.gv_hi)),
            _mm256_packus_epi16(_mm256_adds_epi16(yy_lo, c.bu_lo), _mm256_adds_epi16(yy_hi, c.bu_hi))};
}
inline RgbVectors luma_to_rgb(__m256i y, const ChromaWords& c) {
    const __m256i zero = _mm256_setzero_si256();
    return luma_words_to_rgb(_mm256_unpacklo_epi8(y, zero), _mm256_unpackhi_epi8(y, zero), c);
}

// Chroma terms from U and V words already repeated for both pixels of each pair: twice the
// multiplies of chroma_words, but no shuffles after them.
inline ChromaWords pixel_chroma_words(__m256i u_lo, __m256i u_hi, __m256i v_lo, __m256i v_hi) {
    const __m256i bias = _mm256_set1_epi16(128);
    const __m256i gu_k = _mm256_set1_epi16(25625), bu_k = _mm256_set1_epi16(16532);
    const __m256i gv_k = _mm256_set1_epi16(26641), rv_k = _mm256_set1_epi16(26149);
    const __m256i cu_lo = _mm256_sub_epi16(u_lo, bias), cu_hi = _mm256_sub_epi16(u_hi, bias);
    const __m256i cv_lo = _mm256_sub_epi16(v_lo, bias), cv_hi = _mm256_sub_epi16(v_hi, bias);
    return {_mm256_mulhi_epi16(cu_lo, gu_k), _mm256_mulhi_epi16(cu_hi, gu_k),
            _mm256_mulhi_epi16(_mm256_slli_epi16(cv_lo, 1), gv_k), _mm256_mulhi_epi16(_mm256_slli_epi16(cv_hi, 1), gv_k),
            _mm256_mulhi_epi16(_mm256_slli_epi16(cu_lo, 3), bu_k), _mm256_mulhi_epi16(_mm256_slli_epi16(cu_hi, 3), bu_k),
            _mm256_mulhi_epi16(_mm256_slli_epi16(cv_lo, 2), rv_k), _mm256_mulhi_epi16(_mm256_slli_epi16(cv_hi, 2), rv_k)};
}

// Byte shuffles (one per lane, both lanes alike unless `lane1_offset`), built at compile time.
struct ShuffleTable {
    alignas(32) int8_t bytes[32];
};
template <class F>
constexpr ShuffleTable shuffle_table(F source_of, int lane1_offset = 0) {
    ShuffleTable t{};
    for (int lane = 0; lane < 2; ++lane)
        for (int i = 0; i < 16; ++i) {
            const int s = source_of(i);
            t.bytes[16 * lane + i] = static_cast<int8_t>(s < 0 ? -1 : s + lane * lane1_offset);
        }
    return t;
}
template <class F>
constexpr ShuffleTable lane_shuffle_table(F source_of) {
    ShuffleTable t{};
    for (int lane = 0; lane < 2; ++lane)
        for (int i = 0; i < 16; ++i) t.bytes[16 * lane + i] = static_cast<int8_t>(source_of(lane, i));
    return t;
}
inline __m256i load_table(const ShuffleTable& t) { return _mm256_load_si256(reinterpret_cast<const __m256i*>(t.bytes)); }

// Which of 32 pixels (two blocks) each word of the lo and hi word vectors holds. The
// arithmetic is per pixel, so any placement gives the same bytes; each destination format
// takes the one its stores need the fewest lane crossings for.
enum class Spread {
    blocks,  // lane k: block k (lo its first 8 pixels, hi its last 8)
    octets,  // lo: pixels 0..15, hi: 16..31, 8 per lane
    quads,   // lo lane 0: 0..3 and 8..11, lane 1: 4..7 and 12..15; hi the same plus 16
};
template <class Format>
constexpr Spread spread_for = Format::bytes_per_pixel == 3 ? Spread::blocks
                              : Format::bytes_per_pixel == 2 ? Spread::octets : Spread::quads;
constexpr int pixel_at(Spread s, int half, int lane, int word) {
    return s == Spread::blocks ? 16 * lane + 8 * half + word
         : s == Spread::octets ? 16 * half + 8 * lane + word
                               : 16 * half + 4 * lane + (word < 4 ? word : word + 4);
}

// 32 luma bytes as the byte vector whose low (high) 8 bytes per lane widen to the lo (hi) words.
template <Spread s>
inline __m256i spread_luma(__m256i y) {
    if constexpr (s == Spread::octets) return _mm256_permute4x64_epi64(y, 0xD8);
    else if constexpr (s == Spread::quads) return _mm256_permutevar8x32_epi32(y, _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7));
    else return y;
}
// The 16 chroma bytes of 32 pixels (in both lanes) as words, each repeated for its pixel pair.
template <Spread s, int half>
inline __m256i spread_chroma(__m256i both) {
    static constexpr ShuffleTable t = lane_shuffle_table([](int lane, int i) { return i & 1 ? -1 : pixel_at(s, half, lane, i / 2) / 2; });
    return _mm256_shuffle_epi8(both, load_table(t));
}
// 64 bytes of packed YUY2 (32 pixels) as the lo or hi vector: word w the pixel's (Y, chroma).
template <Spread s, int half>
inline __m256i spread_yuy2(const uint8_t* p) {
    if constexpr (s == Spread::blocks) return load_lanes(p + 16 * half, p + 32 + 16 * half);
    else if constexpr (s == Spread::octets) return load32(p + 32 * half);
    else return _mm256_permute4x64_epi64(load32(p + 32 * half), 0xD8);
}

// From 8 packed YUY2 pixels per lane: the chroma bytes at `first`, first + 4, ... as words,
// each repeated for the two pixels of its pair.
template <int first>
inline __m256i yuy2_chroma_words(__m256i packed) {
    static constexpr ShuffleTable t = shuffle_table([](int i) { return i & 1 ? -1 : first + 4 * (i / 4); });
    return _mm256_shuffle_epi8(packed, load_table(t));
}

// 16 B, G, R pixels of one lane to the 48 bytes of their RGB24 run, as three vectors.
template <int part>
inline __m256i rgb24_part(const RgbVectors& c) {
    // Output byte j of the run is channel j % 3 (B, G, R) of pixel j / 3.
    auto from = [](int channel) {
        return [channel](int i) { const int j = 16 * part + i; return j % 3 == channel ? j / 3 : -1; };
    };
    static constexpr ShuffleTable b = shuffle_table(from(0)), g = shuffle_table(from(1)), r = shuffle_table(from(2));
    return _mm256_or_si256(_mm256_or_si256(_mm256_shuffle_epi8(c.b, load_table(b)), _mm256_shuffle_epi8(c.g, load_table(g))),
                           _mm256_shuffle_epi8(c.r, load_table(r)));
}

inline void store_halves(uint8_t* lane0, uint8_t* lane1, __m256i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(lane0), _mm256_castsi256_si128(v));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(lane1), _mm256_extracti128_si256(v, 1));
}

// The 16-bit pixels of the bytes' low halves (lo) and high halves (hi), lane by lane.
struct Rgb16Words {
    __m256i lo, hi;
};
inline Rgb16Words rgb16_words(const RgbVectors& c, const x86::Rgb16Lanes& l) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i r = _mm256_and_si256(c.r, _mm256_broadcastsi128_si256(l.r_mask));
    const __m256i g = _mm256_and_si256(c.g, _mm256_broadcastsi128_si256(l.g_mask));
    const __m256i b = _mm256_and_si256(c.b, _mm256_broadcastsi128_si256(l.b_mask));
    return {_mm256_or_si256(_mm256_or_si256(_mm256_unpacklo_epi8(zero, r), _mm256_sll_epi16(_mm256_unpacklo_epi8(g, zero), l.g_shift)),
                            _mm256_srl_epi16(_mm256_unpacklo_epi8(b, zero), l.b_shift)),
            _mm256_or_si256(_mm256_or_si256(_mm256_unpackhi_epi8(zero, r), _mm256_sll_epi16(_mm256_unpackhi_epi8(g, zero), l.g_shift)),
                            _mm256_srl_epi16(_mm256_unpackhi_epi8(b, zero), l.b_shift))};
}

// Two blocks of 16 pixels (one per lane) stored in a destination format.
template <class Format>
inline void store_rgb_2x16(uint8_t* d, const RgbVectors& c, const x86::Rgb16Lanes& l) {
    constexpr int block_bytes = 16 * Format::bytes_per_pixel;
    if constexpr (Format::bytes_per_pixel == 2) {
        const Rgb16Words w = rgb16_words(c, l);
        store_lanes(d, d + block_bytes, w.lo, w.hi);
    } else if constexpr (Format::bytes_per_pixel == 4) {
        const __m256i zero = _mm256_setzero_si256();
        const __m256i bg_lo = _mm256_unpacklo_epi8(c.b, c.g), bg_hi = _mm256_unpackhi_epi8(c.b, c.g);
        const __m256i r0_lo = _mm256_unpacklo_epi8(c.r, zero), r0_hi = _mm256_unpackhi_epi8(c.r, zero);
        store_lanes(d, d + block_bytes, _mm256_unpacklo_epi16(bg_lo, r0_lo), _mm256_unpackhi_epi16(bg_lo, r0_lo));
        store_lanes(d + 32, d + block_bytes + 32, _mm256_unpacklo_epi16(bg_hi, r0_hi), _mm256_unpackhi_epi16(bg_hi, r0_hi));
    } else {
        // The two runs are consecutive: 96 bytes as three whole 32-byte stores.
        const __m256i p0 = rgb24_part<0>(c), p1 = rgb24_part<1>(c), p2 = rgb24_part<2>(c);
        store32(d, _mm256_permute2x128_si256(p0, p1, 0x20));
        store32(d + 32, _mm256_permute2x128_si256(p2, p0, 0x30));
        store32(d + 64, _mm256_permute2x128_si256(p1, p2, 0x31));
    }
}

// 32 pixels placed as spread_for<Format> stored in a destination format.
template <class Format>
inline void store_rgb_spread(uint8_t* d, const RgbVectors& c, const x86::Rgb16Lanes& l) {
    if constexpr (Format::bytes_per_pixel == 3) {
        store_rgb_2x16<Format>(d, c, l);
    } else if constexpr (Format::bytes_per_pixel == 2) {
        const Rgb16Words w = rgb16_words(c, l);
        store32(d, w.lo);
        store32(d + 32, w.hi);
    } else {
        const __m256i zero = _mm256_setzero_si256();
        const __m256i bg_lo = _mm256_unpacklo_epi8(c.b, c.g), bg_hi = _mm256_unpackhi_epi8(c.b, c.g);
        const __m256i r0_lo = _mm256_unpacklo_epi8(c.r, zero), r0_hi = _mm256_unpackhi_epi8(c.r, zero);
        store32(d, _mm256_unpacklo_epi16(bg_lo, r0_lo));
        store32(d + 32, _mm256_unpackhi_epi16(bg_lo, r0_lo));
        store32(d + 64, _mm256_unpacklo_epi16(bg_hi, r0_hi));
        store32(d + 96, _mm256_unpackhi_epi16(bg_hi, r0_hi));
    }
}

}  // namespace x86w

}  // namespace
}  // namespace dispconv::simd
