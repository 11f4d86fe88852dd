// SSE2 operations of the subpicture kernels; anything not replaced here is the portable one.
// Where the unit is built with SSSE3 (the AVX2 unit), byte shuffles replace shift-and-mask
// sequences; the results are the same.
#pragma once

#include "simd/portable/subpicture.hpp"
#include "simd/x86/sse2_ops.hpp"

namespace dispconv::simd {
namespace {
namespace subpicture_x86 {

using namespace x86;

// a0 + a1, a2 + a3, b0 + b1, b2 + b3 (32-bit lanes).
inline __m128i add_pairs(__m128i a, __m128i b) {
#if defined(__SSSE3__)
    return _mm_hadd_epi32(a, b);
#else
    const __m128 fa = _mm_castsi128_ps(a), fb = _mm_castsi128_ps(b);
    return _mm_add_epi32(_mm_castps_si128(_mm_shuffle_ps(fa, fb, _MM_SHUFFLE(2, 0, 2, 0))),
                         _mm_castps_si128(_mm_shuffle_ps(fa, fb, _MM_SHUFFLE(3, 1, 3, 1))));
#endif
}

// Pixels 0 and 2 of a and of b: a0, a2, b0, b2.
inline __m128i even_pixels(__m128i a, __m128i b) {
    return _mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), _MM_SHUFFLE(2, 0, 2, 0)));
}

// One output's weights as (blue, green, red, 1024) word quadruples and its bias in the fourth word.
struct OutputLanes {
    __m128i weights, bias;
};
inline OutputLanes output_lanes(const SubpictureWeights& w) {
    return {_mm_setr_epi16(w.blue, w.green, w.red, 1024, w.blue, w.green, w.red, 1024),
            _mm_setr_epi16(0, 0, 0, w.bias, 0, 0, 0, w.bias)};
}
struct ConvertLanes {
    OutputLanes y, u, v;
};
inline ConvertLanes convert_lanes() {
    return {output_lanes(subpicture_y), output_lanes(subpicture_u), output_lanes(subpicture_v)};
}

// Four (b, g, r, x) pixels: the multiply-add in 16-bit pairs, the pair sums added and
// shifted right arithmetically by 10.
inline __m128i sums4(__m128i px, const OutputLanes& o) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i lo = _mm_madd_epi16(_mm_or_si128(_mm_unpacklo_epi8(px, zero), o.bias), o.weights);
    const __m128i hi = _mm_madd_epi16(_mm_or_si128(_mm_unpackhi_epi8(px, zero), o.bias), o.weights);
    return _mm_srai_epi32(add_pairs(lo, hi), 10);
}

// Eight expanded pixels (q0: 0 to 3, q1: 4 to 7) to 8 lumas and 4 U and 4 V of the even
// pixels, saturated to 16 bits signed and then to bytes.
inline void store_subpicture_8(__m128i q0, __m128i q1, const ConvertLanes& k, uint8_t* y, uint8_t* u, uint8_t* v) {
    const __m128i yw = _mm_packs_epi32(sums4(q0, k.y), sums4(q1, k.y));
    store8(y, _mm_packus_epi16(yw, yw));
    const __m128i even = even_pixels(q0, q1);
    const __m128i uvw = _mm_packs_epi32(sums4(even, k.u), sums4(even, k.v));
    const __m128i uv = _mm_packus_epi16(uvw, uvw);
    store4(u, uv);
    store4(v, _mm_srli_si128(uv, 4));
}

// Four 3-byte pixels from bytes 0..11 to 32-bit words with a zero top byte.
inline __m128i widen_rgb24_4(__m128i p) {
#if defined(__SSSE3__)
    return _mm_shuffle_epi8(p, _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1));
#else
    const __m128i m = _mm_setr_epi32(0x00FFFFFF, 0, 0, 0);
    return _mm_or_si128(_mm_or_si128(_mm_and_si128(p, m), _mm_and_si128(_mm_slli_si128(p, 1), _mm_slli_si128(m, 4))),
                        _mm_or_si128(_mm_and_si128(_mm_slli_si128(p, 2), _mm_slli_si128(m, 8)),
                                     _mm_and_si128(_mm_slli_si128(p, 3), _mm_slli_si128(m, 12))));
#endif
}

