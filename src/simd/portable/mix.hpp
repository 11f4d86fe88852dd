// Portable vocabulary operations used only by the mix kernels.
#pragma once

#include <cstddef>

#include "core/adjust.hpp"
#include "mix/row.hpp"
#include "simd/portable/core.hpp"
#include "simd/portable/load.hpp"

namespace dispconv::simd { namespace {

struct PortableMix {
    static constexpr int block = 16;  // pixels per block of the AYUY2 mixers

    // The blend step over n samples: dst[i] = (frame[i] * (16 - w[i]) + sub[i] * w[i]) >> 4 in
    // 16-bit lanes, truncated. The odd-pixel and pair-average chroma weights come from
    // keep_odd and average_pairs.
    static void mix(const uint8_t* frame, const uint8_t* sub, const uint8_t* weight, uint8_t* dst,
                    int n) {
        for (int i = 0; i < n; ++i) dst[i] = mix_u8(frame[i], sub[i], weight[i]);
    }

    // One block of one row mixed, then adjusted (never the other way round): 16 lumas, each
    // with its own alpha, and 8 U and 8 V weighted by the pair's odd alpha or, with
    // PairAverage, the rounded average of the pair's alphas.
    template <bool PairAverage>
    static void mix_adjust_block(const MixRow& s, const AdjustConstants& a, uint8_t* y, uint8_t* u,
                                 uint8_t* v) {
        uint8_t fy[block], fu[block / 2], fv[block / 2], w[block / 2];
        const uint8_t *frame_y = s.frame_y, *frame_u = s.frame_u, *frame_v = s.frame_v;
        if (s.frame_y_below) PortableCore::average(frame_y, s.frame_y_below, fy, block), frame_y = fy;
        if (s.frame_u_below) PortableCore::average(frame_u, s.frame_u_below, fu, block / 2), frame_u = fu;
        if (s.frame_v_below) PortableCore::average(frame_v, s.frame_v_below, fv, block / 2), frame_v = fv;
        if constexpr (PairAverage)
            PortableLoad::average_pairs(s.alpha, w, block / 2);
        else
            PortableLoad::keep_odd(s.alpha, w, block / 2);
        mix(frame_y, s.sub_y, s.alpha, y, block);
        mix(frame_u, s.sub_u, w, u, block / 2);
        mix(frame_v, s.sub_v, w, v, block / 2);
        PortableCore::adjust(y, y, block, a.luma_gain, a.luma_offset);
        PortableCore::adjust(u, u, block / 2, a.chroma_gain, a.u_offset);
        PortableCore::adjust(v, v, block / 2, a.chroma_gain, a.v_offset);
    }

    // One row of `blocks` blocks into YUY2, odd-pixel chroma weights.
    static void mix_yuy2_run(const MixRow& row, uint32_t blocks, const AdjustConstants& a, uint8_t* dst) {
        for (uint32_t i = 0; i < blocks; ++i) {
            uint8_t y[block], u[block / 2], v[block / 2];
            mix_adjust_block<false>(row.advanced(ptrdiff_t(i) * block), a, y, u, v);
            PortableCore::join_yuy2(y, u, v, dst + ptrdiff_t(i) * 2 * block, block);
        }
    }

    // One row of `samples` samples of a YV12 plane mixed (then adjusted, with Adjust). Chroma
    // rows take the odd alphas of an alpha run twice as long; with `frame_below` the frame
    // sample is the rounded average of the row and the one below it.
    template <class Adjust, bool Chroma>
    static void mix_plane_row(const uint8_t* frame, const uint8_t* frame_below, const uint8_t* sub,
                              const uint8_t* alpha, uint8_t* out, uint32_t samples, int16_t gain,
                              int16_t offset) {
        constexpr uint32_t chunk = 64;
        for (uint32_t i = 0; i < samples; i += chunk) {
            const int n = static_cast<int>(samples - i < chunk ? samples - i : chunk);
            uint8_t weights[chunk], averaged[chunk], mixed[chunk];
            const uint8_t* w = alpha + i;
            if constexpr (Chroma) {
                PortableLoad::keep_odd(alpha + 2 * i, weights, n);
                w = weights;
            }
            const uint8_t* f = frame + i;
            if (frame_below) {
                PortableCore::average(f, frame_below + i, averaged, n);
                f = averaged;
            }
            if constexpr (Adjust::enabled) {
                mix(f, sub + i, w, mixed, n);
                PortableCore::adjust(mixed, out + i, n, gain, offset);
            } else {
                mix(f, sub + i, w, out + i, n);
            }
        }
    }

    // One row of `blocks` blocks into half-width YUY2 (8 pixels out of 16): only the odd
    // samples are kept, and a chroma pair's weight is the alpha of its second output pixel.
    static void mix_half_yuy2_run(const MixRow& row, uint32_t blocks, const AdjustConstants& a, uint8_t* dst) {
        constexpr int out = block / 2;
        for (uint32_t i = 0; i < blocks; ++i) {
            const MixRow s = row.advanced(ptrdiff_t(i) * block);
            uint8_t fy[out], fu[out / 2], fv[out / 2], alpha[out], sy[out], su[out / 2], sv[out / 2];
            PortableLoad::keep_odd(s.frame_y, fy, out);
            PortableLoad::keep_odd(s.frame_u, fu, out / 2);
            PortableLoad::keep_odd(s.frame_v, fv, out / 2);
            PortableLoad::keep_odd(s.alpha, alpha, out);
            PortableLoad::keep_odd(s.sub_y, sy, out);
            PortableLoad::keep_odd(s.sub_u, su, out / 2);
            PortableLoad::keep_odd(s.sub_v, sv, out / 2);
            uint8_t w[out / 2], y[out], u[out / 2], v[out / 2];
            PortableLoad::keep_odd(alpha, w, out / 2);
            mix(fy, sy, alpha, y, out);
            mix(fu, su, w, u, out / 2);
            mix(fv, sv, w, v, out / 2);
            PortableCore::adjust(y, y, out, a.luma_gain, a.luma_offset);
            PortableCore::adjust(u, u, out / 2, a.chroma_gain, a.u_offset);
            PortableCore::adjust(v, v, out / 2, a.chroma_gain, a.v_offset);
            PortableCore::join_yuy2(y, u, v, dst + ptrdiff_t(i) * out * 2, out);
        }
    }

    // The same into an RGB format, after the conversion of the mixed, adjusted samples.
    template <class Format, bool PairAverage>
    static void mix_rgb_run(const MixRow& row, uint32_t blocks, const AdjustConstants& a, const Rgb16Layout& layout,
                            uint8_t* dst) {
        for (uint32_t i = 0; i < blocks; ++i) {
            uint8_t y[block], u[block / 2], v[block / 2];
            mix_adjust_block<PairAverage>(row.advanced(ptrdiff_t(i) * block), a, y, u, v);
            PortableCore::yuv_to_rgb_store<Format>(y, u, v, block, dst + ptrdiff_t(i) * block * Format::bytes_per_pixel,
                                                   layout);
        }
    }
};

} }  // namespace dispconv::simd
