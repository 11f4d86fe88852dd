// Every sub-picture preparation and colour-key kernel, on every instruction set, equals the
// portable reference: the arenas and the record after the call.
#include <algorithm>
#include <random>

#include "cross/cross_isa.hpp"

namespace dispconv::test {
namespace {

using FillKernel = void (*)(uint32_t, void*, int32_t, int32_t, int32_t, int32_t);
using Sub = SubpictureKernels;

int rounded(int count, int block) { return std::max(1, (count + block - 1) / block) * block; }

// Source pixels painted with the key over whole groups of eight, all but one pixel of a
// group, or not at all, chosen per group; the rest keeps its random bytes.
void paint_key(uint8_t* row0, int64_t stride, int rows, int pixels, int bpp, uint32_t key, uint32_t salt) {
    std::minstd_rand rng(salt);
    for (int r = 0; r < rows; ++r) {
        uint8_t* row = row0 + r * stride;
        for (int g = 0; g < (pixels + 7) / 8; ++g) {
            const unsigned mode = rng() % 3, odd_one = rng() % 8;
            if (mode == 2) continue;
            for (int x = g * 8; x < std::min(pixels, g * 8 + 8); ++x)
                if (mode == 0 || x % 8 != int(odd_one))
                    for (int c = 0; c < bpp; ++c) row[x * bpp + c] = uint8_t(key >> (8 * c));
        }
    }
}

// ---- RGB bitmap to sub-picture planes ----

struct ConvertGeometry {
    int width, height, sub_pad, image_pad;
    bool bottom_up = false;
    uint32_t key = 0;
};

CrossCase convert_case(const char* name, MixKernel Sub::*member, int bpp, const ConvertGeometry& g) {
    const int blocks = g.width / 8;
    const int sub_stride = g.width + g.sub_pad;
    const int64_t image_pitch = int64_t(g.width) * bpp + g.image_pad;
    const int64_t image_stride = g.bottom_up ? -image_pitch : image_pitch;
    const int rem = g.width % 8;
    ArenaPlan src, dst;
    const size_t image = src.place(extent(g.height, image_stride - rem * bpp, blocks * 8 * bpp + 1));
    const size_t y = dst.place(extent(g.height, sub_stride - rem, blocks * 8));
    const int64_t chroma_step = blocks * 4 + ((sub_stride - g.width) >> 1);
    const size_t u = dst.place(extent(g.height, chroma_step, blocks * 4));
    const size_t v = dst.place(extent(g.height, chroma_step, blocks * 4));
    const size_t opacity = dst.place(extent(g.height, sub_stride - g.width, 0));
    CrossCase c;
    c.name = describe(name, {{"width", g.width}, {"height", g.height}, {"sub_stride", sub_stride},
                             {"image_stride", image_stride}, {"key", g.key}});
    c.src_bytes = src.size, c.dst_bytes = dst.size;
    c.dst_pitch = sub_stride, c.dst_origin = y;
    c.run = [=](const KernelTable& t, Arenas& a) {
        // Along the rows the walk visits (a width off the block starts each row earlier).
        paint_key(a.src.data() + image, image_stride - rem * bpp, g.height, blocks * 8, bpp, g.key,
                  g.width * 31 + g.height);
        MIX_INFO& i = a.info;
        i.sub_stride = sub_stride, i.image_stride = int32_t(image_stride);
        i.width = g.width, i.height = g.height, i.color_key = g.key;
        i.image = a.src.data() + image;
        i.sub_y = a.dst.data() + y, i.sub_u = a.dst.data() + u, i.sub_v = a.dst.data() + v;
        i.sub_opacity = a.dst.data() + opacity;
        i.surface_format = &a.settings;
        (t.subpicture->*member)(&i);
    };
    c.record = mix_record;
    return c;
}

TEST(CrossIsa, RgbToSubpicture) {
    struct Kernel {
        const char* name;
        MixKernel Sub::*member;
        int bpp;
        std::vector<uint32_t> keys;  // the last never matches a painted pixel of RGB24
    };
    const Kernel kernels[] = {
        {"Convert_RGB32_To_AYUY2", &Sub::Convert_RGB32_To_AYUY2, 4, {0x00102030, 0xFF00FF00}},
        {"Convert_RGB24_To_AYUY2", &Sub::Convert_RGB24_To_AYUY2, 3, {0x00FF00FF, 0x01020304}},
        {"Convert_RGB16_565_To_AYUY2", &Sub::Convert_RGB16_565_To_AYUY2, 2, {0x0000F81F, 0xABCD0000}},
    };
    // Widths on and off the block of 8, one row, odd heights, a frame and a full-HD strip.
    const ConvertGeometry sizes[] = {
        {8, 1, 0, 0},  {16, 3, 8, 4},  {24, 5, 0, 1},     {40, 7, 24, 0, true}, {13, 4, 3, 5},
        {69, 6, 11, 2}, {64, 10, 0, 0}, {720, 480, 0, 0},  {1920, 8, 64, 0},     {352, 9, 0, 0, true},
    };
    uint32_t seed = 3000;
    for (const Kernel& k : kernels)
        for (ConvertGeometry g : sizes)
            for (uint32_t key : k.keys) {
                g.key = key;
                ASSERT_TRUE(same_on_every_isa(convert_case(k.name, k.member, k.bpp, g), seed++));
            }
}

// ---- Opacity plane to and from an RGB bitmap ----

struct AlphaGeometry {
    int width, height, frame_stride, image_pad;
};

CrossCase alpha_case(const char* name, MixKernel Sub::*member, int bpp, int block, bool restore,
                     const AlphaGeometry& g) {
    const int covered = rounded(g.width, block);
    const int64_t image_stride = int64_t(g.width) * bpp + g.image_pad;
    const int64_t alpha_skip = (g.frame_stride - g.width) >> 1;
    // A bitmap row shorter than the area ends the walk after one row.
    const int rows = image_stride < int64_t(g.width) * bpp ? 1 : g.height;
    const Extent plane = extent(rows, covered + alpha_skip, covered);
    const Extent bitmap = extent(rows, int64_t(covered) * bpp + image_stride - int64_t(g.width) * bpp,
                                 int64_t(covered) * bpp + 1);
    ArenaPlan src, dst;
    const size_t from = src.place(restore ? bitmap : plane);
    const size_t to = dst.place(restore ? plane : bitmap);
    CrossCase c;
    c.name = describe(name, {{"width", g.width}, {"height", g.height}, {"frame_stride", g.frame_stride},
                             {"image_stride", image_stride}});
    c.src_bytes = src.size, c.dst_bytes = dst.size;
    c.dst_pitch = int(restore ? covered + alpha_skip : image_stride), c.dst_origin = to;
    c.run = [=](const KernelTable& t, Arenas& a) {
        MIX_INFO& i = a.info;
        i.frame_stride = g.frame_stride, i.sub_stride = 7, i.image_stride = int32_t(image_stride);
        i.width = g.width, i.height = g.height;
        i.image = restore ? a.src.data() + from : a.dst.data() + to;
        i.sub_opacity = restore ? a.dst.data() + to : a.src.data() + from;
        (t.subpicture->*member)(&i);
    };
    c.record = mix_record;
    return c;
}

TEST(CrossIsa, AlphaRestoreAndLoad) {
    struct Kernel {
        const char* name;
        MixKernel Sub::*member;
        int bpp, block;
        bool restore;
    };
    const Kernel kernels[] = {
        {"load_subpicture_alpha_rgb32", &Sub::load_subpicture_alpha_rgb32, 4, 16, false},
        {"load_subpicture_alpha_rgb24", &Sub::load_subpicture_alpha_rgb24, 3, 16, false},
        {"load_subpicture_alpha_rgb16_565", &Sub::load_subpicture_alpha_rgb16_565, 2, 16, false},
        {"Restore_RGB32_To_Alpha", &Sub::Restore_RGB32_To_Alpha, 4, 8, true},
        {"Restore_RGB24_To_Alpha", &Sub::Restore_RGB24_To_Alpha, 3, 8, true},
        {"Restore_RGB16_565_To_Alpha", &Sub::Restore_RGB16_565_To_Alpha, 2, 16, true},
    };
    // Tight planes, odd and negative opacity steps, widths off both blocks, a bitmap stride
    // shorter than the row, one row, and realistic sizes.
    const AlphaGeometry sizes[] = {
        {16, 1, 16, 0},   {32, 3, 32, 8},    {8, 4, 8, 0},      {20, 5, 47, 3},   {7, 6, 4, 1},
        {45, 7, 45, 12},  {24, 4, 24, -8},   {720, 480, 720, 0}, {1920, 8, 1920, 16}, {100, 9, 260, 4},
    };
    uint32_t seed = 4000;
    for (const Kernel& k : kernels)
        for (const AlphaGeometry& g : sizes)
            ASSERT_TRUE(same_on_every_isa(alpha_case(k.name, k.member, k.bpp, k.block, k.restore, g), seed++));
}

// ---- Sub-picture planes to a colour-keyed RGB bitmap ----

struct ToRgbGeometry {
    int frame_stride, height, image_pad;
    bool bottom_up = false;
};

CrossCase to_rgb_case(const char* name, MixKernel Sub::*member, int bpp, int layout, uint32_t key,
                      const ToRgbGeometry& g) {
    const int covered = rounded(g.frame_stride, 16);
    const int rows = std::max(g.height, 1);
    const int64_t pitch = int64_t(g.frame_stride) * bpp + g.image_pad;
    const int64_t image_stride = g.bottom_up ? -pitch : pitch;
    ArenaPlan src, dst;
    const size_t y = src.place(extent(rows, covered, covered));
    const size_t opacity = src.place(extent(rows, covered, covered));
    const size_t u = src.place(extent(rows, covered / 2, covered / 2));
    const size_t v = src.place(extent(rows, covered / 2, covered / 2));
    const size_t image = dst.place(extent(rows, image_stride + int64_t(covered - g.frame_stride) * bpp, int64_t(covered) * bpp));
    CrossCase c;
    c.name = describe(name, {{"frame_stride", g.frame_stride}, {"height", g.height},
                             {"image_stride", image_stride}, {"layout", layout}, {"key", key}});
    c.src_bytes = src.size, c.dst_bytes = dst.size;
    c.dst_pitch = int(pitch), c.dst_origin = image;
    c.run = [=](const KernelTable& t, Arenas& a) {
        // Opacity 0 (key), small levels and the negative bytes, mixed within blocks.
        uint8_t* o = a.src.data() + opacity;
        for (int k = 0; k < rows * covered; ++k)
            if (o[k] % 3 == 0) o[k] = 0;
            else if (o[k] % 3 == 1) o[k] &= 0x1F;
        a.settings.rgb16_layout = layout;
        MIX_INFO& i = a.info;
        i.frame_stride = g.frame_stride, i.sub_stride = 5, i.image_stride = int32_t(image_stride);
        i.width = 3, i.height = g.height, i.color_key = key;
        i.sub_y = a.src.data() + y, i.sub_u = a.src.data() + u, i.sub_v = a.src.data() + v;
        i.sub_opacity = o;
        i.image = a.dst.data() + image;
        i.surface_format = &a.settings;
        (t.subpicture->*member)(&i);
    };
    c.record = mix_record;
    return c;
}

TEST(CrossIsa, SubpictureToRgb) {
    struct Kernel {
        const char* name;
        MixKernel Sub::*member;
        int bpp;
    };
    const Kernel kernels[] = {
        {"load_subpicture_yuy2_rgb32", &Sub::load_subpicture_yuy2_rgb32, 4},
        {"load_subpicture_yuy2_rgb32_ajust", &Sub::load_subpicture_yuy2_rgb32_ajust, 4},
        {"load_subpicture_yuy2_rgb24", &Sub::load_subpicture_yuy2_rgb24, 3},
        {"load_subpicture_yuy2_rgb24_ajust", &Sub::load_subpicture_yuy2_rgb24_ajust, 3},
        {"load_subpicture_yuy2_rgb16", &Sub::load_subpicture_yuy2_rgb16, 2},
        {"load_subpicture_yuy2_rgb16_ajust", &Sub::load_subpicture_yuy2_rgb16_ajust, 2},
    };
    // Widths on and off the block of 16, height 0 (one row), odd heights, bottom-up bitmaps.
    const ToRgbGeometry sizes[] = {
        {16, 1, 0},  {32, 3, 8},    {20, 5, 0},     {7, 0, 4},       {48, 6, 12, true},
        {16, 2, 0},  {720, 480, 0}, {1920, 8, 32},  {353, 7, 3, true},
    };
    const uint32_t keys[] = {0x00FF00FF, 0x1234F81F, 0xFF000000, 0x00ABCDEF};
    uint32_t seed = 5000;
    for (const Kernel& k : kernels) {
        // Every 16-bit selector, which all write 5-6-5, and refused ones.
        const std::vector<int> layouts = k.bpp == 2 ? std::vector<int>{0, 1, 2, 3, 4, -1} : std::vector<int>{0};
        for (const ToRgbGeometry& g : sizes)
            for (int layout : layouts) {
                load_cross_settings(seed);
                const uint32_t key = keys[seed % 4];
                ASSERT_TRUE(same_on_every_isa(to_rgb_case(k.name, k.member, k.bpp, layout, key, g), seed++));
            }
    }
}

// ---- Colour-key fills ----

struct FillGeometry {
    int width, height, stride_pad;
    bool bottom_up = false;
};

CrossCase fill_case(const char* name, FillKernel Sub::*member, int bpp, uint32_t key, const FillGeometry& g) {
    const int covered = rounded(g.width, 16);
    const int64_t pitch = int64_t(g.width) * bpp + g.stride_pad;
    const int64_t stride = g.bottom_up ? -pitch : pitch;
    const int pairs = (g.height + 1) / 2;
    const int64_t row_pair_step = 2 * stride + int64_t(covered - g.width) * bpp;
    const Extent e = extent(pairs, row_pair_step, int64_t(covered) * bpp + std::max<int64_t>(stride, 0),
                            std::max<int64_t>(-stride, 0));
    ArenaPlan dst;
    const size_t origin = dst.place(e);
    CrossCase c;
    c.name = describe(name, {{"width", g.width}, {"height", g.height}, {"stride", stride}, {"key", key}});
    c.src_bytes = 0, c.dst_bytes = dst.size;
    c.dst_pitch = int(pitch), c.dst_origin = origin;
    c.run = [=](const KernelTable& t, Arenas& a) {
        (t.subpicture->*member)(key, a.dst.data() + origin, g.width, g.height, 0x5A5A, int32_t(stride));
    };
    return c;
}

TEST(CrossIsa, ColorKeyFills) {
    struct Kernel {
        const char* name;
        FillKernel Sub::*member;
        int bpp;
    };
    const Kernel kernels[] = {
        {"LoadColorKeyRgb32", &Sub::LoadColorKeyRgb32, 4},
        {"LoadColorKeyRgb24", &Sub::LoadColorKeyRgb24, 3},
        {"LoadColorKeyRgb16", &Sub::LoadColorKeyRgb16, 2},
    };
    // Height 0 (nothing), 1 and odd (an extra row), width 0 and off the block (drift).
    const FillGeometry sizes[] = {
        {16, 2, 0},  {16, 0, 0},  {16, 1, 8}, {32, 3, 0},      {20, 4, 4},    {0, 2, 64},
        {37, 7, 5},  {48, 5, 0, true}, {720, 480, 0}, {1920, 8, 0}, {1920, 9, 64, true},
    };
    const uint32_t keys[] = {0x00CCBBAA, 0x40030201, 0x12345678, 0x00808080};
    uint32_t seed = 6000;
    for (const Kernel& k : kernels)
        for (const FillGeometry& g : sizes)
            for (uint32_t key : keys)
                ASSERT_TRUE(same_on_every_isa(fill_case(k.name, k.member, k.bpp, key, g), seed++));
}

// ---- Mask replacement ----

struct MaskGeometry {
    int width, height, stride_pad;
    bool bottom_up = false;
};

CrossCase mask_case(const MaskGeometry& g, uint32_t marker, uint32_t key) {
    const int covered = rounded(g.width, 16);
    const int64_t stride = g.bottom_up ? -(g.width + g.stride_pad) : g.width + g.stride_pad;
    const int rows = std::max(g.height, 1);
    const Extent e = extent(rows, stride + covered - g.width, covered);
    ArenaPlan src, dst;
    const size_t mask = src.place(e), plane = dst.place(e);
    CrossCase c;
    c.name = describe("RelaceMaskWithColorKey", {{"width", g.width}, {"height", g.height}, {"stride", stride},
                                                 {"marker", marker}, {"key", key}});
    c.src_bytes = src.size, c.dst_bytes = dst.size;
    c.random_dst = true;  // modified in place: untouched bytes must survive as they were
    c.dst_pitch = int(std::abs(stride)), c.dst_origin = plane;
    c.run = [=](const KernelTable& t, Arenas& a) {
        // Marker bytes over whole blocks, scattered, or not at all, in runs of 16.
        uint8_t* m = a.src.data();
        for (size_t k = 0; k < a.src.size(); ++k) {
            const unsigned run = unsigned(k / 16 * 2654435761u) >> 29;
            if (run < 3 || (run < 6 && (m[k] & 1))) m[k] = uint8_t(marker);
        }
        (t.subpicture->*(&Sub::RelaceMaskWithColorKey))(a.dst.data() + plane, a.src.data() + mask, marker, key,
                                                        g.width, int32_t(stride), g.height);
    };
    return c;
}

TEST(CrossIsa, MaskReplacement) {
    // Height 0 (one row), width 0 (one block) and off the block (drift), bottom-up planes.
    const MaskGeometry sizes[] = {
        {16, 1, 0}, {16, 0, 0},  {32, 3, 8},  {20, 5, 4},  {0, 2, 16},  {75, 7, 1},
        {64, 4, 0, true}, {720, 480, 0}, {1920, 8, 0}, {1920, 5, 100, true},
    };
    const std::pair<uint32_t, uint32_t> values[] = {{0x000000AA, 0x00000055}, {0x12345600, 0xFFFFFF10}, {0xFF, 0xFF}};
    uint32_t seed = 7000;
    for (const MaskGeometry& g : sizes)
        for (const auto& [marker, key] : values) ASSERT_TRUE(same_on_every_isa(mask_case(g, marker, key), seed++));
}

}  // namespace
}  // namespace dispconv::test
