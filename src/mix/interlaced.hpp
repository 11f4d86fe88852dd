// Interlaced mixers: the frame is one field, doubled in height while it is mixed. Output rows
// come in groups of four; rows between two field rows are their rounded average.
#pragma once

#include "mix/common.hpp"

namespace dispconv::kernels { namespace {

// How one output row of a group is taken from the field: field luma row k or k + 1 (possibly
// averaged with the row below it) and chroma row j (possibly averaged with j + 1).
struct FieldRowPlan {
    int luma_row;
    bool luma_average;
    bool chroma_average;
};
constexpr FieldRowPlan full_group[4] = {
    {0, false, false}, {0, true, false}, {1, false, true}, {1, true, true}};
// The last group reads no row beyond the field: its fourth row repeats field row k + 1 and all
// four rows keep chroma row j.
constexpr FieldRowPlan last_group[4] = {
    {0, false, false}, {0, true, false}, {1, false, false}, {1, false, false}};

// The frame samples of one output row as a mix row reads them: field luma row k or k + 1
// (perhaps averaged with the row below) and chroma row j (perhaps averaged with j + 1).
inline MixRow field_row(const FieldRowPlan& plan, MixRow row, ptrdiff_t luma_pitch, ptrdiff_t chroma_pitch) {
    if (plan.luma_average) row.frame_y_below = row.frame_y + luma_pitch;
    if (plan.chroma_average) row.frame_u_below = row.frame_u + chroma_pitch, row.frame_v_below = row.frame_v + chroma_pitch;
    return row;
}

// Runs the groups of a picture `height` output rows tall: fewer than 8 rows get one group under
// the last-group scheme; otherwise full groups while the count (less 4 before the first and
// after each group) stays above 0, then the last group.
template <class Group>
void for_each_group(int32_t height, Group&& group) {
    if (height < 8) {
        group(last_group, true);
        return;
    }
    int32_t count = count_down(height, 4);
    do {
        group(full_group, false);
        count = count_down(count, 4);
    } while (count > 0);
    group(last_group, true);
}

// YUY2 output, row by row over the whole width, the record's plane pointers moving as it goes.
template <class V>
void mix_ayuy2_yuy2_i_ajust(MIX_INFO* info) {
    if (info->height < 4) return;
    const AdjustConstants a = load_adjust_constants();
    const int32_t width = info->width;
    const MixSteps step = MixSteps::of(info);
    // The width counter runs over pixel pairs, 8 pairs per block.
    const uint32_t blocks = loop_count(width >> 1, mix_block / 2);
    const ptrdiff_t run = ptrdiff_t(blocks) * mix_block;

    MovingFields m = MovingFields::of(info);
    const uint8_t* frame_y = info->frame_y;
    uint8_t* out = info->image;
    const int32_t rows = m.height;
    if (rows >= 8) m.height = count_down(m.height, 4);
    for_each_group(rows, [&](const FieldRowPlan* plan, bool last) {
        for (int r = 0; r < 4; ++r) {
            if (last && r == 2) m.height = 2;  // the last group counts its final two rows
            const MixRow row = field_row(plan[r], {frame_y, m.frame_u, m.frame_v, m.sub_opacity, m.sub_y, m.sub_u, m.sub_v},
                                         step.frame, step.frame_chroma());
            Yuy2Output::run<V>(row, blocks, a, rgb16_layouts[0], out);
            frame_y += run;
            out += 2 * run;
            m.sub_opacity += run;
            m.sub_y += run;
            m.sub_u += run / 2;
            m.sub_v += run / 2;
            m.frame_u += run / 2;
            m.frame_v += run / 2;
            // Even rows of a group read a field row that the next row reads again.
            frame_y += (r % 2 == 0) ? -ptrdiff_t(width) : step.frame - width;
            // Frame chroma returns to the start of its row until the group ends.
            const ptrdiff_t chroma_step = (r == 3) ? step.frame_chroma() - (width >> 1) : -(width >> 1);
            m.frame_u += chroma_step;
            m.frame_v += chroma_step;
            m.sub_opacity += step.sub - width;
            m.sub_y += step.sub - width;
            m.sub_u += step.sub_chroma() - (width >> 1);
            m.sub_v += step.sub_chroma() - (width >> 1);
            out += step.image - 2 * ptrdiff_t(width);
            if (last && r >= 2) m.height = count_down(m.height, 1);
        }
        if (!last) m.height = count_down(m.height, 4);
    });
    m.store(info);
}

// RGB output in vertical strips of 16 pixels, on working copies only: the record is not changed.
template <class V, class Format>
void mix_rgb_interlaced(const MIX_INFO* info) {
    using Out = RgbOutput<Format, true>;
    Rgb16Layout layout;
    if (!Out::select_layout(info, layout)) return;
    const AdjustConstants a = load_adjust_constants();
    const int32_t height = info->height;
    const MixSteps step = MixSteps::of(info);

    // The group's first field row, moved on group by group and strip by strip.
    MixRow at{info->frame_y, info->frame_u, info->frame_v, info->sub_opacity, info->sub_y, info->sub_u, info->sub_v};
    uint8_t* out = info->image;
    uint32_t across = 1;  // blocks per row of a group: one strip, or all of them
    auto group = [&](const FieldRowPlan* plan, bool) {
        MixRow rows[4];
        uint8_t* dst[4];
        for (int r = 0; r < 4; ++r) {
            rows[r] = field_row(plan[r], at.moved(plan[r].luma_row * step.frame, 0, r * step.sub, r * step.sub_chroma()),
                                step.frame, step.frame_chroma());
            dst[r] = out + r * step.image;
        }
        mix_rows<V, Out>(rows, 4, across, a, layout, dst);
        at = at.moved(2 * step.frame, step.frame_chroma(), 4 * step.sub, 4 * step.sub_chroma());
        out += 4 * step.image;
    };
    const uint32_t strips = loop_count(info->width, mix_block);
    // When every strip ends exactly `height` rows of each plane down (whole groups, a frame
    // pitch that the chroma eighths divide) and no two output rows share a byte, each strip
    // is a column of one picture: the groups can go across all strips at once, same bytes.
    const ptrdiff_t out_row = ptrdiff_t(strips) * Out::block_bytes;
    if (height >= 4 && height % 4 == 0 && step.frame % 8 == 0 &&
        (step.image >= out_row || -step.image >= out_row)) {
        across = strips;
        for_each_group(height, group);
        return;
    }
    for (uint32_t strip = strips; strip--;) {
        for_each_group(height, group);
        // Back up by `height` rows of each plane's per-output-row distance, then one strip right.
        at = at.moved(mix_block - ptrdiff_t(height) * step.frame_chroma(),
                      mix_block / 2 - ptrdiff_t(height) * (step.frame >> 3),
                      mix_block - ptrdiff_t(height) * step.sub,
                      mix_block / 2 - ptrdiff_t(height) * step.sub_chroma());
        out += Out::block_bytes - ptrdiff_t(height) * step.image;
    }
}

template <class V>
void mix_ayuy2_rgb32_i_ajust(MIX_INFO* info) {
    mix_rgb_interlaced<V, Rgb32>(info);
}
template <class V>
void mix_ayuy2_rgb24_i_ajust(MIX_INFO* info) {
    mix_rgb_interlaced<V, Rgb24>(info);
}
template <class V>
void mix_ayuy2_rgb16_i_ajust(MIX_INFO* info) {
    mix_rgb_interlaced<V, Rgb16>(info);
}

} }  // namespace dispconv::kernels
