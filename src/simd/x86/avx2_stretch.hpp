// AVX2 operations of the stretch kernels; anything not replaced here is the SSE2 one. Each
// 128-bit lane computes exactly what one SSE2 step does.
#pragma once

#include <immintrin.h>

#include "simd/x86/avx2_ops.hpp"
#include "simd/x86/sse2_stretch.hpp"

namespace dispconv::simd {
namespace {
namespace x86sw {

using x86w::load32;
using x86w::store32;
// 16 bytes at p in the low lane and 16 at p + 8 in the high lane.
inline __m256i load_pair(const uint8_t* p) {
    return _mm256_set_m128i(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 8)),
                            _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
}

inline __m256i filter4_words(__m256i a, __m256i b, __m256i c, __m256i d) {
    const __m256i bc = _mm256_add_epi16(b, c);
    return _mm256_srai_epi16(_mm256_sub_epi16(_mm256_add_epi16(bc, _mm256_slli_epi16(bc, 2)), _mm256_add_epi16(a, d)), 3);
}
inline __m256i filter4_bytes(__m256i a, __m256i b, __m256i c, __m256i d) {
    const __m256i z = _mm256_setzero_si256();
    return _mm256_packus_epi16(filter4_words(_mm256_unpacklo_epi8(a, z), _mm256_unpacklo_epi8(b, z),
                                             _mm256_unpacklo_epi8(c, z), _mm256_unpacklo_epi8(d, z)),
                               filter4_words(_mm256_unpackhi_epi8(a, z), _mm256_unpackhi_epi8(b, z),
                                             _mm256_unpackhi_epi8(c, z), _mm256_unpackhi_epi8(d, z)));
}

inline __m256i abs_diff_bytes(__m256i x, __m256i y) {
    return _mm256_or_si256(_mm256_subs_epu8(x, y), _mm256_subs_epu8(y, x));
}
inline __m256i sums_of_four(__m256i d) {
    const __m256i z = _mm256_setzero_si256();
    return _mm256_add_epi16(
        _mm256_add_epi16(_mm256_unpacklo_epi8(d, z), _mm256_unpacklo_epi8(_mm256_srli_si256(d, 1), z)),
        _mm256_add_epi16(_mm256_unpacklo_epi8(_mm256_srli_si256(d, 2), z), _mm256_unpacklo_epi8(_mm256_srli_si256(d, 3), z)));
}

struct Around {
    __m256i early, late;  // per lane: samples -4 .. 11 and 0 .. 15 of its eight positions
};
inline __m256i at_offset(const Around& r, int d) {
    switch (d) {
        case -2: return _mm256_srli_si256(r.early, 2);
        case -1: return _mm256_srli_si256(r.early, 3);
        case 0: return r.late;
        case 1: return _mm256_srli_si256(r.late, 1);
        default: return _mm256_srli_si256(r.late, 2);
    }
}

// Sixteen positions, eight per lane, as 16 bytes.
inline __m128i edge_interpolate_16(const Around& a, const Around& b) {
    __m256i best = _mm256_set1_epi16(0x7FFF);
    __m256i averages[5];
    for (int j = 0; j < 5; ++j) {
        const int d = j - 2;
        const __m256i ad = at_offset(a, d), bd = at_offset(b, -d);
        averages[j] = _mm256_avg_epu8(ad, bd);
        const __m256i key = _mm256_add_epi16(_mm256_slli_epi16(sums_of_four(abs_diff_bytes(ad, bd)), 3),
                                             _mm256_set1_epi16(int16_t(j)));
        best = _mm256_min_epi16(best, key);
        if (j == 2) {
            const __m256i cost = _mm256_srli_epi16(key, 3);
            const __m256i activity = _mm256_shufflehi_epi16(_mm256_shufflelo_epi16(cost, 0), 0);
            const __m256i quiet = _mm256_cmpgt_epi16(_mm256_set1_epi16(33), activity);
            best = _mm256_or_si256(_mm256_andnot_si256(quiet, best), _mm256_and_si256(quiet, _mm256_set1_epi16(2)));
        }
    }
    const __m256i j8 = _mm256_and_si256(best, _mm256_set1_epi16(7));
    const __m256i j_bytes = _mm256_packus_epi16(j8, j8);
    __m256i out = _mm256_setzero_si256();
    for (int j = 0; j < 5; ++j)
        out = _mm256_or_si256(out, _mm256_and_si256(_mm256_cmpeq_epi8(j_bytes, _mm256_set1_epi8(char(j))), averages[j]));
    // The low 8 bytes of each lane, side by side.
    return _mm256_castsi256_si128(_mm256_permute4x64_epi64(out, 0x08));
}

// Two blocks' doubled samples for double_size_yuy2_row, one block per lane: 16 luma samples
// per lane, or (`chroma`) 8 in each lane's low half; the right neighbours come from memory.
template <bool adjusted>
inline __m256i doubled_pair_half(const uint8_t* r, bool chroma, __m256i gain, __m256i offset, __m256i& odd) {
    auto load = [&](const uint8_t* p) {
        const __m256i x = chroma ? _mm256_permute4x64_epi64(_mm256_castsi128_si256(x86::load16(p)), 0x50) : load32(p);
        return adjusted ? x86w::adjust_bytes(x, gain, offset) : x;
    };
    const __m256i s = load(r);
    odd = _mm256_avg_epu8(s, load(r + 1));
    return s;
}
template <bool adjusted>
inline __m256i doubled_pair(const uint8_t* r0, const uint8_t* r1, bool chroma, __m256i gain, __m256i offset, __m256i& odd) {
    const __m256i even = doubled_pair_half<adjusted>(r0, chroma, gain, offset, odd);
    if (r1 == r0) return even;
    __m256i odd1;
    const __m256i even1 = doubled_pair_half<adjusted>(r1, chroma, gain, offset, odd1);
    odd = _mm256_avg_epu8(odd, odd1);
    return _mm256_avg_epu8(even, even1);
}

// The 32-byte form of x86s::adjust_yuy2 and x86s::doubled_yuy2; the doubled pairs come out
// lane by lane, so the two results hold the first and the second 32 bytes of the output.
inline __m256i adjust_yuy2(__m256i x, const x86w::Lanes& l, __m256i uv_offset) {
    const __m256i y = x86w::adjust_words(_mm256_and_si256(x, _mm256_set1_epi16(0x00FF)), l.luma_gain, l.luma_offset);
    const __m256i c = x86w::adjust_words(_mm256_srli_epi16(x, 8), l.chroma_gain, uv_offset);
    const __m256i p = _mm256_packus_epi16(y, c);  // per lane: 8 lumas, then 8 chroma bytes
    return _mm256_unpacklo_epi8(p, _mm256_srli_si256(p, 8));
}
inline void doubled_yuy2(__m256i s, __m256i s2, __m256i s4, __m256i& first, __m256i& second) {
    const __m256i luma = _mm256_set1_epi16(0x00FF);
    const __m256i m = _mm256_blendv_epi8(_mm256_avg_epu8(s, s4), _mm256_avg_epu8(s, s2), luma);
    const __m256i swap24 = _mm256_setr_epi8(0, 1, 4, 3, 2, 5, 6, 7, 8, 9, 12, 11, 10, 13, 14, 15,
                                            0, 1, 4, 3, 2, 5, 6, 7, 8, 9, 12, 11, 10, 13, 14, 15);
    const __m256i lo = _mm256_shuffle_epi8(_mm256_unpacklo_epi32(s, m), swap24);
    const __m256i hi = _mm256_shuffle_epi8(_mm256_unpackhi_epi32(s, m), swap24);
    first = _mm256_permute2x128_si256(lo, hi, 0x20);
    second = _mm256_permute2x128_si256(lo, hi, 0x31);
}

// rgb_double_rows places its 32 pixels as x86w::spread_for<Format> says (32-bit: lane 0 takes
// pixels 0-3, 8-11, 16-19, 24-27 and lane 1 the runs between; 16-bit: lane 0 takes 0-7 and
// 16-23; 24-bit: one block per lane), so that each store is a run of the row. These are the
// 16 chroma bytes of those pixels, each lane's 8 zero-extended into its words.
template <int bpp>
inline __m256i dealt_chroma_words(const uint8_t* p) {
    __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    if constexpr (bpp == 4) c = _mm_shuffle_epi8(c, _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15));
    else if constexpr (bpp == 2) c = _mm_shuffle_epi32(c, 0xD8);
    return _mm256_cvtepu8_epi16(c);
}

}  // namespace x86sw

