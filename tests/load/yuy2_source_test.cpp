// Packed YUY2 frames to YUY2 and RGB surfaces.
#include "load/frames.hpp"

namespace dispconv::test {
namespace {

Buffer random_yuy2(int stride_px, int rows, uint32_t seed) {
    return random_buffer(size_t(2 * stride_px) * rows, seed);
}

TEST(LoadYuy2ToYuy2, OddRowsTakeTheChromaAbove) {
    // Width 21 is off the 8-pixel block: 24 pixels are written per row, and the next row pair
    // still starts exactly two pitches on. Height 5 writes six rows.
    const int width = 21, height = 5, src_stride = 32, dst_stride = 70, written = 48;
    Buffer src = random_yuy2(src_stride, height + 1, 1);
    Buffer want(size_t(dst_stride) * (height + 2)), got = want;
    for (int r = 0; r <= height; ++r)
        for (int i = 0; i < written; ++i) {
            const int chroma_row = (i & 1) ? r & ~1 : r;
            want[size_t(r) * dst_stride + i] = src[size_t(chroma_row) * 2 * src_stride + i];
        }
    LoadYUY2_YUY2(src.data(), nullptr, nullptr, got.data(), width, height, src_stride, dst_stride, nullptr);
    EXPECT_TRUE(same_bytes(want, got));
}

struct RgbKernels {
    const char* name;
    FrameKernel plain, adjusted;
    int bytes_per_pixel;
};
const RgbKernels yuy2_rgb_kernels[] = {
    {"rgb32", LoadYUY2_RGB32, LoadYUY2_RGB32_adjust, 4},
    {"rgb24", LoadYUY2_RGB24, LoadYUY2_RGB24_adjust, 3},
    {"rgb16", LoadYUY2_RGB16, LoadYUY2_RGB16_adjust, 2},
};

// Expected bytes of one pixel in each format (16-bit: layout 0).
std::vector<uint8_t> pixel_bytes(int bytes_per_pixel, uint8_t r, uint8_t g, uint8_t b) {
    if (bytes_per_pixel == 4) return {b, g, r, 0};
    if (bytes_per_pixel == 3) return {b, g, r};
    const uint16_t w = uint16_t(((r & 0xF8) << 8) | ((g & 0xFC) << 3) | (b >> 3));
    return {uint8_t(w), uint8_t(w >> 8)};
}

TEST(LoadYuy2ToRgb, HandWorkedColours) {
    ajust_contrast_info layout0{};
    for (const RgbKernels& k : yuy2_rgb_kernels)
        for (const ColourCase& c : colour_cases) {
            uint8_t src[2 * 16 * 2];
            for (int i = 0; i < 64; i += 4) src[i] = c.y, src[i + 1] = c.u, src[i + 2] = c.y, src[i + 3] = c.v;
            uint8_t dst[2 * 64];
            k.plain(src, nullptr, nullptr, dst, 16, 2, 16, 64, &layout0);
            const std::vector<uint8_t> px = pixel_bytes(k.bytes_per_pixel, c.r, c.g, c.b);
            for (int row = 0; row < 2; ++row)
                for (int x = 0; x < 16; ++x)
                    for (int i = 0; i < k.bytes_per_pixel; ++i)
                        ASSERT_EQ(dst[row * 64 + x * k.bytes_per_pixel + i], px[i])
                            << k.name << " Y" << int(c.y) << " U" << int(c.u) << " V" << int(c.v);
        }
}

TEST(LoadYuy2ToRgb, SecondRowShowsTheFirstRowsColour) {
    uint8_t src[2 * 64], dst[2 * 64];
    for (int i = 0; i < 64; i += 4) {
        src[i] = src[i + 2] = src[64 + i] = src[64 + i + 2] = 81;
        src[i + 1] = 90, src[i + 3] = 240;            // row 0: red
        src[64 + i + 1] = 128, src[64 + i + 3] = 128;  // row 1: grey, never used
    }
    LoadYUY2_RGB32(src, nullptr, nullptr, dst, 16, 2, 32, 64, nullptr);
    for (int x = 0; x < 16; ++x) {
        EXPECT_EQ(dst[64 + 4 * x + 2], 253);
        EXPECT_EQ(dst[64 + 4 * x + 1], 0);
    }
}

TEST(LoadYuy2ToRgb, SixteenBitLayoutsOfPrimariesAndWhite) {
    // Each channel alone pins its mask and place in every layout; white shows layout 1's
    // spare bit 0.
    struct Colour {
        uint8_t y, u, v;
        uint16_t packed[4];
    };
    const Colour colours[] = {
        {81, 90, 240, {0xF800, 0xF800, 0xFC00, 0xFC00}},   // red 253
        {145, 54, 34, {0x07E0, 0x07C0, 0x03F0, 0x03E0}},   // green 255
        {41, 240, 110, {0x001F, 0x003E, 0x000F, 0x001F}},  // blue 255, green 1 masked away
        {255, 128, 128, {0xFFFF, 0xFFFE, 0xFFFF, 0xFFFF}},
    };
    set_adjust();
    for (const Colour& c : colours)
        for (const int32_t layout : {0, 1, 2, 3})
            for (FrameKernel kernel : {LoadYUY2_RGB16, LoadYUY2_RGB16_adjust}) {
                uint8_t src[64];
                for (int i = 0; i < 64; i += 4) src[i] = src[i + 2] = c.y, src[i + 1] = c.u, src[i + 3] = c.v;
                ajust_contrast_info s{};
                s.rgb16_layout = layout;
                uint8_t dst[64];
                kernel(src, nullptr, nullptr, dst, 16, 2, 0, 32, &s);
                for (int i = 0; i < 32; ++i)
                    EXPECT_EQ(dst[2 * i] | dst[2 * i + 1] << 8, c.packed[layout]) << "layout " << layout << " Y" << int(c.y);
            }
}

TEST(LoadYuy2ToRgb, WidthOffTheBlockWritesTheRoundedUpRows) {
    // Pull-back: a width of 17 writes 32 pixels per row, and each row pair starts where it
    // would for a width of 32, so the whole surface equals that of width 32.
    ajust_contrast_info s{};
    for (const RgbKernels& k : yuy2_rgb_kernels) {
        Buffer src = random_yuy2(40, 6, 4);
        const int dst_stride = 40 * k.bytes_per_pixel;
        Buffer narrow(size_t(dst_stride) * 7), full = narrow;
        k.plain(src.data(), nullptr, nullptr, narrow.data(), 17, 5, 40, dst_stride, &s);
        k.plain(src.data(), nullptr, nullptr, full.data(), 32, 5, 40, dst_stride, &s);
        EXPECT_TRUE(same_bytes(full, narrow)) << k.name;
    }
}

TEST(LoadYuy2ToRgb, AdjustmentIsAppliedBeforeConversion) {
    // Adjusting to RGB equals converting the frame that the adjusting YUY2 copy writes (with
    // neutral settings, the YUY2 copy is the plain one, so this also covers neutral = plain).
    set_adjust(90, 40, -12, 30, 70);
    for (const RgbKernels& k : yuy2_rgb_kernels) {
        ajust_contrast_info s{};
        s.rgb16_layout = 2;
        Buffer src = random_yuy2(48, 6, 5), adjusted_src(96 * 6);
        LoadYUY2_YUY2_adjust(src.data(), nullptr, nullptr, adjusted_src.data(), 48, 6, 48, 96, nullptr);
        const int dst_stride = 50 * k.bytes_per_pixel;
        Buffer direct(size_t(dst_stride) * 6), composed = direct;
        k.adjusted(src.data(), nullptr, nullptr, direct.data(), 48, 6, 48, dst_stride, &s);
        k.plain(adjusted_src.data(), nullptr, nullptr, composed.data(), 48, 6, 48, dst_stride, &s);
        EXPECT_TRUE(same_bytes(composed, direct)) << k.name;
    }
}

}  // namespace
}  // namespace dispconv::test
