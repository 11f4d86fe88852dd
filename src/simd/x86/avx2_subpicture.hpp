// AVX2 operations of the subpicture kernels; anything not replaced here is the SSE2 one.
// Two blocks per 256-bit register, one per 128-bit lane, so each lane computes exactly what
// one SSE2 block does.
#pragma once

#include <immintrin.h>

#include "simd/x86/avx2_ops.hpp"
#include "simd/x86/sse2_subpicture.hpp"

namespace dispconv::simd {
namespace {
namespace subpicture_avx2 {

using x86w::load32;
using x86w::store32;
inline __m256i lanes_of(const uint8_t* lane0, const uint8_t* lane1) {
    return _mm256_set_m128i(x86::load16(lane1), x86::load16(lane0));
}

struct OutputLanes {
    __m256i weights, bias;
};
inline OutputLanes widen(const subpicture_x86::OutputLanes& o) {
    return {_mm256_broadcastsi128_si256(o.weights), _mm256_broadcastsi128_si256(o.bias)};
}

inline __m256i sums4(__m256i px, const OutputLanes& o) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i lo = _mm256_madd_epi16(_mm256_or_si256(_mm256_unpacklo_epi8(px, zero), o.bias), o.weights);
    const __m256i hi = _mm256_madd_epi16(_mm256_or_si256(_mm256_unpackhi_epi8(px, zero), o.bias), o.weights);
    return _mm256_srai_epi32(_mm256_hadd_epi32(lo, hi), 10);
}

// Two blocks' widened pixels (lane k: block k) and a mask of which blocks are all key.
template <class Format>
inline int expand_2x8(const uint8_t* src, __m256i key, __m256i& q0, __m256i& q1) {
    if constexpr (Format::bytes_per_pixel == 2) {
        const __m256i p = load32(src);
        const __m256i bg = _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(p, 3), _mm256_set1_epi16(0x00F8)),
                                           _mm256_and_si256(_mm256_slli_epi16(p, 5), _mm256_set1_epi16(static_cast<int16_t>(0xFC00))));
        const __m256i r = _mm256_and_si256(_mm256_srli_epi16(p, 8), _mm256_set1_epi16(0x00F8));
        q0 = _mm256_unpacklo_epi16(bg, r), q1 = _mm256_unpackhi_epi16(bg, r);
        const unsigned m = static_cast<unsigned>(_mm256_movemask_epi8(_mm256_cmpeq_epi16(p, key)));
        return ((m & 0xFFFF) == 0xFFFF) | ((m >> 16) == 0xFFFF) << 1;
    } else {
        if constexpr (Format::bytes_per_pixel == 4) {
            const __m256i a = load32(src), b = load32(src + 32);
            q0 = _mm256_permute2x128_si256(a, b, 0x20), q1 = _mm256_permute2x128_si256(a, b, 0x31);
        } else {
            // Each block's bytes 0..23 only.
            const __m256i widen = _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1,
                                                   0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
            q0 = _mm256_shuffle_epi8(lanes_of(src, src + 24), widen);
            q1 = _mm256_shuffle_epi8(_mm256_srli_si256(lanes_of(src + 8, src + 32), 4), widen);
        }
        const unsigned m = static_cast<unsigned>(
            _mm256_movemask_epi8(_mm256_and_si256(_mm256_cmpeq_epi32(q0, key), _mm256_cmpeq_epi32(q1, key))));
        return ((m & 0xFFFF) == 0xFFFF) | ((m >> 16) == 0xFFFF) << 1;
    }
}

}  // namespace subpicture_avx2

