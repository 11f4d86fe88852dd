// YV12 mixers: a sub-picture over a YV12 frame into YV12 planes, one pass per plane (Y, then V,
// then U). The record's height (and, interlaced, width) is halved between the luma and chroma
// passes; no pointer field moves.
#pragma once

#include "mix/common.hpp"

namespace dispconv::kernels { namespace {

constexpr int yv12_block = 8;  // samples per block

// One plane pass: where each run starts and how far every position moves from one output row
// to the next (the drifting steps include the row's blocks).
struct PlanePass {
    const uint8_t* frame;
    const uint8_t* sub;
    const uint8_t* alpha;
    uint8_t* out;
    ptrdiff_t frame_next, sub_next, alpha_next, out_next;
    ptrdiff_t frame_below;  // the field row below, for the interpolated rows
};

// Progressive passes move every position on after each row; field passes produce output rows
// in pairs, the second the average of the field row and the next, and move the frame on only
// after the pair.
template <class V, class Adjust, bool Chroma, bool Field>
void plane_pass(PlanePass p, uint32_t rows, uint32_t samples, int16_t gain, int16_t offset) {
    for (uint32_t row = 0; row < rows; ++row) {
        const bool interpolated = Field && (row & 1);
        V::template mix_plane_row<Adjust, Chroma>(p.frame, interpolated ? p.frame + p.frame_below : nullptr,
                                                  p.sub, p.alpha, p.out, samples, gain, offset);
        if (!Field || interpolated) p.frame += p.frame_next;
        p.sub += p.sub_next;
        p.alpha += p.alpha_next;
        p.out += p.out_next;
    }
}

template <class V, class Adjust, bool Field>
void mix_yv12(MIX_INFO* info) {
    const AdjustConstants a = adjust_snapshot<Adjust>();
    const int32_t width = info->width;
    const MixSteps step = MixSteps::of(info);
    // A field pass counts output rows in pairs.
    const auto rows_of = [](int32_t count) {
        return Field ? 2 * passes_while_positive(count, 2) : passes_while_positive(count, 1);
    };

    const uint32_t luma_blocks = loop_count(width, yv12_block);
    const PlanePass luma{info->frame_y,
                         info->sub_y,
                         info->sub_opacity,
                         info->image,
                         drift_step(luma_blocks, yv12_block, width, step.frame),
                         drift_step(luma_blocks, yv12_block, width, step.sub),
                         drift_step(luma_blocks, yv12_block, width, step.sub),
                         drift_step(luma_blocks, yv12_block, width, step.image),
                         step.frame};
    plane_pass<V, Adjust, false, Field>(luma, rows_of(info->height), luma_blocks * yv12_block,
                                        a.luma_gain, a.luma_offset);

    info->height = static_cast<int32_t>(static_cast<uint32_t>(info->height) >> 1);
    int32_t chroma_width = width >> 1;
    if constexpr (Field) {
        info->width = static_cast<int32_t>(static_cast<uint32_t>(info->width) >> 1);
        chroma_width = info->width;
    }
    const uint32_t chroma_blocks = loop_count(chroma_width, yv12_block);
    const uint32_t chroma_rows = rows_of(info->height);
    // Chroma row r reads the alphas of pixel row 2r and the sub-picture's chroma row 2r.
    const auto chroma_pass = [&](const uint8_t* frame, const uint8_t* sub, uint8_t* out,
                                 int16_t offset) {
        const PlanePass pass{frame,
                             sub,
                             info->sub_opacity,
                             out,
                             drift_step(chroma_blocks, yv12_block, 0, (step.frame - width) >> 1),
                             drift_step(chroma_blocks, yv12_block, chroma_width, step.sub),
                             drift_step(chroma_blocks, 2 * yv12_block, width, 2 * step.sub),
                             drift_step(chroma_blocks, yv12_block, 0, (step.image - width) >> 1),
                             step.frame_chroma()};
        plane_pass<V, Adjust, true, Field>(pass, chroma_rows, chroma_blocks * yv12_block,
                                           a.chroma_gain, offset);
    };
    chroma_pass(info->frame_v, info->sub_v, info->image_v, a.v_offset);
    chroma_pass(info->frame_u, info->sub_u, info->image_u, a.u_offset);
}

template <class V>
void mix_ayv12_yv12_p(MIX_INFO* info) {
    mix_yv12<V, Plain, false>(info);
}
template <class V>
void mix_ayv12_yv12_p_ajust(MIX_INFO* info) {
    mix_yv12<V, Adjusted, false>(info);
}
template <class V>
void mix_ayv12_yv12_i(MIX_INFO* info) {
    mix_yv12<V, Plain, true>(info);
}

} }  // namespace dispconv::kernels