struct Avx2Stretch : Sse2Stretch {
    // Two 16-pixel blocks per step. For the 32- and 16-bit surfaces the pixels are dealt to
    // the lanes so that each lane's interleaved output is already a run of the row (no lane
    // crossing per store); 24-bit keeps one block per lane. An odd block is left to SSE2.
    template <class Format>
    static void rgb_double_rows(const uint8_t* top, const uint8_t* bottom, const uint8_t* next,
                                const uint8_t* u0, const uint8_t* u1, const uint8_t* v0,
                                const uint8_t* v1, uint8_t* const dst[4], int pixels,
                                const AdjustConstants& a, const Rgb16Layout& layout) {
        constexpr int bpp = Format::bytes_per_pixel;
        const x86w::Lanes l = x86w::lanes(a);
        const x86::Rgb16Lanes lanes = x86::rgb16_lanes(layout);
        auto luma = [&](const uint8_t* p) {
            return x86w::adjust_bytes(x86w::spread_luma<x86w::spread_for<Format>>(x86w::load32(p)), l.luma_gain, l.luma_offset);
        };
        auto chroma = [&](const uint8_t* p, __m256i offset) {
            return x86w::adjust_chroma_words(x86sw::dealt_chroma_words<bpp>(p), l.chroma_gain, offset);
        };
        auto store = [&](uint8_t* d, const x86w::RgbVectors& c) { x86w::store_rgb_spread<Format>(d, c, lanes); };
        int i = 0;
        for (; i + 32 <= pixels; i += 32) {
            const __m256i ya = luma(top + i), yb = luma(bottom + i), yc = luma(next + i);
            const __m256i ua = chroma(u0 + i / 2, l.u_offset), ub = chroma(u1 + i / 2, l.u_offset);
            const __m256i va = chroma(v0 + i / 2, l.v_offset), vb = chroma(v1 + i / 2, l.v_offset);
            const x86w::ChromaWords c0 = x86w::chroma_words(ua, va);
            const x86w::ChromaWords c1 = x86w::chroma_words(_mm256_avg_epu8(ua, ub), _mm256_avg_epu8(va, vb));
            store(dst[0] + i * bpp, x86w::luma_to_rgb(ya, c0));
            store(dst[1] + i * bpp, x86w::luma_to_rgb(_mm256_avg_epu8(ya, yb), c0));
            store(dst[2] + i * bpp, x86w::luma_to_rgb(yb, c1));
            store(dst[3] + i * bpp, x86w::luma_to_rgb(_mm256_avg_epu8(yb, yc), c1));
        }
        if (i < pixels) {
            uint8_t* const rest[4] = {dst[0] + i * bpp, dst[1] + i * bpp, dst[2] + i * bpp, dst[3] + i * bpp};
            Sse2Stretch::rgb_double_rows<Format>(top + i, bottom + i, next + i, u0 + i / 2, u1 + i / 2, v0 + i / 2,
                                                 v1 + i / 2, rest, pixels - i, a, layout);
        }
    }

