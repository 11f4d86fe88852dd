// Planar YV12 frames to RGB surfaces, and the geometry every frame loader shares.
#include "load/frames.hpp"

namespace dispconv::test {
namespace {

TEST(LoadimageRgb, EqualsThePackedTwinOnTheSameSamples) {
    set_adjust(75, 90, -8, 12, -20);
    for (const RgbFormat* f : rgb_formats)
        for (int layout = 0; layout < layouts(*f); ++layout)
            for (const bool adjusted : {false, true}) {
                ajust_contrast_info s{};
                s.rgb16_layout = layout;
                PlanarFrame frame(48, 7, 48, 30 + layout);
                Buffer packed = packed_from_planar(frame);
                const int dst_stride = 52 * f->bpp;
                Buffer from_planar(size_t(dst_stride) * 9), from_packed = from_planar;
                (adjusted ? f->from_yv12_adjust : f->from_yv12)(frame.y.data(), frame.u.data(), frame.v.data(),
                                                                from_planar.data(), 48, 7, 48, dst_stride, &s);
                (adjusted ? f->from_yuy2_adjust : f->from_yuy2)(packed.data(), nullptr, nullptr, from_packed.data(),
                                                                48, 7, 48, dst_stride, &s);
                EXPECT_TRUE(same_bytes(from_packed, from_planar)) << f->name << (adjusted ? " adjusted" : "") << " layout " << layout;
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
