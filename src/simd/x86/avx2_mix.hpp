// AVX2 operations of the mix kernels; anything not replaced here is the SSE2 one. Two blocks go
// through one register, one per 128-bit lane, so each lane computes what one SSE2 block does.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "simd/x86/sse2_mix.hpp"

namespace dispconv::simd::x86m {
namespace {

inline __m256i load32(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
inline void store32(uint8_t* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
// Two blocks' 8 chroma bytes (16 consecutive bytes) as words, each block's in its lane.
inline __m256i chroma_words_of(const uint8_t* p) { return _mm256_cvtepu8_epi16(x86::load16(p)); }
inline __m256i lane0(__m256i a, __m256i b) { return _mm256_permute2x128_si256(a, b, 0x20); }
inline __m256i lane1(__m256i a, __m256i b) { return _mm256_permute2x128_si256(a, b, 0x31); }

inline __m256i mix_words_narrowed(__m256i frame, __m256i sub, __m256i alpha) {
    const __m256i w = _mm256_subs_epi16(_mm256_set1_epi16(16), alpha);
    const __m256i t = _mm256_adds_epi16(_mm256_mullo_epi16(frame, w), _mm256_mullo_epi16(sub, alpha));
    return _mm256_min_epi16(_mm256_srli_epi16(t, 4), _mm256_set1_epi16(255));
}
inline __m256i adjust_words(__m256i w, __m256i gain, __m256i offset) {
    return _mm256_adds_epi16(_mm256_srli_epi16(_mm256_mullo_epi16(w, gain), 6), offset);
}

struct Lanes {
    __m256i luma_gain, chroma_gain, luma_offset, u_offset, v_offset;
};
inline Lanes lanes(const AdjustConstants& a) {
    return {_mm256_set1_epi16(a.luma_gain), _mm256_set1_epi16(a.chroma_gain), _mm256_set1_epi16(a.luma_offset),
            _mm256_set1_epi16(a.u_offset), _mm256_set1_epi16(a.v_offset)};
}

// Two consecutive blocks of one progressive row (no frame averaging), mixed with odd-pixel
// chroma weights and adjusted: y as 16 bytes per lane, u and v as 8 bytes in each lane's low half.
struct Mixed {
    __m256i y, u, v;
};
inline Mixed mix_adjust_2_blocks(const MixRow& s, ptrdiff_t at, const Lanes& l) {
    const __m256i zero = _mm256_setzero_si256();
    const ptrdiff_t half = at / 2;
    const __m256i fy = load32(s.frame_y + at), sy = load32(s.sub_y + at), alpha = load32(s.alpha + at);
    const __m256i w = _mm256_srli_epi16(alpha, 8);
    const __m256i y_lo = mix_words_narrowed(_mm256_unpacklo_epi8(fy, zero), _mm256_unpacklo_epi8(sy, zero),
                                            _mm256_unpacklo_epi8(alpha, zero));
    const __m256i y_hi = mix_words_narrowed(_mm256_unpackhi_epi8(fy, zero), _mm256_unpackhi_epi8(sy, zero),
                                            _mm256_unpackhi_epi8(alpha, zero));
    const __m256i u = mix_words_narrowed(chroma_words_of(s.frame_u + half), chroma_words_of(s.sub_u + half), w);
    const __m256i v = mix_words_narrowed(chroma_words_of(s.frame_v + half), chroma_words_of(s.sub_v + half), w);
    const __m256i ua = adjust_words(u, l.chroma_gain, l.u_offset), va = adjust_words(v, l.chroma_gain, l.v_offset);
    return {_mm256_packus_epi16(adjust_words(y_lo, l.luma_gain, l.luma_offset), adjust_words(y_hi, l.luma_gain, l.luma_offset)),
            _mm256_packus_epi16(ua, ua), _mm256_packus_epi16(va, va)};
}

inline void store_yuy2(uint8_t* block0, uint8_t* block1, const Mixed& m) {
    const __m256i uv = _mm256_unpacklo_epi8(m.u, m.v);
    const __m256i lo = _mm256_unpacklo_epi8(m.y, uv), hi = _mm256_unpackhi_epi8(m.y, uv);
    store32(block0, lane0(lo, hi));
    store32(block1, lane1(lo, hi));
}

// The conversion of the adjusted samples, per lane as x86::chroma_words and x86::luma_to_rgb.
inline x86::RgbVectors half_of(const __m256i (&c)[3], int lane) {
    auto pick = [lane](__m256i v) { return lane ? _mm256_extracti128_si256(v, 1) : _mm256_castsi256_si128(v); };
    return {pick(c[0]), pick(c[1]), pick(c[2])};
}
inline void to_rgb(const Mixed& m, __m256i (&rgb)[3]) {
    const __m256i zero = _mm256_setzero_si256(), bias = _mm256_set1_epi16(128);
    const __m256i cu = _mm256_sub_epi16(_mm256_unpacklo_epi8(m.u, zero), bias);
    const __m256i cv = _mm256_sub_epi16(_mm256_unpacklo_epi8(m.v, zero), bias);
    const __m256i gu = _mm256_mulhi_epi16(cu, _mm256_set1_epi16(25625));
    const __m256i bu = _mm256_mulhi_epi16(_mm256_slli_epi16(cu, 3), _mm256_set1_epi16(16532));
    const __m256i gv = _mm256_mulhi_epi16(_mm256_slli_epi16(cv, 1), _mm256_set1_epi16(26641));
    const __m256i rv = _mm256_mulhi_epi16(_mm256_slli_epi16(cv, 2), _mm256_set1_epi16(26149));
    const __m256i black = _mm256_set1_epi16(16), scale = _mm256_set1_epi16(19071);
    const __m256i yy_lo = _mm256_mulhi_epi16(_mm256_slli_epi16(_mm256_sub_epi16(_mm256_unpacklo_epi8(m.y, zero), black), 2), scale);
    const __m256i yy_hi = _mm256_mulhi_epi16(_mm256_slli_epi16(_mm256_sub_epi16(_mm256_unpackhi_epi8(m.y, zero), black), 2), scale);
    // Each chroma term serves the two pixels of its pair.
    const __m256i gu_lo = _mm256_unpacklo_epi16(gu, gu), gu_hi = _mm256_unpackhi_epi16(gu, gu);
    const __m256i gv_lo = _mm256_unpacklo_epi16(gv, gv), gv_hi = _mm256_unpackhi_epi16(gv, gv);
    rgb[0] = _mm256_packus_epi16(_mm256_adds_epi16(yy_lo, _mm256_unpacklo_epi16(rv, rv)),
                                 _mm256_adds_epi16(yy_hi, _mm256_unpackhi_epi16(rv, rv)));
    rgb[1] = _mm256_packus_epi16(_mm256_subs_epi16(_mm256_subs_epi16(yy_lo, gu_lo), gv_lo),
                                 _mm256_subs_epi16(_mm256_subs_epi16(yy_hi, gu_hi), gv_hi));
    rgb[2] = _mm256_packus_epi16(_mm256_adds_epi16(yy_lo, _mm256_unpacklo_epi16(bu, bu)),
                                 _mm256_adds_epi16(yy_hi, _mm256_unpackhi_epi16(bu, bu)));
}

// Lane 0's 16 pixels stored at block0, lane 1's at block1.
template <class Format>
inline void store_rgb(uint8_t* block0, uint8_t* block1, const Mixed& m, const x86::Rgb16Lanes& layout) {
    __m256i c[3];
    to_rgb(m, c);
    if constexpr (Format::bytes_per_pixel == 4) {
        const __m256i zero = _mm256_setzero_si256();
        const __m256i bg_lo = _mm256_unpacklo_epi8(c[2], c[1]), bg_hi = _mm256_unpackhi_epi8(c[2], c[1]);
        const __m256i r0_lo = _mm256_unpacklo_epi8(c[0], zero), r0_hi = _mm256_unpackhi_epi8(c[0], zero);
        const __m256i p0 = _mm256_unpacklo_epi16(bg_lo, r0_lo), p1 = _mm256_unpackhi_epi16(bg_lo, r0_lo);
        const __m256i p2 = _mm256_unpacklo_epi16(bg_hi, r0_hi), p3 = _mm256_unpackhi_epi16(bg_hi, r0_hi);
        store32(block0, lane0(p0, p1)), store32(block0 + 32, lane0(p2, p3));
        store32(block1, lane1(p0, p1)), store32(block1 + 32, lane1(p2, p3));
    } else {
        x86::store_rgb_16<Format>(block0, half_of(c, 0), layout);
        x86::store_rgb_16<Format>(block1, half_of(c, 1), layout);
    }
}

// Whether two rows of `bytes` written at a and b share any byte (then the order of the stores
// must stay block by block).
inline bool rows_overlap(const uint8_t* a, const uint8_t* b, ptrdiff_t bytes) {
    const intptr_t d = reinterpret_cast<intptr_t>(b) - reinterpret_cast<intptr_t>(a);
    return (d < 0 ? -d : d) < bytes;
}

}  // namespace
}  // namespace dispconv::simd::x86m

namespace dispconv::simd {
namespace {

struct Avx2Mix : Sse2Mix {
    // Progressive rows (no frame averaging), two blocks at a time; anything else, a block left
    // over, or rows that overlap go the SSE2 way.
    template <class Store>
    static void two_block_rows(const MixRow* rows, int count, uint32_t blocks, const AdjustConstants& a,
                               uint8_t* const* dst, int block_bytes, Store&& store, auto&& sse2_rows) {
        bool plain = count <= 2;
        for (int r = 0; r < count && plain; ++r)
            plain = !rows[r].frame_y_below && !rows[r].frame_u_below && !rows[r].frame_v_below;
        if (count == 2) plain = plain && !x86m::rows_overlap(dst[0], dst[1], ptrdiff_t(blocks) * block_bytes);
        if (!plain) return sse2_rows(rows, count, blocks, dst);
        const x86m::Lanes l = x86m::lanes(a);
        uint32_t i = 0;
        for (; i + 2 <= blocks; i += 2) {
            const ptrdiff_t at = ptrdiff_t(i) * block;
            for (int r = 0; r < count; ++r) {
                uint8_t* d = dst[r] + ptrdiff_t(i) * block_bytes;
                store(d, d + block_bytes, x86m::mix_adjust_2_blocks(rows[r], at, l));
            }
        }
        if (i < blocks) {
            const MixRow rest[2] = {rows[0].advanced(ptrdiff_t(i) * block), rows[count - 1].advanced(ptrdiff_t(i) * block)};
            uint8_t* const rest_dst[2] = {dst[0] + ptrdiff_t(i) * block_bytes, dst[count - 1] + ptrdiff_t(i) * block_bytes};
            sse2_rows(rest, count, 1u, rest_dst);
        }
    }