struct Avx2Subpicture : Sse2Subpicture {
    // Two blocks at a time, one per lane.
    template <class Format, class Adjust>
    static void ayuy2_row_to_rgb(const uint8_t* sub_y, const uint8_t* sub_u, const uint8_t* sub_v,
                                 const uint8_t* opacity, uint32_t blocks, const uint8_t* key,
                                 const AdjustConstants& a, const Rgb16Layout& layout, uint8_t* image) {
        constexpr int bpp = Format::bytes_per_pixel;
        const x86w::Lanes l = x86w::lanes(a);
        const x86::Rgb16Lanes lanes = x86::rgb16_lanes(layout);
        const __m256i zero = _mm256_setzero_si256();
        const __m256i kb = _mm256_set1_epi8(static_cast<char>(key[0])), kg = _mm256_set1_epi8(static_cast<char>(key[1])),
                      kr = _mm256_set1_epi8(static_cast<char>(key[2]));
        const __m256i key_word = _mm256_set1_epi16(static_cast<int16_t>(key[0] | key[1] << 8));
        for (; blocks >= 2; blocks -= 2, sub_y += 32, opacity += 32, sub_u += 16, sub_v += 16, image += 32 * bpp) {
            __m256i y = x86w::load32(sub_y), u = x86w::chroma_pair_words(sub_u), v = x86w::chroma_pair_words(sub_v);
            if constexpr (Adjust::enabled) {
                y = x86w::adjust_bytes(y, l.luma_gain, l.luma_offset);
                u = x86w::adjust_chroma_words(u, l.chroma_gain, l.u_offset);
                v = x86w::adjust_chroma_words(v, l.chroma_gain, l.v_offset);
            } else {
                u = _mm256_packus_epi16(u, u), v = _mm256_packus_epi16(v, v);
            }
            x86w::RgbVectors c = x86w::luma_to_rgb(y, x86w::chroma_words(u, v));
            // Opacity 0 takes the key; opacities read as negative bytes give 0.
            const __m256i op = x86w::load32(opacity);
            const __m256i is_key = _mm256_cmpeq_epi8(op, zero), keep = _mm256_cmpgt_epi8(op, zero);
            if constexpr (bpp == 2) {  // the key is a whole 16-bit pixel
                const x86w::Rgb16Words w = x86w::rgb16_words(c, lanes);
                auto select = [&](__m256i px, __m256i k, __m256i kept) {
                    return _mm256_or_si256(_mm256_and_si256(px, kept), _mm256_and_si256(key_word, k));
                };
                x86w::store_lanes(image, image + 32,
                                  select(w.lo, _mm256_unpacklo_epi8(is_key, is_key), _mm256_unpacklo_epi8(keep, keep)),
                                  select(w.hi, _mm256_unpackhi_epi8(is_key, is_key), _mm256_unpackhi_epi8(keep, keep)));
            } else {
                c.b = _mm256_or_si256(_mm256_and_si256(c.b, keep), _mm256_and_si256(kb, is_key));
                c.g = _mm256_or_si256(_mm256_and_si256(c.g, keep), _mm256_and_si256(kg, is_key));
                c.r = _mm256_or_si256(_mm256_and_si256(c.r, keep), _mm256_and_si256(kr, is_key));
                x86w::store_rgb_2x16<Format>(image, c, lanes);
            }
        }
        if (blocks)
            Sse2Subpicture::ayuy2_row_to_rgb<Format, Adjust>(sub_y, sub_u, sub_v, opacity, blocks, key, a, layout, image);
    }

