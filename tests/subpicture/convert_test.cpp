// RGB sub-picture bitmaps to AYUY2 planes: colours, colour-key skipping, record advances.
#include <cstring>

#include "support/test_support.hpp"

namespace dispconv::test {
namespace {

struct Format {
    const char* name;
    MixKernel kernel;
    int bpp;
};
const Format rgb32{"RGB32", Convert_RGB32_To_AYUY2, 4};
const Format rgb24{"RGB24", Convert_RGB24_To_AYUY2, 3};
const Format rgb16{"RGB16", Convert_RGB16_565_To_AYUY2, 2};

struct Yuv {
    uint8_t y, u, v;
};

// A bitmap and three planes for a width x height job with packed rows.
struct Job {
    Buffer image, y, u, v, opacity;
    MIX_INFO info{};
    Job(const Format& f, int width, int height, int sub_stride, uint32_t seed)
        : image(size_t(width) * f.bpp * height),
          y(random_buffer(size_t(sub_stride) * height, seed)),
          u(random_buffer(size_t(sub_stride) / 2 * height, seed + 1)),
          v(random_buffer(size_t(sub_stride) / 2 * height, seed + 2)),
          opacity(random_buffer(size_t(sub_stride) * height, seed + 3)) {
        info.sub_stride = sub_stride, info.image_stride = width * f.bpp;
        info.width = width, info.height = height, info.image = image.data();
        info.sub_y = y.data(), info.sub_u = u.data(), info.sub_v = v.data();
        info.sub_opacity = opacity.data();
    }
    void set_pixel(int index, const std::vector<uint8_t>& bytes) {
        std::memcpy(image.data() + index * bytes.size(), bytes.data(), bytes.size());
    }
};

void expect_planes(const Job& job, const Buffer& y, const Buffer& u, const Buffer& v) {
    EXPECT_TRUE(same_bytes(y, job.y));
    EXPECT_TRUE(same_bytes(u, job.u));
    EXPECT_TRUE(same_bytes(v, job.v));
}

// Eight equal pixels, one block: either converted to the given colour or skipped as key.
TEST(ConvertToAyuy2, UniformBlock) {
    struct Case {
        const Format& f;
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
        Job job(c.f, 8, 1, 8, 7);
        for (int i = 0; i < 8; ++i) job.set_pixel(i, c.pixel);
        job.info.color_key = c.key;
        Buffer want_y = job.y, want_u = job.u, want_v = job.v;
        if (!c.skipped) {
            for (int i = 0; i < 8; ++i) want_y[i] = c.want.y;
            for (int i = 0; i < 4; ++i) want_u[i] = c.want.u, want_v[i] = c.want.v;
        }
        const Buffer image_before = job.image;
        c.f.kernel(&job.info);
        SCOPED_TRACE(::testing::Message() << c.f.name << " key " << std::hex << c.key);
        expect_planes(job, want_y, want_u, want_v);
        EXPECT_TRUE(same_bytes(image_before, job.image));
    }
}

// Three blocks per row: all key (untouched), key with one red pixel at odd position 3 (written
// whole, chroma from the key-coloured even pixels), red at pixel 0 (chroma of red alone).
TEST(ConvertToAyuy2, KeyBlocksAreSkippedOthersWrittenWhole) {
    struct Case {
        const Format& f;
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
        const int width = 24, height = 2;
        Job job(c.f, width, height, width, 11);
        job.info.color_key = c.key;
        Buffer want_y = job.y, want_u = job.u, want_v = job.v;
        for (int row = 0; row < height; ++row) {
            for (int x = 0; x < width; ++x) {
                const bool red = x == 8 + 3 || x == 16;
                job.set_pixel(row * width + x, red ? c.red_pixel : c.key_pixel);
                if (x >= 8) want_y[row * width + x] = red ? c.red_yuv.y : c.key_yuv.y;
            }
            for (int j = 4; j < 12; ++j) {
                const bool red = j == 8;
                want_u[row * 12 + j] = red ? c.red_yuv.u : c.key_yuv.u;
                want_v[row * 12 + j] = red ? c.red_yuv.v : c.key_yuv.v;
            }
        }
        c.f.kernel(&job.info);
        expect_planes(job, want_y, want_u, want_v);
    }
}

// The four plane pointers advance in the record; nothing else in it changes.
TEST(ConvertToAyuy2, RecordAdvances) {
    struct Case {
        const Format& f;
        int width, sub_stride, height;
        ptrdiff_t y_step, chroma_step, opacity_step;
    };
    const Case cases[] = {
        {rgb32, 64, 64, 10, 640, 320, 0},
        {rgb32, 64, 80, 3, 240, 120, 48},
        {rgb16, 16, 21, 2, 42, 2 * (8 + 2), 10},  // odd remainder halves down
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.f.name << " stride " << c.sub_stride);
        Job job(c.f, c.width, c.height, c.sub_stride, 3);
        job.info.color_key = 0x12345678, job.info.frame_stride = 1234, job.info.reserved1 = 5;
        MIX_INFO want = job.info;
        want.sub_y += c.y_step, want.sub_opacity += c.opacity_step;
        want.sub_u += c.chroma_step, want.sub_v += c.chroma_step;
        const Buffer opacity_before = job.opacity;
        c.f.kernel(&job.info);
        EXPECT_EQ(0, std::memcmp(&want, &job.info, sizeof want));
        EXPECT_TRUE(same_bytes(opacity_before, job.opacity));
    }
}

// A width off the block: each row's steps use the nominal width, so row 1 starts 4 pixels
// early in both the bitmap and the planes.
TEST(ConvertToAyuy2, WidthOffTheBlockStartsRowsEarly) {
    const int width = 12;
    Job job(rgb32, width, 2, 16, 5);
    job.info.color_key = 0x12345678;
    for (int i = 0; i < 2 * width; ++i) job.set_pixel(i, {0, 0, 255, 0});  // red
    for (int i = 8; i < 16; ++i) job.set_pixel(i, {255, 255, 255, 0});     // white
    Buffer want_y = job.y, want_u = job.u, want_v = job.v;
    for (int x = 0; x < 8; ++x) want_y[x] = 81, want_y[12 + x] = 234;
    for (int j = 0; j < 4; ++j) {
        want_u[j] = 90, want_v[j] = 239;
        want_u[6 + j] = 128, want_v[6 + j] = 128;
    }
    Convert_RGB32_To_AYUY2(&job.info);
    expect_planes(job, want_y, want_u, want_v);
}

}  // namespace
}  // namespace dispconv::test