    static void filter4(const uint8_t* a, const uint8_t* b, const uint8_t* c, const uint8_t* d, uint8_t* dst, int n) {
        int i = 0;
        for (; i + 32 <= n; i += 32)
            x86sw::store32(dst + i, x86sw::filter4_bytes(x86sw::load32(a + i), x86sw::load32(b + i), x86sw::load32(c + i),
                                                         x86sw::load32(d + i)));
        if (i < n) Sse2Stretch::filter4(a + i, b + i, c + i, d + i, dst + i, n - i);
    }

    // Two blocks per step while a block follows them; the last one or two go through SSE2.
    template <bool adjusted>
    static void double_size_yuy2_row(const uint8_t* y0, const uint8_t* y1, const uint8_t* u0, const uint8_t* u1,
                                     const uint8_t* v0, const uint8_t* v1, uint8_t* dst, uint32_t blocks,
                                     const AdjustConstants& a) {
        const x86w::Lanes l = x86w::lanes(a);
        uint32_t i = 0;
        for (; i + 2 < blocks; i += 2, y0 += 32, y1 += 32, u0 += 16, u1 += 16, v0 += 16, v1 += 16, dst += 128) {
            __m256i y_odd, u_odd, v_odd;
            const __m256i y = x86sw::doubled_pair<adjusted>(y0, y1, false, l.luma_gain, l.luma_offset, y_odd);
            const __m256i u = x86sw::doubled_pair<adjusted>(u0, u1, true, l.chroma_gain, l.u_offset, u_odd);
            const __m256i v = x86sw::doubled_pair<adjusted>(v0, v1, true, l.chroma_gain, l.v_offset, v_odd);
            const __m256i hu = _mm256_unpacklo_epi8(u, u_odd), hv = _mm256_unpacklo_epi8(v, v_odd);
            const __m256i uv_lo = _mm256_unpacklo_epi8(hu, hv), uv_hi = _mm256_unpackhi_epi8(hu, hv);
            const __m256i y_lo = _mm256_unpacklo_epi8(y, y_odd), y_hi = _mm256_unpackhi_epi8(y, y_odd);
            x86w::store_lanes(dst, dst + 64, _mm256_unpacklo_epi8(y_lo, uv_lo), _mm256_unpackhi_epi8(y_lo, uv_lo));
            x86w::store_lanes(dst + 32, dst + 96, _mm256_unpacklo_epi8(y_hi, uv_hi), _mm256_unpackhi_epi8(y_hi, uv_hi));
        }
        Sse2Stretch::double_size_yuy2_row<adjusted>(y0, y1, u0, u1, v0, v1, dst, blocks - i, a);
    }

