// SSE2 operations of the stretch kernels; anything not replaced here is the portable one.
#pragma once

#include "simd/portable/stretch.hpp"
#include "simd/x86/sse2_ops.hpp"

namespace dispconv::simd {
namespace {
namespace x86s {

using x86::load16;
using x86::load8;
using x86::store16;
using x86::store8;

// The four-row filter on 8 words: (5 (b + c) - (a + d)) >> 3. The sums stay far inside 16
// bits, so the saturating steps of the definition never saturate.
inline __m128i filter4_words(__m128i a, __m128i b, __m128i c, __m128i d) {
    const __m128i bc = _mm_add_epi16(b, c);
    return _mm_srai_epi16(_mm_sub_epi16(_mm_add_epi16(bc, _mm_slli_epi16(bc, 2)), _mm_add_epi16(a, d)), 3);
}
inline __m128i filter4_bytes(__m128i a, __m128i b, __m128i c, __m128i d) {
    const __m128i z = _mm_setzero_si128();
    return _mm_packus_epi16(
        filter4_words(_mm_unpacklo_epi8(a, z), _mm_unpacklo_epi8(b, z), _mm_unpacklo_epi8(c, z), _mm_unpacklo_epi8(d, z)),
        filter4_words(_mm_unpackhi_epi8(a, z), _mm_unpackhi_epi8(b, z), _mm_unpackhi_epi8(c, z), _mm_unpackhi_epi8(d, z)));
}

// `s` moved down one byte with `next` in the top byte (of 16, or of the low 8 when `low8`).
inline __m128i shifted_in(__m128i s, uint8_t next, bool low8) {
    if (low8) {
        const __m128i t = _mm_srli_epi64(s, 8);
        return _mm_insert_epi16(t, (_mm_extract_epi16(t, 3) & 0xFF) | (next << 8), 3);
    }
    const __m128i t = _mm_srli_si128(s, 1);
    return _mm_insert_epi16(t, (_mm_extract_epi16(t, 7) & 0xFF) | (next << 8), 7);
}

// `s` moved down one byte with its own top byte repeated (of 16, or of the low 8 when `low8`).
inline __m128i shifted_edge(__m128i s, bool low8) {
    if (low8) return _mm_or_si128(_mm_srli_epi64(s, 8), _mm_and_si128(s, _mm_setr_epi32(0, int(0xFF000000), 0, 0)));
    return _mm_or_si128(_mm_srli_si128(s, 1), _mm_and_si128(s, _mm_setr_epi32(0, 0, 0, int(0xFF000000))));
}

// One plane's doubled block for double_size_yuy2_row: 16 (or, `low8`, 8) samples at r0, their
// right neighbours from r0 + 1 or, at the right edge, the last sample; averaged with the same
// of r1 where r1 is another row. Returns the doubled samples' even and odd halves.
struct Doubled {
    __m128i even, odd;
};
template <bool adjusted>
inline Doubled doubled_block(const uint8_t* r0, const uint8_t* r1, bool low8, bool edge, __m128i gain, __m128i offset) {
    auto load = [&](const uint8_t* p) {
        const __m128i x = low8 ? load8(p) : load16(p);
        return adjusted ? x86::adjust_bytes(x, gain, offset) : x;
    };
    auto one = [&](const uint8_t* r) {
        const __m128i s = load(r);
        return Doubled{s, _mm_avg_epu8(s, edge ? shifted_edge(s, low8) : load(r + 1))};
    };
    const Doubled d = one(r0);
    if (r1 == r0) return d;
    const Doubled e = one(r1);
    return {_mm_avg_epu8(d.even, e.even), _mm_avg_epu8(d.odd, e.odd)};
}

// Packed YUY2 bytes adjusted: luma in the even bytes, U and V alternating in the odd ones.
inline __m128i adjust_yuy2(__m128i x, const x86::AdjustLanes& l) {
    const __m128i y = x86::adjust_words(_mm_and_si128(x, x86::low_bytes_mask()), l.luma_gain, l.luma_offset);
    const __m128i c = x86::adjust_words(_mm_srli_epi16(x, 8), l.chroma_gain, l.uv_offset);
    const __m128i p = _mm_packus_epi16(y, c);  // 8 lumas, then 8 chroma bytes
    return _mm_unpacklo_epi8(p, _mm_srli_si128(p, 8));
}

// Four YUY2 pixel pairs S doubled to eight, given the same row two bytes on (S2, for the next
// luma) and four bytes on (S4, for the next chroma): each pair Y0 U Y1 V becomes
// Y0 U avg(Y0, Y1) V  Y1 avg(U, U') avg(Y1, Y0') avg(V, V'). Returns the low and high 16 bytes.
struct Pair {
    __m128i lo, hi;
};
inline Pair doubled_yuy2(__m128i s, __m128i s2, __m128i s4) {
    const __m128i luma = x86::low_bytes_mask();
    // Per pair: avg(Y0, Y1) avg(U, U') avg(Y1, Y0') avg(V, V').
    const __m128i m = _mm_or_si128(_mm_and_si128(_mm_avg_epu8(s, s2), luma), _mm_andnot_si128(luma, _mm_avg_epu8(s, s4)));
    // Per pair, the first doubled pair is S with M's byte 0 at byte 2, the second M with S's
    // byte 2 at byte 0.
    const __m128i byte2 = _mm_set1_epi32(0x00FF0000), byte0 = _mm_set1_epi32(0xFF);
    const __m128i a = _mm_or_si128(_mm_andnot_si128(byte2, s), _mm_and_si128(_mm_slli_epi32(m, 16), byte2));
    const __m128i b = _mm_or_si128(_mm_andnot_si128(byte0, m), _mm_and_si128(_mm_srli_epi32(s, 16), byte0));
    return {_mm_unpacklo_epi32(a, b), _mm_unpackhi_epi32(a, b)};
}
// S2 and S4 of a row's last 16 bytes: the last pair's next luma is its own Y1, its next
// chroma its own.
inline __m128i edge_next_luma(__m128i s) {
    return _mm_or_si128(_mm_srli_si128(s, 2), _mm_and_si128(s, _mm_setr_epi32(0, 0, 0, 0x00FF0000)));
}
inline __m128i edge_next_chroma(__m128i s) {
    return _mm_or_si128(_mm_srli_si128(s, 4), _mm_and_si128(s, _mm_setr_epi32(0, 0, 0, -1)));
}

inline __m128i abs_diff_bytes(__m128i x, __m128i y) { return _mm_or_si128(_mm_subs_epu8(x, y), _mm_subs_epu8(y, x)); }

// Sums of four neighbouring bytes of `d` (bytes 0..10) as 8 words, sum k = bytes k..k+3.
inline __m128i sums_of_four(__m128i d) {
    const __m128i z = _mm_setzero_si128();
    return _mm_add_epi16(_mm_add_epi16(_mm_unpacklo_epi8(d, z), _mm_unpacklo_epi8(_mm_srli_si128(d, 1), z)),
                         _mm_add_epi16(_mm_unpacklo_epi8(_mm_srli_si128(d, 2), z), _mm_unpacklo_epi8(_mm_srli_si128(d, 3), z)));
}

// The rows around eight positions: `early` holds samples -4 .. 11, `late` 0 .. 15, so every
// direction's eleven samples come from one of them without reading past sample 15.
struct Around {
    __m128i early, late;
};
// Samples d .. d + 15 of a row for offsets -2 .. 2 (the top bytes beyond sample 12 are unused).
inline __m128i at_offset(const Around& r, int d) {
    switch (d) {
        case -2: return _mm_srli_si128(r.early, 2);
        case -1: return _mm_srli_si128(r.early, 3);
        case 0: return r.late;
        case 1: return _mm_srli_si128(r.late, 1);
        default: return _mm_srli_si128(r.late, 2);
    }
}

// Edge-directed interpolation of eight positions (two groups of four) as 8 bytes in the low half.
inline __m128i edge_interpolate_8(const Around& a, const Around& b) {
    __m128i best = _mm_set1_epi16(0x7FFF);
    __m128i averages[5];
    for (int j = 0; j < 5; ++j) {
        const int d = j - 2;
        const __m128i ad = at_offset(a, d), bd = at_offset(b, -d);
        averages[j] = _mm_avg_epu8(ad, bd);
        const __m128i key = _mm_add_epi16(_mm_slli_epi16(sums_of_four(abs_diff_bytes(ad, bd)), 3), _mm_set1_epi16(int16_t(j)));
        best = _mm_min_epi16(best, key);
        if (j == 2) {
            // A group's activity is its first position's vertical cost; quiet groups take j = 2.
            const __m128i cost = _mm_srli_epi16(key, 3);
            const __m128i activity = _mm_shufflehi_epi16(_mm_shufflelo_epi16(cost, 0), 0);
            const __m128i quiet = _mm_cmpgt_epi16(_mm_set1_epi16(33), activity);
            best = _mm_or_si128(_mm_andnot_si128(quiet, best), _mm_and_si128(quiet, _mm_set1_epi16(2)));
        }
    }
    // Quiet lanes hold 2 exactly; searched lanes a key whose low 3 bits are the direction.
    const __m128i j8 = _mm_and_si128(best, _mm_set1_epi16(7));
    const __m128i j_bytes = _mm_packus_epi16(j8, j8);
    __m128i out = _mm_setzero_si128();
    for (int j = 0; j < 5; ++j)
        out = _mm_or_si128(out, _mm_and_si128(_mm_cmpeq_epi8(j_bytes, _mm_set1_epi8(char(j))), averages[j]));
    return out;
}

}  // namespace x86s

struct Sse2Stretch : PortableStretch {
    // One pass per 16 pixels: each source block is loaded and adjusted once, each chroma
    // conversion serves two rows.
    template <class Format>
    static void rgb_double_rows(const uint8_t* top, const uint8_t* bottom, const uint8_t* next,
                                const uint8_t* u0, const uint8_t* u1, const uint8_t* v0,
                                const uint8_t* v1, uint8_t* const dst[4], int pixels,
                                const AdjustConstants& a, const Rgb16Layout& layout) {
        constexpr int bpp = Format::bytes_per_pixel;
        const x86::AdjustLanes l = x86::adjust_lanes(a.luma_gain, a.chroma_gain, a.luma_offset, a.u_offset, a.v_offset);
        const x86::Rgb16Lanes lanes = x86::rgb16_lanes(layout);
        for (int i = 0; i < pixels; i += 16) {
            const __m128i ya = x86::adjust_bytes(x86s::load16(top + i), l.luma_gain, l.luma_offset);
            const __m128i yb = x86::adjust_bytes(x86s::load16(bottom + i), l.luma_gain, l.luma_offset);
            const __m128i yc = x86::adjust_bytes(x86s::load16(next + i), l.luma_gain, l.luma_offset);
            const __m128i ua = x86::adjust_bytes(x86s::load8(u0 + i / 2), l.chroma_gain, l.u_offset);
            const __m128i ub = x86::adjust_bytes(x86s::load8(u1 + i / 2), l.chroma_gain, l.u_offset);
            const __m128i va = x86::adjust_bytes(x86s::load8(v0 + i / 2), l.chroma_gain, l.v_offset);
            const __m128i vb = x86::adjust_bytes(x86s::load8(v1 + i / 2), l.chroma_gain, l.v_offset);
            const x86::ChromaWords c0 = x86::chroma_words(ua, va);
            const x86::ChromaWords c1 = x86::chroma_words(_mm_avg_epu8(ua, ub), _mm_avg_epu8(va, vb));
            x86::store_rgb_16<Format>(dst[0] + i * bpp, x86::luma_to_rgb(ya, c0), lanes);
            x86::store_rgb_16<Format>(dst[1] + i * bpp, x86::luma_to_rgb(_mm_avg_epu8(ya, yb), c0), lanes);
            x86::store_rgb_16<Format>(dst[2] + i * bpp, x86::luma_to_rgb(yb, c1), lanes);
            x86::store_rgb_16<Format>(dst[3] + i * bpp, x86::luma_to_rgb(_mm_avg_epu8(yb, yc), c1), lanes);
        }
    }

