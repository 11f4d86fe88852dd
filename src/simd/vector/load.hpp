// Row operations of the frame-loading kernels on vectors of any width: one pass over each
// vector of pixels, nothing through memory. A row is walked in units of 16 bytes of its first
// source (for_blocks), one unit per 128-bit lane; pixels bound for RGB are dealt to the lanes
// as the destination format's stores want them (see pixel_group).
#pragma once

#include "simd/portable/load.hpp"
#include "simd/vector/core.hpp"

namespace dispconv::simd { namespace {

// Rounded averages of neighbouring byte pairs, as words.
template <class V>
DISPCONV_VECTOR_INLINE V pair_averages(V x) {
    return average_u16(x & low_bytes_mask<V>(), srli_i16<8>(x));
}

// The W / 2 U and V samples at u and v adjusted and interleaved as YUY2 holds them, dealt by 8
// as the lumas they go with: both widened in one load each, adjusted as words, narrowed together.
template <class W>
DISPCONV_VECTOR_INLINE W adjusted_chroma_pairs(const uint8_t* u, const uint8_t* v, const AdjustVec<W>& l) {
    if constexpr (has_byte_shuffle) {
        const W p = packus_i16(adjust_words(W::load_half_words(u), l.chroma_gain, l.u_offset),
                               adjust_words(W::load_half_words(v), l.chroma_gain, l.v_offset));
        static constexpr LaneTable t = lane_table([](int k) { return k / 2 + 8 * (k & 1); });
        return deal<8>(shuffle_u8(p, W::template table<t>()));
    } else {
        // Each plane narrowed on its own, then interleaved. One narrowing for both and an
        // interleave by shift and unpack takes as many operations, but measured 9% slower on
        // full-HD frames.
        return deal<8>(unpacklo_u8(adjust_low_half(W::load_half(u), l.chroma_gain, l.u_offset),
                                   adjust_low_half(W::load_half(v), l.chroma_gain, l.v_offset)));
    }
}
// W lumas at y adjusted and stored as YUY2 with chroma pairs from adjusted_chroma_pairs.
template <class W>
DISPCONV_VECTOR_INLINE void store_yuy2_adjusted(const uint8_t* y, W uv, const AdjustVec<W>& l, uint8_t* d) {
    const W ya = adjust_bytes(deal<8>(W::load(y)), l.luma_gain, l.luma_offset);
    W::store(d, unpacklo_u8(ya, uv)), W::store(d + W::bytes, unpackhi_u8(ya, uv));
}

template <class V>
struct VectorLoad : PortableLoad {
    // Whether the frame loaders take adjust_clamped_high when the gains allow it.
    static constexpr bool small_gain_multiply = has_mulhi_u16;

    // One YUY2 row from the luma of one source row and the chroma of another: 8 pixels a unit.
    template <class Adjust>
    static void yuy2_row_to_yuy2(const uint8_t* luma, const uint8_t* chroma, uint8_t* d, uint32_t units,
                                 const AdjustConstants& a) {
        for_blocks<V>(units, [=]<class W>(size_t i) DISPCONV_VECTOR_STEP {
            const W c = W::load(chroma + 16 * i), y = W::load(luma + 16 * i), m = low_bytes_mask<W>();
            if constexpr (Adjust::enabled) {
                const AdjustVec<W> l = adjust_vec<W>(a);
                const W ca = adjust_clamped(srli_i16<8>(c), l.chroma_gain, l.uv_biased);
                const W ya = adjust_clamped(y & m, l.luma_gain, l.luma_biased);
                W::store(d + 16 * i, ya | slli_i16<8>(ca));
            } else {
                W::store(d + 16 * i, (y & m) | andnot(m, c));
            }
        });
    }

