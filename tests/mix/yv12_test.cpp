// Mixing into YV12 planes, progressive and from one field.
#include "mix/mix_support.hpp"

namespace dispconv::test {
namespace {

constexpr int w = 32, h = 8, pitch = 48;  // output rows: Y 48 bytes apart, chroma 24

void expect_same_planes(MixJob& expected, MixJob& actual) {
    EXPECT_TRUE(same_bytes(expected.image, actual.image));
    EXPECT_TRUE(same_bytes(expected.image_u, actual.image_u));
    EXPECT_TRUE(same_bytes(expected.image_v, actual.image_v));
}

// The planes are the YUY2 mixer's luma, and the chroma of the upper row of each pair (frame
// chroma row r, sub-picture chroma row 2r, alphas of pixel row 2r).
TEST(MixYv12, PlanesMatchTheYuy2Mixer) {
    set_adjust(75, 45, -7, 33, 52);
    MixJob job(w, h, pitch, 31), expected(w, h, pitch, 31);
    const Buffer yuy2 = mix_to_yuy2(mix_ayuy2_yuy2_p_ajust, job);
    for (int r = 0; r < h; ++r)
        for (int x = 0; x < w; ++x) {
            const uint8_t* p = yuy2.data() + size_t(r) * 2 * w + 2 * x;
            expected.image[size_t(r) * pitch + x] = p[0];
            if (r % 2 == 0 && x % 2 == 0) {
                expected.image_u[size_t(r / 2) * (pitch / 2) + x / 2] = p[1];
                expected.image_v[size_t(r / 2) * (pitch / 2) + x / 2] = p[3];
            }
        }
    MIX_INFO info = job.record(), halved = job.record();
    mix_ayv12_yv12_p_ajust(&info);
    expect_same_planes(expected, job);
    halved.height = h / 2;  // the only change to the record
    EXPECT_TRUE(same_record(halved, info));

}

// Alphas of the lower row of each 2 x 2 block, and of the left-hand pixels, change luma only.
TEST(MixYv12, ChromaWeightIsTheUpperRowsRightHandAlpha) {
    for (const MixKernel kernel : {mix_ayv12_yv12_p, mix_ayv12_yv12_i}) {
        MixJob first(w, h, pitch, 34), second(w, h, pitch, 34);
        for (int r = 0; r < h; ++r)
            for (int x = 0; x < w; x += 2) {
                second.alpha[size_t(r) * second.sub_stride + x] ^= 16;
                if (r % 2) second.alpha[size_t(r) * second.sub_stride + x + 1] ^= 16;
            }
        MIX_INFO a = first.record(), b = second.record();
        kernel(&a);
        kernel(&b);
        EXPECT_FALSE(same_bytes(first.image, second.image));
        EXPECT_TRUE(same_bytes(first.image_u, second.image_u));
        EXPECT_TRUE(same_bytes(first.image_v, second.image_v));
    }
}

// The field mixer equals the progressive one over a frame whose odd rows are the rounded
// averages of the field rows around them (the last one with the row after the field).
TEST(MixYv12, FieldMixerEqualsProgressiveOverTheInterpolatedFrame) {
    MixJob field(w, h, pitch, 35, 40), frame(w, h, pitch, 35, 40);
    const auto row = [](MixJob& j, uint8_t& (MixJob::*plane)(int, int), int r, int x) {
        const int a = (j.*plane)(r / 2, x), b = (j.*plane)(r / 2 + r % 2, x);
        return uint8_t((a + b + 1) / 2);
    };
    for (int r = 0; r < h; ++r)
        for (int x = 0; x < w; ++x) {
            frame.fy(r, x) = row(field, &MixJob::fy, r, x);
            if (r < h / 2 && x < w / 2) {
                frame.fu(r, x) = row(field, &MixJob::fu, r, x);
                frame.fv(r, x) = row(field, &MixJob::fv, r, x);
            }
        }
    MIX_INFO a = field.record(), b = frame.record(), expected = field.record();
    mix_ayv12_yv12_i(&a);
    mix_ayv12_yv12_p(&b);
    expect_same_planes(frame, field);
    // The field mixer halves width as well as height in the record.
    expected.height = h / 2;
    expected.width = w / 2;
    EXPECT_TRUE(same_record(expected, a));
}

}  // namespace
}  // namespace dispconv::test