    static void filter4(const uint8_t* a, const uint8_t* b, const uint8_t* c, const uint8_t* d, uint8_t* dst, int n) {
        int i = 0;
        for (; i + 16 <= n; i += 16)
            x86s::store16(dst + i, x86s::filter4_bytes(x86s::load16(a + i), x86s::load16(b + i), x86s::load16(c + i),
                                                       x86s::load16(d + i)));
        if (i + 8 <= n)
            x86s::store8(dst + i, x86s::filter4_bytes(x86s::load8(a + i), x86s::load8(b + i), x86s::load8(c + i),
                                                      x86s::load8(d + i))),
                i += 8;
        if (i < n) PortableStretch::filter4(a + i, b + i, c + i, d + i, dst + i, n - i);
    }

    // Reads src[0 .. n-1] only; the sample after the run comes in as `next`.
    static void double_run(const uint8_t* src, uint8_t next, uint8_t* dst, int n) {
        int i = 0;
        for (; i + 16 <= n; i += 16) {
            const __m128i s = x86s::load16(src + i);
            const __m128i right = i + 16 < n ? x86s::load16(src + i + 1) : x86s::shifted_in(s, next, false);
            const __m128i avg = _mm_avg_epu8(s, right);
            x86s::store16(dst + 2 * i, _mm_unpacklo_epi8(s, avg));
            x86s::store16(dst + 2 * i + 16, _mm_unpackhi_epi8(s, avg));
        }
        if (i + 8 == n) {
            const __m128i s = x86s::load8(src + i);
            x86s::store16(dst + 2 * i, _mm_unpacklo_epi8(s, _mm_avg_epu8(s, x86s::shifted_in(s, next, true))));
        } else if (i < n) {
            PortableStretch::double_run(src + i, next, dst + 2 * i, n - i);
        }
    }

