// The opacity plane to and from RGB bitmaps: levels, round trips, row geometry, record fields.
#include <cstring>

#include "support/test_support.hpp"

namespace dispconv::test {
namespace {

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
    const int width = 32, height = 3, n = width * height;
    for (const RgbFormat* f : rgb_formats) {
        SCOPED_TRACE(f->name);
        Buffer levels(n);
        for (int i = 0; i < n; ++i) levels[i] = static_cast<uint8_t>(i * 37 + 5);
        levels[0] = 0, levels[1] = 255, levels[2] = 31, levels[3] = 32;
        Buffer image(size_t(n) * f->bpp);
        MIX_INFO info = alpha_record(levels.data(), image.data(), width, height, width,
                                     width * f->bpp);
        f->load_alpha(&info);

        Buffer restored(n), want(n);
        for (int i = 0; i < n; ++i) {
            if (f->bpp == 4) want[i] = levels[i];
            if (f->bpp == 3) want[i] = i + 1 < n ? levels[i + 1] : canary;
            if (f->bpp == 2) want[i] = levels[i] & 0x1F;
        }
        info = alpha_record(restored.data(), image.data(), width, height, width, width * f->bpp);
        f->restore_alpha(&info);
        EXPECT_TRUE(same_bytes(want, restored));
    }
}

}  // namespace
}  // namespace dispconv::test
