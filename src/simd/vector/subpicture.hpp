// Sub-picture operations on vectors of any width: one block per 128-bit lane, so each lane
// computes what one 128-bit step does; the last bytes of a run go to the portable reference.
#pragma once

#include <cstring>
#include <utility>

#include "core/formats.hpp"
#include "simd/vector/core.hpp"

namespace dispconv::simd { namespace {

// One output of the RGB to sub-picture conversion as (blue, green, red, 1024) word quadruples
// and its bias in the fourth word.
template <class V>
struct SubpictureLanes {
    V weights, bias;
};
template <class V>
DISPCONV_VECTOR_INLINE SubpictureLanes<V> subpicture_lanes(const SubpictureWeights& w) {
    const auto word = [](int v, int at) { return int64_t(uint16_t(v)) << (16 * at); };
    return {V::set1_i64(word(w.blue, 0) | word(w.green, 1) | word(w.red, 2) | word(1024, 3)),
            V::set1_i64(word(w.bias, 3))};
}

// Four (b, g, r, x) pixels per lane: the multiply-add in 16-bit pairs, the pair sums added and
// shifted right arithmetically by 10.
template <class V>
DISPCONV_VECTOR_INLINE V subpicture_sums(V px, const SubpictureLanes<V>& o) {
    const V z = V::zero();
    const V lo = madd_i16(unpacklo_u8(px, z) | o.bias, o.weights);
    const V hi = madd_i16(unpackhi_u8(px, z) | o.bias, o.weights);
    return srai_i32<10>(add_pairs_i32(lo, hi));
}

// Four 3-byte pixels from bytes 0..11 of each lane to 32-bit words with a zero top byte.
template <class V>
DISPCONV_VECTOR_INLINE V widen_rgb24(V p) {
    if constexpr (has_byte_shuffle) {
        static constexpr LaneTable t = lane_table([](int i) { return i % 4 == 3 ? -1 : i / 4 * 3 + i % 4; });
        return shuffle_u8(p, V::template table<t>());
    } else {
        // Pixel j's three bytes moved up j bytes, each masked to its word.
        static constexpr LaneTable w0 = lane_table([](int i) { return i < 3 ? -1 : 0; });
        static constexpr LaneTable w1 = lane_table([](int i) { return i >= 4 && i < 7 ? -1 : 0; });
        static constexpr LaneTable w2 = lane_table([](int i) { return i >= 8 && i < 11 ? -1 : 0; });
        static constexpr LaneTable w3 = lane_table([](int i) { return i >= 12 && i < 15 ? -1 : 0; });
        return (p & V::template table<w0>()) | (bslli<1>(p) & V::template table<w1>()) | (bslli<2>(p) & V::template table<w2>()) |
               (bslli<3>(p) & V::template table<w3>());
    }
}

// Eight source pixels per lane widened to (b, g, r, x) words (q0 pixels 0..3, q1 4..7), and a
// bit per byte, set where it matched the key: a lane is key where its 16 bits are. The raw
// mask is tested, as soon as it exists: which blocks are key follows the picture, and a
// mispredicted branch costs less the earlier it resolves.
template <class Format, class V>
DISPCONV_VECTOR_INLINE uint64_t expand_blocks(const uint8_t* src, uint32_t key, V& q0, V& q1) {
    if constexpr (Format::bytes_per_pixel == 2) {
        const V p = V::load(src);
        const V bg = (slli_i16<3>(p) & V::set1_i16(0x00F8)) | (slli_i16<5>(p) & V::set1_i16(int16_t(0xFC00)));
        const V r = srli_i16<8>(p) & V::set1_i16(0x00F8);
        q0 = unpacklo_u16(bg, r), q1 = unpackhi_u16(bg, r);
        return movemask_u8(cmpeq_i16(p, V::set1_i16(int16_t(key))));
    } else {
        if constexpr (Format::bytes_per_pixel == 4) {
            deal_pair<32>(V::load(src), V::load(src + V::bytes), q0, q1);
        } else {
            // Each block's bytes 0..23 only: the masked fourth byte of its last pixel is never needed.
            q0 = widen_rgb24(load_lanes<V>(src, 24));
            q1 = widen_rgb24(bsrli<4>(load_lanes<V>(src + 8, 24)));
        }
        const V k = V::set1_i32(int32_t(key));
        return movemask_u8(cmpeq_i32(q0, k) & cmpeq_i32(q1, k));
    }
}

// The byte at offset 2 of each of four 3-byte groups in bytes 0..11 of each lane, as 32-bit words.
template <class V>
DISPCONV_VECTOR_INLINE V third_bytes(V p) {
    if constexpr (has_byte_shuffle) {
        static constexpr LaneTable t = lane_table([](int i) { return i % 4 == 0 ? i / 4 * 3 + 2 : -1; });
        return shuffle_u8(p, V::template table<t>());
    } else {
        return srli_i32<16>(widen_rgb24(p) & V::set1_i32(0x00FF0000));
    }
}

template <class V>
struct VectorSubpicture {
    // Blocks of 8 pixels: those entirely of `key` are skipped, the others converted (y, u and v
    // advance by 8, 4, 4 per block either way).
    template <class Format>
    static void rgb_row_to_subpicture(const uint8_t* src, uint32_t blocks, uint32_t key, uint8_t* y, uint8_t* u,
                                      uint8_t* v) {
        constexpr int bpp = Format::bytes_per_pixel;
        for_blocks<V>(blocks, [&]<class W>(size_t i) DISPCONV_VECTOR_STEP {
            W q0, q1;
            const uint64_t keyed = expand_blocks<Format>(src + i * 8 * bpp, key, q0, q1);
            if (keyed == ~uint64_t(0) >> (64 - W::bytes)) return;
            const SubpictureLanes<W> ky = subpicture_lanes<W>(subpicture_y), ku = subpicture_lanes<W>(subpicture_u),
                                     kv = subpicture_lanes<W>(subpicture_v);
            const W yw = packs_i32(subpicture_sums(q0, ky), subpicture_sums(q1, ky));
            const W yb = packus_i16(yw, yw);
            const W even = even_u32(q0, q1);
            const W uvw = packs_i32(subpicture_sums(even, ku), subpicture_sums(even, kv));
            const W uv = packus_i16(uvw, uvw);
            auto store = [&]<int k>() DISPCONV_VECTOR_STEP {
                if (W::lanes > 1 && (keyed >> (16 * k) & 0xFFFF) == 0xFFFF) return;
                const Vec<16> uvk = lane<k>(uv);
                store_low_halves(y + 8 * (i + k), lane<k>(yb));
                store_low_u32(u + 4 * (i + k), uvk), store_low_u32(v + 4 * (i + k), bsrli<4>(uvk));
            };
            for_lanes<W>(store);
        });
    }