    static void average_adjust(const uint8_t* a, const uint8_t* b, uint8_t* dst, int n, int16_t gain, int16_t offset) {
        const __m128i g = _mm_set1_epi16(gain), o = _mm_set1_epi16(offset);
        int i = 0;
        for (; i + 16 <= n; i += 16)
            x86s::store16(dst + i, x86::adjust_bytes(_mm_avg_epu8(x86s::load16(a + i), x86s::load16(b + i)), g, o));
        if (i < n) PortableStretch::average_adjust(a + i, b + i, dst + i, n - i, gain, offset);
    }

    static void double_adjust(const uint8_t* a, const uint8_t* b, uint8_t* dst, int n, int16_t gain, int16_t offset) {
        const __m128i g = _mm_set1_epi16(gain), o = _mm_set1_epi16(offset);
        int i = 0;
        for (; i + 16 <= n; i += 16) {
            const __m128i a0 = x86s::load16(a + i), b0 = x86s::load16(b + i);
            const __m128i even = _mm_avg_epu8(a0, b0);
            const __m128i odd = _mm_avg_epu8(_mm_avg_epu8(a0, x86s::load16(a + i + 1)), _mm_avg_epu8(b0, x86s::load16(b + i + 1)));
            x86s::store16(dst + 2 * i, x86::adjust_bytes(_mm_unpacklo_epi8(even, odd), g, o));
            x86s::store16(dst + 2 * i + 16, x86::adjust_bytes(_mm_unpackhi_epi8(even, odd), g, o));
        }
        if (i < n) PortableStretch::double_adjust(a + i, b + i, dst + 2 * i, n - i, gain, offset);
    }

