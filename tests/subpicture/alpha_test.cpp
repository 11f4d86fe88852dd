// The opacity plane to and from RGB bitmaps: levels, round trips, row geometry, record fields.
#include <cstring>

#include "support/test_support.hpp"

namespace dispconv::test {
namespace {

struct AlphaKernel {
    const char* name;
    MixKernel kernel;
    int block, bpp;
    bool loads;            // opacity to bitmap
    bool counts_height;    // counts height down in the record
};
const AlphaKernel load32{"load rgb32", load_subpicture_alpha_rgb32, 16, 4, true, false};
const AlphaKernel load24{"load rgb24", load_subpicture_alpha_rgb24, 16, 3, true, true};
const AlphaKernel load16{"load rgb16", load_subpicture_alpha_rgb16_565, 16, 2, true, false};
const AlphaKernel restore32{"restore rgb32", Restore_RGB32_To_Alpha, 8, 4, false, false};
const AlphaKernel restore24{"restore rgb24", Restore_RGB24_To_Alpha, 8, 3, false, true};
const AlphaKernel restore16{"restore rgb16", Restore_RGB16_565_To_Alpha, 16, 2, false, false};

MIX_INFO alpha_record(uint8_t* opacity, uint8_t* image, int width, int height, int frame_stride,
                      int image_stride) {
    MIX_INFO info{};
    info.frame_stride = frame_stride, info.sub_stride = 999;  // sub_stride must not be used
    info.image_stride = image_stride, info.width = width, info.height = height;
    info.sub_opacity = opacity, info.image = image;
    return info;
}

// Load then restore on packed planes: exact for RGB32, one pixel to the left for RGB24 (the
// last level of the plane comes from the byte after the bitmap), the blue field for RGB16.
TEST(Alpha, RoundTrips) {
    struct Case {
        const AlphaKernel &load, &restore;
    };
    const Case cases[] = {{load32, restore32}, {load24, restore24}, {load16, restore16}};
    const int width = 32, height = 3, n = width * height;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.load.name);
        Buffer levels(n);
        for (int i = 0; i < n; ++i) levels[i] = static_cast<uint8_t>(i * 37 + 5);
        levels[0] = 0, levels[1] = 255, levels[2] = 31, levels[3] = 32;
        Buffer image(size_t(n) * c.load.bpp);
        MIX_INFO info = alpha_record(levels.data(), image.data(), width, height, width,
                                     width * c.load.bpp);
        c.load.kernel(&info);

        Buffer restored(n), want(n);
        for (int i = 0; i < n; ++i) {
            if (c.load.bpp == 4) want[i] = levels[i];
            if (c.load.bpp == 3) want[i] = i + 1 < n ? levels[i + 1] : canary;
            if (c.load.bpp == 2) want[i] = levels[i] & 0x1F;
        }
        info = alpha_record(restored.data(), image.data(), width, height, width, width * c.load.bpp);
        c.restore.kernel(&info);
        EXPECT_TRUE(same_bytes(want, restored));
    }
}

// Whole-buffer geometry: blocks rounded up per row, the opacity row step half of
// (frame_stride - width) rounded down, the bitmap step from the nominal width, and the record.
TEST(Alpha, RowGeometryAndRecord) {
    struct Case {
        const AlphaKernel& k;
        int width, height, frame_stride, image_stride;
    };
    const Case cases[] = {
        {load32, 20, 2, 20, 20 * 4},   // 32 pixels per row, next row 12 pixels on
        {restore32, 20, 2, 20, 20 * 4},  // 24 levels per row
        {load24, 16, 5, 48, 64},       // opacity rows 32 apart
        {restore24, 16, 5, 48, 64},
        {load16, 16, 3, 13, 40},       // (13 - 16) >> 1 = -2: opacity rows 14 apart
        {restore16, 16, 3, 13, 40},
        {restore32, 0, 2, 8, 0},       // width 0: one block per row
        {load32, 16, 3, 16, 32},       // bitmap stride short of the row: first row only
        {restore16, 16, 3, 16, 16},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.k.name << " width " << c.width << " frame_stride "
                                          << c.frame_stride << " image_stride " << c.image_stride);
        const int per_row = c.width <= c.k.block ? c.k.block : (c.width + c.k.block - 1) / c.k.block * c.k.block;
        const ptrdiff_t opacity_row = per_row + ((c.frame_stride - c.width) >> 1);
        const ptrdiff_t image_row = ptrdiff_t(per_row - c.width) * c.k.bpp + c.image_stride;
        const int rows = c.image_stride < c.width * c.k.bpp ? 1 : c.height;
        const size_t opacity_size = size_t(opacity_row * (c.height - 1) + per_row);
        const size_t image_size = size_t(image_row * (c.height - 1) + per_row * c.k.bpp + 1);
        Buffer opacity = random_buffer(opacity_size, 21), image = random_buffer(image_size, 22);
        Buffer want_opacity = opacity, want_image = image;
        for (int r = 0; r < rows; ++r) {
            for (int i = 0; i < per_row; ++i) {
                const size_t o = size_t(r * opacity_row + i), p = size_t(r * image_row + i * c.k.bpp);
                if (c.k.loads) {
                    want_image[p] = opacity[o];
                    for (int b = 1; b < c.k.bpp; ++b) want_image[p + b] = 0;
                } else {
                    const uint8_t mask = c.k.bpp == 2 ? 0x1F : 0xFF;
                    want_opacity[o] = image[p + (c.k.bpp == 3 ? 3 : 0)] & mask;
                }
            }
        }
        MIX_INFO info = alpha_record(opacity.data(), image.data(), c.width, c.height,
                                     c.frame_stride, c.image_stride);
        MIX_INFO want_info = info;
        if (c.k.counts_height && rows == c.height) want_info.height = 0;
        c.k.kernel(&info);
        EXPECT_TRUE(same_bytes(want_opacity, opacity));
        EXPECT_TRUE(same_bytes(want_image, image));
        if (rows == c.height) {
            EXPECT_EQ(0, std::memcmp(&want_info, &info, sizeof info));
        }
    }
}

}  // namespace
}  // namespace dispconv::test
