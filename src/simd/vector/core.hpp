// Run operations shared by every family, on vectors of any width: adjust, average, YUY2 split
// and join, YUV to RGB. A vector step of width W covers W luma samples (W / 16 blocks of 16
// pixels, one per 128-bit lane); tails go through the narrower widths to the reference.
#pragma once

#include "simd/generic/arith.hpp"
#include "simd/portable.hpp"
#include "simd/vec.hpp"

namespace dispconv::simd { namespace {

// Words holding bytes, adjusted and clamped as the narrowing to bytes would when Adjust says so
// (`biased`: the offset as AdjustVec biases it).
template <class Adjust, class V>
DISPCONV_VECTOR_INLINE V adjusted_words(V w, V gain, V biased) {
    if constexpr (Adjust::enabled) return adjust_clamped(w, gain, biased);
    else return w;
}

// Samples widened to words as Adjust takes them: with small gains in each word's high byte
// (adjust_clamped_high), otherwise in its low byte. The first from each lane's low 8 bytes, the
// second from its high 8, the third from the low byte of each word.
template <class Adjust, class V>
DISPCONV_VECTOR_INLINE V sample_words_lo(V bytes) {
    if constexpr (Adjust::small_gains) return unpacklo_u8(V::zero(), bytes);
    else return unpacklo_u8(bytes, V::zero());
}
template <class Adjust, class V>
DISPCONV_VECTOR_INLINE V sample_words_hi(V bytes) {
    if constexpr (Adjust::small_gains) return unpackhi_u8(V::zero(), bytes);
    else return unpackhi_u8(bytes, V::zero());
}
template <class Adjust, class V>
DISPCONV_VECTOR_INLINE V sample_words_even(V words) {
    if constexpr (Adjust::small_gains) return slli_i16<8>(words);
    else return words & low_bytes_mask<V>();
}
// Words from the sample_words helpers adjusted and clamped as Adjust says: lumas (Chroma false)
// or chroma samples with the offset `biased`.
template <class Adjust, bool Chroma = false, class V>
DISPCONV_VECTOR_INLINE V adjusted_samples(V w, const AdjustVec<V>& l, V biased) {
    if constexpr (Adjust::small_gains) return adjust_clamped_high(w, Chroma ? l.chroma_gain4 : l.luma_gain4, biased);
    else return adjusted_words<Adjust>(w, Chroma ? l.chroma_gain : l.luma_gain, biased);
}

// One vector of pixels placed by deal<pixel_group<Format>>, lumas as words from the
// sample_words helpers, converted and stored: the luma half of every RGB-writing row operation.
template <class Format, class Adjust, class V>
DISPCONV_VECTOR_INLINE void store_luma_words(uint8_t* d, V y_lo, V y_hi, const ChromaVec<V>& c, const AdjustVec<V>& l,
                      const Rgb16Vec<V>& layout) {
    store_rgb<Format>(d, luma_words_to_rgb(adjusted_samples<Adjust>(y_lo, l, l.luma_biased),
                                           adjusted_samples<Adjust>(y_hi, l, l.luma_biased), c),
                      layout);
}

// The chroma terms of one vector of planar pixels placed by deal<pixel_group<Format>>. Plain,
// with byte shuffles, the chroma comes as words per pixel (shuffles for the repeats instead of
// unpacks after the multiplies); otherwise the samples are adjusted and the terms worked out
// per chroma sample and repeated, half the arithmetic.
template <class Format, class Adjust, class V>
DISPCONV_VECTOR_INLINE ChromaVec<V> planar_chroma_terms(const uint8_t* u, const uint8_t* v, const AdjustVec<V>& l) {
    constexpr int g = pixel_group<Format>;
    if constexpr (has_byte_shuffle && !Adjust::enabled) {
        V u_lo, u_hi, v_lo, v_hi;
        V::template load_pixel_chroma<g>(u, u_lo, u_hi);
        V::template load_pixel_chroma<g>(v, v_lo, v_hi);
        return pixel_chroma_words(u_lo, u_hi, v_lo, v_hi);
    } else {
        // Widened first: each group's samples then take as many bytes as its pixels, so the
        // lumas' deal places them.
        const V uu = deal<g>(V::load_half_words(u)), vv = deal<g>(V::load_half_words(v));
        return chroma_terms(adjusted_words<Adjust>(uu, l.chroma_gain, l.u_biased), adjusted_words<Adjust>(vv, l.chroma_gain, l.v_biased));
    }
}

// One vector of planar lumas converted with the chroma terms and stored.
template <class Format, class Adjust, class V>
DISPCONV_VECTOR_INLINE void store_planar_rgb(uint8_t* d, const uint8_t* y, const ChromaVec<V>& c, const AdjustVec<V>& l,
                      const Rgb16Vec<V>& layout) {
    const V dealt = deal<pixel_group<Format>>(V::load(y));
    store_luma_words<Format, Adjust>(d, sample_words_lo<Adjust>(dealt), sample_words_hi<Adjust>(dealt), c, l, layout);
}

template <class V>
struct VectorCore : PortableCore {
    static void adjust(const uint8_t* src, uint8_t* dst, int n, int16_t gain, int16_t offset) {
        for_bytes<V>(
            n,
            [=]<class W>(int i) DISPCONV_VECTOR_STEP { W::store(dst + i, adjust_bytes(W::load(src + i), W::set1_i16(gain), W::set1_i16(offset))); },
            [&](int i) { PortableCore::adjust(src + i, dst + i, n - i, gain, offset); });
    }