    // pixels a multiple of 16.
    static void join_yuy2_averaged(const uint8_t* y0, const uint8_t* y1, const uint8_t* u0, const uint8_t* u1,
                                   const uint8_t* v0, const uint8_t* v1, uint8_t* dst, int pixels) {
        for (int p = 0; p < pixels; p += 16)
            x86::join_yuy2_16(dst + 2 * p, _mm_avg_epu8(x86s::load16(y0 + p), x86s::load16(y1 + p)),
                              _mm_avg_epu8(x86s::load8(u0 + p / 2), x86s::load8(u1 + p / 2)),
                              _mm_avg_epu8(x86s::load8(v0 + p / 2), x86s::load8(v1 + p / 2)));
    }

    template <bool adjusted>
    static void double_size_yuy2_row(const uint8_t* y0, const uint8_t* y1, const uint8_t* u0, const uint8_t* u1,
                                     const uint8_t* v0, const uint8_t* v1, uint8_t* dst, uint32_t blocks,
                                     const AdjustConstants& a) {
        const x86::AdjustLanes l = x86::adjust_lanes(a.luma_gain, a.chroma_gain, a.luma_offset, a.u_offset, a.v_offset);
        for (uint32_t i = 0; i < blocks; ++i, y0 += 16, y1 += 16, u0 += 8, u1 += 8, v0 += 8, v1 += 8, dst += 64) {
            const bool edge = i + 1 == blocks;
            const x86s::Doubled y = x86s::doubled_block<adjusted>(y0, y1, false, edge, l.luma_gain, l.luma_offset);
            const x86s::Doubled u = x86s::doubled_block<adjusted>(u0, u1, true, edge, l.chroma_gain, l.u_offset);
            const x86s::Doubled v = x86s::doubled_block<adjusted>(v0, v1, true, edge, l.chroma_gain, l.v_offset);
            const __m128i hu = _mm_unpacklo_epi8(u.even, u.odd), hv = _mm_unpacklo_epi8(v.even, v.odd);
            const __m128i uv_lo = _mm_unpacklo_epi8(hu, hv), uv_hi = _mm_unpackhi_epi8(hu, hv);
            const __m128i y_lo = _mm_unpacklo_epi8(y.even, y.odd), y_hi = _mm_unpackhi_epi8(y.even, y.odd);
            x86s::store16(dst, _mm_unpacklo_epi8(y_lo, uv_lo));
            x86s::store16(dst + 16, _mm_unpackhi_epi8(y_lo, uv_lo));
            x86s::store16(dst + 32, _mm_unpacklo_epi8(y_hi, uv_hi));
            x86s::store16(dst + 48, _mm_unpackhi_epi8(y_hi, uv_hi));
        }
    }

