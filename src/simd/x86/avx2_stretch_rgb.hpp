// The AVX2 double-height RGB rows kept beside the vector vocabulary: the one written over the
// primitives measured 25-40% slower here (both sizes, every RGB format). Listed in avx2.hpp.
#pragma once

#include <immintrin.h>

#include "simd/vector/stretch.hpp"
#include "simd/x86/avx2_ops.hpp"

namespace dispconv::simd {
namespace {
namespace avx2_stretch {

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

}  // namespace avx2_stretch

struct Avx2StretchRgb {
    // Two 16-pixel blocks per step. For the 32- and 16-bit surfaces the pixels are dealt to
    // the lanes so that each lane's interleaved output is already a run of the row (no lane
    // crossing per store); 24-bit keeps one block per lane. An odd block goes to 128 bits.
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
            return x86w::adjust_chroma_words(avx2_stretch::dealt_chroma_words<bpp>(p), l.chroma_gain, offset);
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
            VectorStretch<Vec<16>>::rgb_double_rows<Format>(top + i, bottom + i, next + i, u0 + i / 2, u1 + i / 2, v0 + i / 2,
                                                            v1 + i / 2, rest, pixels - i, a, layout);
        }
    }

};

}  // namespace
}  // namespace dispconv::simd