// Byte 2 of each of four 3-byte groups in bytes 0..11, as 32-bit words.
inline __m128i third_bytes_4(__m128i p) {
#if defined(__SSSE3__)
    return _mm_shuffle_epi8(p, _mm_setr_epi8(2, -1, -1, -1, 5, -1, -1, -1, 8, -1, -1, -1, 11, -1, -1, -1));
#else
    return _mm_srli_epi32(_mm_and_si128(widen_rgb24_4(p), _mm_set1_epi32(0x00FF0000)), 16);
#endif
}

// Eight source pixels of a format widened to (b, g, r, x) words, and whether all are the key.
template <class Format>
inline bool expand_8(const uint8_t* src, __m128i key, __m128i& q0, __m128i& q1) {
    if constexpr (Format::bytes_per_pixel == 2) {
        const __m128i p = load16(src);
        const __m128i bg = _mm_or_si128(_mm_and_si128(_mm_slli_epi16(p, 3), _mm_set1_epi16(0x00F8)),
                                        _mm_and_si128(_mm_slli_epi16(p, 5), _mm_set1_epi16(static_cast<int16_t>(0xFC00))));
        const __m128i r = _mm_and_si128(_mm_srli_epi16(p, 8), _mm_set1_epi16(0x00F8));
        q0 = _mm_unpacklo_epi16(bg, r), q1 = _mm_unpackhi_epi16(bg, r);
        return _mm_movemask_epi8(_mm_cmpeq_epi16(p, key)) == 0xFFFF;
    } else {
        if constexpr (Format::bytes_per_pixel == 4) {
            q0 = load16(src), q1 = load16(src + 16);
        } else {
            // Bytes 0..23 only: the masked fourth byte of the last pixel is never needed.
            q0 = widen_rgb24_4(load16(src));
            q1 = widen_rgb24_4(_mm_srli_si128(load16(src + 8), 4));
        }
        return _mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi32(q0, key), _mm_cmpeq_epi32(q1, key))) == 0xFFFF;
    }
}

template <class Format>
inline __m128i key_lanes(uint32_t key) {
    if constexpr (Format::bytes_per_pixel == 2) return _mm_set1_epi16(static_cast<int16_t>(key));
    return _mm_set1_epi32(static_cast<int32_t>(key));
}

// 16 converted pixels selected by opacity (0: key, 1..127: converted, else zero) and stored.
template <class Format>
inline void select_store_16(uint8_t* d, RgbVectors c, __m128i opacity, const __m128i (&key)[3], const Rgb16Lanes& l) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i is_key = _mm_cmpeq_epi8(opacity, zero), keep = _mm_cmpgt_epi8(opacity, zero);
    if constexpr (Format::bytes_per_pixel == 2) {
        const __m128i r = _mm_and_si128(c.r, l.r_mask), g = _mm_and_si128(c.g, l.g_mask), b = _mm_and_si128(c.b, l.b_mask);
        const __m128i lo = _mm_or_si128(_mm_or_si128(_mm_unpacklo_epi8(zero, r), _mm_sll_epi16(_mm_unpacklo_epi8(g, zero), l.g_shift)),
                                        _mm_srl_epi16(_mm_unpacklo_epi8(b, zero), l.b_shift));
        const __m128i hi = _mm_or_si128(_mm_or_si128(_mm_unpackhi_epi8(zero, r), _mm_sll_epi16(_mm_unpackhi_epi8(g, zero), l.g_shift)),
                                        _mm_srl_epi16(_mm_unpackhi_epi8(b, zero), l.b_shift));
        store16(d, _mm_or_si128(_mm_and_si128(lo, _mm_unpacklo_epi8(keep, keep)),
                                _mm_and_si128(key[0], _mm_unpacklo_epi8(is_key, is_key))));
        store16(d + 16, _mm_or_si128(_mm_and_si128(hi, _mm_unpackhi_epi8(keep, keep)),
                                     _mm_and_si128(key[0], _mm_unpackhi_epi8(is_key, is_key))));
    } else {
        c.b = _mm_or_si128(_mm_and_si128(c.b, keep), _mm_and_si128(key[0], is_key));
        c.g = _mm_or_si128(_mm_and_si128(c.g, keep), _mm_and_si128(key[1], is_key));
        c.r = _mm_or_si128(_mm_and_si128(c.r, keep), _mm_and_si128(key[2], is_key));
        store_rgb_16<Format>(d, c, l);
    }
}