    // 32 source bytes per step, each loaded and adjusted once, the neighbours taken from the
    // next 32; the row's last 32 go through SSE2.
    template <bool adjusted>
    static void double_yuy2_rows(const uint8_t* const src[3], uint8_t* const dst[4], int pixels,
                                 const AdjustConstants& a) {
        const x86w::Lanes l = x86w::lanes(a);
        const __m256i uv_offset = _mm256_unpacklo_epi16(l.u_offset, l.v_offset);
        auto load = [&](const uint8_t* p) { return adjusted ? x86sw::adjust_yuy2(x86sw::load32(p), l, uv_offset) : x86sw::load32(p); };
        auto doubled = [](__m256i s, __m256i next, __m256i& first, __m256i& second) {
            const __m256i t = _mm256_permute2x128_si256(s, next, 0x21);  // s's high lane, next's low lane
            x86sw::doubled_yuy2(s, _mm256_alignr_epi8(t, s, 2), _mm256_alignr_epi8(t, s, 4), first, second);
        };
        const int bytes = 2 * pixels;
        int i = 0;
        if (bytes > 32) {
            __m256i s[3] = {load(src[0]), load(src[1]), load(src[2])};
            for (; i + 32 < bytes; i += 32) {
                __m256i d[3][2];
                for (int k = 0; k < 3; ++k) {
                    const __m256i next = load(src[k] + i + 32);
                    doubled(s[k], next, d[k][0], d[k][1]);
                    s[k] = next;
                }
                for (int h = 0; h < 2; ++h) {
                    x86sw::store32(dst[0] + 2 * i + 32 * h, d[0][h]);
                    x86sw::store32(dst[1] + 2 * i + 32 * h, _mm256_avg_epu8(d[0][h], d[1][h]));
                    x86sw::store32(dst[2] + 2 * i + 32 * h, d[1][h]);
                    x86sw::store32(dst[3] + 2 * i + 32 * h, _mm256_avg_epu8(d[1][h], d[2][h]));
                }
            }
        }
        const uint8_t* const rest_src[3] = {src[0] + i, src[1] + i, src[2] + i};
        uint8_t* const rest_dst[4] = {dst[0] + 2 * i, dst[1] + 2 * i, dst[2] + 2 * i, dst[3] + 2 * i};
        Sse2Stretch::double_yuy2_rows<adjusted>(rest_src, rest_dst, (bytes - i) / 2, a);
    }

    static void average_adjust(const uint8_t* a, const uint8_t* b, uint8_t* dst, int n, int16_t gain, int16_t offset) {
        const __m256i g = _mm256_set1_epi16(gain), o = _mm256_set1_epi16(offset);
        int i = 0;
        for (; i + 32 <= n; i += 32)
            x86sw::store32(dst + i, x86w::adjust_bytes(_mm256_avg_epu8(x86sw::load32(a + i), x86sw::load32(b + i)), g, o));
        if (i < n) Sse2Stretch::average_adjust(a + i, b + i, dst + i, n - i, gain, offset);
    }