    // Blocks of 16 sub-picture pixels (16 lumas, 8 U, 8 V, 16 opacities each), adjusted when
    // Adjust says so, converted and selected by opacity read as a signed byte: 0 takes the key
    // pixel, 1..127 the converted pixel, 128..255 all zero bytes.
    template <class Format, class Adjust>
    static void ayuy2_row_to_rgb(const uint8_t* sub_y, const uint8_t* sub_u, const uint8_t* sub_v,
                                 const uint8_t* opacity, uint32_t blocks, const uint8_t* key,
                                 const AdjustConstants& a, const Rgb16Layout& layout, uint8_t* image) {
        constexpr int bpp = Format::bytes_per_pixel;
        const AdjustConstants k = a;
        const Rgb16Layout lay = layout;
        const uint8_t kb = key[0], kg = key[1], kr = key[2];
        for_blocks<V>(blocks, [&]<class W>(size_t i) DISPCONV_VECTOR_STEP {
            W y = W::load(sub_y + 16 * i), u = W::load_half(sub_u + 8 * i), v = W::load_half(sub_v + 8 * i);
            if constexpr (Adjust::enabled) {
                const AdjustVec<W> l = adjust_vec<W>(k);
                y = adjust_bytes(y, l.luma_gain, l.luma_offset);
                // Chroma as words: only the low half of each lane holds samples.
                const W z = W::zero();
                const W uw = adjust_words(unpacklo_u8(u, z), l.chroma_gain, l.u_offset);
                const W vw = adjust_words(unpacklo_u8(v, z), l.chroma_gain, l.v_offset);
                u = packus_i16(uw, uw), v = packus_i16(vw, vw);
            }
            RgbVec<W> c = luma_to_rgb(y, chroma_words(u, v));
            const W op = W::load(opacity + 16 * i), z = W::zero();
            const W is_key = cmpeq_u8(op, z), keep = cmpgt_i8(op, z);
            uint8_t* d = image + 16 * i * bpp;
            if constexpr (bpp == 2) {  // the key is a whole 16-bit pixel
                const W key_word = W::set1_i16(int16_t(kb | kg << 8));
                const Rgb16Pair<W> w = pack_rgb16(c, rgb16_vec<W>(lay));
                store_block_pairs(d, (w.lo & unpacklo_u8(keep, keep)) | (key_word & unpacklo_u8(is_key, is_key)),
                                  (w.hi & unpackhi_u8(keep, keep)) | (key_word & unpackhi_u8(is_key, is_key)));
            } else {
                c.b = (c.b & keep) | (W::set1_u8(kb) & is_key);
                c.g = (c.g & keep) | (W::set1_u8(kg) & is_key);
                c.r = (c.r & keep) | (W::set1_u8(kr) & is_key);
                store_rgb_blocks<Format>(d, c, Rgb16Vec<W>{});
            }
        });
    }

