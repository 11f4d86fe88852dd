// Mix operations on vectors of any width: one 16-pixel block per 128-bit lane, so each lane
// computes what one 128-bit step does. Runs are single rows; the walk decides their order.
#pragma once

#include <cstring>

#include "mix/row.hpp"
#include "simd/vector/core.hpp"

namespace dispconv::simd { namespace {

// The blend step with its words clamped as a narrowing to bytes would (they are never
// negative), ready for the adjustment.
template <class V>
DISPCONV_VECTOR_INLINE V mixed_words(V frame, V sub, V weight) {
    return min_i16(mix_words(frame, sub, weight), V::set1_i16(255));
}
template <class V>
DISPCONV_VECTOR_INLINE V mix_bytes(V frame, V sub, V weight) {
    const V z = V::zero();
    return packus_i16(mix_words(unpacklo_u8(frame, z), unpacklo_u8(sub, z), unpacklo_u8(weight, z)),
                      mix_words(unpackhi_u8(frame, z), unpackhi_u8(sub, z), unpackhi_u8(weight, z)));
}

// The blend's sum of products t = 16 * blend + remainder in the form MixedWords holds: the
// blended byte, or (Sixteenths) sixteen times it, which the small-gain adjustment takes in one
// unsigned high multiply.
template <bool Sixteenths, class V>
DISPCONV_VECTOR_INLINE V blend_form(V t) {
    if constexpr (Sixteenths) return t & V::set1_i16(int16_t(0xFFF0));
    else return srli_i16<4>(t);
}

// A block per lane mixed, as words (see blend_form): y_lo each lane's first 8 lumas, y_hi the
// rest, u and v the block's 8 chroma pairs. Adjusting is left to the store, which knows what it
// needs.
template <class V>
struct MixedWords {
    V y_lo, y_hi, u, v;
};
template <bool PairAverage, bool Sixteenths, class V>
DISPCONV_VECTOR_INLINE MixedWords<V> mix_blocks(const MixRow& s, size_t block) {
    // Offsets scaled from the block index: the chroma one then needs no shift of the luma one.
    const size_t at = 16 * block, half = 8 * block;
    V fy = V::load(s.frame_y + at);
    if (s.frame_y_below) fy = average_u8(fy, V::load(s.frame_y_below + at));
    const V alpha = V::load(s.alpha + at), sy = V::load(s.sub_y + at);
    // The chroma weight of each pixel pair, as a word.
    const V odd = srli_i16<8>(alpha);
    const V w = PairAverage ? average_u16(alpha & low_bytes_mask<V>(), odd) : odd;
    MixedWords<V> m;
    bool luma_done = false;
    // With every opacity inside its range 0..16 nothing can wrap or saturate, and byte
    // multiplies into words (one multiply-add of (frame, sub) pairs by (16 - a, a), or two
    // widening multiplies) give what the word steps give; other opacities take those steps.
    if constexpr (has_byte_madd || has_widening_byte_multiply) {
        const V sixteen = V::set1_u8(16);
        if (!any_above_u8(alpha, sixteen)) {
            const V rest = subs_u8(sixteen, alpha);
            if constexpr (has_byte_madd) {
                m.y_lo = blend_form<Sixteenths>(madd_u8_i8(unpacklo_u8(fy, sy), unpacklo_u8(rest, alpha)));
                m.y_hi = blend_form<Sixteenths>(madd_u8_i8(unpackhi_u8(fy, sy), unpackhi_u8(rest, alpha)));
                // The chroma the same way, each pair's weights as the bytes (16 - w, w) of 255 w + 16.
                const V weights = add_i16(mullo_i16(w, V::set1_i16(255)), V::set1_i16(16));
                auto chroma = [&](const uint8_t* p, const uint8_t* below, const uint8_t* sub) {
                    V c = V::load_half(p + half);
                    if (below) c = average_u8(c, V::load_half(below + half));
                    return blend_form<Sixteenths>(madd_u8_i8(unpacklo_u8(c, V::load_half(sub + half)), weights));
                };
                m.u = chroma(s.frame_u, s.frame_u_below, s.sub_u);
                m.v = chroma(s.frame_v, s.frame_v_below, s.sub_v);
                return m;
            } else {
                m.y_lo = blend_form<Sixteenths>(add_i16(mul_widen_lo_u8(fy, rest), mul_widen_lo_u8(sy, alpha)));
                m.y_hi = blend_form<Sixteenths>(add_i16(mul_widen_hi_u8(fy, rest), mul_widen_hi_u8(sy, alpha)));
                luma_done = true;
            }
        }
    }
    // Otherwise the word steps: for every block that has an opacity out of range, and for the
    // chroma on a set without the byte multiply-add.
    auto mixed = [](V f, V sub, V weight) {
        const V b = mixed_words(f, sub, weight);
        return Sixteenths ? slli_i16<4>(b) : b;
    };
    if (!luma_done) {
        const V z = V::zero();
        m.y_lo = mixed(unpacklo_u8(fy, z), unpacklo_u8(sy, z), unpacklo_u8(alpha, z));
        m.y_hi = mixed(unpackhi_u8(fy, z), unpackhi_u8(sy, z), unpackhi_u8(alpha, z));
    }
    auto chroma = [half](const uint8_t* p, const uint8_t* below) {  // as words
        V c = V::load_half_words(p + half);
        if (below) c = average_u16(c, V::load_half_words(below + half));
        return c;
    };
    m.u = mixed(chroma(s.frame_u, s.frame_u_below), chroma(s.sub_u, nullptr), w);
    m.v = mixed(chroma(s.frame_v, s.frame_v_below), chroma(s.sub_v, nullptr), w);
    return m;
}

// The half mixer's blocks: the odd pixels of 16 mixed and adjusted into 8 YUY2 pixels per
// lane, each chroma pair weighted by the alpha of its second output pixel. A run's first block
// leaves its first chroma byte unread: the kernel never uses it.
template <bool RunStart, class V>
DISPCONV_VECTOR_INLINE V mix_half_blocks(const MixRow& s, size_t block, const AdjustVec<V>& l) {
    const V z = V::zero();
    const size_t at = 16 * block, half = 8 * block;
    auto odd_chroma = [half](const uint8_t* p) {  // as words 0..3 of each lane
        if constexpr (RunStart) {
            // Bytes 1..7 put together in a register: bytes stored one by one and read back as
            // a vector could not be forwarded, a stall at every row.
            uint32_t lo, hi;
            std::memcpy(&lo, p + half + 1, 4), std::memcpy(&hi, p + half + 4, 4);
            return srli_i16<8>(V::set1_i64(int64_t(uint64_t(lo) << 8 | uint64_t(hi) << 32)));
        }
        return srli_i16<8>(V::load_half(p + half));
    };
    const V alpha = srli_i16<8>(V::load(s.alpha + at));
    const V w = packs_i32(srli_i32<16>(alpha), z);
    const V y = mixed_words(srli_i16<8>(V::load(s.frame_y + at)), srli_i16<8>(V::load(s.sub_y + at)), alpha);
    const V u = mixed_words(odd_chroma(s.frame_u), odd_chroma(s.sub_u), w);
    const V v = mixed_words(odd_chroma(s.frame_v), odd_chroma(s.sub_v), w);
    const V y8 = packus_i16(adjust_words(y, l.luma_gain, l.luma_offset), z);
    const V u8 = packus_i16(adjust_words(u, l.chroma_gain, l.u_offset), z);
    const V v8 = packus_i16(adjust_words(v, l.chroma_gain, l.v_offset), z);
    return unpacklo_u8(y8, unpacklo_u8(u8, v8));
}

template <class V>
struct VectorMix {
    static constexpr int block = 16;  // pixels per block of the AYUY2 mixers

