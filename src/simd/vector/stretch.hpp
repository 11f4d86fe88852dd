// Stretch operations written once over the vector primitives, for every width. Wider vectors
// take one 16-pixel block per 128-bit lane, or deal the samples to the lanes so that every
// in-lane interleave is already a run of the row (at 128 bits dealing moves nothing). Runs go
// down the widths to 128 bits, and what is left to the portable operations.
#pragma once

#include <cstdint>
#include "simd/vector/core.hpp"

namespace dispconv::simd { namespace {
namespace stretch_steps {

// Runs whose vectors read the byte after them: whole vectors while a byte follows, then
// last(i) for the final 1 to 16 bytes from i (nothing for an empty run).
template <class V, class Step, class Last>
[[gnu::always_inline]] inline void for_bytes_then_last(int n, Step&& step, Last&& last) {
    if (n <= 0) return;
    const int head = (n - 1) / 16 * 16;
    for_bytes<V>(head, step, [](int) {});
    last(head);
}

// s moved down one byte within each lane (each 64-bit half when `half`), the top byte of
// each taken from `top`.
template <bool half, class W>
DISPCONV_VECTOR_INLINE W moved_down(W s, W top) {
    static constexpr LaneTable last = lane_table([](int i) { return i == 15 || (half && i == 7) ? -1 : 0; });
    if constexpr (half) return srli_i64<8>(s) | (top & W::template table<last>());
    else return bsrli<1>(s) | (top & W::template table<last>());
}

// Lane by lane: bytes n .. n + 15 of lo followed by hi.
template <int n, class W>
DISPCONV_VECTOR_INLINE W bytes_after(W hi, W lo) {
    if constexpr (has_byte_shuffle) return alignr<n>(hi, lo);
    else return bsrli<n>(lo) | bslli<16 - n>(hi);
}

// Samples and their averages with their right neighbours: the two halves of a doubled run.
template <class W>
struct Doubled {
    W even, odd;
};
template <class W>
DISPCONV_VECTOR_INLINE Doubled<W> average(const Doubled<W>& a, const Doubled<W>& b) {
    return {average_u8(a.even, b.even), average_u8(a.odd, b.odd)};
}
// Samples at p dealt by 8, so that each interleave of even and odd is a run of the row.
template <class W>
DISPCONV_VECTOR_INLINE Doubled<W> doubled_at(const uint8_t* p) {
    const W s = deal<8>(W::load(p));
    return {s, average_u8(s, deal<8>(W::load(p + 1)))};
}
// A run's last 16 samples doubled, `after` holding the sample after them in its top byte.
DISPCONV_VECTOR_INLINE Doubled<Vec<16>> doubled_last(Vec<16> s, Vec<16> after) {
    return {s, average_u8(s, moved_down<false>(s, after))};
}
template <class W, class F>
DISPCONV_VECTOR_INLINE void store_doubled(uint8_t* d, const Doubled<W>& x, F&& f) {
    W::store(d, f(unpacklo_u8(x.even, x.odd))), W::store(d + W::bytes, f(unpackhi_u8(x.even, x.odd)));
}
template <class W>
DISPCONV_VECTOR_INLINE void store_doubled(uint8_t* d, const Doubled<W>& x) {
    store_doubled(d, x, [](W v) { return v; });
}

// Packed YUY2 bytes adjusted: luma in the even bytes, U and V alternating in the odd ones.
template <class W>
DISPCONV_VECTOR_INLINE W adjust_yuy2(W x, const AdjustVec<W>& l) {
    const W y = adjust_words(x & low_bytes_mask<W>(), l.luma_gain, l.luma_offset);
    const W c = adjust_words(srli_i16<8>(x), l.chroma_gain, l.uv_offset);
    const W p = packus_i16(y, c);  // per lane: 8 lumas, then 8 chroma bytes
    return unpacklo_u8(p, bsrli<8>(p));
}

// Four YUY2 pixel pairs S per lane doubled to eight, given the same row two bytes on (S2,
// for the next luma) and four bytes on (S4, for the next chroma): each pair Y0 U Y1 V becomes
// Y0 U avg(Y0, Y1) V  Y1 avg(U, U') avg(Y1, Y0') avg(V, V'). Each lane's 32 bytes of output
// come out in row order as first, second.
template <class W>
DISPCONV_VECTOR_INLINE void doubled_yuy2_pairs(W s, W s2, W s4, W& first, W& second) {
    const W m = blend_u8(average_u8(s, s4), average_u8(s, s2), low_bytes_mask<W>());
    W lo, hi;
    if constexpr (has_byte_shuffle) {
        static constexpr LaneTable swap24 = lane_table([](int i) { return i % 8 == 2 ? i + 2 : i % 8 == 4 ? i - 2 : i; });
        lo = shuffle_u8(unpacklo_u32(s, m), W::template table<swap24>());
        hi = shuffle_u8(unpackhi_u32(s, m), W::template table<swap24>());
    } else {
        // Per pair, the first doubled pair is S with M's byte 0 at byte 2, the second M with
        // S's byte 2 at byte 0.
        const W byte2 = W::set1_i32(0x00FF0000), byte0 = W::set1_i32(0xFF);
        const W a = andnot(byte2, s) | (slli_i32<16>(m) & byte2);
        const W b = andnot(byte0, m) | (srli_i32<16>(s) & byte0);
        lo = unpacklo_u32(a, b), hi = unpackhi_u32(a, b);
    }
    interleave_lanes(lo, hi, first, second);
}

template <class W>
DISPCONV_VECTOR_INLINE W abs_diff_bytes(W x, W y) {
    return subs_u8(x, y) | subs_u8(y, x);
}
// Bytes where bit k of the byte of `j` is set.
template <int k, class W>
DISPCONV_VECTOR_INLINE W bit_set_u8(W j) {
    return cmpgt_i8(W::zero(), slli_i16<7 - k>(j));
}
// The differences |a[d + k] - b[-d + k]| for the positions at a and b, k = 0 .. 3. With byte
// shuffles the middle two come from the first and last; reads from -2 to 5 after the positions.
template <class W>
DISPCONV_VECTOR_INLINE void direction_differences(const uint8_t* a, const uint8_t* b, int d, W diff[4]) {
    auto at = [&](int k) { return abs_diff_bytes(W::load(a + d + k), W::load(b - d + k)); };
    if constexpr (has_byte_shuffle) {
        diff[0] = at(0), diff[3] = at(3);
        const W next = bsrli<13>(diff[3]);  // the lane's next positions, 16 to 18
        diff[1] = alignr<1>(next, diff[0]), diff[2] = alignr<2>(next, diff[0]);
    } else {
        for (int k = 0; k < 4; ++k) diff[k] = at(k);
    }
}
// Edge-directed interpolation of the W::bytes positions at a and b (whole groups of four).
// Direction j pairs a at d + k with b at -d + k (d = j - 2). Its costs, sums of four
// differences, come as pairs of pairs: words for the even positions and for the odd ones.
template <class W>
DISPCONV_VECTOR_INLINE W edge_interpolated(const uint8_t* a, const uint8_t* b) {
    W best_even, best_odd, averages[5];
    for (int j = 0; j < 5; ++j) {
        const int d = j - 2;
        W diff[4];
        direction_differences(a, b, d, diff);
        const W even = add_i16(sum_pairs_u8(diff[0]), sum_pairs_u8(diff[2]));
        const W odd = add_i16(sum_pairs_u8(diff[1]), sum_pairs_u8(diff[3]));
        averages[j] = average_u8(W::load(a + d), W::load(b - d));
        // The search key cost * 8 + j makes the lowest j win a tie.
        W key_even = slli_i16<3>(even), key_odd = slli_i16<3>(odd);
        if (j > 0) key_even = add_i16(key_even, W::set1_i16(int16_t(j))), key_odd = add_i16(key_odd, W::set1_i16(int16_t(j)));
        if (j == 2) {
            // A group's activity is its first position's vertical cost; a quiet group's key
            // is made the least, keeping j = 2 in its low bits.
            const W activity = shufflehi_u16<0xA0>(shufflelo_u16<0xA0>(even));
            const W quiet = cmpgt_i16(W::set1_i16(33), activity) & W::set1_i16(0x4000);
            key_even = sub_i16(key_even, quiet), key_odd = sub_i16(key_odd, quiet);
        }
        best_even = j == 0 ? key_even : min_i16(best_even, key_even);
        best_odd = j == 0 ? key_odd : min_i16(best_odd, key_odd);
    }
    // Each position's direction in the low bits of its byte, picked bit by bit.
    const W dir = (best_even & low_bytes_mask<W>()) | slli_i16<8>(best_odd);
    const W bit0 = bit_set_u8<0>(dir);
    const W low = blend_u8(blend_u8(averages[0], averages[1], bit0), blend_u8(averages[2], averages[3], bit0), bit_set_u8<1>(dir));
    return blend_u8(low, averages[4], bit_set_u8<2>(dir));
}

}  // namespace stretch_steps

template <class V>
struct VectorStretch : PortableStretch {
    // One pass per block: each source block is loaded and adjusted once, each chroma
    // conversion serves two rows. Pixels are placed as the destination format's stores want
    // them. `pixels` is a multiple of 16.
    template <class Format>
    static void rgb_double_rows(const uint8_t* top, const uint8_t* bottom, const uint8_t* next,
                                const uint8_t* u0, const uint8_t* u1, const uint8_t* v0,
                                const uint8_t* v1, uint8_t* const dst[4], int pixels,
                                const AdjustConstants& a, const Rgb16Layout& layout) {
        using namespace stretch_steps;
        constexpr int bpp = Format::bytes_per_pixel, group = pixel_group<Format>;
        for_blocks<V>(uint32_t(pixels) / 16, [=]<class W>(size_t block) DISPCONV_VECTOR_STEP {
            const size_t i = 16 * block;
            const AdjustVec<W> l = adjust_vec<W>(a);
            const Rgb16Vec<W> lanes = rgb16_vec<W>(layout);
            auto luma = [&](const uint8_t* p) { return adjust_bytes(deal<group>(W::load(p + i)), l.luma_gain, l.luma_offset); };
            auto chroma = [&](const uint8_t* p, W offset) {
                return adjust_low_half(W::template load_half_dealt<group>(p + i / 2), l.chroma_gain, offset);
            };
            const W ya = luma(top), yb = luma(bottom), yc = luma(next);
            const W ua = chroma(u0, l.u_offset), ub = chroma(u1, l.u_offset);
            const W va = chroma(v0, l.v_offset), vb = chroma(v1, l.v_offset);
            const ChromaVec<W> c0 = chroma_words(ua, va);
            const ChromaVec<W> c1 = chroma_words(average_u8(ua, ub), average_u8(va, vb));
            store_rgb<Format>(dst[0] + i * bpp, luma_to_rgb(ya, c0), lanes);
            store_rgb<Format>(dst[1] + i * bpp, luma_to_rgb(average_u8(ya, yb), c0), lanes);
            store_rgb<Format>(dst[2] + i * bpp, luma_to_rgb(yb, c1), lanes);
            store_rgb<Format>(dst[3] + i * bpp, luma_to_rgb(average_u8(yb, yc), c1), lanes);
        });
    }

