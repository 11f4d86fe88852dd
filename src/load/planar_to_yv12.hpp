// Planar YV12 frame to one YV12 surface (Y plane, then V, then U, through one pointer).
#pragma once

#include "core/walk.hpp"

namespace dispconv::kernels { namespace {

// The plane adjuster: `height` rows (at least one) of `width` bytes rounded up to 8. The source
// is read back to back, as if its pitch were the rounded width; only dst steps by its pitch.
template <class V>
void adjust_plane(const uint8_t* src, uint8_t* dst, int32_t width, int32_t height,
                  int32_t dst_stride, int16_t gain, int16_t offset) {
    constexpr int block = 8;
    const uint32_t blocks = loop_count(width, block);
    const ptrdiff_t d_next = drift_step(blocks, block, width, dst_stride);
    for (uint32_t row = loop_count(height, 1); row--; src += blocks * block, dst += d_next)
        V::adjust(src, dst, int(blocks) * block, gain, offset);
}

template <class V>
void loadimage_yv12_ajust(void* src_y, void* src_u, void* src_v, void* dst_, int32_t width,
                          int32_t height, int32_t, int32_t dst_stride,
                          ajust_contrast_info* adjust) {
    const AdjustConstants a = load_adjust_constants();
    auto* dst = static_cast<uint8_t*>(dst_);
    const int64_t plane_rows = adjust->dst_plane_height, luma_rows = adjust->dst_luma_height;
    adjust_plane<V>(static_cast<const uint8_t*>(src_y), dst, width, height, dst_stride,
                    a.luma_gain, a.luma_offset);
    uint8_t* v_plane = dst + luma_rows * dst_stride + (((plane_rows - luma_rows) * dst_stride) >> 2);
    uint8_t* u_plane = v_plane + ((plane_rows * dst_stride) >> 2);
    // Deliberate: the V plane takes the U offset and the U plane the V offset.
    adjust_plane<V>(static_cast<const uint8_t*>(src_v), v_plane, width >> 1, height >> 1,
                    dst_stride >> 1, a.chroma_gain, a.u_offset);
    adjust_plane<V>(static_cast<const uint8_t*>(src_u), u_plane, width >> 1, height >> 1,
                    dst_stride >> 1, a.chroma_gain, a.v_offset);
}

template <class V>
void loadimage_yv12(void* src_y, void* src_u, void* src_v, void* dst_, int32_t width,
                    int32_t height, int32_t src_stride, int32_t dst_stride, ajust_contrast_info*) {
    auto* dst = static_cast<uint8_t*>(dst_);
    // Luma exactly as the kernel has always stepped: rows read `width` apart and written
    // `src_stride` apart; the source moves on by both pitches' remainders and the destination
    // only by the blocks, so successive row pairs overlap.
    {
        const auto* s = static_cast<const uint8_t*>(src_y);
        uint8_t* d = dst;
        const uint32_t blocks = loop_count(width, 16);
        const ptrdiff_t run = ptrdiff_t(blocks) * 16;
        const ptrdiff_t s_next = run + (2 * ptrdiff_t(src_stride) - width) + (2 * ptrdiff_t(dst_stride) - width);
        const uint32_t pairs = loop_count(height, 2);
        for (uint32_t pair = 0; pair < pairs; ++pair, s += s_next, d += run) {
            if (src_stride == width && width > 0) {
                // Both rows of a pair are then one run of width + run bytes, and the next pair
                // rewrites all of it but its first `run` bytes: copy only what survives.
                V::copy(s, d, int(pair + 1 < pairs ? run : width + run));
            } else if (!runs_overlap(d, d + src_stride, run)) {
                V::copy(s, d, int(run));
                V::copy(s + width, d + src_stride, int(run));
            } else {
                for (uint32_t i = 0; i < blocks; ++i) {  // the rows overlap: keep the block order
                    V::copy(s + i * 16, d + i * 16, 16);
                    V::copy(s + width + i * 16, d + src_stride + i * 16, 16);
                }
            }
        }
    }
    // Chroma: the planes start one byte early (deliberate), and `height` chroma rows are copied
    // per plane, twice the plane: the V rows beyond the V plane land on the U plane.
    const ptrdiff_t luma_area = ptrdiff_t(height) * dst_stride;
    uint8_t* v_dst = dst + luma_area - 1;
    uint8_t* u_dst = v_dst + (luma_area >> 2);
    const auto* u_src = static_cast<const uint8_t*>(src_u);
    const auto* v_src = static_cast<const uint8_t*>(src_v);
    const int32_t chroma_width = width >> 1;
    const ptrdiff_t s_pitch = src_stride >> 1, d_pitch = dst_stride >> 1;
    const uint32_t blocks = loop_count(chroma_width, 8);
    const ptrdiff_t run = ptrdiff_t(blocks) * 8;
    const ptrdiff_t s_next = drift_step(blocks, 8, chroma_width, src_stride);
    const ptrdiff_t d_next = drift_step(blocks, 8, chroma_width, dst_stride);
    // The four rows a step writes: when no two share a byte, whole rows in turn give what the
    // blocks in turn give (the distances are the same for every step).
    const bool whole_rows = !runs_overlap(v_dst, v_dst + d_pitch, run) && !runs_overlap(v_dst, u_dst, run) &&
                            !runs_overlap(v_dst, u_dst + d_pitch, run) && !runs_overlap(v_dst + d_pitch, u_dst, run) &&
                            !runs_overlap(v_dst + d_pitch, u_dst + d_pitch, run);
    const uint32_t pairs = loop_count(height, 2);
    // Rows back to back in both surfaces: a plane is one run. Where the V run reaches into
    // the U plane it lands on pairs written earlier, so U whole then V whole ends the same.
    const ptrdiff_t plane_bytes = 2 * ptrdiff_t(pairs) * run;
    if (whole_rows && run == chroma_width && s_pitch == run && d_pitch == run && plane_bytes <= INT32_MAX) {
        V::copy(u_src, u_dst, int(plane_bytes));
        V::copy(v_src, v_dst, int(plane_bytes));
        return;
    }
    for (uint32_t pair = pairs; pair--;
         u_src += s_next, v_src += s_next, u_dst += d_next, v_dst += d_next) {
        if (whole_rows) {
            V::copy(u_src, u_dst, int(run));
            V::copy(u_src + s_pitch, u_dst + d_pitch, int(run));
            V::copy(v_src, v_dst, int(run));
            V::copy(v_src + s_pitch, v_dst + d_pitch, int(run));
            continue;
        }
        for (uint32_t i = 0; i < blocks; ++i) {
            const ptrdiff_t x = ptrdiff_t(i) * 8;
            V::copy(u_src + x, u_dst + x, 8);
            V::copy(u_src + s_pitch + x, u_dst + d_pitch + x, 8);
            V::copy(v_src + x, v_dst + x, 8);
            V::copy(v_src + s_pitch + x, v_dst + d_pitch + x, 8);
        }
    }
}

template <class V>
void loadimage_half_yv12_ajust(void* src_y, void* src_u, void* src_v, void* dst_, int32_t width,
                               int32_t height, int32_t src_stride, int32_t dst_stride,
                               ajust_contrast_info*) {
    const AdjustConstants a = load_adjust_constants();
    auto* dst = static_cast<uint8_t*>(dst_);
    uint8_t* v_plane = dst + ptrdiff_t(height) * dst_stride;
    uint8_t* u_plane = v_plane + ptrdiff_t(height >> 1) * (dst_stride >> 1);

    // Luma: the odd sample of each pair is kept (no averaging, unlike the YUY2 half kernel).
    {
        const auto* s = static_cast<const uint8_t*>(src_y);
        uint8_t* d = dst;
        const uint32_t blocks = loop_count(width, 16);
        const ptrdiff_t s_next = drift_step(blocks, 16, width, src_stride);
        const ptrdiff_t d_next = drift_step(blocks, 8, width >> 1, dst_stride);
        for (uint32_t row = loop_count(height, 1); row--; s += s_next, d += d_next) {
            V::keep_odd_adjusted(s, d, int(blocks) * 8, a.luma_gain, a.luma_offset);
        }
    }
    // Chroma rows: whole blocks of 16, then one block ending exactly at the row end.
    const int32_t chroma_width = width >> 1;
    const int32_t full_blocks = chroma_width / 16, tail = chroma_width % 16;
    // Inlined, so the gain and offset are broadcast once per plane rather than once per row.
    auto chroma_plane = [&](const uint8_t* s, uint8_t* d, int16_t offset) __attribute__((always_inline)) {
        for (uint32_t row = loop_count(height >> 1, 1); row--;
             s += src_stride >> 1, d += dst_stride >> 1) {
            V::keep_odd_adjusted(s, d, full_blocks * 8, a.chroma_gain, offset);
            if (tail) V::keep_odd_adjusted(s + chroma_width - 16, d + chroma_width / 2 - 8, 8, a.chroma_gain, offset);
        }
    };
    chroma_plane(static_cast<const uint8_t*>(src_v), v_plane, a.v_offset);
    chroma_plane(static_cast<const uint8_t*>(src_u), u_plane, a.u_offset);
}

} }  // namespace dispconv::kernels