    // Two planar luma rows and one chroma row to RGB: 16 pixels a unit, the chroma terms once
    // for both rows.
    template <class Format, class Adjust>
    static void planar_pair_to_rgb(const uint8_t* y0, const uint8_t* y1, const uint8_t* u, const uint8_t* v,
                                   uint8_t* d0, uint8_t* d1, uint32_t units, const AdjustConstants& a,
                                   const Rgb16Layout& layout) {
        constexpr ptrdiff_t step = 16 * Format::bytes_per_pixel;
        for_blocks<V>(units, [=]<class W>(size_t i) DISPCONV_VECTOR_STEP {
            const AdjustVec<W> l = adjust_vec<W>(a);
            const Rgb16Vec<W> lanes = rgb16_vec<W>(layout);
            const ChromaVec<W> c = planar_chroma_terms<Format, Adjust, W>(u + 8 * i, v + 8 * i, l);
            store_planar_rgb<Format, Adjust>(d0 + i * step, y0 + 16 * i, c, l, lanes);
            store_planar_rgb<Format, Adjust>(d1 + i * step, y1 + 16 * i, c, l, lanes);
        });
    }

    // Two packed rows to RGB: 16 pixels a unit; both rows take the first row's chroma.
    template <class Format, class Adjust>
    static void yuy2_pair_to_rgb(const uint8_t* s0, const uint8_t* s1, uint8_t* d0, uint8_t* d1, uint32_t units,
                                 const AdjustConstants& a, const Rgb16Layout& layout) {
        constexpr ptrdiff_t step = 16 * Format::bytes_per_pixel;
        constexpr int g = 2 * pixel_group<Format>;  // bytes of packed pixels per dealt group
        for_blocks<V>(units, [=]<class W>(size_t i) DISPCONV_VECTOR_STEP {
            const AdjustVec<W> l = adjust_vec<W>(a);
            const Rgb16Vec<W> lanes = rgb16_vec<W>(layout);
            W a0, b0, a1, b1;  // each lane's first and second 8 pixels, as (Y, chroma) words
            deal_pair<g>(W::load(s0 + 32 * i), W::load(s0 + 32 * i + W::bytes), a0, b0);
            deal_pair<g>(W::load(s1 + 32 * i), W::load(s1 + 32 * i + W::bytes), a1, b1);
            ChromaVec<W> c;
            if constexpr (has_byte_madd && !Adjust::enabled) {
                c = packed_chroma_terms(a0, b0);
            } else if constexpr (has_byte_shuffle && !Adjust::enabled) {
                // Each pixel's U (bytes 1, 5, 9, 13 of each lane) and V (3, 7, 11, 15) as words.
                static constexpr LaneTable us = lane_table([](int k) { return k & 1 ? -1 : 1 + 4 * (k / 4); });
                static constexpr LaneTable vs = lane_table([](int k) { return k & 1 ? -1 : 3 + 4 * (k / 4); });
                c = pixel_chroma_words(shuffle_u8(a0, W::template table<us>()), shuffle_u8(b0, W::template table<us>()),
                                       shuffle_u8(a0, W::template table<vs>()), shuffle_u8(b0, W::template table<vs>()));
            } else {
                // Adjusted once per chroma sample, not once per pixel.
                const Yuy2Planes<W> p = split_yuy2(a0, b0);
                c = chroma_terms(adjusted_samples<Adjust, true>(sample_words_lo<Adjust>(p.u), l, l.u_biased),
                                 adjusted_samples<Adjust, true>(sample_words_lo<Adjust>(p.v), l, l.v_biased));
            }
            if constexpr (has_byte_madd && !Adjust::enabled) {
                // Each (Y, chroma) word's luma times four in one multiply-add of its bytes by (4, 0).
                const W four = W::set1_i16(4);
                store_rgb<Format>(d0 + i * step, luma4_words_to_rgb(madd_u8_i8(a0, four), madd_u8_i8(b0, four), c), lanes);
                store_rgb<Format>(d1 + i * step, luma4_words_to_rgb(madd_u8_i8(a1, four), madd_u8_i8(b1, four), c), lanes);
            } else {
                store_luma_words<Format, Adjust>(d0 + i * step, sample_words_even<Adjust>(a0), sample_words_even<Adjust>(b0), c, l, lanes);
                store_luma_words<Format, Adjust>(d1 + i * step, sample_words_even<Adjust>(a1), sample_words_even<Adjust>(b1), c, l, lanes);
            }
        });
    }

