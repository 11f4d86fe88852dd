// RGB sub-picture bitmaps to AYUY2 planes: colours, colour-key skipping, record advances.
#include <cstring>

#include "mix/mix_support.hpp"

namespace dispconv::test {
namespace {

struct Yuv {
    uint8_t y, u, v;
};

// The bitmap's rows are packed: pixel `index` of the whole bitmap.
void set_pixel(MixJob& job, int index, const std::vector<uint8_t>& bytes) {
    std::memcpy(job.image.data() + index * bytes.size(), bytes.data(), bytes.size());
}

void expect_planes(const MixJob& job, const Buffer& y, const Buffer& u, const Buffer& v) {
    EXPECT_TRUE(same_bytes(y, job.sub_y));
    EXPECT_TRUE(same_bytes(u, job.sub_u));
    EXPECT_TRUE(same_bytes(v, job.sub_v));
}

// Eight equal pixels, one block: either converted to the given colour or skipped as key.
TEST(ConvertToAyuy2, UniformBlock) {
    struct Case {
        const RgbFormat& f;
        std::vector<uint8_t> pixel;
        uint32_t key;
        bool skipped;
        Yuv want;
    };
    const uint32_t other = 0x12345678;
    const Case cases[] = {
        {rgb32, {0, 0, 0, 0}, other, false, {16, 128, 128}},
        {rgb32, {255, 255, 255, 0}, other, false, {234, 128, 128}},
        {rgb32, {0, 0, 255, 0}, other, false, {81, 90, 239}},
        {rgb32, {0, 255, 0, 0}, other, false, {144, 54, 34}},
        {rgb32, {255, 0, 0, 0}, other, false, {40, 239, 110}},
        {rgb32, {0, 0, 0, 1}, other, false, {17, 129, 129}},        // fourth byte ORed in
        {rgb32, {255, 255, 255, 255}, other, false, {255, 255, 255}},
        {rgb24, {0, 0, 255}, other, false, {81, 90, 239}},
        {rgb16, {0xFF, 0xFF}, other, false, {230, 127, 126}},       // no bit replication
        // Key matching.
        {rgb32, {0, 0, 0, 0}, 0, true, {}},
        {rgb32, {0, 0, 0, 1}, 0, false, {17, 129, 129}},            // all 32 bits compared
        {rgb24, {0, 0, 0}, 0, true, {}},
        {rgb24, {0x10, 0x20, 0x30}, 0x00302010, true, {}},
        {rgb24, {0, 0, 0}, 0xFF000000, false, {16, 128, 128}},      // top byte never matches
        {rgb16, {0, 0}, 0xABCD0000, true, {}},                      // low 16 bits only
    };
    for (const Case& c : cases) {
        MixJob job(8, 1, 8 * c.f.bpp, 7, 0, 8);
        for (int i = 0; i < 8; ++i) set_pixel(job, i, c.pixel);
        MIX_INFO info = job.record();
        info.color_key = c.key;
        Buffer want_y = job.sub_y, want_u = job.sub_u, want_v = job.sub_v;
        if (!c.skipped) {
            for (int i = 0; i < 8; ++i) want_y[i] = c.want.y;
            for (int i = 0; i < 4; ++i) want_u[i] = c.want.u, want_v[i] = c.want.v;
        }
        const Buffer image_before = job.image;
        c.f.convert(&info);
        SCOPED_TRACE(::testing::Message() << c.f.name << " key " << std::hex << c.key);
        expect_planes(job, want_y, want_u, want_v);
        EXPECT_TRUE(same_bytes(image_before, job.image));
    }
}

// Three blocks per row: all key (untouched), key with one red pixel at odd position 3 (written
// whole, chroma from the key-coloured even pixels), red at pixel 0 (chroma of red alone). The
// plane pointers advance by the rows done (the chroma rows are sub_stride / 2 apart, rounded
// down), the opacity pointer by the rows' padding only; nothing else in the record changes.
TEST(ConvertToAyuy2, KeyBlocksAreSkippedOthersWrittenWholeAndTheRecordAdvances) {
    struct Case {
        const RgbFormat& f;
        uint32_t key;
        std::vector<uint8_t> key_pixel, red_pixel;
        Yuv key_yuv, red_yuv;
    };
    const Case cases[] = {
        {rgb32, 0x00FFFFFF, {255, 255, 255, 0}, {0, 0, 255, 0}, {234, 128, 128}, {81, 90, 239}},
        {rgb24, 0x00FFFFFF, {255, 255, 255}, {0, 0, 255}, {234, 128, 128}, {81, 90, 239}},
        {rgb16, 0x0000FFFF, {0xFF, 0xFF}, {0x00, 0xF8}, {230, 127, 126}, {79, 91, 236}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.f.name);
        const int width = 24, height = 3, stride = 29;
        MixJob job(width, height, width * c.f.bpp, 11, 0, stride);
        MIX_INFO info = job.record();
        info.color_key = c.key;
        MIX_INFO want = info;
        Buffer want_y = job.sub_y, want_u = job.sub_u, want_v = job.sub_v;
        const Buffer opacity = job.alpha;
        for (int row = 0; row < height; ++row) {
            for (int x = 0; x < width; ++x) {
                const bool red = x == 8 + 3 || x == 16;
                set_pixel(job, row * width + x, red ? c.red_pixel : c.key_pixel);
                if (x >= 8) want_y[row * stride + x] = red ? c.red_yuv.y : c.key_yuv.y;
            }
            for (int j = 4; j < 12; ++j) {
                const bool red = j == 8;
                want_u[row * (stride / 2) + j] = red ? c.red_yuv.u : c.key_yuv.u;
                want_v[row * (stride / 2) + j] = red ? c.red_yuv.v : c.key_yuv.v;
            }
        }
        c.f.convert(&info);
        expect_planes(job, want_y, want_u, want_v);
        EXPECT_TRUE(same_bytes(opacity, job.alpha));
        want.sub_y += height * stride, want.sub_opacity += height * (stride - width);
        want.sub_u += height * (stride / 2), want.sub_v += height * (stride / 2);
        EXPECT_TRUE(same_record(want, info));
    }
}

// A width off the block: each row's steps use the nominal width, so row 1 starts 4 pixels
// early in both the bitmap and the planes.
TEST(ConvertToAyuy2, WidthOffTheBlockStartsRowsEarly) {
    const int width = 12;
    MixJob job(width, 2, width * 4, 5, 0, 16);
    MIX_INFO info = job.record();
    for (int i = 0; i < 2 * width; ++i) set_pixel(job, i, {0, 0, 255, 0});  // red
    for (int i = 8; i < 16; ++i) set_pixel(job, i, {255, 255, 255, 0});     // white
    Buffer want_y = job.sub_y, want_u = job.sub_u, want_v = job.sub_v;
    for (int x = 0; x < 8; ++x) want_y[x] = 81, want_y[12 + x] = 234;
    for (int j = 0; j < 4; ++j) {
        want_u[j] = 90, want_v[j] = 239;
        want_u[6 + j] = 128, want_v[6 + j] = 128;
    }
    Convert_RGB32_To_AYUY2(&info);
    expect_planes(job, want_y, want_u, want_v);
}

}  // namespace
}  // namespace dispconv::test