    static void filter4(const uint8_t* a, const uint8_t* b, const uint8_t* c, const uint8_t* d, uint8_t* dst, int n) {
        auto step = [=]<class W>(int i) DISPCONV_VECTOR_STEP {
            W::store(dst + i, filter4_bytes(W::load(a + i), W::load(b + i), W::load(c + i), W::load(d + i)));
        };
        for_bytes<V>(n, step, [&](int i) {
            // Chroma runs come in multiples of 8: a half vector before the portable rest.
            using H = Vec<16>;
            if (n - i >= 8) {
                store_low_halves(dst + i, filter4_bytes(H::load_half(a + i), H::load_half(b + i), H::load_half(c + i),
                                                        H::load_half(d + i)));
                i += 8;
            }
            if (i < n) PortableStretch::filter4(a + i, b + i, c + i, d + i, dst + i, n - i);
        });
    }

    // Reads src[0 .. n] (src[0 .. n-1] when `edge`: the run's last sample then stands for the
    // one after it).
    static void double_run(const uint8_t* src, bool edge, uint8_t* dst, int n) {
        using namespace stretch_steps;
        for_bytes_then_last<V>(
            n, [=]<class W>(int i) DISPCONV_VECTOR_STEP { store_doubled(dst + 2 * i, doubled_at<W>(src + i)); },
            [&](int i) {
                // The sample after the run is loaded as the top byte of a block (of its low half
                // for 8): a broadcast from a general register would go through memory.
                using H = Vec<16>;
                const int end = edge ? n - 1 : n;
                if (n - i == 16) {
                    store_doubled(dst + 2 * i, doubled_last(H::load(src + i), H::load(src + end - 15)));
                } else if (n - i == 8) {
                    const H s = H::load_half(src + i);
                    H::store(dst + 2 * i, unpacklo_u8(s, average_u8(s, moved_down<true>(s, H::load_half(src + end - 7)))));
                } else {
                    PortableStretch::double_run(src + i, edge, dst + 2 * i, n - i);
                }
            });
    }

