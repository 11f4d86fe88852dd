// Every stretching kernel, on every instruction set, equals the portable reference.
#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "cross/cross_isa.hpp"

namespace dispconv::test {
namespace {

constexpr size_t lead = 8192;  // arena bytes before each surface or plane

std::string label(const char* kernel, int width, int height, int src_stride, int dst_stride,
                  const std::string& extra = "") {
    std::ostringstream s;
    s << kernel << " " << width << "x" << height << " src_stride " << src_stride << " dst_stride "
      << dst_stride << extra;
    return s.str();
}

// Planar frame-signature kernels: Y, U, V planes in the source arena, one surface in the
// destination arena. `dst_rows` is how many surface rows the kernel may touch; a bottom-up
// surface starts at the last of them with a negative pitch.
struct PlanarGeometry {
    int width, height, src_stride, dst_stride;
    bool bottom_up = false;
    int layout = 0;
    int dst_rows = 0;
};

CrossCase planar_case(const char* kernel, FrameKernel StretchKernels::*member, const PlanarGeometry& g) {
    const size_t pitch = size_t(std::max(g.src_stride, g.width)) * 2 + 64;
    const size_t plane = pitch * size_t(g.height + 8);
    const size_t dst_pitch = size_t(g.dst_stride);
    const size_t rows = size_t(g.dst_rows ? g.dst_rows : 2 * g.height + 8);
    CrossCase c;
    c.name = label(kernel, g.width, g.height, g.src_stride, g.bottom_up ? -g.dst_stride : g.dst_stride,
                   " layout " + std::to_string(g.layout));
    c.src_bytes = lead + 3 * plane + lead;
    // Twice the rows: widths off the block drift every row further right.
    c.dst_bytes = lead + dst_pitch * rows * 2 + lead;
    c.dst_pitch = int(dst_pitch);
    c.dst_origin = lead;
    c.run = [=](const KernelTable& t, Arenas& a) {
        a.settings.rgb16_layout = g.layout;
        uint8_t* y = a.src.data() + lead;
        uint8_t* dst = a.dst.data() + lead;
        int32_t stride = g.dst_stride;
        if (g.bottom_up) dst += dst_pitch * (rows - 5), stride = -stride;
        (t.stretch->*member)(y, y + plane, y + 2 * plane, dst, g.width, g.height, g.src_stride, stride, &a.settings);
    };
    return c;
}

struct PlanarKernel {
    const char* name;
    FrameKernel StretchKernels::*member;
    int dst_bytes_per_pixel;  // per source pixel of one destination row
    int min_height;
    bool any_width;           // false: the strip loop needs a multiple of 16
    int layouts = 1;          // 16-bit: all four layouts and two refused selectors
    bool yv12 = false;        // destination is three planes below each other
};

#define K(name, bpp, min_h, any_w) {#name, &StretchKernels::name, bpp, min_h, any_w}
const PlanarKernel planar_kernels[] = {
    K(strech_picture_1X2_yuy2, 2, 8, true),
    K(strech_picture_1X2_yuy2_ajust, 2, 8, true),
    K(strech_picture_1X2_yuy2_ajust_rgb32, 4, 12, true),
    K(strech_picture_1X2_yuy2_ajust_rgb24, 3, 12, false),
    {"strech_picture_1X2_yuy2_ajust_rgb16", &StretchKernels::strech_picture_1X2_yuy2_ajust_rgb16, 2, 12, false, 6},
    K(strech_picture_2X2_yuy2, 4, 8, true),
    K(strech_picture_2X2_yuy2_ajust, 4, 8, true),
    {"strech_picture_2X2_yv12_ajust", &StretchKernels::strech_picture_2X2_yv12_ajust, 2, 4, true, 1, true},
    {"strech_picture_1X2_yv12_ajust", &StretchKernels::strech_picture_1X2_yv12_ajust, 1, 4, true, 1, true},
};
#undef K

int layout_of(int index) { return index < 4 ? index : index == 4 ? 4 : -1; }

TEST(CrossIsa, PlanarStretchers) {
    uint32_t seed = 1;
    int cases = 0;
    for (const PlanarKernel& k : planar_kernels) {
        // Heights: below the minimum (nothing written), the minimum, odd, and a few more rows.
        const int m = k.min_height;
        const int heights[] = {m - 1, m, m + 1, m + 2, m + 7};
        // Widths: one and several blocks, realistic, and (where the walk defines it) off the block.
        std::vector<int> widths = {16, 32, 48, 96, 352};
        if (k.any_width) widths.insert(widths.end(), {24, 40, 56});
        if (k.yv12) widths.insert(widths.end(), {34, 50, 72});
        for (int h : heights)
            for (int w : widths)
                for (int layout = 0; layout < k.layouts; ++layout)
                    for (bool bottom_up : {false, true}) {
                        // The plane stretchers have no refusal; the double-height one moves its
                        // last block back, so its chroma planes need 16 samples.
                        if (k.yv12 && (h < m || (k.dst_bytes_per_pixel == 1 && w < 32))) continue;
                        if (bottom_up && (k.yv12 || h != m + 1)) continue;
                        PlanarGeometry g{w, h, w + 16, (w + 16) * k.dst_bytes_per_pixel + 8, bottom_up, layout_of(layout)};
                        if (k.yv12) g.src_stride = w, g.dst_stride = w * k.dst_bytes_per_pixel, g.dst_rows = 3 * h + 8;
                        load_cross_settings(int(seed));
                        ASSERT_TRUE(same_on_every_isa(planar_case(k.name, k.member, g), seed++));
                        ++cases;
                    }
    }
    RecordProperty("cases", cases);
}

TEST(CrossIsa, PlanarStretchersRealisticSizes) {
    uint32_t seed = 1000;
    for (const PlanarKernel& k : planar_kernels)
        for (auto [w, h] : {std::pair{720, 480}, std::pair{1920, k.min_height + 2}}) {
            PlanarGeometry g{w, h, w, w * k.dst_bytes_per_pixel};
            if (k.yv12) g.dst_rows = 3 * h + 8;
            load_cross_settings(int(seed));
            ASSERT_TRUE(same_on_every_isa(planar_case(k.name, k.member, g), seed++));
        }
}

// Packed YUY2 source without row padding; `width` is a row in bytes.
TEST(CrossIsa, PackedDoubleSize) {
    using Plain = void (*)(void*, void*, void*, void*, int32_t, int32_t, int32_t);
    using Adjusted = void (*)(void*, void*, void*, void*, int32_t, int32_t, int32_t, ajust_contrast_info*);
    uint32_t seed = 2000;
    // The strip loop ends only on a width that is a multiple of 32 bytes, at least 64.
    for (int width : {64, 96, 128, 352, 1440, 3840})
        for (int height : {15, 16, 17, 18, 23, 48})
            for (bool adjusted : {false, true}) {
                if (width > 1000 && height > 16) continue;
                const int dst_stride = 2 * width + 32;
                CrossCase c;
                c.name = label(adjusted ? "yuy2_strech_picture_2X2_yuy2_ajust" : "yuy2_strech_picture_2X2_yuy2", width,
                               height, width, dst_stride);
                c.src_bytes = lead + size_t(width) * (height + 4) + lead;
                c.dst_bytes = lead + size_t(dst_stride) * (2 * height + 8) + lead;
                c.dst_pitch = dst_stride, c.dst_origin = lead;
                c.run = [=](const KernelTable& t, Arenas& a) {
                    uint8_t *src = a.src.data() + lead, *dst = a.dst.data() + lead;
                    if (adjusted) {
                        Adjusted f = t.stretch->yuy2_strech_picture_2X2_yuy2_ajust;
                        f(src, nullptr, nullptr, dst, width, height, dst_stride, &a.settings);
                    } else {
                        Plain f = t.stretch->yuy2_strech_picture_2X2_yuy2;
                        f(src, nullptr, nullptr, dst, width, height, dst_stride);
                    }
                };
                load_cross_settings(int(seed));
                ASSERT_TRUE(same_on_every_isa(c, seed++));
            }
    const int w = 1440, h = 480;  // 720x480
    for (bool adjusted : {false, true}) {
        CrossCase c;
        c.name = label("yuy2_strech_picture_2X2_yuy2 (realistic)", w, h, w, 2 * w);
        c.src_bytes = lead + size_t(w) * (h + 4) + lead;
        c.dst_bytes = lead + size_t(2 * w) * (2 * h + 8) + lead;
        c.dst_pitch = 2 * w, c.dst_origin = lead;
        c.run = [=](const KernelTable& t, Arenas& a) {
            uint8_t *src = a.src.data() + lead, *dst = a.dst.data() + lead;
            if (adjusted) t.stretch->yuy2_strech_picture_2X2_yuy2_ajust(src, nullptr, nullptr, dst, w, h, 2 * w, &a.settings);
            else t.stretch->yuy2_strech_picture_2X2_yuy2(src, nullptr, nullptr, dst, w, h, 2 * w);
        };
        load_cross_settings(int(seed));
        ASSERT_TRUE(same_on_every_isa(c, seed++));
    }
}

// Single planes: strech_pic_2X2 (no adjustment), strech_pic_2X2_adjust, strech_pic_1X2_adjust.
enum class PlaneKernel { double_size, double_size_adjust, double_height_adjust };

CrossCase plane_case(PlaneKernel k, int width, int height, int src_stride, int dst_stride, int plane,
                     bool bottom_up = false) {
    static const char* names[] = {"strech_pic_2X2", "strech_pic_2X2_adjust", "strech_pic_1X2_adjust"};
    const size_t src_pitch = size_t(std::max(src_stride, width)) + 64;
    CrossCase c;
    c.name = label(names[int(k)], width, height, src_stride, bottom_up ? -dst_stride : dst_stride,
                   " plane " + std::to_string(plane));
    c.src_bytes = lead + src_pitch * size_t(height + 4) + lead;
    c.dst_bytes = lead + size_t(dst_stride) * size_t(2 * height + 4) + lead;
    c.dst_pitch = dst_stride, c.dst_origin = lead;
    c.run = [=](const KernelTable& t, Arenas& a) {
        uint8_t *src = a.src.data() + lead, *dst = a.dst.data() + lead;
        int stride = dst_stride;
        if (bottom_up) dst += ptrdiff_t(dst_stride) * (2 * height + 1), stride = -stride;
        switch (k) {
            case PlaneKernel::double_size: t.stretch->strech_pic_2X2(src, dst, width, height, src_stride, stride); break;
            case PlaneKernel::double_size_adjust:
                t.stretch->strech_pic_2X2_adjust(src, dst, width, height, src_stride, stride, &a.settings, plane);
                break;
            case PlaneKernel::double_height_adjust:
                t.stretch->strech_pic_1X2_adjust(src, dst, width, height, src_stride, stride, &a.settings, plane);
                break;
        }
    };
    return c;
}

TEST(CrossIsa, PlaneStretchers) {
    uint32_t seed = 3000;
    struct Size {
        int width, height;
    };
    // Widths of one strip or block, several, off the 8- and 16-sample blocks; heights from the
    // two-row minimum up, odd ones included; the realistic planes last.
    const Size sizes[] = {{8, 2},  {16, 2},  {16, 3},  {24, 5},   {20, 4},    {32, 7},  {40, 6},
                          {48, 9}, {17, 4},  {100, 3}, {352, 11}, {720, 480}, {1920, 4}};
    for (PlaneKernel k : {PlaneKernel::double_size, PlaneKernel::double_size_adjust, PlaneKernel::double_height_adjust})
        for (const Size& s : sizes) {
            // The double-height walk moves its last block back by up to 15 samples.
            if (k == PlaneKernel::double_height_adjust && s.width < 16) continue;
            const int out_width = k == PlaneKernel::double_height_adjust ? s.width : 2 * s.width;
            // The adjusting kernels step rows by the width; the plain one is given padded rows too.
            for (int pad : {0, 24}) {
                if (pad && k != PlaneKernel::double_size && s.width > 100) continue;
                for (int plane : {1, 2, 3, 0}) {
                    if (k == PlaneKernel::double_size && plane != 1) continue;
                    if (plane == 0 && s.width > 100) continue;
                    load_cross_settings(int(seed));
                    ASSERT_TRUE(same_on_every_isa(plane_case(k, s.width, s.height, s.width + pad, out_width + pad, plane), seed++));
                }
                // The plain kernel's row-by-row walk, bottom-up.
                if (k == PlaneKernel::double_size && s.width >= 16 && s.width <= 100) {
                    load_cross_settings(int(seed));
                    ASSERT_TRUE(same_on_every_isa(plane_case(k, s.width, s.height, s.width + pad, out_width + pad, 1, true), seed++));
                }
            }
        }
}

// strech_opt_yuy2_ajust through its frame record: progressive frames and single fields, with
// several start lines.
struct OptGeometry {
    int width, height, structure, start_line;
};

CrossCase opt_case(const OptGeometry& g) {
    const int w = g.width;
    // Rows of the frame the kernel may reach: the start, the rows stretched (twice as far apart
    // for a field) and one more.
    const size_t plane = size_t(w) * size_t(g.start_line + 2 * g.height + 8);
    const int dst_stride = 2 * w + 24;  // widths of 32 or less write a block beyond the row
    CrossCase c;
    c.name = label("strech_opt_yuy2_ajust", w, g.height, w, dst_stride,
                   " frame_structure " + std::to_string(g.structure) + " start_line " + std::to_string(g.start_line));
    c.src_bytes = lead + 3 * plane + lead;
    c.dst_bytes = lead + size_t(dst_stride) * size_t(2 * g.height + 8) + lead;
    c.dst_pitch = dst_stride, c.dst_origin = lead;
    c.run = [=](const KernelTable& t, Arenas& a) {
        // Bands of quiet, borderline and noisy texture, so that groups fall on both sides of
        // the activity threshold and the direction search meets ties.
        for (size_t i = 0; i < a.src.size(); ++i) {
            const size_t band = (i / 40) % 3;
            if (band == 1) a.src[i] = uint8_t(120 + (a.src[i] & 7));
            if (band == 2) a.src[i] = uint8_t(120 + (a.src[i] & 15));
        }
        a.frame.frame_structure = g.structure;
        a.frame.frame_width = w;
        a.frame.plane_y = a.src.data() + lead;
        a.frame.plane_u = a.frame.plane_y + plane;
        a.frame.plane_v = a.frame.plane_u + plane;
        t.stretch->strech_opt_yuy2_ajust(&a.frame, g.start_line, g.height, a.dst.data() + lead, dst_stride, &a.settings);
    };
    return c;
}

TEST(CrossIsa, EdgeDirectedStretch) {
    uint32_t seed = 4000;
    // Widths above 32 (first, middle and last blocks), 32 (three blocks, one past the row), and
    // off the block; heights below the minimum, the minimum, odd and larger.
    for (int w : {32, 40, 48, 64, 72, 96, 352})
        for (int h : {7, 8, 9, 10, 13, 24})
            for (int structure : {0, 1})
                for (int start : {0, 1, 3}) {
                    if (w > 96 && (h != 10 || start == 3)) continue;
                    load_cross_settings(int(seed));
                    ASSERT_TRUE(same_on_every_isa(opt_case({w, h, structure, start}), seed++));
                }
    for (OptGeometry g : {OptGeometry{720, 480, 0, 0}, OptGeometry{720, 240, 1, 1}, OptGeometry{1920, 8, 0, 0},
                          OptGeometry{1920, 10, 1, 0}}) {
        load_cross_settings(int(seed));
        ASSERT_TRUE(same_on_every_isa(opt_case(g), seed++));
    }
}

}  // namespace
}  // namespace dispconv::test