    // dst[i] = src[i * step + offset] & mask: one byte taken from each pixel.
    template <int step, int offset, uint8_t mask>
    static void pick_bytes(const uint8_t* src, uint8_t* dst, int n) {
        auto rest = [&](int i) { PortableSubpicture::pick_bytes<step, offset, mask>(src + step * i, dst + i, n - i); };
        // Eight outputs from the low halves of 128-bit steps, then the rest: whole pixels are loaded.
        auto eight_then_rest = [&](int i, auto eight) {
            if (n - i >= 8) store_low_halves(dst + i, eight(i)), i += 8;
            if (i < n) rest(i);
        };
        if constexpr (step == 4 && offset == 0 && mask == 0xFF) {
            for_bytes<V>(n, [&]<class W>(int i) DISPCONV_VECTOR_STEP {
                const uint8_t* s = src + 4 * i;
                const W m = W::set1_i32(0xFF);
                auto part = [&](int at) { return load_lanes<W>(s + at, 64) & m; };
                W::store(dst + i, packus_i16(packs_i32(part(0), part(16)), packs_i32(part(32), part(48))));
            }, [&](int i) {
                eight_then_rest(i, [&](int at) {
                    const Vec<16> m = Vec<16>::set1_i32(0xFF), w = packs_i32(Vec<16>::load(src + 4 * at) & m,
                                                                          Vec<16>::load(src + 4 * at + 16) & m);
                    return packus_i16(w, w);
                });
            });
        } else if constexpr (step == 2 && offset == 0) {
            for_bytes<V>(n, [&]<class W>(int i) DISPCONV_VECTOR_STEP {
                const W m = W::set1_i16(mask);
                W lo, hi;
                deal_pair<32>(W::load(src + 2 * i), W::load(src + 2 * i + W::bytes), lo, hi);
                W::store(dst + i, packus_i16(lo & m, hi & m));
            }, rest);
        } else if constexpr (step == 3 && offset == 3 && mask == 0xFF) {
            // Output i is byte 3i + 2 after src + 1: nothing past byte 3n is read.
            for_bytes<V>(n, [&]<class W>(int i) DISPCONV_VECTOR_STEP {
                const uint8_t* s = src + 3 * i + 1;
                auto part = [&](int at) { return third_bytes(load_lanes<W>(s + at, 48)); };
                W::store(dst + i, packus_i16(packs_i32(part(0), part(12)),
                                             packs_i32(part(24), third_bytes(bsrli<4>(load_lanes<W>(s + 32, 48))))));
            }, [&](int i) {
                eight_then_rest(i, [&](int at) {
                    const uint8_t* s = src + 3 * at + 1;
                    const Vec<16> w =
                        packs_i32(third_bytes(Vec<16>::load(s)), third_bytes(bsrli<4>(Vec<16>::load(s + 8))));
                    return packus_i16(w, w);
                });
            });
        } else {
            rest(0);
        }
    }