    // The plane stretchers call this twice per row, short rows among them: inlined into the walk.
    DISPCONV_VECTOR_INLINE static void average_adjust(const uint8_t* a, const uint8_t* b, uint8_t* dst, int n,
                                                      int16_t gain, int16_t offset) {
        auto step = [=]<class W>(int i) DISPCONV_VECTOR_STEP {
            W::store(dst + i, adjust_bytes(average_u8(W::load(a + i), W::load(b + i)), W::set1_i16(gain), W::set1_i16(offset)));
        };
        for_bytes<V>(n, step, [&](int i) { PortableStretch::average_adjust(a + i, b + i, dst + i, n - i, gain, offset); });
    }

    DISPCONV_VECTOR_INLINE static void double_adjust(const uint8_t* a, const uint8_t* b, uint8_t* dst, int n,
                                                     int16_t gain, int16_t offset) {
        using namespace stretch_steps;
        auto step = [=]<class W>(int i) DISPCONV_VECTOR_STEP {
            const W g = W::set1_i16(gain), o = W::set1_i16(offset);
            store_doubled(dst + 2 * i, average(doubled_at<W>(a + i), doubled_at<W>(b + i)),
                          [&](W v) { return adjust_bytes(v, g, o); });
        };
        for_bytes<V>(n, step, [&](int i) { PortableStretch::double_adjust(a + i, b + i, dst + 2 * i, n - i, gain, offset); });
    }

