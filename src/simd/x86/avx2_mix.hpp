// AVX2 operations of the mix kernels; anything not replaced here is the SSE2 one. Two blocks go
// through one register, one per 128-bit lane, so each lane computes what one SSE2 block does.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "simd/x86/avx2_ops.hpp"
#include "simd/x86/sse2_mix.hpp"

namespace dispconv::simd {
namespace {
namespace x86m {

inline __m256i mix_words_narrowed(__m256i frame, __m256i sub, __m256i alpha) {
    const __m256i w = _mm256_subs_epi16(_mm256_set1_epi16(16), alpha);
    const __m256i t = _mm256_adds_epi16(_mm256_mullo_epi16(frame, w), _mm256_mullo_epi16(sub, alpha));
    return _mm256_min_epi16(_mm256_srli_epi16(t, 4), _mm256_set1_epi16(255));
}
// Two consecutive blocks of one row, mixed and adjusted: y as 16 bytes per lane, u and v as 8
// bytes in each lane's low half. Frame planes with a `below` row are read as the rounded
// average of the two rows; chroma weights are the odd pixel's alpha or, with PairAverage, the
// rounded average of the pair's alphas.
struct Mixed {
    __m256i y, u, v;
};
template <bool PairAverage>
inline Mixed mix_adjust_2_blocks(const MixRow& s, ptrdiff_t at, const x86w::Lanes& l) {
    const __m256i zero = _mm256_setzero_si256();
    const ptrdiff_t half = at / 2;
    auto chroma = [half](const uint8_t* p, const uint8_t* below) {
        __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + half));
        if (below) c = _mm_avg_epu8(c, _mm_loadu_si128(reinterpret_cast<const __m128i*>(below + half)));
        return _mm256_cvtepu8_epi16(c);
    };
    __m256i fy = x86w::load32(s.frame_y + at);
    if (s.frame_y_below) fy = _mm256_avg_epu8(fy, x86w::load32(s.frame_y_below + at));
    const __m256i sy = x86w::load32(s.sub_y + at), alpha = x86w::load32(s.alpha + at);
    const __m256i odd = _mm256_srli_epi16(alpha, 8);
    const __m256i w = PairAverage ? _mm256_avg_epu16(_mm256_and_si256(alpha, _mm256_set1_epi16(0x00FF)), odd) : odd;
    const __m256i y_lo = mix_words_narrowed(_mm256_unpacklo_epi8(fy, zero), _mm256_unpacklo_epi8(sy, zero),
                                            _mm256_unpacklo_epi8(alpha, zero));
    const __m256i y_hi = mix_words_narrowed(_mm256_unpackhi_epi8(fy, zero), _mm256_unpackhi_epi8(sy, zero),
                                            _mm256_unpackhi_epi8(alpha, zero));
    const __m256i u = mix_words_narrowed(chroma(s.frame_u, s.frame_u_below), chroma(s.sub_u, nullptr), w);
    const __m256i v = mix_words_narrowed(chroma(s.frame_v, s.frame_v_below), chroma(s.sub_v, nullptr), w);
    const __m256i ua = x86w::adjust_words(u, l.chroma_gain, l.u_offset), va = x86w::adjust_words(v, l.chroma_gain, l.v_offset);
    return {_mm256_packus_epi16(x86w::adjust_words(y_lo, l.luma_gain, l.luma_offset), x86w::adjust_words(y_hi, l.luma_gain, l.luma_offset)),
            _mm256_packus_epi16(ua, ua), _mm256_packus_epi16(va, va)};
}

inline void store_yuy2(uint8_t* block0, uint8_t* block1, const Mixed& m) {
    const __m256i uv = _mm256_unpacklo_epi8(m.u, m.v);
    const __m256i lo = _mm256_unpacklo_epi8(m.y, uv), hi = _mm256_unpackhi_epi8(m.y, uv);
    x86w::store_lanes(block0, block1, lo, hi);
}

// Two half-mixer blocks, one per lane, as x86::mix_half_block computes one (not at a row start).
inline __m256i mix_half_2_blocks(const MixRow& s, ptrdiff_t at, const x86w::Lanes& l) {
    const __m256i zero = _mm256_setzero_si256();
    const ptrdiff_t half = at / 2;
    auto odd_chroma = [half](const uint8_t* p) {  // each block's 8 chroma bytes into its lane
        const __m256i c = _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + half)));
        return _mm256_srli_epi16(_mm256_permute4x64_epi64(c, 0x10), 8);
    };
    const __m256i alpha = _mm256_srli_epi16(x86w::load32(s.alpha + at), 8);
    const __m256i w = _mm256_packs_epi32(_mm256_srli_epi32(alpha, 16), zero);
    const __m256i y = mix_words_narrowed(_mm256_srli_epi16(x86w::load32(s.frame_y + at), 8),
                                         _mm256_srli_epi16(x86w::load32(s.sub_y + at), 8), alpha);
    const __m256i u = mix_words_narrowed(odd_chroma(s.frame_u), odd_chroma(s.sub_u), w);
    const __m256i v = mix_words_narrowed(odd_chroma(s.frame_v), odd_chroma(s.sub_v), w);
    const __m256i y8 = _mm256_packus_epi16(x86w::adjust_words(y, l.luma_gain, l.luma_offset), zero);
    const __m256i u8 = _mm256_packus_epi16(x86w::adjust_words(u, l.chroma_gain, l.u_offset), zero);
    const __m256i v8 = _mm256_packus_epi16(x86w::adjust_words(v, l.chroma_gain, l.v_offset), zero);
    return _mm256_unpacklo_epi8(y8, _mm256_unpacklo_epi8(u8, v8));
}

