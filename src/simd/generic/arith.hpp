// The shared arithmetic written once over the primitives, for every vector width: adjust,
// YUV to RGB, the RGB32 interleave and the RGB24 and RGB16 packings, YUY2 split and join, the
// four-row filter, the mix step. Each lane of a vector computes what the scalar definitions
// compute for its samples, so the bytes never depend on the width.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "core/adjust.hpp"
#include "core/rgb16.hpp"
#include "simd/vec.hpp"

namespace dispconv::simd { namespace {

// A vector of any width (keeps these templates from matching other types).
template <class V>
concept Vector = requires { V::lanes; };

// The adjusted word clamped to 0..255 in two steps instead of three (add, min, max): with the
// offset biased by clamp_bias, the signed saturating add stops at 255 + clamp_bias and the
// unsigned saturating subtraction of clamp_bias stops at 0. The shifted product is 0..1023, so
// an offset beyond -1024..255 gives what its end of that range gives, and the sum never wraps.
inline constexpr int16_t clamp_bias = 32767 - 255;
constexpr int16_t biased_offset(int16_t offset) {
    return int16_t((offset < -1024 ? -1024 : offset > 255 ? 255 : offset) + clamp_bias);
}

template <Vector V>
struct AdjustVec {
    V luma_gain, chroma_gain, luma_offset, u_offset, v_offset;
    V luma_gain4, chroma_gain4;  // for adjust_clamped_high
    V luma_gain64, chroma_gain64;  // the same for samples held as sixteen times the byte
    V uv_offset;  // U and V offsets alternating, for chroma interleaved as in YUY2
    V luma_biased, u_biased, v_biased, uv_biased;  // the offsets biased for adjust_clamped
};
template <Vector V>
DISPCONV_VECTOR_INLINE AdjustVec<V> adjust_vec(const AdjustConstants& a) {
    const V u = V::set1_i16(a.u_offset), v = V::set1_i16(a.v_offset);
    const V ub = V::set1_i16(biased_offset(a.u_offset)), vb = V::set1_i16(biased_offset(a.v_offset));
    return {V::set1_i16(a.luma_gain), V::set1_i16(a.chroma_gain), V::set1_i16(a.luma_offset), u, v,
            V::set1_i16(int16_t(4 * a.luma_gain)), V::set1_i16(int16_t(4 * a.chroma_gain)),
            V::set1_i16(int16_t(64 * a.luma_gain)), V::set1_i16(int16_t(64 * a.chroma_gain)), unpacklo_u16(u, v),
            V::set1_i16(biased_offset(a.luma_offset)), ub, vb, unpacklo_u16(ub, vb)};
}

// Adjustment of words holding bytes: product kept to 16 bits, logical shift by 6, offset added
// with signed saturation (narrowing with unsigned saturation is left to the caller).
template <Vector V>
DISPCONV_VECTOR_INLINE V adjust_words(V w, V gain, V offset) {
    return adds_i16(srli_i16<6>(mullo_i16(w, gain)), offset);
}
template <Vector V>
DISPCONV_VECTOR_INLINE V adjust_bytes(V bytes, V gain, V offset) {
    const V z = V::zero();
    return packus_i16(adjust_words(unpacklo_u8(bytes, z), gain, offset), adjust_words(unpackhi_u8(bytes, z), gain, offset));
}
// Bytes in the low half of each lane adjusted, in the low half (the high half repeats them).
template <Vector V>
DISPCONV_VECTOR_INLINE V adjust_low_half(V bytes, V gain, V offset) {
    const V w = adjust_words(unpacklo_u8(bytes, V::zero()), gain, offset);
    return packus_i16(w, w);
}
// Adjusted and clamped to 0..255, as the narrowing to bytes would; `biased` from biased_offset.
template <Vector V>
DISPCONV_VECTOR_INLINE V adjust_clamped(V w, V gain, V biased) {
    return subs_u16(adds_i16(srli_i16<6>(mullo_i16(w, gain)), biased), V::set1_i16(clamp_bias));
}
// The same for a sample held in its word's high byte (the low byte zero), with gain4 four times
// a gain of 0..257: the product then never wraps, so the high half of (sample << 8) * gain4 is
// the shifted product, one multiply where the general form takes a multiply and a shift. A
// sample held as sixteen times itself takes 64 times the gain instead.
template <Vector V>
DISPCONV_VECTOR_INLINE V adjust_clamped_high(V w, V gain4, V biased) {
    return subs_u16(adds_i16(mulhi_u16(w, gain4), biased), V::set1_i16(clamp_bias));
}
template <Vector V>
DISPCONV_VECTOR_INLINE V low_bytes_mask() {
    return V::set1_i16(0x00FF);
}

// The chroma terms of YUV to RGB for 16 pixels per lane, as words: lo for the lane's first 8
// pixels, hi for the last 8.
// The green term g is the U and V terms summed: with samples of 0..255 the sums and the
// differences from the luma term stay far inside 16 bits, so subtracting the sum once gives
// what subtracting each with saturation gives.
template <Vector V>
struct ChromaVec {
    V g_lo, g_hi, bu_lo, bu_hi, rv_lo, rv_hi;
};
// From 8 U and 8 V samples per lane as words, each term repeated for its pixel pair.
template <Vector V>
DISPCONV_VECTOR_INLINE ChromaVec<V> chroma_terms(V u, V v) {
    const V bias = V::set1_i16(128);
    const V cu = sub_i16(u, bias), cv = sub_i16(v, bias);
    const V g = add_i16(mulhi_i16(cu, V::set1_i16(25625)), mulhi_scaled_i16<1>(cv, V::set1_i16(26641)));
    const V bu = mulhi_scaled_i16<3>(cu, V::set1_i16(16532));
    const V rv = mulhi_scaled_i16<2>(cv, V::set1_i16(26149));
    return {unpacklo_u16(g, g), unpackhi_u16(g, g), unpacklo_u16(bu, bu), unpackhi_u16(bu, bu),
            unpacklo_u16(rv, rv), unpackhi_u16(rv, rv)};
}
// The same from 8 U and 8 V bytes in the low half of each lane.
template <Vector V>
DISPCONV_VECTOR_INLINE ChromaVec<V> chroma_words(V u8, V v8) {
    const V z = V::zero();
    return chroma_terms(unpacklo_u8(u8, z), unpacklo_u8(v8, z));
}
// From U and V words already repeated for both pixels of each pair: twice the multiplies, no
// shuffles after them.
template <Vector V>
DISPCONV_VECTOR_INLINE ChromaVec<V> pixel_chroma_words(V u_lo, V u_hi, V v_lo, V v_hi) {
    const V bias = V::set1_i16(128);
    const V gu = V::set1_i16(25625), bu = V::set1_i16(16532), gv = V::set1_i16(26641), rv = V::set1_i16(26149);
    const V cu_lo = sub_i16(u_lo, bias), cu_hi = sub_i16(u_hi, bias);
    const V cv_lo = sub_i16(v_lo, bias), cv_hi = sub_i16(v_hi, bias);
    return {add_i16(mulhi_i16(cu_lo, gu), mulhi_scaled_i16<1>(cv_lo, gv)),
            add_i16(mulhi_i16(cu_hi, gu), mulhi_scaled_i16<1>(cv_hi, gv)),
            mulhi_scaled_i16<3>(cu_lo, bu), mulhi_scaled_i16<3>(cu_hi, bu),
            mulhi_scaled_i16<2>(cv_lo, rv), mulhi_scaled_i16<2>(cv_hi, rv)};
}

// From 16 packed YUY2 pixels per lane as (Y, chroma) words (a: each lane's first 8, b: the
// rest), with a byte multiply-add: the chroma bytes' top bit flipped makes them signed c - 128,
// and one multiply-add by (0, k) bytes takes each pair's scaled U and V into alternate words, so
// one high multiply gives both of a pair's terms. The two green terms are summed by a word
// multiply-add by ones; shuffles repeat each pair's terms for both its pixels. Each product is
// the one chroma_terms takes, so the terms are the same.
template <Vector V>
DISPCONV_VECTOR_INLINE ChromaVec<V> packed_chroma_terms(V a, V b) {
    static constexpr LaneTable low = lane_table([](int k) { return 4 * (k / 4) + k % 2; });
    static constexpr LaneTable high = lane_table([](int k) { return 4 * (k / 4) + 2 + k % 2; });
    const V flip = V::set1_u8(0x80), ones = V::set1_i16(1);
    const V green_scale = V::set1_i32(0x02000100), green_k = V::set1_i32(25625 | 26641 << 16);  // cu, 2cv
    const V bu_rv_scale = V::set1_i32(0x04000800), bu_rv_k = V::set1_i32(16532 | 26149 << 16);  // 8cu, 4cv
    auto terms = [&](V x, V& g, V& bu, V& rv) {
        const V c = x ^ flip;
        g = shuffle_u8(madd_i16(mulhi_i16(madd_u8_i8(green_scale, c), green_k), ones), V::template table<low>());
        const V t = mulhi_i16(madd_u8_i8(bu_rv_scale, c), bu_rv_k);
        bu = shuffle_u8(t, V::template table<low>()), rv = shuffle_u8(t, V::template table<high>());
    };
    ChromaVec<V> c;
    terms(a, c.g_lo, c.bu_lo, c.rv_lo);
    terms(b, c.g_hi, c.bu_hi, c.rv_hi);
    return c;
}

template <Vector V>
struct RgbVec {
    V r, g, b;
};
// From the luma terms ((y - 16) << 2 scaled) of each lane's first and last 8 pixels.
template <Vector V>
DISPCONV_VECTOR_INLINE RgbVec<V> luma_terms_to_rgb(V lo, V hi, const ChromaVec<V>& c) {
    return {packus_i16(adds_i16(lo, c.rv_lo), adds_i16(hi, c.rv_hi)),
            packus_i16(sub_i16(lo, c.g_lo), sub_i16(hi, c.g_hi)),
            packus_i16(adds_i16(lo, c.bu_lo), adds_i16(hi, c.bu_hi))};
}
// From four times the lumas as words: (y - 16) << 2 is 4y - 64, so a source that can scale its
// lumas while widening them saves the shift.
template <Vector V>
DISPCONV_VECTOR_INLINE RgbVec<V> luma4_words_to_rgb(V y4_lo, V y4_hi, const ChromaVec<V>& c) {
    const V black4 = V::set1_i16(64), scale = V::set1_i16(19071);
    return luma_terms_to_rgb(mulhi_i16(sub_i16(y4_lo, black4), scale), mulhi_i16(sub_i16(y4_hi, black4), scale), c);
}
// From lumas as words: the same terms, with the shift left to mulhi_scaled_i16 (one instruction
// on NEON).
template <Vector V>
DISPCONV_VECTOR_INLINE RgbVec<V> luma_words_to_rgb(V y_lo, V y_hi, const ChromaVec<V>& c) {
    const V black = V::set1_i16(16), scale = V::set1_i16(19071);
    return luma_terms_to_rgb(mulhi_scaled_i16<2>(sub_i16(y_lo, black), scale),
                             mulhi_scaled_i16<2>(sub_i16(y_hi, black), scale), c);
}
template <Vector V>
DISPCONV_VECTOR_INLINE RgbVec<V> luma_to_rgb(V y, const ChromaVec<V>& c) {
    const V z = V::zero();
    return luma_words_to_rgb(unpacklo_u8(y, z), unpackhi_u8(y, z), c);
}

// Each lane's 16 pixels as RGB32 (B, G, R, 0): four vectors of 4 pixels per lane, in order.
template <Vector V>
struct Rgb32Quads {
    V q0, q1, q2, q3;
};
template <Vector V>
DISPCONV_VECTOR_INLINE Rgb32Quads<V> interleave_rgb32(const RgbVec<V>& c) {
    const V z = V::zero();
    const V bg_lo = unpacklo_u8(c.b, c.g), bg_hi = unpackhi_u8(c.b, c.g);
    const V r0_lo = unpacklo_u8(c.r, z), r0_hi = unpackhi_u8(c.r, z);
    return {unpacklo_u16(bg_lo, r0_lo), unpackhi_u16(bg_lo, r0_lo), unpacklo_u16(bg_hi, r0_hi), unpackhi_u16(bg_hi, r0_hi)};
}

// Each lane's 16 pixels as the 48 bytes of their RGB24 run, in three vectors.
template <Vector V>
struct Rgb24Parts {
    V p0, p1, p2;
};
template <Vector V>
DISPCONV_VECTOR_INLINE Rgb24Parts<V> pack_rgb24(const RgbVec<V>& c) {
    if constexpr (has_byte_shuffle) {
        // Output byte j of the run is channel j % 3 (B, G, R) of pixel j / 3.
        auto part = [&c](auto tag) {
            constexpr int first = 16 * decltype(tag)::value;
            static constexpr LaneTable b = lane_table([](int i) { return (first + i) % 3 == 0 ? (first + i) / 3 : -1; });
            static constexpr LaneTable g = lane_table([](int i) { return (first + i) % 3 == 1 ? (first + i) / 3 : -1; });
            static constexpr LaneTable r = lane_table([](int i) { return (first + i) % 3 == 2 ? (first + i) / 3 : -1; });
            return shuffle_u8(c.b, V::template table<b>()) | shuffle_u8(c.g, V::template table<g>()) | shuffle_u8(c.r, V::template table<r>());
        };
        return {part(std::integral_constant<int, 0>{}), part(std::integral_constant<int, 1>{}),
                part(std::integral_constant<int, 2>{})};
    } else {
        // Without byte shuffles: pixel pairs squeezed to 6 bytes per 64-bit half (the halves
        // holding pairs k and k + 4), then the output's 64-bit words assembled by 64-bit shifts.
        const Rgb32Quads<V> p = interleave_rgb32(c);
        const V low3 = V::set1_i64(0x0000000000FFFFFF), next3 = V::set1_i64(0x0000FFFFFF000000);
        auto squeeze = [&](V q) { return (q & low3) | (srli_i64<8>(q) & next3); };
        const V x = squeeze(unpacklo_u64(p.q0, p.q2)), y = squeeze(unpackhi_u64(p.q0, p.q2));
        const V z = squeeze(unpacklo_u64(p.q1, p.q3)), w = squeeze(unpackhi_u64(p.q1, p.q3));
        const V q03 = x | slli_i64<48>(y);
        const V q14 = srli_i64<16>(y) | slli_i64<32>(z);
        const V q25 = srli_i64<32>(z) | slli_i64<16>(w);
        return {unpacklo_u64(q03, q14), merge_u64(q25, q03), unpackhi_u64(q14, q25)};
    }
}

template <Vector V>
struct Rgb16Vec {
    V r_mask, g_mask, b_kept;  // b_kept: the blue mask after the blue shift
    int g_shift, b_shift;
};
template <Vector V>
DISPCONV_VECTOR_INLINE Rgb16Vec<V> rgb16_vec(const Rgb16Layout& l) {
    return {V::set1_u8(l.r_mask), V::set1_u8(l.g_mask), V::set1_u8(uint8_t(l.b_mask >> l.b_shift_right)), l.g_shift_left,
            l.b_shift_right};
}
// Each lane's 16 pixels as 16-bit words: lo its first 8, hi its last 8.
template <Vector V>
struct Rgb16Pair {
    V lo, hi;
};
template <Vector V>
DISPCONV_VECTOR_INLINE Rgb16Pair<V> pack_rgb16(const RgbVec<V>& c, const Rgb16Vec<V>& l) {
    // Blue shifted while still bytes (the mask drops what a 16-bit shift brings in from the next
    // byte), so that one unpack with red makes the low and high byte of each word.
    const V z = V::zero();
    const V r = c.r & l.r_mask, g = c.g & l.g_mask, b = srl_i16(c.b, l.b_shift) & l.b_kept;
    return {unpacklo_u8(b, r) | sll_i16(unpacklo_u8(g, z), l.g_shift), unpackhi_u8(b, r) | sll_i16(unpackhi_u8(g, z), l.g_shift)};
}

// Where a destination format wants its pixels: deal<G> with G the pixels one lane's part of an
// in-lane interleave holds, so that each interleaved vector is a run of the row (RGB24 keeps
// whole 16-pixel blocks per lane and stores them block by block).
template <class Format>
inline constexpr int pixel_group = Format::bytes_per_pixel == 4 ? 4 : Format::bytes_per_pixel == 2 ? 8 : 16;

// One vector of pixels placed by deal<pixel_group<Format>> stored as the next V::bytes pixels.
template <class Format, class V>
DISPCONV_VECTOR_INLINE void store_rgb(uint8_t* d, const RgbVec<V>& c, const Rgb16Vec<V>& l) {
    constexpr int W = V::bytes;
    if constexpr (Format::bytes_per_pixel == 4 && has_structure_stores) {
        store_interleaved(d, c.b, c.g, c.r, V::zero());
    } else if constexpr (Format::bytes_per_pixel == 4) {
        const Rgb32Quads<V> q = interleave_rgb32(c);
        V::store(d, q.q0), V::store(d + W, q.q1), V::store(d + 2 * W, q.q2), V::store(d + 3 * W, q.q3);
    } else if constexpr (Format::bytes_per_pixel == 2) {
        const Rgb16Pair<V> w = pack_rgb16(c, l);
        V::store(d, w.lo), V::store(d + W, w.hi);
    } else if constexpr (has_structure_stores) {
        store_interleaved(d, c.b, c.g, c.r);
    } else {
        const Rgb24Parts<V> p = pack_rgb24(c);
        store_block_triples(d, p.p0, p.p1, p.p2);
    }
}

// Lane k's 16 pixels stored as block k of the run: the pixels need no dealing beforehand.
template <class Format, class V>
DISPCONV_VECTOR_INLINE void store_rgb_blocks(uint8_t* d, const RgbVec<V>& c, const Rgb16Vec<V>& l) {
    if constexpr (Format::bytes_per_pixel == 4) {
        // Dealing the three channels takes fewer lane moves than transposing the four
        // interleaved vectors by blocks.
        store_rgb<Format>(d, RgbVec<V>{deal<4>(c.r), deal<4>(c.g), deal<4>(c.b)}, l);
    } else if constexpr (Format::bytes_per_pixel == 2) {
        const Rgb16Pair<V> w = pack_rgb16(c, l);
        store_block_pairs(d, w.lo, w.hi);
    } else {
        store_rgb<Format>(d, c, l);  // RGB24 keeps a block per lane already
    }
}

// Packed YUY2, 16 pixels per lane from two vectors: lumas, and U and V in the low halves.
template <Vector V>
struct Yuy2Planes {
    V y, u, v;
};
// a and b hold each lane's first and second 8 pixels of packed YUY2.
template <Vector V>
DISPCONV_VECTOR_INLINE Yuy2Planes<V> split_yuy2(V a, V b) {
    const V m = low_bytes_mask<V>(), z = V::zero();
    const V c = packus_i16(srli_i16<8>(a), srli_i16<8>(b));
    return {packus_i16(a & m, b & m), packus_i16(c & m, z), packus_i16(srli_i16<8>(c), z)};
}
// Lumas and U and V (low halves) to each lane's 32 bytes of YUY2: first and second halves.
template <Vector V>
DISPCONV_VECTOR_INLINE void join_yuy2(V y, V u, V v, V& first, V& second) {
    const V uv = unpacklo_u8(u, v);
    first = unpacklo_u8(y, uv), second = unpackhi_u8(y, uv);
}

// The four-row filter (5 (b + c) - (a + d)) >> 3 on words holding bytes: the sums stay far
// inside 16 bits, so the saturating steps of the definition never saturate.
template <Vector V>
DISPCONV_VECTOR_INLINE V filter4_words(V a, V b, V c, V d) {
    const V bc = add_i16(b, c);
    return srai_i16<3>(sub_i16(add_i16(bc, slli_i16<2>(bc)), add_i16(a, d)));
}
template <Vector V>
DISPCONV_VECTOR_INLINE V filter4_bytes(V a, V b, V c, V d) {
    const V z = V::zero();
    return packus_i16(filter4_words(unpacklo_u8(a, z), unpacklo_u8(b, z), unpacklo_u8(c, z), unpacklo_u8(d, z)),
                      filter4_words(unpackhi_u8(a, z), unpackhi_u8(b, z), unpackhi_u8(c, z), unpackhi_u8(d, z)));
}

// The blend step on words: (f * (16 - w) + s * w) >> 4, truncated (16 - w never saturates).
template <Vector V>
DISPCONV_VECTOR_INLINE V mix_words(V f, V s, V w) {
    return srli_i16<4>(adds_i16(mullo_i16(f, sub_i16(V::set1_i16(16), w)), mullo_i16(s, w)));
}

// Tails, written once: a row operation states its step for one vector of any width, and these
// run it over the row at the widest width, then at each narrower one down to 128 bits, then
// hand the last bytes (fewer than 16) to the scalar reference. Always inlined: otherwise the
// step's captures stay in memory that every vector store may alias, and are loaded again
// each step.
// The vector of half the width (Vec<16> has none).
template <class V>
struct HalfOf {
    using type = Vec<V::bytes / 2>;
};

// step.template operator()<W>(i) for blocks [i, i + W::lanes) of `blocks` 16-pixel blocks: one
// block per 128-bit lane. Every block is run at some width, so no scalar rest.
template <class V, class Step>
[[gnu::always_inline]] inline void for_blocks(uint32_t blocks, Step&& step, size_t first = 0) {
    // A 64-bit index: offsets from it need no zero extension at every use.
    size_t i = first;
    if constexpr (V::lanes == 1) {
        // Counted down, GCC walks the step's pointers and keeps no index: the 128-bit loops are
        // short enough that two more scalar operations a block cost up to a tenth of the time.
        for (size_t n = blocks - i; n; --n, ++i) step.template operator()<V>(i);
    } else {
        for (; blocks - i >= size_t(V::lanes); i += V::lanes) step.template operator()<V>(i);
        if (i < blocks) for_blocks<typename HalfOf<V>::type>(blocks, step, i);
    }
}

// step.template operator()<W>(i) for bytes [i, i + W::bytes) of n, then rest(i) for the last
// n - i < 16 (nothing when i == n).
template <class V, class Step, class Rest>
[[gnu::always_inline]] inline void for_bytes(int n, Step&& step, Rest&& rest, int first = 0) {
    int i = first;
    for (; n - i >= V::bytes; i += V::bytes) step.template operator()<V>(i);
    if constexpr (V::lanes > 1) return for_bytes<typename HalfOf<V>::type>(n, step, rest, i);
    if (i < n) rest(i);
}

// f.template operator()<k>() for each 128-bit lane k of V, in order.
template <class V, class F>
void for_lanes(F&& f) {
    [&]<int... k>(std::integer_sequence<int, k...>) { (f.template operator()<k>(), ...); }(std::make_integer_sequence<int, V::lanes>{});
}

} }  // namespace dispconv::simd