    // `pixels` a multiple of 16; the pixels dealt by 8 so that each interleave is a run.
    static void join_yuy2_averaged(const uint8_t* y0, const uint8_t* y1, const uint8_t* u0, const uint8_t* u1,
                                   const uint8_t* v0, const uint8_t* v1, uint8_t* dst, int pixels) {
        for_blocks<V>(uint32_t(pixels) / 16, [=]<class W>(size_t block) DISPCONV_VECTOR_STEP {
            const size_t p = 16 * block;
            auto chroma = [&](const uint8_t* c0, const uint8_t* c1) {
                return average_u8(W::template load_half_dealt<8>(c0 + p / 2), W::template load_half_dealt<8>(c1 + p / 2));
            };
            W first, second;
            join_yuy2(deal<8>(average_u8(W::load(y0 + p), W::load(y1 + p))), chroma(u0, u1), chroma(v0, v1), first, second);
            W::store(dst + 2 * p, first), W::store(dst + 2 * p + W::bytes, second);
        });
    }

    // At least one block; every block but the last takes its right neighbours from memory.
    template <bool adjusted>
    static void double_size_yuy2_row(const uint8_t* y0, const uint8_t* y1, const uint8_t* u0, const uint8_t* u1,
                                     const uint8_t* v0, const uint8_t* v1, uint8_t* dst, uint32_t blocks,
                                     const AdjustConstants& a) {
        const uint8_t* const rows[6] = {y0, y1, u0, u1, v0, v1};
        for_blocks<V>(blocks - 1, [=]<class W>(size_t i) DISPCONV_VECTOR_STEP { double_size_blocks<W, adjusted, false>(rows, i, dst, a); });
        double_size_blocks<Vec<16>, adjusted, true>(rows, blocks - 1, dst, a);
    }