    static void average(const uint8_t* a, const uint8_t* b, uint8_t* dst, int n) {
        for_bytes<V>(
            n, [=]<class W>(int i) DISPCONV_VECTOR_STEP { W::store(dst + i, average_u8(W::load(a + i), W::load(b + i))); },
            [&](int i) { PortableCore::average(a + i, b + i, dst + i, n - i); });
    }

    static void split_yuy2(const uint8_t* src, uint8_t* y, uint8_t* u, uint8_t* v, int pixels) {
        for_bytes<V>(pixels, [=]<class W>(int p) DISPCONV_VECTOR_STEP {
            W first, second;
            deal_pair<32>(W::load(src + 2 * p), W::load(src + 2 * p + W::bytes), first, second);
            const Yuy2Planes<W> s = simd::split_yuy2(first, second);
            W::store(y + p, s.y), store_low_halves(u + p / 2, s.u), store_low_halves(v + p / 2, s.v);
        },
        [&](int p) { PortableCore::split_yuy2(src + 2 * p, y + p, u + p / 2, v + p / 2, pixels - p); });
    }

    static void join_yuy2(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* dst, int pixels) {
        for_bytes<V>(pixels, [=]<class W>(int p) DISPCONV_VECTOR_STEP {
            W first, second;
            simd::join_yuy2(W::load(y + p), W::load_half(u + p / 2), W::load_half(v + p / 2), first, second);
            store_block_pairs(dst + 2 * p, first, second);
        },
        [&](int p) { PortableCore::join_yuy2(y + p, u + p / 2, v + p / 2, dst + 2 * p, pixels - p); });
    }

    template <class Format>
    static void yuv_to_rgb_store(const uint8_t* y, const uint8_t* u, const uint8_t* v, int pixels, uint8_t* dst,
                                 const Rgb16Layout& layout) {
        constexpr int bpp = Format::bytes_per_pixel;
        for_bytes<V>(pixels, [=]<class W>(int p) DISPCONV_VECTOR_STEP {
            const AdjustVec<W> none{};
            store_planar_rgb<Format, Plain>(dst + p * bpp, y + p, planar_chroma_terms<Format, Plain>(u + p / 2, v + p / 2, none),
                                            none, rgb16_vec<W>(layout));
        },
        [&](int p) { PortableCore::yuv_to_rgb_store<Format>(y + p, u + p / 2, v + p / 2, pixels - p, dst + p * bpp, layout); });
    }
};

} }  // namespace dispconv::simd