// Lane 0's 16 pixels stored at block0, lane 1's right after them.
template <class Format>
inline void store_rgb(uint8_t* block0, const Mixed& m, const x86::Rgb16Lanes& layout) {
    x86w::store_rgb_2x16<Format>(block0, x86w::luma_to_rgb(m.y, x86w::chroma_words(m.u, m.v)), layout);
}

}  // namespace x86m
}  // namespace
}  // namespace dispconv::simd

namespace dispconv::simd {
namespace {

struct Avx2Mix : Sse2Mix {
    // Up to four rows, two blocks at a time, a row after the other (stores to rows in step are
    // markedly slower); a block left over goes the SSE2 way, and so do rows that share bytes,
    // whose stores must keep the reference's block-by-block order.
    template <bool PairAverage, class Store>
    static void two_block_rows(const MixRow* rows, int count, uint32_t blocks, const AdjustConstants& a,
                               uint8_t* const* dst, int block_bytes, Store&& store, auto&& sse2_rows) {
        const ptrdiff_t row_bytes = ptrdiff_t(blocks) * block_bytes;
        for (int r = 0; r < count; ++r)
            for (int q = r + 1; q < count; ++q)
                if (runs_overlap(dst[r], dst[q], row_bytes)) return sse2_rows(rows, count, blocks, dst);
        const x86w::Lanes l = x86w::lanes(a);
        const uint32_t pairs_end = blocks & ~1u;
        for (int r = 0; r < count; ++r) {
            for (uint32_t j = 0; j < pairs_end; j += 2) {
                uint8_t* d = dst[r] + ptrdiff_t(j) * block_bytes;
                store(d, d + block_bytes, x86m::mix_adjust_2_blocks<PairAverage>(rows[r], ptrdiff_t(j) * block, l));
            }
            if (pairs_end < blocks) {
                const MixRow rest = rows[r].advanced(ptrdiff_t(pairs_end) * block);
                uint8_t* const rest_dst = dst[r] + ptrdiff_t(pairs_end) * block_bytes;
                sse2_rows(&rest, 1, 1u, &rest_dst);
            }
        }
    }

    static void mix_yuy2_rows(const MixRow* rows, int count, uint32_t blocks, const AdjustConstants& a,
                              uint8_t* const* dst) {
        two_block_rows<false>(rows, count, blocks, a, dst, 2 * block,
                       [](uint8_t* b0, uint8_t* b1, const x86m::Mixed& m) { x86m::store_yuy2(b0, b1, m); },
                       [&a](const MixRow* r, int n, uint32_t b, uint8_t* const* d) { Sse2Mix::mix_yuy2_rows(r, n, b, a, d); });
    }

