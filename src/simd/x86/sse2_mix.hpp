// SSE2 operations of the mix kernels; anything not replaced here is the portable one.
#pragma once

#include <cstring>

#include "core/geometry.hpp"
#include "simd/portable/mix.hpp"
#include "simd/x86/sse2_ops.hpp"

namespace dispconv::simd::x86 {
namespace {

// The blend step on words holding bytes: w = 16 - a (saturating), low products, saturating
// sum, logical shift by 4. The result is not yet narrowed (above 255 only for alphas beyond 16).
inline __m128i mix_words(__m128i frame, __m128i sub, __m128i alpha) {
    const __m128i w = _mm_subs_epi16(_mm_set1_epi16(16), alpha);
    return _mm_srli_epi16(_mm_adds_epi16(_mm_mullo_epi16(frame, w), _mm_mullo_epi16(sub, alpha)), 4);
}
// Mixed words as bytes would hold them after an unsigned-saturating pack (they are never
// negative, so only the top needs clamping).
inline __m128i mix_words_narrowed(__m128i frame, __m128i sub, __m128i alpha) {
    return _mm_min_epi16(mix_words(frame, sub, alpha), _mm_set1_epi16(255));
}
inline __m128i mix_bytes(__m128i frame, __m128i sub, __m128i alpha) {
    const __m128i zero = _mm_setzero_si128();
    return _mm_packus_epi16(
        mix_words(_mm_unpacklo_epi8(frame, zero), _mm_unpacklo_epi8(sub, zero), _mm_unpacklo_epi8(alpha, zero)),
        mix_words(_mm_unpackhi_epi8(frame, zero), _mm_unpackhi_epi8(sub, zero), _mm_unpackhi_epi8(alpha, zero)));
}

// One block of one row (16 pixels) mixed and adjusted: y as 16 bytes, u and v as 8 bytes in
// the low half.
struct MixedBlock {
    __m128i y, u, v;
};
template <bool PairAverage>
inline MixedBlock mix_adjust_block(const MixRow& s, ptrdiff_t at, const AdjustLanes& l) {
    const __m128i zero = _mm_setzero_si128(), bytes = low_bytes_mask();
    const ptrdiff_t half = at / 2;
    __m128i fy = load16(s.frame_y + at), fu = load8(s.frame_u + half), fv = load8(s.frame_v + half);
    if (s.frame_y_below) fy = _mm_avg_epu8(fy, load16(s.frame_y_below + at));
    if (s.frame_u_below) fu = _mm_avg_epu8(fu, load8(s.frame_u_below + half));
    if (s.frame_v_below) fv = _mm_avg_epu8(fv, load8(s.frame_v_below + half));
    const __m128i alpha = load16(s.alpha + at), sy = load16(s.sub_y + at);
    // The chroma weight of each pixel pair, as a word.
    const __m128i odd = _mm_srli_epi16(alpha, 8);
    const __m128i w = PairAverage ? _mm_avg_epu16(_mm_and_si128(alpha, bytes), odd) : odd;
    const __m128i y_lo = mix_words_narrowed(_mm_unpacklo_epi8(fy, zero), _mm_unpacklo_epi8(sy, zero),
                                            _mm_unpacklo_epi8(alpha, zero));
    const __m128i y_hi = mix_words_narrowed(_mm_unpackhi_epi8(fy, zero), _mm_unpackhi_epi8(sy, zero),
                                            _mm_unpackhi_epi8(alpha, zero));
    const __m128i u = mix_words_narrowed(_mm_unpacklo_epi8(fu, zero), _mm_unpacklo_epi8(load8(s.sub_u + half), zero), w);
    const __m128i v = mix_words_narrowed(_mm_unpacklo_epi8(fv, zero), _mm_unpacklo_epi8(load8(s.sub_v + half), zero), w);
    const __m128i ua = adjust_words(u, l.chroma_gain, l.u_offset);
    const __m128i va = adjust_words(v, l.chroma_gain, l.v_offset);
    return {_mm_packus_epi16(adjust_words(y_lo, l.luma_gain, l.luma_offset), adjust_words(y_hi, l.luma_gain, l.luma_offset)),
            _mm_packus_epi16(ua, ua), _mm_packus_epi16(va, va)};
}

// The half mixer's block: the odd pixels of 16 mixed and adjusted into 8 YUY2 pixels, each
// chroma pair weighted by the alpha of its second output pixel. The block at a row's start
// leaves the first chroma byte unread: the kernel never uses it.
template <bool RowStart>
inline __m128i mix_half_block(const MixRow& s, ptrdiff_t at, const AdjustLanes& l) {
    const __m128i zero = _mm_setzero_si128();
    const ptrdiff_t half = at / 2;
    auto odd_chroma = [half](const uint8_t* p) {  // as words 0..3
        if constexpr (RowStart) {
            uint8_t b[8] = {};
            std::memcpy(b + 1, p + half + 1, 7);
            return _mm_srli_epi16(load8(b), 8);
        }
        return _mm_srli_epi16(load8(p + half), 8);
    };
    const __m128i alpha = _mm_srli_epi16(load16(s.alpha + at), 8);
    const __m128i w = _mm_packs_epi32(_mm_srli_epi32(alpha, 16), zero);
    const __m128i y = mix_words_narrowed(_mm_srli_epi16(load16(s.frame_y + at), 8), _mm_srli_epi16(load16(s.sub_y + at), 8), alpha);
    const __m128i u = mix_words_narrowed(odd_chroma(s.frame_u), odd_chroma(s.sub_u), w);
    const __m128i v = mix_words_narrowed(odd_chroma(s.frame_v), odd_chroma(s.sub_v), w);
    const __m128i y8 = _mm_packus_epi16(adjust_words(y, l.luma_gain, l.luma_offset), zero);
    const __m128i u8 = _mm_packus_epi16(adjust_words(u, l.chroma_gain, l.u_offset), zero);
    const __m128i v8 = _mm_packus_epi16(adjust_words(v, l.chroma_gain, l.v_offset), zero);
    return _mm_unpacklo_epi8(y8, _mm_unpacklo_epi8(u8, v8));
}

inline AdjustLanes adjust_lanes(const AdjustConstants& a) {
    return adjust_lanes(a.luma_gain, a.chroma_gain, a.luma_offset, a.u_offset, a.v_offset);
}

}  // namespace
}  // namespace dispconv::simd::x86

