// Interlaced mixing: one field doubled in height, into YUY2 and RGB.
#include "mix/mix_support.hpp"

namespace dispconv::test {
namespace {

// Field rows (luma and chroma) alternate 0 and 255; alpha 0 shows the interpolated frame.
TEST(MixInterlaced, AlternatingFieldRowsInterpolateRoundingUp) {
    set_adjust();
    MixJob job(32, 12, 64, 21, 64);
    for (int row = 0; row < 8; ++row)
        for (int x = 0; x < 32; ++x) job.fy(row, x) = job.fu(row, x / 2) = job.fv(row, x / 2) = row % 2 ? 255 : 0;
    fill_all(job.alpha, 0);
    const uint8_t luma[12] = {0, 128, 255, 128, 0, 128, 255, 128, 0, 128, 255, 255};
    const uint8_t chroma[12] = {0, 0, 128, 128, 255, 255, 128, 128, 0, 0, 0, 0};
    Buffer expected = job.image;
    for (int r = 0; r < 12; ++r)
        for (int i = 0; i < 64; ++i) expected[size_t(r) * 64 + i] = i % 2 ? chroma[r] : luma[r];
    MIX_INFO info = job.record();
    mix_ayuy2_yuy2_i_ajust(&info);
    EXPECT_TRUE(same_bytes(expected, job.image));
}

// Where both alphas of every pair agree, the pair average is the right-hand alpha, so each RGB
// row is the YUY2 field mixer's row converted on its own (three strips of 16 pixels).
TEST(MixInterlaced, RgbEqualsTheYuy2MixerFollowedByConversion) {
    struct Case {
        MixKernel mixer;
        FrameKernel converter;
        int bpp, layout;
    };
    const Case cases[] = {{mix_ayuy2_rgb32_i_ajust, LoadYUY2_RGB32, 4, 0},
                          {mix_ayuy2_rgb24_i_ajust, LoadYUY2_RGB24, 3, 0},
                          {mix_ayuy2_rgb16_i_ajust, LoadYUY2_RGB16, 2, 0},
                          {mix_ayuy2_rgb16_i_ajust, LoadYUY2_RGB16, 2, 2}};
    set_adjust(60, 70, -3, 10, -6);
    for (const Case& c : cases) {
        for (const int height : {8, 12}) {
            const int pitch = 48 * c.bpp + 16;
            MixJob job(48, height, pitch, 23, 64);
            job.surface.rgb16_layout = c.layout;
            for (size_t i = 0; i + 1 < job.alpha.size(); i += 2) job.alpha[i] = job.alpha[i + 1];
            const Buffer yuy2 = mix_to_yuy2(mix_ayuy2_yuy2_i_ajust, job);
            const Buffer expected =
                convert_rows(c.converter, c.layout, yuy2, 48, height, c.bpp, job.image, pitch);
            const MIX_INFO before = job.record();
            MIX_INFO info = before;
            c.mixer(&info);
            EXPECT_TRUE(same_bytes(expected, job.image)) << c.bpp << "/" << c.layout << "/" << height;
            EXPECT_TRUE(same_record(before, info));  // the RGB field mixers work on copies
        }
    }
}

// A pair with alphas (0, 16) or (16, 0): YUY2 weights chroma by the right-hand alpha, RGB by
// the rounded average 8. Luma is flat and equal in frame and sub-picture, so only chroma
// depends on alpha.
TEST(MixInterlaced, ChromaWeightOfAPair) {
    struct Case {
        MixKernel kernel;
        uint8_t pair[2], same_as[2], differs_from[2];
    };
    const Case cases[] = {
        {mix_ayuy2_yuy2_i_ajust, {0, 16}, {16, 16}, {8, 8}},
        {mix_ayuy2_yuy2_i_ajust, {16, 0}, {0, 0}, {8, 8}},
        {mix_ayuy2_rgb32_i_ajust, {0, 16}, {8, 8}, {16, 16}},
        {mix_ayuy2_rgb32_i_ajust, {16, 0}, {8, 8}, {0, 0}},
    };
    set_adjust();
    const auto run = [](MixKernel kernel, const uint8_t pair[2]) {
        MixJob job(16, 8, 64, 24);
        fill_all(job.frame_y, 77);
        fill_all(job.sub_y, 77);
        for (size_t i = 0; i < job.alpha.size(); ++i) job.alpha[i] = pair[i % 2];
        MIX_INFO info = job.record();
        kernel(&info);
        return job.image;
    };
    for (const Case& c : cases) {
        const Buffer actual = run(c.kernel, c.pair);
        EXPECT_TRUE(same_bytes(run(c.kernel, c.same_as), actual));
        EXPECT_FALSE(same_bytes(run(c.kernel, c.differs_from), actual));
    }
}

// A height that is not a multiple of 4 gives the output of `rows` (none for YUY2 below 4, one
// group for RGB below 8; one strip, as later strips step back by `height` rows). The YUY2 mixer leaves height 0 and the sub-picture pointers past the
// rows written, the frame chroma one row per group on; a refused call changes nothing.
TEST(MixInterlaced, HeightRulesAndRecord) {
    struct Case {
        MixKernel kernel;
        int height, rows;
    };
    const Case cases[] = {{mix_ayuy2_yuy2_i_ajust, 3, 0},  {mix_ayuy2_yuy2_i_ajust, 6, 4},
                          {mix_ayuy2_yuy2_i_ajust, 8, 8},  {mix_ayuy2_yuy2_i_ajust, 10, 12},
                          {mix_ayuy2_rgb32_i_ajust, 2, 4}, {mix_ayuy2_rgb32_i_ajust, 7, 4}};
    set_adjust(64, 64, 0, 12, -12);
    for (const Case& c : cases) {
        MixJob job(c.kernel == mix_ayuy2_yuy2_i_ajust ? 32 : 16, 12, 128, 25, 48, 80);
        Buffer reference = job.image;
        MIX_INFO exact = job.record();
        exact.height = c.rows;
        exact.image = reference.data();
        if (c.rows) c.kernel(&exact);
        job.height = c.height;
        MIX_INFO info = job.record(), expected = job.record();
        c.kernel(&info);
        EXPECT_TRUE(same_bytes(reference, job.image)) << c.height;
        if (c.kernel == mix_ayuy2_yuy2_i_ajust && c.rows) {
            expected.height = 0;
            for (uint8_t** p : {&expected.sub_opacity, &expected.sub_y}) *p += c.rows * 80;
            for (uint8_t** p : {&expected.sub_u, &expected.sub_v}) *p += c.rows * 40;
            for (uint8_t** p : {&expected.frame_u, &expected.frame_v}) *p += c.rows / 4 * 24;
        }
        EXPECT_TRUE(same_record(expected, info)) << c.height;
    }
}

}  // namespace
}  // namespace dispconv::test