    // One row of `blocks` blocks mixed, each step's blocks handed to
    // store(first pixel, MixedWords, AdjustVec) to be adjusted and stored.
    template <bool PairAverage, bool Sixteenths, class Store>
    static void mix_run(const MixRow& row, uint32_t blocks, const AdjustConstants& a, Store&& store) {
        const MixRow s = row;  // copies the stores cannot alias: the constants stay in registers
        const AdjustConstants k = a;
        const Store put = store;  // and the store's own captures (its destination)
        for_blocks<V>(blocks, [&]<class W>(size_t i) DISPCONV_VECTOR_STEP {
            put(ptrdiff_t(i) * block, mix_blocks<PairAverage, Sixteenths, W>(s, i), adjust_vec<W>(k));
        });
    }

    // One row into YUY2, odd-pixel chroma weights.
    static void mix_yuy2_run(const MixRow& row, uint32_t blocks, const AdjustConstants& a, uint8_t* dst) {
        mix_run<false, false>(row, blocks, a, [dst]<class W>(ptrdiff_t at, const MixedWords<W>& m, const AdjustVec<W>& l) DISPCONV_VECTOR_STEP {
            const W y = packus_i16(adjust_words(m.y_lo, l.luma_gain, l.luma_offset), adjust_words(m.y_hi, l.luma_gain, l.luma_offset));
            const W uv = packus_i16(adjust_words(m.u, l.chroma_gain, l.u_offset), adjust_words(m.v, l.chroma_gain, l.v_offset));
            W first, second;
            join_yuy2(y, uv, bsrli<8>(uv), first, second);
            store_block_pairs(dst + 2 * at, first, second);
        });
    }