    // Source vectors each loaded and adjusted once: the neighbours come from the next vector,
    // or, for the row's last 16 bytes, from themselves. `pixels` a multiple of 8.
    template <bool adjusted>
    static void double_yuy2_rows(const uint8_t* const src[3], uint8_t* const dst[4], int pixels,
                                 const AdjustConstants& a) {
        double_yuy2_rows_from<V, adjusted>(src, dst, 2 * pixels, 0, a);
    }

    // Reads n samples of each row: the right neighbours come from the next block while one
    // follows, and the row's last block is doubled with its edge repeated.
    static void double_pair(const uint8_t* above, const uint8_t* below, uint8_t* copy, uint8_t* between, int n) {
        using namespace stretch_steps;
        auto step = [=]<class W>(int i) DISPCONV_VECTOR_STEP {
            // Both rows loaded before any store: a store may alias them, and reloads would follow.
            const Doubled<W> x = doubled_at<W>(above + i), y = doubled_at<W>(below + i);
            store_doubled(copy + 2 * i, x);
            store_doubled(between + 2 * i, average(x, y));
        };
        for_bytes_then_last<V>(n, step, [&](int i) { double_pair_end(above + i, below + i, copy + 2 * i, between + 2 * i, n - i); });
    }

    // The last 1 to 16 samples of double_pair.
    static void double_pair_end(const uint8_t* above, const uint8_t* below, uint8_t* copy, uint8_t* between, int n) {
        using namespace stretch_steps;
        if (n == 16) {
            // The usual end, in registers: each row's last sample is its own right neighbour.
            const Vec<16> a = Vec<16>::load(above), b = Vec<16>::load(below);
            const Doubled<Vec<16>> x = doubled_last(a, a), y = doubled_last(b, b);
            store_doubled(copy, x);
            store_doubled(between, average(x, y));
            return;
        }
        if (n <= 0) return;
        uint8_t h[32];
        double_run(above, true, copy, n);
        double_run(below, true, h, n);
        // At most 32 bytes: 128-bit steps.
        for_bytes<Vec<16>>(2 * n, [=]<class W>(int i) DISPCONV_VECTOR_STEP { W::store(between + i, average_u8(W::load(copy + i), W::load(h + i))); },
                     [&](int i) { PortableCore::average(copy + i, h + i, between + i, 2 * n - i); });
    }