// The key pixel spread over lanes: RGB16 the raw word in key[0]; else blue, green, red bytes.
template <class Format>
inline void key_pixel_lanes(const uint8_t* key, __m128i (&lanes)[3]) {
    if constexpr (Format::bytes_per_pixel == 2) {
        lanes[0] = _mm_set1_epi16(static_cast<int16_t>(key[0] | key[1] << 8));
        lanes[1] = lanes[2] = _mm_setzero_si128();
    } else {
        for (int c = 0; c < 3; ++c) lanes[c] = _mm_set1_epi8(static_cast<char>(key[c]));
    }
}

}  // namespace subpicture_x86

struct Sse2Subpicture : PortableSubpicture {
    template <class Format>
    static void rgb_row_to_subpicture(const uint8_t* src, uint32_t blocks, uint32_t key, uint8_t* y,
                                      uint8_t* u, uint8_t* v) {
        using namespace subpicture_x86;
        const ConvertLanes k = convert_lanes();
        const __m128i key_vec = key_lanes<Format>(key);
        do {
            __m128i q0, q1;
            if (!expand_8<Format>(src, key_vec, q0, q1)) store_subpicture_8(q0, q1, k, y, u, v);
            src += 8 * Format::bytes_per_pixel, y += 8, u += 4, v += 4;
        } while (--blocks != 0);
    }

    template <class Format, class Adjust>
    static void ayuy2_row_to_rgb(const uint8_t* sub_y, const uint8_t* sub_u, const uint8_t* sub_v,
                                 const uint8_t* opacity, uint32_t blocks, const uint8_t* key,
                                 const AdjustConstants& a, const Rgb16Layout& layout, uint8_t* image) {
        using namespace subpicture_x86;
        const AdjustLanes l = adjust_lanes(a.luma_gain, a.chroma_gain, a.luma_offset, a.u_offset, a.v_offset);
        const Rgb16Lanes lanes = rgb16_lanes(layout);
        __m128i key_vec[3];
        key_pixel_lanes<Format>(key, key_vec);
        for (uint32_t i = 0; i < blocks; ++i) {
            __m128i y = load16(sub_y), u = load8(sub_u), v = load8(sub_v);
            if constexpr (Adjust::enabled) {
                y = x86::adjust_bytes(y, l.luma_gain, l.luma_offset);
                u = x86::adjust_bytes(u, l.chroma_gain, l.u_offset);
                v = x86::adjust_bytes(v, l.chroma_gain, l.v_offset);
            }
            select_store_16<Format>(image, x86::luma_to_rgb(y, x86::chroma_words(u, v)), load16(opacity), key_vec, lanes);
            sub_y += 16, opacity += 16, sub_u += 8, sub_v += 8, image += 16 * Format::bytes_per_pixel;
        }
    }

    template <int step, int offset, uint8_t mask>
    static void pick_bytes(const uint8_t* src, uint8_t* dst, int n) {
        using namespace x86;
        using subpicture_x86::third_bytes_4;
        int i = 0;
        if constexpr (step == 4 && offset == 0 && mask == 0xFF) {
            const __m128i m = _mm_set1_epi32(0xFF);
            for (; i + 16 <= n; i += 16) {
                const uint8_t* s = src + 4 * i;
                const __m128i a = _mm_packs_epi32(_mm_and_si128(load16(s), m), _mm_and_si128(load16(s + 16), m));
                const __m128i b = _mm_packs_epi32(_mm_and_si128(load16(s + 32), m), _mm_and_si128(load16(s + 48), m));
                store16(dst + i, _mm_packus_epi16(a, b));
            }
            if (i + 8 <= n) {
                const uint8_t* s = src + 4 * i;
                const __m128i a = _mm_packs_epi32(_mm_and_si128(load16(s), m), _mm_and_si128(load16(s + 16), m));
                store8(dst + i, _mm_packus_epi16(a, a));
                i += 8;
            }
        } else if constexpr (step == 2 && offset == 0) {
            const __m128i m = _mm_set1_epi16(mask);
            for (; i + 16 <= n; i += 16)
                store16(dst + i, _mm_packus_epi16(_mm_and_si128(load16(src + 2 * i), m),
                                                  _mm_and_si128(load16(src + 2 * i + 16), m)));
        } else if constexpr (step == 3 && offset == 3 && mask == 0xFF) {
            // Output i is byte 3i + 2 after src + 1: nothing past byte 3n is read.
            for (; i + 16 <= n; i += 16) {
                const uint8_t* s = src + 3 * i + 1;
                const __m128i a = _mm_packs_epi32(third_bytes_4(load16(s)), third_bytes_4(load16(s + 12)));
                const __m128i b = _mm_packs_epi32(third_bytes_4(load16(s + 24)),
                                                  third_bytes_4(_mm_srli_si128(load16(s + 32), 4)));
                store16(dst + i, _mm_packus_epi16(a, b));
            }
            if (i + 8 <= n) {
                const uint8_t* s = src + 3 * i + 1;
                const __m128i a = _mm_packs_epi32(third_bytes_4(load16(s)), third_bytes_4(_mm_srli_si128(load16(s + 8), 4)));
                store8(dst + i, _mm_packus_epi16(a, a));
                i += 8;
            }
        }
        if (i < n) PortableSubpicture::pick_bytes<step, offset, mask>(src + step * i, dst + i, n - i);
    }

