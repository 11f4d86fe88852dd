// Planar YV12 frames to RGB surfaces, and the geometry every frame loader shares.
#include "load/frames.hpp"

namespace dispconv::test {
namespace {

struct Twin {
    const char* name;
    FrameKernel planar, packed;
    int bytes_per_pixel;
};
const Twin twins[] = {
    {"rgb32", loadimage_rgb32, LoadYUY2_RGB32, 4},
    {"rgb32_ajust", loadimage_rgb32_ajust, LoadYUY2_RGB32_adjust, 4},
    {"rgb24", loadimage_rgb24, LoadYUY2_RGB24, 3},
    {"rgb24_ajust", loadimage_rgb24_ajust, LoadYUY2_RGB24_adjust, 3},
    {"rgb16", loadimage_rgb16, LoadYUY2_RGB16, 2},
    {"rgb16_ajust", loadimage_rgb16_ajust, LoadYUY2_RGB16_adjust, 2},
};

TEST(LoadimageRgb, EqualsThePackedTwinOnTheSameSamples) {
    set_adjust(75, 90, -8, 12, -20);
    for (int layout = 0; layout < 4; ++layout)
        for (const Twin& t : twins) {
            if (layout && t.bytes_per_pixel != 2) continue;
            ajust_contrast_info s{};
            s.rgb16_layout = layout;
            PlanarFrame f(48, 7, 48, 30 + layout);
            Buffer packed = packed_from_planar(f);
            const int dst_stride = 52 * t.bytes_per_pixel;
            Buffer from_planar(size_t(dst_stride) * 9), from_packed = from_planar;
            t.planar(f.y.data(), f.u.data(), f.v.data(), from_planar.data(), 48, 7, 48, dst_stride, &s);
            t.packed(packed.data(), nullptr, nullptr, from_packed.data(), 48, 7, 48, dst_stride, &s);
            EXPECT_TRUE(same_bytes(from_packed, from_planar)) << t.name << " layout " << layout;
        }
}

TEST(LoadimageRgb, WidthOffTheBlockDriftsRightEveryRowPair) {
    // Width 24 converts 32 pixels per row; row pair 1 starts 8 pixels to the right, reading
    // its samples 8 luma and 4 chroma samples further on.
    const int stride = 64, dst_stride = 200;
    PlanarFrame f(24, 4, stride, 32);
    Buffer drifted(size_t(dst_stride) * 5), shifted(size_t(dst_stride) * 2);
    loadimage_rgb32(f.y.data(), f.u.data(), f.v.data(), drifted.data(), 24, 4, stride, dst_stride, nullptr);
    loadimage_rgb32(f.y.data() + 2 * stride + 8, f.u.data() + stride / 2 + 4, f.v.data() + stride / 2 + 4,
                    shifted.data(), 32, 2, stride, dst_stride, nullptr);
    for (int row = 0; row < 2; ++row)
        for (int i = 0; i < 32 * 4; ++i)
            ASSERT_EQ(drifted[size_t(2 + row) * dst_stride + 32 + i], shifted[size_t(row) * dst_stride + i])
                << "row " << 2 + row << " byte " << i;
}

}  // namespace
}  // namespace dispconv::test