    template <class Format>
    static void rgb_row_to_subpicture(const uint8_t* src, uint32_t blocks, uint32_t key, uint8_t* y,
                                      uint8_t* u, uint8_t* v) {
        using namespace subpicture_avx2;
        constexpr int bpp = Format::bytes_per_pixel;
        const subpicture_x86::ConvertLanes k128 = subpicture_x86::convert_lanes();
        const OutputLanes ky = widen(k128.y), ku = widen(k128.u), kv = widen(k128.v);
        const __m256i key_vec = _mm256_broadcastsi128_si256(subpicture_x86::key_lanes<Format>(key));
        // A count of 0 is the SSE2 walk's 2^32 blocks (caller error).
        for (; blocks >= 2; blocks -= 2, src += 16 * bpp, y += 16, u += 8, v += 8) {
            __m256i q0, q1;
            const int keyed = expand_2x8<Format>(src, key_vec, q0, q1);
            if (keyed == 3) continue;
            const __m256i yw = _mm256_packs_epi32(sums4(q0, ky), sums4(q1, ky));
            const __m256i yb = _mm256_packus_epi16(yw, yw);
            const __m256i even = _mm256_castps_si256(
                _mm256_shuffle_ps(_mm256_castsi256_ps(q0), _mm256_castsi256_ps(q1), _MM_SHUFFLE(2, 0, 2, 0)));
            const __m256i uvw = _mm256_packs_epi32(sums4(even, ku), sums4(even, kv));
            const __m256i uv = _mm256_packus_epi16(uvw, uvw);
            for (int lane = 0; lane < 2; ++lane) {
                if (keyed >> lane & 1) continue;
                const __m128i yl = lane ? _mm256_extracti128_si256(yb, 1) : _mm256_castsi256_si128(yb);
                const __m128i uvl = lane ? _mm256_extracti128_si256(uv, 1) : _mm256_castsi256_si128(uv);
                x86::store8(y + 8 * lane, yl);
                x86::store4(u + 4 * lane, uvl);
                x86::store4(v + 4 * lane, _mm_srli_si128(uvl, 4));
            }
        }
        if (blocks) Sse2Subpicture::rgb_row_to_subpicture<Format>(src, blocks, key, y, u, v);
    }

    static void fill_pattern(uint8_t* dst, const uint8_t* pattern, int pattern_bytes, int n) {
        using namespace subpicture_avx2;
        int i = 0;
        if (pattern_bytes == 8 && std::memcmp(pattern, pattern + 4, 4) == 0) {
            return Sse2Subpicture::fill_pattern(dst, pattern, pattern_bytes, n);
        } else if (pattern_bytes == 8) {
            int64_t word;
            std::memcpy(&word, pattern, 8);
            const __m256i p = _mm256_set1_epi64x(word);
            // Non-temporal stores measured slower here, even on full-HD surfaces: plain stores.
            for (; i + 32 <= n; i += 32) store32(dst + i, p);
        } else if (pattern_bytes == 24) {
            uint8_t period[96];
            for (int k = 0; k < 96; k += 24) std::memcpy(period + k, pattern, 24);
            const __m256i p0 = load32(period), p1 = load32(period + 32), p2 = load32(period + 64);
            for (; i + 96 <= n; i += 96) store32(dst + i, p0), store32(dst + i + 32, p1), store32(dst + i + 64, p2);
        }
        if (i < n) Sse2Subpicture::fill_pattern(dst + i, pattern, pattern_bytes, n - i);
    }

    static void replace_marked(const uint8_t* mask, uint8_t marker, uint8_t key, uint8_t* dst, int n) {
        using namespace subpicture_avx2;
        const __m256i m = _mm256_set1_epi8(static_cast<char>(marker)), k = _mm256_set1_epi8(static_cast<char>(key));
        int i = 0;
        for (; i + 64 <= n; i += 64) {
            const __m256i d0 = load32(dst + i), d1 = load32(dst + i + 32);
            const __m256i h0 = _mm256_cmpeq_epi8(load32(mask + i), m), h1 = _mm256_cmpeq_epi8(load32(mask + i + 32), m);
            store32(dst + i, _mm256_blendv_epi8(d0, k, h0));
            store32(dst + i + 32, _mm256_blendv_epi8(d1, k, h1));
        }
        for (; i + 32 <= n; i += 32)
            store32(dst + i, _mm256_blendv_epi8(load32(dst + i), k, _mm256_cmpeq_epi8(load32(mask + i), m)));
        if (i < n) Sse2Subpicture::replace_marked(mask + i, marker, key, dst + i, n - i);
    }
};

}  // namespace
}  // namespace dispconv::simd