    // Two planar luma rows and one chroma row to YUY2: 16 pixels a unit; on the second row the
    // first 8 bytes of every unit are deliberately left unwritten.
    static void planar_pair_to_yuy2_gapped(const uint8_t* y0, const uint8_t* y1, const uint8_t* u, const uint8_t* v,
                                           uint8_t* d0, uint8_t* d1, uint32_t units) {
        // Row 0 whole, row 1 with its gaps, from the unit's chroma interleaved.
        const auto full = [=]<class W>(size_t i, W uv) DISPCONV_VECTOR_STEP {
            const W y = W::load(y0 + 16 * i);
            store_block_pairs(d0 + 32 * i, unpacklo_u8(y, uv), unpackhi_u8(y, uv));
        };
        const auto gapped = [=]<class W>(size_t i, W uv) DISPCONV_VECTOR_STEP {
            const W y = W::load(y1 + 16 * i), first = unpacklo_u8(y, uv), second = unpackhi_u8(y, uv);
            for_lanes<W>([&]<int k>() DISPCONV_VECTOR_STEP {
                uint8_t* block = d1 + 32 * (i + k);
                store_low_halves(block + 8, bsrli<8>(lane<k>(first)));
                Vec<16>::store(block + 16, lane<k>(second));
            });
        };
        const auto chroma = [=]<class W>(size_t i) DISPCONV_VECTOR_STEP {
            return unpacklo_u8(W::load_half(u + 8 * i), W::load_half(v + 8 * i));
        };
        // A pass per row reads the chroma twice (from cache).
        if constexpr (pairs_in_row_passes && V::lanes <= 2) {
            for_blocks<V>(units, [=]<class W>(size_t i) DISPCONV_VECTOR_STEP { full(i, chroma.template operator()<W>(i)); });
            for_blocks<V>(units, [=]<class W>(size_t i) DISPCONV_VECTOR_STEP { gapped(i, chroma.template operator()<W>(i)); });
        } else {
            for_blocks<V>(units, [=]<class W>(size_t i) DISPCONV_VECTOR_STEP {
                const W uv = chroma.template operator()<W>(i);
                full(i, uv);
                gapped(i, uv);
            });
        }
    }

    // One planar row to YUY2, every sample adjusted: 16 pixels a unit.
    static void planar_row_to_yuy2_adjusted(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* d,
                                            uint32_t units, const AdjustConstants& a) {
        for_blocks<V>(units, [=]<class W>(size_t i) DISPCONV_VECTOR_STEP {
            const AdjustVec<W> l = adjust_vec<W>(a);
            store_yuy2_adjusted(y + 16 * i, adjusted_chroma_pairs(u + 8 * i, v + 8 * i, l), l, d + 32 * i);
        });
    }

    // Two planar rows sharing a chroma row to YUY2, every sample adjusted, the chroma once: 16
    // pixels a unit.
    static void planar_pair_to_yuy2_adjusted(const uint8_t* y0, const uint8_t* y1, const uint8_t* u, const uint8_t* v,
                                             uint8_t* d0, uint8_t* d1, uint32_t units, const AdjustConstants& a) {
        for_blocks<V>(units, [=]<class W>(size_t i) DISPCONV_VECTOR_STEP {
            const AdjustVec<W> l = adjust_vec<W>(a);
            const W uv = adjusted_chroma_pairs(u + 8 * i, v + 8 * i, l);
            store_yuy2_adjusted(y0 + 16 * i, uv, l, d0 + 32 * i);
            store_yuy2_adjusted(y1 + 16 * i, uv, l, d1 + 32 * i);
        });
    }