    static void mix_yuy2_rows(const MixRow* rows, int count, uint32_t blocks, const AdjustConstants& a,
                              uint8_t* const* dst) {
        two_block_rows(rows, count, blocks, a, dst, 2 * block,
                       [](uint8_t* b0, uint8_t* b1, const x86m::Mixed& m) { x86m::store_yuy2(b0, b1, m); },
                       [&a](const MixRow* r, int n, uint32_t b, uint8_t* const* d) { Sse2Mix::mix_yuy2_rows(r, n, b, a, d); });
    }

    template <class Format, bool PairAverage>
    static void mix_rgb_rows(const MixRow* rows, int count, uint32_t blocks, const AdjustConstants& a,
                             const Rgb16Layout& layout, uint8_t* const* dst) {
        auto sse2_rows = [&a, &layout](const MixRow* r, int n, uint32_t b, uint8_t* const* d) {
            Sse2Mix::mix_rgb_rows<Format, PairAverage>(r, n, b, a, layout, d);
        };
        if constexpr (PairAverage) {
            sse2_rows(rows, count, blocks, dst);
        } else {
            const x86::Rgb16Lanes lanes = x86::rgb16_lanes(layout);
            two_block_rows(rows, count, blocks, a, dst, block * Format::bytes_per_pixel,
                           [&lanes](uint8_t* b0, uint8_t* b1, const x86m::Mixed& m) { x86m::store_rgb<Format>(b0, b1, m, lanes); },
                           sse2_rows);
        }
    }
};

}  // namespace
}  // namespace dispconv::simd