    template <class Adjust, bool Chroma>
    static void mix_plane_row(const uint8_t* frame, const uint8_t* frame_below, const uint8_t* sub,
                              const uint8_t* alpha, uint8_t* out, uint32_t samples, int16_t gain,
                              int16_t offset) {
        const __m256i g = _mm256_set1_epi16(gain), o = _mm256_set1_epi16(offset), zero = _mm256_setzero_si256();
        uint32_t i = 0;
        for (; i + 32 <= samples; i += 32) {
            __m256i f = x86w::load32(frame + i);
            if (frame_below) f = _mm256_avg_epu8(f, x86w::load32(frame_below + i));
            __m256i w;
            if constexpr (Chroma) {
                const __m256i odd = _mm256_packus_epi16(_mm256_srli_epi16(x86w::load32(alpha + 2 * i), 8),
                                                        _mm256_srli_epi16(x86w::load32(alpha + 2 * i + 32), 8));
                w = _mm256_permute4x64_epi64(odd, 0xD8);  // the packs interleave the two loads' lanes
            } else {
                w = x86w::load32(alpha + i);
            }
            const __m256i sb = x86w::load32(sub + i);
            __m256i m = _mm256_packus_epi16(
                x86m::mix_words_narrowed(_mm256_unpacklo_epi8(f, zero), _mm256_unpacklo_epi8(sb, zero), _mm256_unpacklo_epi8(w, zero)),
                x86m::mix_words_narrowed(_mm256_unpackhi_epi8(f, zero), _mm256_unpackhi_epi8(sb, zero), _mm256_unpackhi_epi8(w, zero)));
            if constexpr (Adjust::enabled) m = x86w::adjust_bytes(m, g, o);
            x86w::store32(out + i, m);
        }
        if (i < samples)
            Sse2Mix::mix_plane_row<Adjust, Chroma>(frame + i, frame_below ? frame_below + i : nullptr, sub + i,
                                                   alpha + (Chroma ? 2 * i : i), out + i, samples - i, gain, offset);
    }

    static void mix_half_yuy2_rows(const MixRow* rows, int count, uint32_t blocks, const AdjustConstants& a,
                                   uint8_t* const* dst) {
        if (blocks < 3 || (count == 2 && runs_overlap(dst[0], dst[1], ptrdiff_t(blocks) * block)))
            return Sse2Mix::mix_half_yuy2_rows(rows, count, blocks, a, dst);
        const x86w::Lanes l = x86w::lanes(a);
        const x86::AdjustLanes l1 = x86::adjust_lanes(a);
        for (int r = 0; r < count; ++r) {
            // The first block alone (its first chroma byte stays unread), then pairs.
            x86::store16(dst[r], x86::mix_half_block<true>(rows[r], 0, l1));
            uint32_t i = 1;
            for (; i + 2 <= blocks; i += 2)
                x86w::store32(dst[r] + ptrdiff_t(i) * block, x86m::mix_half_2_blocks(rows[r], ptrdiff_t(i) * block, l));
            if (i < blocks)
                x86::store16(dst[r] + ptrdiff_t(i) * block, x86::mix_half_block<false>(rows[r], ptrdiff_t(i) * block, l1));
        }
    }

    template <class Format, bool PairAverage>
    static void mix_rgb_rows(const MixRow* rows, int count, uint32_t blocks, const AdjustConstants& a,
                             const Rgb16Layout& layout, uint8_t* const* dst) {
        auto sse2_rows = [&a, &layout](const MixRow* r, int n, uint32_t b, uint8_t* const* d) {
            Sse2Mix::mix_rgb_rows<Format, PairAverage>(r, n, b, a, layout, d);
        };
        const x86::Rgb16Lanes lanes = x86::rgb16_lanes(layout);
        two_block_rows<PairAverage>(rows, count, blocks, a, dst, block * Format::bytes_per_pixel,
                                    [&lanes](uint8_t* b0, uint8_t*, const x86m::Mixed& m) { x86m::store_rgb<Format>(b0, m, lanes); },
                                    sse2_rows);
    }
};

}  // namespace
}  // namespace dispconv::simd