    // 16 source bytes per step, each loaded and adjusted once: the neighbours come from the
    // next 16, or, for the row's last 16, from themselves.
    template <bool adjusted>
    static void double_yuy2_rows(const uint8_t* const src[3], uint8_t* const dst[4], int pixels,
                                 const AdjustConstants& a) {
        const x86::AdjustLanes l = x86::adjust_lanes(a.luma_gain, a.chroma_gain, a.luma_offset, a.u_offset, a.v_offset);
        const int bytes = 2 * pixels;
        auto load = [&](const uint8_t* p) { return adjusted ? x86s::adjust_yuy2(x86s::load16(p), l) : x86s::load16(p); };
        auto doubled = [](__m128i s, __m128i next) {
            return x86s::doubled_yuy2(s, _mm_or_si128(_mm_srli_si128(s, 2), _mm_slli_si128(next, 14)),
                                      _mm_or_si128(_mm_srli_si128(s, 4), _mm_slli_si128(next, 12)));
        };
        auto doubled_edge = [](__m128i s) { return x86s::doubled_yuy2(s, x86s::edge_next_luma(s), x86s::edge_next_chroma(s)); };
        __m128i s[3] = {load(src[0]), load(src[1]), load(src[2])};
        for (int i = 0; i < bytes; i += 16) {
            x86s::Pair d[3];
            if (i + 16 < bytes) {
                for (int k = 0; k < 3; ++k) {
                    const __m128i next = load(src[k] + i + 16);
                    d[k] = doubled(s[k], next), s[k] = next;
                }
            } else {
                for (int k = 0; k < 3; ++k) d[k] = doubled_edge(s[k]);
            }
            x86s::store16(dst[0] + 2 * i, d[0].lo);
            x86s::store16(dst[0] + 2 * i + 16, d[0].hi);
            x86s::store16(dst[1] + 2 * i, _mm_avg_epu8(d[0].lo, d[1].lo));
            x86s::store16(dst[1] + 2 * i + 16, _mm_avg_epu8(d[0].hi, d[1].hi));
            x86s::store16(dst[2] + 2 * i, d[1].lo);
            x86s::store16(dst[2] + 2 * i + 16, d[1].hi);
            x86s::store16(dst[3] + 2 * i, _mm_avg_epu8(d[1].lo, d[2].lo));
            x86s::store16(dst[3] + 2 * i + 16, _mm_avg_epu8(d[1].hi, d[2].hi));
        }
    }

