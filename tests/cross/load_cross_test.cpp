// Every frame-loading kernel, on every instruction set, equals the portable reference.
#include "cross/cross_isa.hpp"

namespace dispconv::test {
namespace {

struct LoadKernel {
    const char* name;
    FrameKernel LoadKernels::*member;
    int bytes_per_pixel;  // destination bytes per pixel
    bool packed_source;
    int layouts = 1;      // 16-bit kernels run all four layouts and a refused one
};

#define K(name, bpp, packed) {#name, &LoadKernels::name, bpp, packed}
#define K16(name, packed) {#name, &LoadKernels::name, 2, packed, 5}
const LoadKernel load_kernels[] = {
    K(LoadYUY2_YUY2, 2, true),        K(LoadYUY2_YUY2_adjust, 2, true),
    K(LoadYUY2_RGB32, 4, true),       K(LoadYUY2_RGB32_adjust, 4, true),
    K(LoadYUY2_RGB24, 3, true),       K(LoadYUY2_RGB24_adjust, 3, true),
    K16(LoadYUY2_RGB16, true),        K16(LoadYUY2_RGB16_adjust, true),
    K(loadimage_yuy2, 2, false),      K(loadimage_yuy2_ajust, 2, false),
    K(loadimage_yuy2_mono_ajust, 2, false), K(loadimage_half_yuy2_ajust, 1, false),
    K(loadimage_yv12, 1, false),      K(loadimage_yv12_ajust, 1, false),
    K(loadimage_half_yv12_ajust, 1, false),
    K(loadimage_rgb32, 4, false),     K(loadimage_rgb32_ajust, 4, false),
    K(loadimage_rgb24, 3, false),     K(loadimage_rgb24_ajust, 3, false),
    K16(loadimage_rgb16, false),      K16(loadimage_rgb16_ajust, false),
};
#undef K
#undef K16

struct Size {
    int width, height;
};
// Small and realistic sizes, odd heights, widths off the block (every kernel defines what it
// does with them, pull-back or drift), and one block.
const Size sizes[] = {{16, 2}, {32, 10}, {48, 7}, {17, 5}, {24, 12}, {5, 3}, {720, 24}, {352, 13}, {64, 0}};

TEST(CrossIsa, FrameLoaders) {
    uint32_t seed = 1;
    int cases = 0;
    for (const LoadKernel& k : load_kernels)
        for (const Size& s : sizes)
            for (int layout = 0; layout < k.layouts; ++layout)
                for (bool bottom_up : {false, true}) {
                    FrameGeometry g;
                    g.width = s.width, g.height = s.height, g.layout = layout == 4 ? -1 : layout;
                    g.src_stride = s.width + 40;
                    g.dst_stride = (s.width + 40) * k.bytes_per_pixel + 8;
                    g.bottom_up = bottom_up;
                    // The YV12 surfaces are written through one pointer below the luma area.
                    if (std::string(k.name).find("yv12") != std::string::npos) g.bottom_up = false, g.dst_rows = 3 * s.height + 8;
                    load_cross_settings(seed);
                    auto member = k.member;
                    const CrossCase c = frame_case(k.name, [member](const KernelTable& t) { return t.load->*member; }, g);
                    ASSERT_TRUE(same_on_every_isa(c, seed++));
                    ++cases;
                }
    RecordProperty("cases", cases);
}

TEST(CrossIsa, FrameLoadersRealisticSizes) {
    uint32_t seed = 1000;
    for (const LoadKernel& k : load_kernels)
      for (const Size& s : {Size{720, 480}, Size{1920, 8}}) {
        FrameGeometry g{s.width, s.height, s.width, s.width * k.bytes_per_pixel};
        load_cross_settings(seed);
        auto member = k.member;
        ASSERT_TRUE(same_on_every_isa(frame_case(k.name, [member](const KernelTable& t) { return t.load->*member; }, g), seed++));
      }
}

}  // namespace
}  // namespace dispconv::test

namespace dispconv::test {
namespace {

// Destination rows closer than a row's length: the bytes then depend on the order of the
// stores, which every implementation must keep.
TEST(CrossIsa, FrameLoadersOverlappingRows) {
    uint32_t seed = 5000;
    for (const LoadKernel& k : load_kernels)
        for (int pitch : {8, 40}) {
            FrameGeometry g{64, 6, 80, pitch * k.bytes_per_pixel};
            load_cross_settings(seed);
            auto member = k.member;
            ASSERT_TRUE(same_on_every_isa(frame_case(k.name, [member](const KernelTable& t) { return t.load->*member; }, g), seed++));
        }
}

}  // namespace
}  // namespace dispconv::test
