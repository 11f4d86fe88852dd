// Pieces shared by the mixing walks: the samples under one row of a block, the chroma weights,
// the mix-then-adjust step and the ways a mixed row is stored.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/formats.hpp"
#include "load/common.hpp"
#include "load/rgb_pair.hpp"

namespace dispconv::kernels {
namespace {

constexpr int mix_block = 16;  // pixels per block of the AYUY2 mixers

// The samples under one row of a block: frame luma and chroma, sub-picture alpha, luma and
// chroma (the chroma runs are half as long as the luma runs).
struct MixRow {
    const uint8_t* frame_y;
    const uint8_t* frame_u;
    const uint8_t* frame_v;
    const uint8_t* alpha;
    const uint8_t* sub_y;
    const uint8_t* sub_u;
    const uint8_t* sub_v;
};

// A chroma sample is weighted by the alpha of the right-hand pixel of its pair...
struct OddPixelWeight {
    template <class V>
    static void weights(const uint8_t* alpha, uint8_t* w, int pairs) {
        V::keep_odd(alpha, w, pairs);
    }
};
// ...except in the interlaced RGB mixers, which take the rounded average of the pair.
struct PairAverageWeight {
    template <class V>
    static void weights(const uint8_t* alpha, uint8_t* w, int pairs) {
        V::average_pairs(alpha, w, pairs);
    }
};

// Mixes `pixels` lumas (each with its own alpha) and pixels / 2 U and V samples, then adjusts
// them: the adjustment always applies to the mixed values, never to the inputs.
template <class V, class Weight>
void mix_adjust_row(const MixRow& s, int pixels, const AdjustConstants& a, uint8_t* y, uint8_t* u,
                    uint8_t* v) {
    uint8_t w[mix_block / 2];
    Weight::template weights<V>(s.alpha, w, pixels / 2);
    V::mix(s.frame_y, s.sub_y, s.alpha, y, pixels);
    V::mix(s.frame_u, s.sub_u, w, u, pixels / 2);
    V::mix(s.frame_v, s.sub_v, w, v, pixels / 2);
    V::adjust(y, y, pixels, a.luma_gain, a.luma_offset);
    V::adjust(u, u, pixels / 2, a.chroma_gain, a.u_offset);
    V::adjust(v, v, pixels / 2, a.chroma_gain, a.v_offset);
}

// Output forms of one 16-pixel row of a block.
struct Yuy2Output {
    static constexpr int block_bytes = 2 * mix_block;
    static constexpr bool frame_at_sub_spacing = false;
    static constexpr ptrdiff_t row_bytes(int32_t width) { return 2 * ptrdiff_t(width); }
    static bool select_layout(const MIX_INFO*, Rgb16Layout&) { return true; }

    template <class V>
    static void row(const MixRow& s, const AdjustConstants& a, const Rgb16Layout&, uint8_t* dst) {
        uint8_t y[mix_block], u[mix_block / 2], v[mix_block / 2];
        mix_adjust_row<V, OddPixelWeight>(s, mix_block, a, y, u, v);
        V::join_yuy2(y, u, v, dst, mix_block);
    }
};

// Half width: only the right-hand pixel of each pair, and only the odd chroma sample of each
// pair of chroma samples, are mixed; 16 pixels in, 8 YUY2 pixels out.
struct HalfYuy2Output {
    static constexpr int block_bytes = mix_block;
    // Deliberate: the frame's second row and its chroma rows are spaced by sub_stride.
    static constexpr bool frame_at_sub_spacing = true;
    static constexpr ptrdiff_t row_bytes(int32_t width) { return width; }
    static bool select_layout(const MIX_INFO*, Rgb16Layout&) { return true; }

    template <class V>
    static void row(const MixRow& s, const AdjustConstants& a, const Rgb16Layout&, uint8_t* dst) {
        constexpr int out = mix_block / 2;
        uint8_t fy[out], fu[out / 2], fv[out / 2], alpha[out], sy[out], su[out / 2], sv[out / 2];
        V::keep_odd(s.frame_y, fy, out);
        V::keep_odd(s.frame_u, fu, out / 2);
        V::keep_odd(s.frame_v, fv, out / 2);
        V::keep_odd(s.alpha, alpha, out);
        V::keep_odd(s.sub_y, sy, out);
        V::keep_odd(s.sub_u, su, out / 2);
        V::keep_odd(s.sub_v, sv, out / 2);
        uint8_t y[out], u[out / 2], v[out / 2];
        mix_adjust_row<V, OddPixelWeight>(MixRow{fy, fu, fv, alpha, sy, su, sv}, out, a, y, u, v);
        V::join_yuy2(y, u, v, dst, out);
    }
};

template <class Format, class Weight = OddPixelWeight>
struct RgbOutput {
    static constexpr int block_bytes = mix_block * Format::bytes_per_pixel;
    static constexpr bool frame_at_sub_spacing = false;
    static constexpr ptrdiff_t row_bytes(int32_t width) {
        return ptrdiff_t(width) * Format::bytes_per_pixel;
    }
    // Only the 16-bit forms read the record's settings; a selector above 3 refuses the call.
    static bool select_layout(const MIX_INFO* info, Rgb16Layout& layout) {
        return destination_layout<Format>(info->surface_format, layout);
    }

    template <class V>
    static void row(const MixRow& s, const AdjustConstants& a, const Rgb16Layout& layout,
                    uint8_t* dst) {
        uint8_t y[mix_block], u[mix_block / 2], v[mix_block / 2];
        mix_adjust_row<V, Weight>(s, mix_block, a, y, u, v);
        V::template yuv_to_rgb_store<Format>(y, u, v, mix_block, dst, layout);
    }
};

// The record fields that the YUY2-style mixers move as they go, worked on in locals and
// written back on return.
struct MovingFields {
    uint8_t* frame_v;
    uint8_t* frame_u;
    uint8_t* sub_opacity;
    uint8_t* sub_y;
    uint8_t* sub_v;
    uint8_t* sub_u;
    int32_t height;

    static MovingFields of(const MIX_INFO* info) {
        return {info->frame_v, info->frame_u, info->sub_opacity, info->sub_y,
                info->sub_v,   info->sub_u,   info->height};
    }
    void store(MIX_INFO* info) const {
        info->frame_v = frame_v;
        info->frame_u = frame_u;
        info->sub_opacity = sub_opacity;
        info->sub_y = sub_y;
        info->sub_v = sub_v;
        info->sub_u = sub_u;
        info->height = height;
    }
};

// Signed countdown as the mixers count rows: wraps instead of overflowing on a caller's
// nonsense value.
constexpr int32_t count_down(int32_t count, int32_t step) {
    return static_cast<int32_t>(static_cast<uint32_t>(count) - static_cast<uint32_t>(step));
}

// Passes of `do { ...; count -= step; } while (count > 0)` on a signed count.
constexpr uint32_t passes_while_positive(int32_t count, int32_t step) {
    return count <= step ? 1u : static_cast<uint32_t>((int64_t(count) + step - 1) / step);
}

}  // namespace
}  // namespace dispconv::kernels
