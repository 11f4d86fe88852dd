// Progressive mixing into RGB32, RGB24 and the four 16-bit layouts (and YUY2 at alpha 0).
#include <algorithm>
#include <iterator>

#include "mix/mix_support.hpp"

namespace dispconv::test {
namespace {

struct RgbCase {
    MixKernel mixer;
    FrameKernel loader;     // the adjusted planar frame loader of the same format
    FrameKernel converter;  // the plain packed-YUY2 converter of the same format
    int bpp, layout;
};
const RgbCase rgb_cases[] = {
    {mix_ayuy2_rgb32_p_ajust, loadimage_rgb32_ajust, LoadYUY2_RGB32, 4, 0},
    {mix_ayuy2_rgb24_p_ajust, loadimage_rgb24_ajust, LoadYUY2_RGB24, 3, 0},
    {mix_ayuy2_rgb16_p_ajust, loadimage_rgb16_ajust, LoadYUY2_RGB16, 2, 0},
    {mix_ayuy2_rgb16_p_ajust, loadimage_rgb16_ajust, LoadYUY2_RGB16, 2, 1},
    {mix_ayuy2_rgb16_p_ajust, loadimage_rgb16_ajust, LoadYUY2_RGB16, 2, 2},
    {mix_ayuy2_rgb16_p_ajust, loadimage_rgb16_ajust, LoadYUY2_RGB16, 2, 3},
};

// With alpha 0 only the frame shows: the output is the adjusted frame loader's (whose YUY2
// form needs an even height above 8).
TEST(MixRgb, AlphaZeroEqualsTheAdjustedFrameLoader) {
    set_adjust(90, 40, -8, 50, 70);
    RgbCase cases[std::size(rgb_cases) + 1] = {
        {mix_ayuy2_yuy2_p_ajust, loadimage_yuy2_ajust, nullptr, 2, 0}};
    std::copy(std::begin(rgb_cases), std::end(rgb_cases), cases + 1);
    for (const RgbCase& c : cases) {
        const int pitch = 48 * c.bpp + 12;
        MixJob job(48, 10, pitch, 11);
        job.surface.rgb16_layout = c.layout;
        fill_all(job.alpha, 0);
        Buffer loaded = job.image;
        c.loader(job.frame_y.data(), job.frame_u.data(), job.frame_v.data(), loaded.data(), 48, 10,
                 job.frame_stride, pitch, &job.surface);
        MIX_INFO info = job.record();
        c.mixer(&info);
        EXPECT_TRUE(same_bytes(loaded, job.image)) << c.bpp << " bytes, layout " << c.layout;
    }
}

// Every output row is the YUY2 mixer's row converted on its own (each row has its own
// chroma); the two walks leave the same record.
TEST(MixRgb, EqualsTheYuy2MixerFollowedByConversion) {
    set_adjust(72, 56, 6, 20, 12);
    for (const RgbCase& c : rgb_cases) {
        for (const int height : {4, 5}) {
            const int pitch = 32 * c.bpp + 8;
            MixJob job(32, height, pitch, 12);
            job.surface.rgb16_layout = c.layout;
            MIX_INFO yuy2_info;
            const Buffer yuy2 = mix_to_yuy2(mix_ayuy2_yuy2_p_ajust, job, &yuy2_info);
            const Buffer expected = convert_rows(c.converter, c.layout, yuy2, 32,
                                                 height + (height & 1), c.bpp, job.image, pitch);
            MIX_INFO info = job.record();
            c.mixer(&info);
            EXPECT_TRUE(same_bytes(expected, job.image)) << c.bpp << "/" << c.layout << "/" << height;
            info.image = yuy2_info.image;
            info.image_stride = yuy2_info.image_stride;
            EXPECT_TRUE(same_record(yuy2_info, info));
        }
    }
}

}  // namespace
}  // namespace dispconv::test
