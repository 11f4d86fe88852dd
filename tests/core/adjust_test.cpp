// The adjust constants as the kernels see them, through LoadYUY2_YUY2_adjust (which adjusts
// every luma and chroma byte of row 0 and passes nothing else through).
#include "support/test_support.hpp"

namespace dispconv::test {
namespace {

// The all-zero start is checked in a process of its own (standalone/early_call.cpp).
TEST(Adjust, SettingsArithmetic) {
    struct Case {
        ajust_contrast_info s;
        uint8_t y_in, u_in, v_in;
        Adjusted want;
    };
    ajust_contrast_info wrap = settings(64, 64, 30000);
    wrap.luma_offset_extra = 30000;  // sums to -5536 in 16 bits
    ajust_contrast_info split = settings(64, 64, 10, 0, 0);
    split.luma_offset_extra = 5;
    split.u_offset_extra = -3;
    split.v_offset_extra = 0x10002;  // only the low 16 bits count: +2
    ajust_contrast_info placed = settings(64, 64, 7);  // the other fields play no part
    placed.rgb16_layout = 3, placed.reserved = 99, placed.dst_plane_height = 1000, placed.dst_luma_height = -5;
    const Case cases[] = {
        {settings(), 200, 17, 240, {200, 17, 240}},             // neutral
        {settings(128), 200, 128, 128, {255, 128, 128}},        // 400 saturates
        {wrap, 200, 128, 128, {0, 128, 128}},                   // wrapped offset sum
        {settings(64, 32, 0, 64, 0), 0, 128, 128, {0, 128, 64}},
        {settings(64, 32, 0, 64, 0), 0, 255, 255, {0, 191, 127}},
        {settings(300), 255, 128, 128, {171, 128, 128}},        // product wraps at 16 bits
        {settings(64, 64, -20), 10, 128, 128, {0, 128, 128}},   // negative clamps to 0
        {split, 100, 100, 100, {115, 97, 102}},
        {placed, 50, 60, 70, {57, 60, 70}},
    };
    for (const Case& c : cases) {
        ajust_contrast_info s = c.s;
        get_contrast_data(&s);
        EXPECT_EQ(adjust_through_kernel(c.y_in, c.u_in, c.v_in), c.want)
            << "gains " << c.s.luma_gain << ", " << c.s.chroma_gain;
    }
}

}  // namespace
}  // namespace dispconv::test