    // Reads n samples of each row: the right neighbours come from the next block while one
    // follows, and the row's last block is doubled with its edge repeated.
    static void double_pair(const uint8_t* above, const uint8_t* below, uint8_t* copy, uint8_t* between, int n) {
        int i = 0;
        for (; i + 16 < n; i += 16) {
            const __m128i a = x86s::load16(above + i), a1 = _mm_avg_epu8(a, x86s::load16(above + i + 1));
            const __m128i b = x86s::load16(below + i), b1 = _mm_avg_epu8(b, x86s::load16(below + i + 1));
            const __m128i m = _mm_avg_epu8(a, b), m1 = _mm_avg_epu8(a1, b1);
            x86s::store16(copy + 2 * i, _mm_unpacklo_epi8(a, a1));
            x86s::store16(copy + 2 * i + 16, _mm_unpackhi_epi8(a, a1));
            x86s::store16(between + 2 * i, _mm_unpacklo_epi8(m, m1));
            x86s::store16(between + 2 * i + 16, _mm_unpackhi_epi8(m, m1));
        }
        double_pair_end(above + i, below + i, copy + 2 * i, between + 2 * i, n - i);
    }

    // The last 1 to 16 samples of double_pair.
    static void double_pair_end(const uint8_t* above, const uint8_t* below, uint8_t* copy, uint8_t* between, int n) {
        if (n <= 0) return;
        uint8_t h[32];
        double_run(above, above[n - 1], copy, n);
        double_run(below, below[n - 1], h, n);
        int i = 0;
        for (; i + 16 <= 2 * n; i += 16) x86s::store16(between + i, _mm_avg_epu8(x86s::load16(copy + i), x86s::load16(h + i)));
        for (; i < 2 * n; ++i) between[i] = avg_u8(copy[i], h[i]);
    }

    // Eight positions at a time; reads a and b from 4 samples before each eight to 16 after
    // their start, inside the rows the caller guarantees (2 before, 5 after) only when n is a
    // multiple of 8 and the row extends 8 samples beyond the run.
    static void edge_interpolate(const uint8_t* a, const uint8_t* b, uint8_t* dst, int n) {
        int x = 0;
        for (; x + 8 <= n; x += 8) {
            const x86s::Around ra{x86s::load16(a + x - 4), x86s::load16(a + x)};
            const x86s::Around rb{x86s::load16(b + x - 4), x86s::load16(b + x)};
            x86s::store8(dst + x, x86s::edge_interpolate_8(ra, rb));
        }
        if (x < n) PortableStretch::edge_interpolate(a + x, b + x, dst + x, n - x);
    }
};

}  // namespace
}  // namespace dispconv::simd
