// Pieces shared by the mixing walks: the samples under one row of a block, the chroma weights,
// the mix-then-adjust step and the ways a mixed row is stored.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/formats.hpp"
#include "core/geometry.hpp"
#include "core/walk.hpp"
#include "mix/row.hpp"

namespace dispconv::kernels { namespace {

constexpr int mix_block = 16;  // pixels per block of the AYUY2 mixers

// Output forms of the AYUY2 mixers. `run` mixes one row of `blocks` 16-pixel blocks into dst.
struct Yuy2Output {
    static constexpr int block_bytes = 2 * mix_block;
    static constexpr bool frame_at_sub_spacing = false;
    static constexpr ptrdiff_t row_bytes(int32_t width) { return 2 * ptrdiff_t(width); }
    static bool select_layout(const MIX_INFO*, Rgb16Layout&) { return true; }

    template <class V>
    static void run(const MixRow& s, uint32_t n, const AdjustConstants& a, const Rgb16Layout&, uint8_t* d) {
        V::mix_yuy2_run(s, n, a, d);
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
    static void run(const MixRow& s, uint32_t n, const AdjustConstants& a, const Rgb16Layout&, uint8_t* d) {
        V::mix_half_yuy2_run(s, n, a, d);
    }
};

// PairAverage: the chroma weight is the rounded average of the pair's alphas (interlaced RGB)
// instead of the odd pixel's alpha.
template <class Format, bool PairAverage = false>
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
    static void run(const MixRow& s, uint32_t n, const AdjustConstants& a, const Rgb16Layout& layout, uint8_t* d) {
        V::template mix_rgb_run<Format, PairAverage>(s, n, a, layout, d);
    }
};

// `count` rows of `blocks` blocks in an output form, row r stored at dst[r]. Rows that share a
// byte go block by block, every row's block i before any block i + 1, the order that decides
// the shared bytes; others a whole row at a time (stores to rows in step are slower).
template <class V, class Out>
void mix_rows(const MixRow* rows, int count, uint32_t blocks, const AdjustConstants& a, const Rgb16Layout& layout,
              uint8_t* const* dst) {
    const ptrdiff_t row_bytes = ptrdiff_t(blocks) * Out::block_bytes;
    bool apart = true;
    for (int r = 0; r < count; ++r)
        for (int q = r + 1; q < count; ++q) apart = apart && !runs_overlap(dst[r], dst[q], row_bytes);
    if (apart) {
        for (int r = 0; r < count; ++r) Out::template run<V>(rows[r], blocks, a, layout, dst[r]);
        return;
    }
    for (uint32_t i = 0; i < blocks; ++i)
        for (int r = 0; r < count; ++r)
            Out::template run<V>(rows[r].advanced(ptrdiff_t(i) * mix_block), 1u, a, layout,
                                 dst[r] + ptrdiff_t(i) * Out::block_bytes);
}

// The record's row steps in bytes (frame, sub-picture, image), read once; a chroma row of the
// frame or the sub-picture is half a step.
struct MixSteps {
    ptrdiff_t frame, sub, image;

    static MixSteps of(const MIX_INFO* info) { return {info->frame_stride, info->sub_stride, info->image_stride}; }
    ptrdiff_t frame_chroma() const { return frame >> 1; }
    ptrdiff_t sub_chroma() const { return sub >> 1; }
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

} }  // namespace dispconv::kernels
