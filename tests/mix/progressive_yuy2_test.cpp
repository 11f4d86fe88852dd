// Progressive mixing into YUY2, full and half width.
#include "mix/mix_support.hpp"

namespace dispconv::test {
namespace {

// Flat planes: every output byte is one blend, worked out by hand.
TEST(MixBlend, FlatPlanesGiveTheTruncatedBlendAdjustedAfterwards) {
    struct Case {
        uint8_t frame, sub, alpha;
        int gain;  // luma and chroma
        uint8_t expected;
    };
    const Case cases[] = {
        {255, 0, 8, 64, 127},   {0, 255, 8, 64, 127},   {100, 200, 4, 64, 125},
        {17, 0, 1, 64, 15},     {200, 50, 0, 64, 200},  {200, 50, 16, 64, 50},
        {255, 255, 15, 64, 255},
        {255, 0, 8, 128, 254},  // adjusted after mixing: 127 * 2 (before, it would be 127)
        {40, 120, 16, 32, 60},
    };
    for (const Case& c : cases) {
        set_adjust(c.gain, c.gain);
        MixJob job(32, 4, 80, 1);
        for (Buffer* b : {&job.frame_y, &job.frame_u, &job.frame_v}) fill_all(*b, c.frame);
        for (Buffer* b : {&job.sub_y, &job.sub_u, &job.sub_v}) fill_all(*b, c.sub);
        fill_all(job.alpha, c.alpha);
        Buffer expected = job.image;
        for (int r = 0; r < 4; ++r) std::memset(&expected[size_t(r) * 80], c.expected, 64);
        MIX_INFO info = job.record();
        mix_ayuy2_yuy2_p_ajust(&info);
        EXPECT_TRUE(same_bytes(expected, job.image)) << int(c.frame) << " " << int(c.sub) << " "
                                                     << int(c.alpha) << " " << c.gain;
    }
}

TEST(MixYuy2, AlphaSixteenShowsTheSubPictureWithItsOwnChromaRows) {
    set_adjust();
    MixJob job(32, 6, 72, 3);
    fill_all(job.alpha, 16);
    const int cs = job.sub_stride / 2;
    Buffer expected = job.image;
    for (int r = 0; r < 6; ++r)
        for (int x = 0; x < 32; ++x) {
            expected[size_t(r) * 72 + 2 * x] = job.sub_y[size_t(r) * job.sub_stride + x];
            expected[size_t(r) * 72 + 2 * x + 1] = (x % 2 ? job.sub_v : job.sub_u)[size_t(r) * cs + x / 2];
        }
    MIX_INFO info = job.record();
    mix_ayuy2_yuy2_p_ajust(&info);
    EXPECT_TRUE(same_bytes(expected, job.image));
}

// Frame 0, sub-picture 255: alpha 16 shows 255, alpha 0 shows 0.
TEST(MixYuy2, ChromaFollowsTheRightHandPixel) {
    struct Case {
        MixKernel kernel;
        uint8_t alphas[4];    // repeated along every row
        uint8_t expected[4];  // each output pixel pair: Y, U, Y, V
    };
    const Case cases[] = {
        {mix_ayuy2_yuy2_p_ajust, {16, 0, 16, 0}, {255, 0, 0, 0}},
        {mix_ayuy2_yuy2_p_ajust, {0, 16, 0, 16}, {0, 255, 255, 255}},
        // Half width keeps source pixels 4k+1 and 4k+3; chroma takes pixel 4k+3's alpha.
        {mix_ayuy2_half_yuy2_p_ajust, {0, 16, 0, 0}, {255, 0, 0, 0}},
        {mix_ayuy2_half_yuy2_p_ajust, {16, 0, 16, 16}, {0, 255, 255, 255}},
    };
    set_adjust();
    for (const Case& c : cases) {
        MixJob job(32, 4, 64, 4);
        for (Buffer* b : {&job.frame_y, &job.frame_u, &job.frame_v}) fill_all(*b, 0);
        for (Buffer* b : {&job.sub_y, &job.sub_u, &job.sub_v}) fill_all(*b, 255);
        for (size_t i = 0; i < job.alpha.size(); ++i) job.alpha[i] = c.alphas[i % 4];
        const int bytes = c.kernel == mix_ayuy2_yuy2_p_ajust ? 64 : 32;
        Buffer expected = job.image;
        for (int r = 0; r < 4; ++r)
            for (int i = 0; i < bytes; ++i) expected[size_t(r) * 64 + i] = c.expected[i % 4];
        MIX_INFO info = job.record();
        c.kernel(&info);
        EXPECT_TRUE(same_bytes(expected, job.image)) << int(c.alphas[0]) << int(c.alphas[1]);
    }
}

// Half-width pixel pair k is full-size luma 4k+1 and 4k+3 with full-size chroma pair 2k+1.
TEST(MixHalfYuy2, IsTheFullSizeOutputDecimated) {
    set_adjust(70, 60, -4, 9, 3);
    for (const int height : {6, 7}) {
        MixJob job(64, height, 160, 5, 96, 96);
        MIX_INFO full_info;
        const Buffer full = mix_to_yuy2(mix_ayuy2_yuy2_p_ajust, job, &full_info);
        Buffer expected = job.image;
        for (int r = 0; r < height + (height & 1); ++r)
            for (int i = 0; i < 64; ++i)  // pair k: full-size bytes 8k + 2, 8k + 5, 8k + 6, 8k + 7
                expected[size_t(r) * 160 + i] = full[size_t(r) * 128 + 8 * (i / 4) + "\2\5\6\7"[i % 4]];
        MIX_INFO info = job.record();
        mix_ayuy2_half_yuy2_p_ajust(&info);
        EXPECT_TRUE(same_bytes(expected, job.image)) << "height " << height;
        info.image = full_info.image;  // the records differ only there and in image_stride
        info.image_stride = full_info.image_stride;
        EXPECT_TRUE(same_record(full_info, info));
    }
}

// The half kernel spaces the frame's second row and its chroma rows by sub_stride.
TEST(MixHalfYuy2, ReadsTheFrameAtTheSubPictureSpacing) {
    set_adjust();
    const int fs = 64, ss = 96;
    MixJob job(32, 4, 48, 6, fs, ss);
    fill_all(job.alpha, 0);
    Buffer expected = job.image;
    for (int r = 0; r < 4; ++r) {
        const size_t luma_row = size_t(r / 2) * 2 * fs + size_t(r % 2) * ss;
        const size_t chroma_row = size_t(r / 2) * (ss / 2);
        for (int i = 0; i < 32; ++i)
            expected[size_t(r) * 48 + i] =
                i % 2 == 0 ? job.frame_y[luma_row + i + 1]
                           : (i % 4 == 1 ? job.frame_u : job.frame_v)[chroma_row + i / 2 + (i % 4 == 1)];
    }
    MIX_INFO info = job.record();
    mix_ayuy2_half_yuy2_p_ajust(&info);
    EXPECT_TRUE(same_bytes(expected, job.image));
    EXPECT_EQ(info.frame_u, job.frame_u.data() + ss);
}

// The record after a call, and a second call with the record as the first left it: it mixes
// one row pair, its frame luma and output back at the top (they are not in the record).
TEST(MixYuy2, RecordIsAdvancedAndASecondCallMixesOnePairBelow) {
    struct Case {
        int height, pairs, height_after, height_after_second;
    };
    const Case cases[] = {{6, 3, 0, -2}, {5, 3, -1, -3}, {0, 1, -2, -4}};
    set_adjust(64, 64, 10, -5, 5);
    for (const Case& c : cases) {
        MixJob job(32, 6, 80, 7, 48, 64);
        job.height = c.height;
        MIX_INFO info = job.record(), expected = job.record();
        mix_ayuy2_yuy2_p_ajust(&info);
        expected.height = c.height_after;
        for (uint8_t** p : {&expected.sub_opacity, &expected.sub_y}) *p += c.pairs * 2 * 64;
        for (uint8_t** p : {&expected.sub_u, &expected.sub_v}) *p += c.pairs * 64;
        for (uint8_t** p : {&expected.frame_u, &expected.frame_v}) *p += c.pairs * 24;
        EXPECT_TRUE(same_record(expected, info)) << c.height;

        Buffer reference = job.image;
        expected.height = 2;
        expected.image = reference.data();
        mix_ayuy2_yuy2_p_ajust(&expected);
        mix_ayuy2_yuy2_p_ajust(&info);
        EXPECT_EQ(info.height, c.height_after_second);
        EXPECT_TRUE(same_bytes(reference, job.image)) << c.height;
    }
}

}  // namespace
}  // namespace dispconv::test
