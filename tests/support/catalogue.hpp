// What the tests know about each kernel, written once from the kernels' descriptions: how it
// takes its geometry, its block, bytes per pixel, smallest height and parity, which records it
// reads and which buffers it touches. The cross check, the checked-interface cases, the fuzz
// target and the threads test all draw their calls from here. Needs only the public header.
#pragma once

#include <cstdint>

#include "dispconv.h"

namespace dispconv::test {

// How a kernel takes its geometry.
enum class Shape {
    frame,          // the common frame signature; src_stride counts pixels
    packed_2x2,     // yuy2_strech_picture_2X2_yuy2: width in bytes, source rows back to back
    plane,          // strech_pic_*: one 8-bit plane
    edge_directed,  // strech_opt_yuy2_ajust: a tagVideoFrame
    record,         // a MIX_INFO: frame_stride, sub_stride, image_stride, width, height
    fill,           // LoadColorKeyRgb*: the surface and its stride
    mask,           // RelaceMaskWithColorKey: dst and mask sharing one stride
};

// Contract rules beyond block, least width and height.
enum Rule : unsigned {
    layout = 1,          // reads rgb16_layout (refused outside 0..3, and without its record)
    placement = 2,       // loadimage_yv12_ajust: the adjust record places the chroma planes
    src_is_width = 4,    // src_stride must equal width
    even_src = 8,        // src_stride even: the chroma rows are src_stride / 2 apart
    positive_src = 16,    // record kernels: frame_stride
    positive_dst = 32,    // record kernels: sub_stride
    even_dst = 64,       // dst_stride even: YV12 destinations halve it for chroma
    stride_is_width = 128,  // record kernels reading their row length from frame_stride
    even_frame = 256,    // record: frame_stride even (or a multiple of 8 with field_groups)
    even_sub = 512,      // record: sub_stride even
    field_groups = 1024, // interlaced RGB mixers: strips creep by whole groups, frame_stride % 8
    plane_choice = 2048, // strech_pic_*_adjust: plane 1..3
    positive_image = 4096,
    block_walk = 8192,   // the walk ends only on whole blocks: no width off the block is defined
    unguarded = 16384,   // nothing refuses heights below the least: they are not defined
    zero_height = 32768, // height 0 still processes one row (pair): the counter is tested at the bottom
    refuses_low = 65536, // writes nothing (and changes no record) for heights below the least
};

struct KernelFacts {
    const char* name;
    Shape shape;
    int block, least_width;  // width: a multiple of block, at least least_width
    // Row sizes in half bytes per pixel of width: the source (record kernels: frame_stride,
    // 0 where unread), the destination (record kernels: sub_stride) and the record's image.
    int src_x2, dst_x2, image_x2;
    int min_height, parity;  // height: at least min_height, a multiple of parity
    unsigned rules;
    uint32_t buffers;        // the buffers it touches, as 1 << dispconv_buffer
    dispconv_kernel plain;   // an adjusting kernel's plain twin: the same bytes under neutral settings

    bool has(unsigned r) const { return (rules & r) != 0; }
    bool touches(int buffer) const { return (buffers >> buffer & 1) != 0; }
    int64_t dst_row(int64_t width) const { return width * dst_x2 / 2; }
    int64_t image_row(int64_t width) const { return width * image_x2 / 2; }
};

const KernelFacts& facts(dispconv_kernel k);
inline const char* kernel_name(dispconv_kernel k) {
    return k >= 0 && k < DISPCONV_KERNEL_COUNT ? facts(k).name : "unknown kernel";
}

// Settings the tests load: neutral gains 64, offsets 0.
inline ajust_contrast_info settings(int luma_gain = 64, int chroma_gain = 64, int luma_offset = 0,
                                    int u_offset = 0, int v_offset = 0) {
    ajust_contrast_info s{};
    s.luma_gain = luma_gain, s.chroma_gain = chroma_gain, s.luma_offset = luma_offset;
    s.u_offset = u_offset, s.v_offset = v_offset;
    return s;
}
inline void set_adjust(int luma_gain = 64, int chroma_gain = 64, int luma_offset = 0, int u_offset = 0,
                       int v_offset = 0) {
    ajust_contrast_info s = settings(luma_gain, chroma_gain, luma_offset, u_offset, v_offset);
    get_contrast_data(&s);
}

// Fast deterministic bytes (xorshift64*).
inline void fill_random(uint8_t* p, size_t n, uint64_t seed) {
    uint64_t x = 0x9E3779B97F4A7C15ull ^ (seed << 1 | 1);
    for (size_t i = 0; i < n; i += 8) {
        x ^= x >> 12, x ^= x << 25, x ^= x >> 27;
        const uint64_t r = x * 0x2545F4914F6CDD1Dull;
        for (size_t k = 0; k < 8 && i + k < n; ++k) p[i + k] = static_cast<uint8_t>(r >> (8 * k));
    }
}

}  // namespace dispconv::test