namespace dispconv::simd {
namespace {

struct Sse2Mix : PortableMix {
    static void mix(const uint8_t* frame, const uint8_t* sub, const uint8_t* weight, uint8_t* dst, int n) {
        int i = 0;
        for (; i + 16 <= n; i += 16)
            x86::store16(dst + i, x86::mix_bytes(x86::load16(frame + i), x86::load16(sub + i), x86::load16(weight + i)));
        if (i + 8 <= n)
            x86::store8(dst + i, x86::mix_bytes(x86::load8(frame + i), x86::load8(sub + i), x86::load8(weight + i))), i += 8;
        if (i < n) PortableMix::mix(frame + i, sub + i, weight + i, dst + i, n - i);
    }

    static void mix_yuy2_rows(const MixRow* rows, int count, uint32_t blocks, const AdjustConstants& a,
                              uint8_t* const* dst) {
        const x86::AdjustLanes l = x86::adjust_lanes(a);
        for (uint32_t i = 0; i < blocks; ++i) {
            const ptrdiff_t at = ptrdiff_t(i) * block;
            for (int r = 0; r < count; ++r) {
                const x86::MixedBlock m = x86::mix_adjust_block<false>(rows[r], at, l);
                x86::join_yuy2_16(dst[r] + 2 * at, m.y, m.u, m.v);
            }
        }
    }

    template <class Adjust, bool Chroma>
    static void mix_plane_row(const uint8_t* frame, const uint8_t* frame_below, const uint8_t* sub,
                              const uint8_t* alpha, uint8_t* out, uint32_t samples, int16_t gain,
                              int16_t offset) {
        using namespace x86;
        const __m128i g = _mm_set1_epi16(gain), o = _mm_set1_epi16(offset);
        // 16 samples, or (Half) 8 in the low half.
        auto step = [&]<bool Half>(uint32_t i) {
            auto load = [](const uint8_t* p) { return Half ? load8(p) : load16(p); };
            __m128i f = load(frame + i);
            if (frame_below) f = _mm_avg_epu8(f, load(frame_below + i));
            __m128i w;
            if constexpr (Chroma)
                w = _mm_packus_epi16(_mm_srli_epi16(load16(alpha + 2 * i), 8),
                                     Half ? _mm_setzero_si128() : _mm_srli_epi16(load16(alpha + 2 * i + 16), 8));
            else
                w = load(alpha + i);
            __m128i m = mix_bytes(f, load(sub + i), w);
            if constexpr (Adjust::enabled) m = x86::adjust_bytes(m, g, o);
            return m;
        };
        uint32_t i = 0;
        for (; i + 16 <= samples; i += 16) store16(out + i, step.template operator()<false>(i));
        if (i + 8 <= samples) store8(out + i, step.template operator()<true>(i)), i += 8;
        if (i < samples)
            PortableMix::mix_plane_row<Adjust, Chroma>(frame + i, frame_below ? frame_below + i : nullptr, sub + i,
                                                       alpha + (Chroma ? 2 * i : i), out + i, samples - i, gain, offset);
    }

    // Rows one after the other where they share no byte (stores to two rows in step are
    // slower), else block by block as the reference stores.
    static void mix_half_yuy2_rows(const MixRow* rows, int count, uint32_t blocks, const AdjustConstants& a,
                                   uint8_t* const* dst) {
        const x86::AdjustLanes l = x86::adjust_lanes(a);
        auto mix_block = [&](int r, uint32_t i) {
            const ptrdiff_t at = ptrdiff_t(i) * block;
            x86::store16(dst[r] + at, i ? x86::mix_half_block<false>(rows[r], at, l) : x86::mix_half_block<true>(rows[r], 0, l));
        };
        if (count == 2 && runs_overlap(dst[0], dst[1], ptrdiff_t(blocks) * block)) {
            for (uint32_t i = 0; i < blocks; ++i) mix_block(0, i), mix_block(1, i);
            return;
        }
        for (int r = 0; r < count; ++r)
            for (uint32_t i = 0; i < blocks; ++i) mix_block(r, i);
    }

    template <class Format, bool PairAverage>
    static void mix_rgb_rows(const MixRow* rows, int count, uint32_t blocks, const AdjustConstants& a,
                             const Rgb16Layout& layout, uint8_t* const* dst) {
        const x86::AdjustLanes l = x86::adjust_lanes(a);
        const x86::Rgb16Lanes lanes = x86::rgb16_lanes(layout);
        for (uint32_t i = 0; i < blocks; ++i) {
            const ptrdiff_t at = ptrdiff_t(i) * block;
            for (int r = 0; r < count; ++r) {
                const x86::MixedBlock m = x86::mix_adjust_block<PairAverage>(rows[r], at, l);
                x86::store_rgb_16<Format>(dst[r] + at * Format::bytes_per_pixel,
                                          x86::luma_to_rgb(m.y, x86::chroma_words(m.u, m.v)), lanes);
            }
        }
    }
};

}  // namespace
}  // namespace dispconv::simd
