// AYUY2 sub-picture planes to colour-keyed RGB bitmaps.
#include <cstring>

#include "mix/mix_support.hpp"

namespace dispconv::test {
namespace {

// The planes are read back to back, rows of frame_stride samples (sub_stride and width unread).
MIX_INFO record(MixJob& job) {
    MIX_INFO info = job.record();
    info.sub_stride = info.width = 999;
    return info;
}

// One block of 16 equal pixels.
TEST(SubpictureToRgb, OpacitySelectAndKey) {
    struct Case {
        const RgbFormat& f;
        uint8_t opacity, y;
        uint32_t key;
        std::vector<uint8_t> pixel;
    };
    const uint32_t key = 0x00FF00FF;
    const Case cases[] = {
        {rgb32, 0, 100, 0x00FF00FF, {255, 0, 255, 0}},
        {rgb32, 0, 100, 0x000000FF, {0, 0, 255, 0}},     // low byte is red
        {rgb32, 0, 100, 0xFF332211, {0x33, 0x22, 0x11, 0}},  // fourth byte ignored
        {rgb24, 0, 100, 0x000000FF, {0, 0, 255}},
        {rgb24, 0, 100, 0x00332211, {0x33, 0x22, 0x11}},
        {rgb16, 0, 100, 0x1234F81F, {0x1F, 0xF8}},       // raw low 16 bits
        {rgb32, 16, 235, key, {254, 254, 254, 0}},
        {rgb32, 1, 235, key, {254, 254, 254, 0}},
        {rgb32, 127, 235, key, {254, 254, 254, 0}},
        {rgb32, 128, 235, key, {0, 0, 0, 0}},
        {rgb32, 200, 235, key, {0, 0, 0, 0}},
        {rgb24, 16, 235, key, {254, 254, 254}},
        {rgb24, 255, 235, key, {0, 0, 0}},
        {rgb16, 16, 235, key, {0xFF, 0xFF}},
        {rgb16, 16, 16, key, {0x00, 0x00}},
        {rgb16, 200, 235, key, {0x00, 0x00}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.f.name << " opacity " << int(c.opacity));
        MixJob job(16, 1, 16 * c.f.bpp, 5, 16);
        std::memset(job.sub_y.data(), c.y, 16);
        std::memset(job.sub_u.data(), 128, 8);
        std::memset(job.sub_v.data(), 128, 8);
        std::memset(job.alpha.data(), c.opacity, 16);
        MIX_INFO info = record(job);
        info.color_key = c.key;
        Buffer want = job.image;
        for (int i = 0; i < 16; ++i) std::memcpy(&want[i * c.f.bpp], c.pixel.data(), c.f.bpp);
        c.f.from_sub(&info);
        EXPECT_TRUE(same_bytes(want, job.image));
    }
}

// With every opacity in 1..127 the bitmap is the YUY2 frame loader's picture of the same
// samples (5-6-5 for every accepted layout selector), adjusted or not; the padding stays.
TEST(SubpictureToRgb, EqualsFrameLoaderWhereOpaque) {
    const int width = 32, rows = 3;
    for (const RgbFormat* f : rgb_formats) {
        for (const bool adjusted : {false, true}) {
            for (int layout = 0; layout < layouts(*f); ++layout) {
                SCOPED_TRACE(::testing::Message() << f->name << (adjusted ? " adjusted" : "")
                                                  << " layout " << layout);
                const int image_stride = width * f->bpp + 8;
                MixJob job(width, rows, image_stride, 1, width);
                fill_random(job.alpha.data(), job.alpha.size(), 4);
                for (size_t i = 0; i < job.alpha.size(); ++i) job.alpha[i] = job.alpha[i] % 127 + 1;
                job.surface.rgb16_layout = layout;
                set_adjust(80, 48, -12, 40, 20);

                Buffer yuy2(size_t(2 * width) * rows);
                for (int i = 0; i < width * rows; ++i)
                    yuy2[2 * i] = job.sub_y[i], yuy2[2 * i + 1] = (i % 2 ? job.sub_v : job.sub_u)[i / 2];
                const Buffer want =
                    convert_rows(adjusted ? f->from_yuy2_adjust : f->from_yuy2, 0, yuy2, width, rows, f->bpp, job.image, image_stride);
                MIX_INFO info = record(job);
                (adjusted ? f->from_sub_adjust : f->from_sub)(&info);
                EXPECT_TRUE(same_bytes(want, job.image));
            }
        }
    }
}

}  // namespace
}  // namespace dispconv::test