    // Each byte becomes the first of `step` bytes, the others zero.
    template <int step>
    static void spread_bytes(const uint8_t* src, uint8_t* dst, int n) {
        for_bytes<V>(n, [&]<class W>(int i) DISPCONV_VECTOR_STEP {
            const W z = W::zero(), a = W::load(src + i);
            uint8_t* d = dst + step * i;
            if constexpr (step == 2) store_block_pairs(d, unpacklo_u8(a, z), unpackhi_u8(a, z));
            else if constexpr (step == 3) store_rgb_blocks<Rgb24>(d, RgbVec<W>{z, z, a}, Rgb16Vec<W>{});
            else store_rgb_blocks<Rgb32>(d, RgbVec<W>{z, z, a}, Rgb16Vec<W>{});
        }, [&](int i) { PortableSubpicture::spread_bytes<step>(src + i, dst + step * i, n - i); });
    }

    // `n` bytes of a repeated pattern (n a multiple of pattern_bytes).
    static void fill_pattern(uint8_t* dst, const uint8_t* pattern, int pattern_bytes, int n) {
        auto rest = [&](int i) { PortableSubpicture::fill_pattern(dst + i, pattern, pattern_bytes, n - i); };
        if (pattern_bytes == 8 && std::memcmp(pattern, pattern + 4, 4) == 0) {
            // A key that repeats every 4 bytes: a string store measured faster than vector stores.
            uint32_t word;
            std::memcpy(&word, pattern, 4);
            store_repeated_u32(dst, word, size_t(n) / 4);
            if (n % 4) rest(n & ~3);
        } else if (pattern_bytes == 8) {
            int64_t word;
            std::memcpy(&word, pattern, 8);
            // Non-temporal stores measured slower here, even on full-HD surfaces: plain stores.
            for_bytes<V>(n, [&]<class W>(int i) DISPCONV_VECTOR_STEP { W::store(dst + i, W::set1_i64(word)); }, rest);
        } else if (pattern_bytes == 24) {
            // Three vectors hold a whole number of periods at every width; steps of a third.
            uint8_t period[3 * V::bytes];
            for (int k = 0; k < 3 * V::bytes; k += 24) std::memcpy(period + k, pattern, 24);
            for_bytes<V>(n / 3, [&]<class W>(int i) DISPCONV_VECTOR_STEP {
                uint8_t* d = dst + 3 * i;
                W::store(d, W::load(period)), W::store(d + W::bytes, W::load(period + W::bytes));
                W::store(d + 2 * W::bytes, W::load(period + 2 * W::bytes));
            }, [&](int i) { rest(3 * i); });
        } else {
            rest(0);
        }
    }

    // dst[i] becomes `key` where mask[i] equals `marker`, and stays as it is elsewhere.
    static void replace_marked(const uint8_t* mask, uint8_t marker, uint8_t key, uint8_t* dst, int n) {
        for_bytes<V>(n, [&]<class W>(int i) DISPCONV_VECTOR_STEP {
            const W hit = cmpeq_u8(W::load(mask + i), W::set1_u8(marker));
            W::store(dst + i, blend_u8(W::load(dst + i), W::set1_u8(key), hit));
        }, [&](int i) { PortableSubpicture::replace_marked(mask + i, marker, key, dst + i, n - i); });
    }
};

} }  // namespace dispconv::simd