    // Samples dealt to the lanes as in double_pair.
    static void double_adjust(const uint8_t* a, const uint8_t* b, uint8_t* dst, int n, int16_t gain, int16_t offset) {
        const __m256i g = _mm256_set1_epi16(gain), o = _mm256_set1_epi16(offset);
        auto dealt = [](const uint8_t* p) { return _mm256_permute4x64_epi64(x86sw::load32(p), 0xD8); };
        int i = 0;
        for (; i + 32 <= n; i += 32) {
            const __m256i a0 = dealt(a + i), b0 = dealt(b + i);
            const __m256i even = _mm256_avg_epu8(a0, b0);
            const __m256i odd = _mm256_avg_epu8(_mm256_avg_epu8(a0, dealt(a + i + 1)), _mm256_avg_epu8(b0, dealt(b + i + 1)));
            x86sw::store32(dst + 2 * i, x86w::adjust_bytes(_mm256_unpacklo_epi8(even, odd), g, o));
            x86sw::store32(dst + 2 * i + 32, x86w::adjust_bytes(_mm256_unpackhi_epi8(even, odd), g, o));
        }
        if (i < n) Sse2Stretch::double_adjust(a + i, b + i, dst + 2 * i, n - i, gain, offset);
    }

    // 32 pixels per step, dealt to the lanes as 0-7, 16-23 and 8-15, 24-31 so that each
    // interleave yields 32 bytes in row order; an odd block is left to SSE2.
    static void join_yuy2_averaged(const uint8_t* y0, const uint8_t* y1, const uint8_t* u0, const uint8_t* u1,
                                   const uint8_t* v0, const uint8_t* v1, uint8_t* dst, int pixels) {
        int p = 0;
        for (; p + 32 <= pixels; p += 32) {
            const __m256i y = _mm256_permute4x64_epi64(_mm256_avg_epu8(x86sw::load32(y0 + p), x86sw::load32(y1 + p)), 0xD8);
            const __m128i u = _mm_avg_epu8(x86::load16(u0 + p / 2), x86::load16(u1 + p / 2));
            const __m128i v = _mm_avg_epu8(x86::load16(v0 + p / 2), x86::load16(v1 + p / 2));
            const __m128i uv_lo = _mm_unpacklo_epi8(u, v), uv_hi = _mm_unpackhi_epi8(u, v);
            const __m256i uv = _mm256_set_m128i(_mm_unpackhi_epi64(uv_lo, uv_hi), _mm_unpacklo_epi64(uv_lo, uv_hi));
            x86sw::store32(dst + 2 * p, _mm256_unpacklo_epi8(y, uv));
            x86sw::store32(dst + 2 * p + 32, _mm256_unpackhi_epi8(y, uv));
        }
        if (p < pixels)
            Sse2Stretch::join_yuy2_averaged(y0 + p, y1 + p, u0 + p / 2, u1 + p / 2, v0 + p / 2, v1 + p / 2, dst + 2 * p,
                                            pixels - p);
    }

    // 32 samples per step, dealt to the lanes as 0-7, 16-23 and 8-15, 24-31 so that each
    // interleave yields 32 bytes in row order.
    static void double_pair(const uint8_t* above, const uint8_t* below, uint8_t* copy, uint8_t* between, int n) {
        auto dealt = [](const uint8_t* p) { return _mm256_permute4x64_epi64(x86sw::load32(p), 0xD8); };
        int i = 0;
        for (; i + 32 < n; i += 32) {
            const __m256i a = dealt(above + i), a1 = _mm256_avg_epu8(a, dealt(above + i + 1));
            const __m256i b = dealt(below + i), b1 = _mm256_avg_epu8(b, dealt(below + i + 1));
            const __m256i m = _mm256_avg_epu8(a, b), m1 = _mm256_avg_epu8(a1, b1);
            x86sw::store32(copy + 2 * i, _mm256_unpacklo_epi8(a, a1));
            x86sw::store32(copy + 2 * i + 32, _mm256_unpackhi_epi8(a, a1));
            x86sw::store32(between + 2 * i, _mm256_unpacklo_epi8(m, m1));
            x86sw::store32(between + 2 * i + 32, _mm256_unpackhi_epi8(m, m1));
        }
        Sse2Stretch::double_pair(above + i, below + i, copy + 2 * i, between + 2 * i, n - i);
    }

    // Sixteen positions at a time, reading what the SSE2 version reads for them.
    static void edge_interpolate(const uint8_t* a, const uint8_t* b, uint8_t* dst, int n) {
        int x = 0;
        for (; x + 16 <= n; x += 16) {
            const x86sw::Around ra{x86sw::load_pair(a + x - 4), x86sw::load_pair(a + x)};
            const x86sw::Around rb{x86sw::load_pair(b + x - 4), x86sw::load_pair(b + x)};
            _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + x), x86sw::edge_interpolate_16(ra, rb));
        }
        if (x < n) Sse2Stretch::edge_interpolate(a + x, b + x, dst + x, n - x);
    }
};

}  // namespace
}  // namespace dispconv::simd