    // One row into an RGB format: the mixed samples adjusted and clamped as words, converted.
    // The gains callers use (0..257) take the blend as sixteenths into a shorter adjustment.
    template <class Format, bool PairAverage>
    static void mix_rgb_run(const MixRow& row, uint32_t blocks, const AdjustConstants& a, const Rgb16Layout& layout,
                            uint8_t* dst) {
        const Rgb16Layout lay = layout;
        auto run = [&]<bool Sixteenths>() {
            mix_run<PairAverage, Sixteenths>(row, blocks, a, [dst, &lay]<class W>(ptrdiff_t at, const MixedWords<W>& m, const AdjustVec<W>& l) DISPCONV_VECTOR_STEP {
                auto adjusted = [](W x, W gain, W gain64, W biased) {
                    if constexpr (Sixteenths) return adjust_clamped_high(x, gain64, biased);
                    else return adjust_clamped(x, gain, biased);
                };
                const ChromaVec<W> c = chroma_terms(adjusted(m.u, l.chroma_gain, l.chroma_gain64, l.u_biased),
                                                    adjusted(m.v, l.chroma_gain, l.chroma_gain64, l.v_biased));
                const RgbVec<W> rgb = luma_words_to_rgb(adjusted(m.y_lo, l.luma_gain, l.luma_gain64, l.luma_biased),
                                                        adjusted(m.y_hi, l.luma_gain, l.luma_gain64, l.luma_biased), c);
                store_rgb_blocks<Format>(dst + at * Format::bytes_per_pixel, rgb, rgb16_vec<W>(lay));
            });
        };
        // Without the byte multiply-add the blend would take a shift more, what the adjustment saves.
        if constexpr (has_byte_madd && has_mulhi_u16) {
            if (small_gains(a)) return run.template operator()<true>();
        }
        run.template operator()<false>();
    }

    // One row into half-width YUY2 (8 pixels out of 16).
    static void mix_half_yuy2_run(const MixRow& row, uint32_t blocks, const AdjustConstants& a, uint8_t* dst) {
        const MixRow s = row;
        const AdjustConstants k = a;
        Vec<16>::store(dst, mix_half_blocks<true>(s, 0, adjust_vec<Vec<16>>(k)));
        for_blocks<V>(blocks, [&]<class W>(size_t i) DISPCONV_VECTOR_STEP {
            W::store(dst + ptrdiff_t(i) * block, mix_half_blocks<false>(s, i, adjust_vec<W>(k)));
        }, 1);
    }

    // One row of a YV12 plane mixed (then adjusted, with Adjust); chroma rows take the odd
    // alphas of an alpha run twice as long.
    template <class Adjust, bool Chroma>
    static void mix_plane_row(const uint8_t* frame, const uint8_t* frame_below, const uint8_t* sub,
                              const uint8_t* alpha, uint8_t* out, uint32_t samples, int16_t gain, int16_t offset) {
        // W::bytes samples, or with Half eight in the low half of a 128-bit vector.
        auto mixed = [&]<class W, bool Half>(int i) {
            auto load = [](const uint8_t* p) { return Half ? W::load_half(p) : W::load(p); };
            W f = load(frame + i);
            if (frame_below) f = average_u8(f, load(frame_below + i));
            W w;
            if constexpr (Chroma && Half) {
                w = packus_i16(srli_i16<8>(W::load(alpha + 2 * i)), W::zero());
            } else if constexpr (Chroma) {
                W lo, hi;
                deal_pair<32>(W::load(alpha + 2 * i), W::load(alpha + 2 * i + W::bytes), lo, hi);
                w = packus_i16(srli_i16<8>(lo), srli_i16<8>(hi));
            } else {
                w = load(alpha + i);
            }
            const W m = mix_bytes(f, load(sub + i), w);
            return Adjust::enabled ? adjust_bytes(m, W::set1_i16(gain), W::set1_i16(offset)) : m;
        };
        const int n = int(samples);
        for_bytes<V>(n, [&]<class W>(int i) DISPCONV_VECTOR_STEP { W::store(out + i, mixed.template operator()<W, false>(i)); }, [&](int i) {
            if (n - i >= 8) store_low_halves(out + i, mixed.template operator()<Vec<16>, true>(i)), i += 8;
            if (i < n)
                PortableMix::mix_plane_row<Adjust, Chroma>(frame + i, frame_below ? frame_below + i : nullptr, sub + i,
                                                           alpha + (Chroma ? 2 * i : i), out + i, uint32_t(n - i),
                                                           gain, offset);
        });
    }
};

} }  // namespace dispconv::simd
