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

// Hand-worked colours in every format and 16-bit layout (each channel alone pins its mask and
// place; white shows layout 1's spare bit 0). The second row of the pair carries grey chroma,
// which is never used: it shows the first row's colour.
TEST(LoadYuy2ToRgb, HandWorkedColoursInEveryFormat) {
    struct Words {
        uint8_t y, u, v;
        uint16_t packed[4];  // layouts 0..3; 0 where not worked out
    };
    const Words words[] = {
        {81, 90, 240, {0xF800, 0xF800, 0xFC00, 0xFC00}},   // red 253
        {145, 54, 34, {0x07E0, 0x07C0, 0x03F0, 0x03E0}},   // green 255
        {41, 240, 110, {0x001F, 0x003E, 0x000F, 0x001F}},  // blue 255, green 1 masked away
        {255, 128, 128, {0xFFFF, 0xFFFE, 0xFFFF, 0xFFFF}},
    };
    for (const ColourCase& c : colour_cases)
        for (const RgbFormat* k : rgb_formats)
            for (int32_t layout = 0; layout < layouts(*k); ++layout) {
                const Words* w = nullptr;
                for (const Words& x : words)
                    if (x.y == c.y && x.u == c.u && x.v == c.v) w = &x;
                if (k->bpp == 2 && !w) continue;
                uint8_t src[128], dst[128];
                for (int i = 0; i < 128; i += 4)
                    src[i] = src[i + 2] = c.y, src[i + 1] = i < 64 ? c.u : 128, src[i + 3] = i < 64 ? c.v : 128;
                ajust_contrast_info s = settings();
                s.rgb16_layout = layout;
                k->from_yuy2(src, nullptr, nullptr, dst, 16, 2, 16, 64, &s);
                const uint8_t rgb[4] = {c.b, c.g, c.r, 0};
                for (int i = 0; i < 16 * k->bpp; ++i) {
                    const int b = i % k->bpp;
                    const uint8_t want = k->bpp == 2 ? uint8_t(w->packed[layout] >> (8 * b)) : rgb[b];
                    ASSERT_EQ(dst[i], want) << k->name << " layout " << layout << " Y" << int(c.y) << " U" << int(c.u);
                    ASSERT_EQ(dst[64 + i], want) << k->name << " second row";
                }
            }
}

// Adjusting to RGB equals converting the frame the adjusting YUY2 copy writes. A width off the
// block (17) writes the rows of the width rounded up (32), each row pair starting where it would
// for that width (neutral settings make the adjusting kernels their plain twins, which the cross
// check holds them to).
TEST(LoadYuy2ToRgb, AdjustsBeforeConversionAndRoundsWidthsUp) {
    set_adjust(90, 40, -12, 30, 70);
    ajust_contrast_info s{};
    s.rgb16_layout = 2;
    for (const RgbFormat* k : rgb_formats) {
        Buffer src = random_yuy2(40, 6, 5), adjusted_src(80 * 6);
        LoadYUY2_YUY2_adjust(src.data(), nullptr, nullptr, adjusted_src.data(), 32, 6, 40, 80, nullptr);
        const int dst_stride = 40 * k->bpp;
        Buffer direct(size_t(dst_stride) * 7), composed = direct;
        k->from_yuy2_adjust(src.data(), nullptr, nullptr, direct.data(), 17, 5, 40, dst_stride, &s);
        k->from_yuy2(adjusted_src.data(), nullptr, nullptr, composed.data(), 32, 5, 40, dst_stride, &s);
        EXPECT_TRUE(same_bytes(composed, direct)) << k->name;
    }
}

}  // namespace
}  // namespace dispconv::test