    template <int step>
    static void spread_bytes(const uint8_t* src, uint8_t* dst, int n) {
        using namespace x86;
        const __m128i zero = _mm_setzero_si128();
        int i = 0;
        for (; i + 16 <= n; i += 16) {
            const __m128i a = load16(src + i);
            const __m128i lo = _mm_unpacklo_epi8(a, zero), hi = _mm_unpackhi_epi8(a, zero);
            uint8_t* d = dst + step * i;
            if constexpr (step == 2) {
                store16(d, lo), store16(d + 16, hi);
            } else {
                const Rgb32Vectors p = {_mm_unpacklo_epi16(lo, zero), _mm_unpackhi_epi16(lo, zero),
                                        _mm_unpacklo_epi16(hi, zero), _mm_unpackhi_epi16(hi, zero)};
                if constexpr (step == 4) store16(d, p.p0), store16(d + 16, p.p1), store16(d + 32, p.p2), store16(d + 48, p.p3);
                else store_rgb24_16(d, p);
            }
        }
        if (i < n) PortableSubpicture::spread_bytes<step>(src + i, dst + step * i, n - i);
    }

    static void fill_pattern(uint8_t* dst, const uint8_t* pattern, int pattern_bytes, int n) {
        using namespace x86;
        int i = 0;
        if (pattern_bytes == 8 && std::memcmp(pattern, pattern + 4, 4) == 0) {
            // A key that repeats every 4 bytes: a string store measured faster than vector
            // stores here.
            uint32_t word;
            std::memcpy(&word, pattern, 4);
            size_t words = size_t(n) / 4;
            uint8_t* d = dst;
            asm volatile("rep stosl" : "+D"(d), "+c"(words) : "a"(word) : "memory");
            i = n & ~3;
        } else if (pattern_bytes == 8) {
            const __m128i p = _mm_unpacklo_epi64(load8(pattern), load8(pattern));
            for (; i + 16 <= n; i += 16) store16(dst + i, p);
        } else if (pattern_bytes == 24) {
            const __m128i p0 = load16(pattern), p1 = _mm_unpacklo_epi64(load8(pattern + 16), load8(pattern));
            const __m128i p2 = load16(pattern + 8);
            for (; i + 48 <= n; i += 48) store16(dst + i, p0), store16(dst + i + 16, p1), store16(dst + i + 32, p2);
        }
        if (i < n) PortableSubpicture::fill_pattern(dst + i, pattern, pattern_bytes, n - i);
    }

    static void replace_marked(const uint8_t* mask, uint8_t marker, uint8_t key, uint8_t* dst, int n) {
        using namespace x86;
        const __m128i m = _mm_set1_epi8(static_cast<char>(marker)), k = _mm_set1_epi8(static_cast<char>(key));
        int i = 0;
        for (; i + 16 <= n; i += 16) {
            const __m128i hit = _mm_cmpeq_epi8(load16(mask + i), m);
            store16(dst + i, _mm_or_si128(_mm_and_si128(hit, k), _mm_andnot_si128(hit, load16(dst + i))));
        }
        if (i < n) PortableSubpicture::replace_marked(mask + i, marker, key, dst + i, n - i);
    }
};

}  // namespace
}  // namespace dispconv::simd
