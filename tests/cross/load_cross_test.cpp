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

// Small sizes on both surface directions and every layout of the 16-bit kernels (the YV12
// surfaces are written through one pointer below the luma area: top-down only); realistic
// sizes with tight strides; destination rows closer than a row's length, whose bytes then
// depend on the order of the stores, which every implementation must keep.
std::vector<FrameGeometry> load_geometries(const LoadKernel& k) {
    const bool yv12 = std::string(k.name).find("yv12") != std::string::npos;
    std::vector<FrameGeometry> all;
    for (const Size& s : sizes)
        for (int layout = 0; layout < k.layouts; ++layout)
            for (bool bottom_up : {false, true})
                all.push_back({s.width, s.height, s.width + 40, (s.width + 40) * k.bytes_per_pixel + 8,
                               bottom_up && !yv12, layout == 4 ? -1 : layout, yv12 ? 3 * s.height + 8 : 0});
    for (const Size& s : {Size{720, 480}, Size{1920, 8}})
        all.push_back({s.width, s.height, s.width, s.width * k.bytes_per_pixel});
    for (int pitch : {8, 40}) all.push_back({64, 6, 80, pitch * k.bytes_per_pixel});
    return all;
}

TEST(CrossIsa, FrameLoaders) {
    uint32_t seed = 1;
    for (const LoadKernel& k : load_kernels)
        for (const FrameGeometry& g : load_geometries(k)) {
            load_cross_settings(seed);
            const auto member = k.member;
            const CrossCase c = frame_case(k.name, [member](const KernelTable& t) { return t.load->*member; }, g);
            ASSERT_TRUE(same_on_every_isa(c, seed++));
        }
}

}  // namespace
}  // namespace dispconv::test