    // Reads a and b from 2 samples before the run to 5 after it, as the reference does; a
    // run that is not a whole number of 16 ends with its last 16 positions again.
    static void edge_interpolate(const uint8_t* a, const uint8_t* b, uint8_t* dst, int n) {
        using namespace stretch_steps;
        auto step = [=]<class W>(int x) DISPCONV_VECTOR_STEP { W::store(dst + x, edge_interpolated<W>(a + x, b + x)); };
        for_bytes<V>(n, step, [&](int x) {
            if (n >= 16) step.template operator()<Vec<16>>(n - 16);
            else PortableStretch::edge_interpolate(a + x, b + x, dst + x, n - x);
        });
    }

private:
    // Blocks i .. i + W::lanes - 1 of double_size_yuy2_row, luma dealt by 8 and chroma with it;
    // at the row's `edge` the last samples are their own right neighbours.
    template <class W, bool adjusted, bool edge>
    static void double_size_blocks(const uint8_t* const rows[6], uint32_t i, uint8_t* dst, const AdjustConstants& a) {
        using namespace stretch_steps;
        const AdjustVec<W> l = adjust_vec<W>(a);
        auto plane = [&](const uint8_t* r0, const uint8_t* r1, bool chroma, W gain, W offset) {
            auto load = [&](const uint8_t* p) {
                const W s = chroma ? W::template load_half_dealt<8>(p) : deal<8>(W::load(p));
                if constexpr (!adjusted) return s;
                else return chroma ? adjust_low_half(s, gain, offset) : adjust_bytes(s, gain, offset);
            };
            auto one = [&](const uint8_t* r) {
                const W s = load(r);
                if constexpr (edge) return Doubled<W>{s, average_u8(s, chroma ? moved_down<true>(s, s) : moved_down<false>(s, s))};
                else return Doubled<W>{s, average_u8(s, load(r + 1))};
            };
            const Doubled<W> d = one(r0);
            return r1 == r0 ? d : average(d, one(r1));
        };
        const Doubled<W> y = plane(rows[0] + 16 * i, rows[1] + 16 * i, false, l.luma_gain, l.luma_offset);
        const Doubled<W> u = plane(rows[2] + 8 * i, rows[3] + 8 * i, true, l.chroma_gain, l.u_offset);
        const Doubled<W> v = plane(rows[4] + 8 * i, rows[5] + 8 * i, true, l.chroma_gain, l.v_offset);
        // Doubled chroma of 8 samples per lane, U and V interleaved: uv_lo for the doubled luma
        // y_lo, uv_hi for y_hi.
        const W hu = unpacklo_u8(u.even, u.odd), hv = unpacklo_u8(v.even, v.odd);
        const W uv_lo = unpacklo_u8(hu, hv), uv_hi = unpackhi_u8(hu, hv);
        const W y_lo = unpacklo_u8(y.even, y.odd), y_hi = unpackhi_u8(y.even, y.odd);
        uint8_t* d = dst + 64 * i;
        store_block_pairs(d, unpacklo_u8(y_lo, uv_lo), unpackhi_u8(y_lo, uv_lo));
        store_block_pairs(d + 2 * W::bytes, unpacklo_u8(y_hi, uv_hi), unpackhi_u8(y_hi, uv_hi));
    }

    // double_yuy2_rows from byte i: vectors of W while a whole one follows, then narrower
    // ones, then the last 16 bytes.
    template <class W, bool adjusted>
    static void double_yuy2_rows_from(const uint8_t* const src[3], uint8_t* const dst[4], int bytes, int i,
                                      const AdjustConstants& a) {
        using namespace stretch_steps;
        constexpr int n = W::bytes;
        const AdjustVec<W> l = adjust_vec<W>(a);
        auto load = [&](const uint8_t* p) { return adjusted ? adjust_yuy2(W::load(p), l) : W::load(p); };
        auto store = [&](int at, W d[3][2]) {
            for (int h = 0; h < 2; ++h) {
                const int o = 2 * at + n * h;
                W::store(dst[0] + o, d[0][h]);
                W::store(dst[1] + o, average_u8(d[0][h], d[1][h]));
                W::store(dst[2] + o, d[1][h]);
                W::store(dst[3] + o, average_u8(d[1][h], d[2][h]));
            }
        };
        if (bytes - i >= 2 * n) {
            W s[3] = {load(src[0] + i), load(src[1] + i), load(src[2] + i)};
            for (; bytes - i >= 2 * n; i += n) {
                W d[3][2];
                for (int k = 0; k < 3; ++k) {
                    const W next = load(src[k] + i + n), t = next_lanes(s[k], next);
                    doubled_yuy2_pairs(s[k], bytes_after<2>(t, s[k]), bytes_after<4>(t, s[k]), d[k][0], d[k][1]);
                    s[k] = next;
                }
                store(i, d);
            }
        }
        if constexpr (W::lanes > 1) {
            double_yuy2_rows_from<typename HalfOf<W>::type, adjusted>(src, dst, bytes, i, a);
        } else if (bytes - i >= n) {
            // The last pair's next luma is its own Y1, its next chroma its own.
            static constexpr LaneTable luma = lane_table([](int k) { return k == 14 ? -1 : 0; });
            static constexpr LaneTable chroma = lane_table([](int k) { return k >= 12 ? -1 : 0; });
            W d[3][2];
            for (int k = 0; k < 3; ++k) {
                const W s = load(src[k] + i);
                doubled_yuy2_pairs(s, bsrli<2>(s) | (s & W::template table<luma>()), bsrli<4>(s) | (s & W::template table<chroma>()), d[k][0], d[k][1]);
            }
            store(i, d);
        }
    }
};

} }  // namespace dispconv::simd