    // One luma row to YUY2 with adjusted luma and every chroma byte 128: 16 pixels a unit.
    static void luma_row_to_grey_yuy2(const uint8_t* y, uint8_t* d, uint32_t units, const AdjustConstants& a) {
        for_blocks<V>(units, [=]<class W>(size_t i) DISPCONV_VECTOR_STEP {
            const AdjustVec<W> l = adjust_vec<W>(a);
            const W ya = adjust_bytes(W::load(y + 16 * i), l.luma_gain, l.luma_offset), grey = W::set1_u8(128);
            store_block_pairs(d + 32 * i, unpacklo_u8(ya, grey), unpackhi_u8(ya, grey));
        });
    }

    // One planar row to half-width YUY2: neighbouring pairs averaged, then adjusted; each unit
    // reads 16 pixels and writes 8.
    static void planar_row_to_half_yuy2(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* d,
                                        uint32_t units, const AdjustConstants& a) {
        for_blocks<V>(units, [=]<class W>(size_t i) DISPCONV_VECTOR_STEP {
            const AdjustVec<W> l = adjust_vec<W>(a);
            const W z = W::zero();
            const W ya = packus_i16(adjust_words(pair_averages(W::load(y + 16 * i)), l.luma_gain, l.luma_offset), z);
            const W ua = packus_i16(adjust_words(pair_averages(W::load_half(u + 8 * i)), l.chroma_gain, l.u_offset), z);
            const W va = packus_i16(adjust_words(pair_averages(W::load_half(v + 8 * i)), l.chroma_gain, l.v_offset), z);
            W::store(d + 16 * i, unpacklo_u8(ya, unpacklo_u8(ua, va)));
        });
    }

    // Out of 2 * out_count bytes, the odd ones (adjusted) or the pair averages.
    static void keep_odd_adjusted(const uint8_t* src, uint8_t* dst, int out_count, int16_t gain, int16_t offset) {
        from_pairs(src, dst, out_count, [=](auto x) {
            using W = decltype(x);
            return adjust_words(srli_i16<8>(x), W::set1_i16(gain), W::set1_i16(offset));
        }, [&](int i) { Portable::keep_odd_adjusted(src + 2 * i, dst + i, out_count - i, gain, offset); });
    }
    static void keep_odd(const uint8_t* src, uint8_t* dst, int out_count) {
        from_pairs(src, dst, out_count, [](auto x) { return srli_i16<8>(x); },
                   [&](int i) { PortableLoad::keep_odd(src + 2 * i, dst + i, out_count - i); });
    }
    static void average_pairs(const uint8_t* src, uint8_t* dst, int out_count) {
        from_pairs(src, dst, out_count, [](auto x) { return pair_averages(x); },
                   [&](int i) { PortableLoad::average_pairs(src + 2 * i, dst + i, out_count - i); });
    }

  private:
    // dst[i] from the byte pair src[2i], src[2i + 1]: `words` turns a vector of pairs into one
    // word each. A last 8 outputs still go as one 128-bit step.
    template <class Words, class Rest>
    static void from_pairs(const uint8_t* src, uint8_t* dst, int out_count, Words words, Rest rest) {
        for_bytes<V>(
            out_count,
            [=]<class W>(int i) DISPCONV_VECTOR_STEP {
                W::store(dst + i, undeal<8>(packus_i16(words(W::load(src + 2 * i)), words(W::load(src + 2 * i + W::bytes)))));
            },
            [&](int i) {
                if (out_count - i >= 8) {
                    const Vec<16> w = words(Vec<16>::load(src + 2 * i));
                    store_low_halves(dst + i, packus_i16(w, w));
                    i += 8;
                }
                if (i < out_count) rest(i);
            });
    }
};

} }  // namespace dispconv::simd
