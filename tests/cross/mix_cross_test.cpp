// Every mixing kernel, on every instruction set, equals the portable reference: the output
// surface (and the YV12 chroma planes) byte for byte, and the record after the call.
#include <cstdlib>

#include "cross/cross_isa.hpp"

namespace dispconv::test {
namespace {

struct MixEntry {
    const char* name;
    MixKernel MixKernels::*member;
    int out_bytes_x2;  // output bytes per pixel, times two
    int layouts = 1;   // 16-bit kernels run all four layouts and a refused one
    bool strips = false;
};

#define K(name, out_x2) {#name, &MixKernels::name, out_x2}
#define K16(name) {#name, &MixKernels::name, 4, 5}
#define KS(name, out_x2, layouts) {#name, &MixKernels::name, out_x2, layouts, true}
const MixEntry mix_kernels[] = {
    K(mix_ayuy2_yuy2_p_ajust, 4),  K(mix_ayuy2_half_yuy2_p_ajust, 2), K(mix_ayuy2_rgb32_p_ajust, 8),
    K(mix_ayuy2_rgb24_p_ajust, 6), K16(mix_ayuy2_rgb16_p_ajust),       K(mix_ayuy2_yuy2_i_ajust, 4),
    KS(mix_ayuy2_rgb32_i_ajust, 8, 1), KS(mix_ayuy2_rgb24_i_ajust, 6, 1), KS(mix_ayuy2_rgb16_i_ajust, 4, 5),
    K(mix_ayv12_yv12_p, 2),        K(mix_ayv12_yv12_p_ajust, 2),       K(mix_ayv12_yv12_i, 2),
};
#undef K
#undef K16
#undef KS

struct MixGeometry {
    int width, height, frame_stride, sub_stride, image_stride;
    int layout = 0;
    bool any_alpha = false;  // alpha bytes 0..255 instead of the format's 0..16
};

// Rows an interlaced RGB kernel moves per strip beyond what it writes: it backs up by `height`
// rows after writing whole groups of four, so short or uneven pictures climb or sink strip by
// strip (deliberately), reading and writing outside the area.
int strip_creep_rows(const MixEntry& k, int width, int height) {
    if (!k.strips) return 0;
    int groups = 1;
    if (height >= 8) groups += (height - 4 + 3) / 4;
    const int strips = width > 16 ? (width + 15) / 16 : 1;
    return strips * std::abs(4 * groups - height);
}

// One plane of `stride` over the rows a kernel may touch: the area, the rows an interlaced kernel
// reads below the field or writes in a short picture, the creep of the strips above and below,
// and per row the overrun and drift of widths off the block.
struct PlaneRoom {
    size_t bytes, first;  // region size, offset of the plane's first row in it
};
PlaneRoom plane_room(int stride, int height, int creep_rows) {
    const size_t span = size_t(std::abs(stride)) + 128;
    const size_t margin = size_t(creep_rows) * span + 512;
    return {span * (size_t(height) + 8) + 2 * margin, margin};
}

CrossCase mix_case(const MixEntry& k, const MixGeometry& g) {
    CrossCase c;
    c.name = describe(k.name, {{"width", g.width}, {"height", g.height}, {"frame_stride", g.frame_stride},
                               {"sub_stride", g.sub_stride}, {"image_stride", g.image_stride},
                               {"layout", g.layout}, {"any_alpha", g.any_alpha}});
    const int creep = strip_creep_rows(k, g.width, g.height);
    const PlaneRoom frame_room = plane_room(g.frame_stride, g.height, creep);
    const PlaneRoom sub_room = plane_room(g.sub_stride, g.height, creep);
    const PlaneRoom image_room = plane_room(g.image_stride, g.height, creep);
    // Source planes one after another: frame Y, V, U, then alpha, sub-picture Y, V, U.
    const PlaneRoom planes[7] = {frame_room, frame_room, frame_room, sub_room, sub_room, sub_room, sub_room};
    size_t at[7], src = 4096;
    for (int i = 0; i < 7; ++i) at[i] = src + planes[i].first, src += planes[i].bytes;
    c.src_bytes = src + 4096;
    // The surface, then the YV12 output's U and V planes, with canary around them.
    const size_t image_at = 4096 + image_room.first;
    const size_t image_u_at = image_at - image_room.first + image_room.bytes + 4096;
    const size_t image_v_at = image_u_at + image_room.bytes + 4096;
    c.dst_bytes = image_v_at + image_room.bytes + 4096;
    c.dst_pitch = g.image_stride;
    c.dst_origin = image_at;
    c.run = [=](const KernelTable& t, Arenas& a) {
        uint8_t* s = a.src.data();
        if (!g.any_alpha)
            for (size_t i = at[3] - planes[3].first; i < at[3] - planes[3].first + planes[3].bytes; ++i) s[i] %= 17;
        a.settings.rgb16_layout = g.layout;
        uint8_t* d = a.dst.data();
        a.info = MIX_INFO{g.frame_stride, g.sub_stride, g.image_stride, g.width, g.height,
                          s + at[0],      s + at[1],    s + at[2],      s + at[3], s + at[4],
                          s + at[6],      s + at[5],    d + image_at,   d + image_u_at, d + image_v_at,
                          0x12345678u,    7,            9,              &a.settings};
        (t.mix->*k.member)(&a.info);
    };
    c.record = mix_record;
    return c;
}

struct Size {
    int width, height;
};
// On and off the 16-pixel block (and the YV12 kernels' 8), odd heights, the interlaced group
// rules (below 4, 4 to 7, 8 and just above), a zero height, one block.
const Size sizes[] = {{16, 2},  {32, 4},  {48, 7},  {17, 5},  {24, 8},  {5, 3},   {64, 9},
                      {96, 12}, {33, 13}, {128, 11}, {16, 0}, {80, 16}, {40, 6},  {112, 17}};

// Output row bytes plus a gap of canary, so that writes past a row's end show (widths off the
// block overlap the next row: the order of the writes matters there too).
int image_stride_for(const MixEntry& k, int width, int gap) { return width * k.out_bytes_x2 / 2 + gap; }

// Every kernel over the small sizes with even then odd strides (their chroma pitch rounds down)
// and every layout of the 16-bit ones; alphas beyond 16, outside the format but defined by the
// lane arithmetic; realistic sizes with equal strides, as a player passes them, and a surface
// without padding.
std::vector<MixGeometry> mix_geometries(const MixEntry& k) {
    std::vector<MixGeometry> all;
    for (const Size& s : sizes)
        for (int odd = 0; odd < 2; ++odd)
            for (int layout = 0; layout < k.layouts; ++layout)
                all.push_back({s.width, s.height, s.width + 40 + odd, s.width + 24 + odd,
                               image_stride_for(k, s.width, odd ? 24 : 40), layout == 4 ? 7 : layout});
    for (const Size& s : {Size{48, 8}, Size{33, 12}})
        all.push_back({s.width, s.height, s.width + 16, s.width + 16, image_stride_for(k, s.width, 16),
                       k.layouts > 1 ? 2 : 0, true});
    for (const Size& s : {Size{720, 480}, Size{1920, 8}})
        all.push_back({s.width, s.height, s.width, s.width, image_stride_for(k, s.width, 0), k.layouts > 1 ? 1 : 0});
    return all;
}

TEST(CrossIsa, Mixers) {
    uint32_t seed = 1;
    for (const MixEntry& k : mix_kernels)
        for (const MixGeometry& g : mix_geometries(k)) {
            load_cross_settings(seed);
            ASSERT_TRUE(same_on_every_isa(mix_case(k, g), seed++));
        }
}

}  // namespace
}  // namespace dispconv::test
