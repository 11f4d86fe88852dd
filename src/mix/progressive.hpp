// Progressive mixers: a sub-picture over a YV12 frame into YUY2 (full or half width) or RGB,
// two rows per pass sharing the frame's chroma row. The record's plane pointers and height
// are the working state.
#pragma once

#include "mix/common.hpp"

namespace dispconv::kernels { namespace {

template <class V, class Out>
void mix_progressive(MIX_INFO* info) {
    Rgb16Layout layout;
    if (!Out::select_layout(info, layout)) return;  // the record is left untouched too
    const AdjustConstants a = load_adjust_constants();
    const int32_t width = info->width;
    const MixSteps step = MixSteps::of(info);
    const ptrdiff_t frame_chroma_pitch = Out::frame_at_sub_spacing ? step.sub_chroma() : step.frame_chroma();
    // The second row of a pair is reached by the half pitch doubled: an odd stride loses a byte.
    const ptrdiff_t frame_second_row = 2 * frame_chroma_pitch;
    const ptrdiff_t sub_second_row = 2 * step.sub_chroma();
    const uint32_t blocks = loop_count(width, mix_block);

    MovingFields m = MovingFields::of(info);
    const uint8_t* frame_y = info->frame_y;
    uint8_t* out = info->image;
    const ptrdiff_t run = ptrdiff_t(blocks) * mix_block;
    do {
        // The frame's chroma row serves both rows; the sub-picture has a chroma row per row.
        const MixRow pair[2] = {
            {frame_y, m.frame_u, m.frame_v, m.sub_opacity, m.sub_y, m.sub_u, m.sub_v},
            {frame_y + frame_second_row, m.frame_u, m.frame_v, m.sub_opacity + sub_second_row,
             m.sub_y + sub_second_row, m.sub_u + step.sub_chroma(), m.sub_v + step.sub_chroma()}};
        uint8_t* const dst[2] = {out, out + step.image};
        mix_rows<V, Out>(pair, 2, blocks, a, layout, dst);
        frame_y += run;
        out += ptrdiff_t(blocks) * Out::block_bytes;
        m.sub_opacity += run;
        m.sub_y += run;
        m.frame_u += run / 2;
        m.frame_v += run / 2;
        m.sub_u += run / 2;
        m.sub_v += run / 2;
        // Steps computed for an exact width: a partial last block drifts every later pair.
        frame_y += 2 * step.frame - width;
        out += 2 * step.image - Out::row_bytes(width);
        m.sub_opacity += 2 * step.sub - width;
        m.sub_y += 2 * step.sub - width;
        m.frame_u += frame_chroma_pitch - (width >> 1);
        m.frame_v += frame_chroma_pitch - (width >> 1);
        m.sub_u += step.sub - (width >> 1);
        m.sub_v += step.sub - (width >> 1);
        m.height = count_down(m.height, 2);
    } while (m.height > 0);
    m.store(info);
}

template <class V>
void mix_ayuy2_yuy2_p_ajust(MIX_INFO* info) {
    mix_progressive<V, Yuy2Output>(info);
}
template <class V>
void mix_ayuy2_half_yuy2_p_ajust(MIX_INFO* info) {
    mix_progressive<V, HalfYuy2Output>(info);
}
template <class V>
void mix_ayuy2_rgb32_p_ajust(MIX_INFO* info) {
    mix_progressive<V, RgbOutput<Rgb32>>(info);
}
template <class V>
void mix_ayuy2_rgb24_p_ajust(MIX_INFO* info) {
    mix_progressive<V, RgbOutput<Rgb24>>(info);
}
template <class V>
void mix_ayuy2_rgb16_p_ajust(MIX_INFO* info) {
    mix_progressive<V, RgbOutput<Rgb16>>(info);
}

} }  // namespace dispconv::kernels
