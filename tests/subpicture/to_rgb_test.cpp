// AYUY2 sub-picture planes to colour-keyed RGB bitmaps.
#include <cstring>

#include "mix/mix_support.hpp"

namespace dispconv::test {
namespace {

struct Format {
    const char* name;
    MixKernel plain, adjusted;
    FrameKernel frame_plain, frame_adjusted;  // the YUY2 frame loaders of the same format
    int bpp;
};
const Format rgb32{"RGB32", load_subpicture_yuy2_rgb32, load_subpicture_yuy2_rgb32_ajust,
                   LoadYUY2_RGB32, LoadYUY2_RGB32_adjust, 4};
const Format rgb24{"RGB24", load_subpicture_yuy2_rgb24, load_subpicture_yuy2_rgb24_ajust,
                   LoadYUY2_RGB24, LoadYUY2_RGB24_adjust, 3};
const Format rgb16{"RGB16", load_subpicture_yuy2_rgb16, load_subpicture_yuy2_rgb16_ajust,
                   LoadYUY2_RGB16, LoadYUY2_RGB16_adjust, 2};

// Planes of `pixels` samples read back to back, and a bitmap of `rows` rows.
struct Job {
    Buffer y, u, v, opacity, image;
    ajust_contrast_info surface{};
    MIX_INFO info{};
    Job(int row_pixels, int rows, int image_stride, size_t image_size)
        : y(size_t(row_pixels) * rows), u(y.size() / 2), v(y.size() / 2), opacity(y.size()),
          image(image_size) {
        info.frame_stride = row_pixels, info.sub_stride = 999, info.width = 999;  // last two unread
        info.image_stride = image_stride, info.height = rows;
        info.sub_y = y.data(), info.sub_u = u.data(), info.sub_v = v.data();
        info.sub_opacity = opacity.data();
        info.image = image.data();
        info.surface_format = &surface;
    }
};

// One block of 16 equal pixels.
TEST(SubpictureToRgb, OpacitySelectAndKey) {
    struct Case {
        const Format& f;
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
        Job job(16, 1, 16 * c.f.bpp, 16 * c.f.bpp);
        std::memset(job.y.data(), c.y, 16);
        std::memset(job.u.data(), 128, 8);
        std::memset(job.v.data(), 128, 8);
        std::memset(job.opacity.data(), c.opacity, 16);
        job.info.color_key = c.key;
        Buffer want(16 * c.f.bpp);
        for (int i = 0; i < 16; ++i) std::memcpy(&want[i * c.f.bpp], c.pixel.data(), c.f.bpp);
        c.f.plain(&job.info);
        EXPECT_TRUE(same_bytes(want, job.image));
    }
}

// With every opacity in 1..127 the bitmap is the YUY2 frame loader's picture of the same
// samples (5-6-5 for every accepted layout selector), adjusted or not; the padding stays.
TEST(SubpictureToRgb, EqualsFrameLoaderWhereOpaque) {
    const int width = 32, rows = 3;
    for (const Format* f : {&rgb32, &rgb24, &rgb16}) {
        for (const bool adjusted : {false, true}) {
            for (const int layout : {0, 1, 2, 3}) {
                if (f->bpp != 2 && layout) continue;
                SCOPED_TRACE(::testing::Message() << f->name << (adjusted ? " adjusted" : "")
                                                  << " layout " << layout);
                const int image_stride = width * f->bpp + 8;
                Job job(width, rows, image_stride, size_t(image_stride) * rows);
                fill_random(job.y.data(), job.y.size(), 1);
                fill_random(job.u.data(), job.u.size(), 2);
                fill_random(job.v.data(), job.v.size(), 3);
                fill_random(job.opacity.data(), job.opacity.size(), 4);
                for (size_t i = 0; i < job.opacity.size(); ++i) job.opacity[i] = job.opacity[i] % 127 + 1;
                job.surface.rgb16_layout = layout;
                set_adjust(80, 48, -12, 40, 20);

                Buffer yuy2(size_t(2 * width) * rows);
                for (int i = 0; i < width * rows; ++i)
                    yuy2[2 * i] = job.y[i], yuy2[2 * i + 1] = (i % 2 ? job.v : job.u)[i / 2];
                const Buffer want = convert_rows(adjusted ? f->frame_adjusted : f->frame_plain, 0, yuy2, width, rows,
                                                 f->bpp, Buffer(job.image.size()), image_stride);
                (adjusted ? f->adjusted : f->plain)(&job.info);
                EXPECT_TRUE(same_bytes(want, job.image));
            }
        }
    }
}

}  // namespace
}  // namespace dispconv::test
