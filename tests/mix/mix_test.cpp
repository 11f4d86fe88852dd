// Mixing a sub-picture over a frame: the YUY2 mixer against its definition, the other mixers'
// chroma weights, rows and records, and the half, RGB and YV12 mixers as the YUY2 mixer
// decimated or composed with conversion.
#include "mix/mix_support.hpp"

namespace dispconv::test {
namespace {

// The progressive YUY2 mixer as defined: each sample (frame * (16 - alpha) + sub * alpha) >> 4,
// adjusted afterwards; luma weighted by its own pixel's alpha, each chroma pair by its right-hand
// pixel's; a row pair shares its frame chroma row, the sub-picture has a chroma row per row.
Buffer blend_model(MixJob& job, const ajust_contrast_info& s) {
    Buffer out = job.image;
    const auto blend = [](int frame, int sub, int alpha) { return std::min(255, (frame * (16 - alpha) + sub * alpha) >> 4); };
    for (int r = 0; r < job.height + (job.height & 1); ++r)
        for (int x = 0; x < job.width; ++x) {
            const size_t sub = size_t(r) * job.sub_stride + x, sub_chroma = size_t(r) * (job.sub_stride / 2) + x / 2;
            uint8_t* p = &out[size_t(r) * job.image_stride + 2 * x];
            p[0] = adj(blend(job.fy(r, x), job.sub_y[sub], job.alpha[sub]), s.luma_gain, s.luma_offset);
            const int weight = job.alpha[size_t(r) * job.sub_stride + (x | 1)];
            p[1] = x % 2 ? adj(blend(job.fv(r / 2, x / 2), job.sub_v[sub_chroma], weight), s.chroma_gain, s.v_offset)
                         : adj(blend(job.fu(r / 2, x / 2), job.sub_u[sub_chroma], weight), s.chroma_gain, s.u_offset);
        }
    return out;
}

// Random planes, odd and even heights, neutral and strong settings (where adjusting before the
// blend would differ); planes of 0 and 255 only, where the sums are largest.
TEST(MixYuy2, EqualsTheBlendModel) {
    for (const ajust_contrast_info& s : {settings(), settings(128, 40, -9, 20, -30), settings(75, 45, -7, 33, 52)})
        for (const int height : {6, 7}) {
            ajust_contrast_info a = s;
            get_contrast_data(&a);
            MixJob job(32, height, 72, 3 + height);
            if (s.luma_gain == 128)
                for (Buffer* b : {&job.frame_y, &job.frame_u, &job.frame_v, &job.sub_y, &job.sub_u, &job.sub_v})
                    for (size_t i = 0; i < b->size(); ++i) (*b)[i] = (*b)[i] & 1 ? 255 : 0;
            const Buffer expected = blend_model(job, s);
            MIX_INFO info = job.record();
            mix_ayuy2_yuy2_p_ajust(&info);
            EXPECT_TRUE(same_bytes(expected, job.image)) << "height " << height << " luma gain " << s.luma_gain;
        }
}

// The field mixers weight chroma otherwise: the interlaced YUY2 mixer by the right-hand alpha,
// the interlaced RGB mixers by the pair's rounded average. Flat equal luma, so only chroma
// depends on alpha.
TEST(MixChroma, FieldMixersWeightOfAPair) {
    set_adjust();
    const auto field = [](MixKernel kernel, uint8_t a0, uint8_t a1) {
        MixJob job(16, 8, 64, 24);
        fill_all(job.frame_y, 77);
        fill_all(job.sub_y, 77);
        for (size_t i = 0; i < job.alpha.size(); ++i) job.alpha[i] = i % 2 ? a1 : a0;
        MIX_INFO info = job.record();
        kernel(&info);
        return job.image;
    };
    EXPECT_TRUE(same_bytes(field(mix_ayuy2_yuy2_i_ajust, 16, 16), field(mix_ayuy2_yuy2_i_ajust, 0, 16)));
    EXPECT_TRUE(same_bytes(field(mix_ayuy2_yuy2_i_ajust, 0, 0), field(mix_ayuy2_yuy2_i_ajust, 16, 0)));
    EXPECT_TRUE(same_bytes(field(mix_ayuy2_rgb32_i_ajust, 8, 8), field(mix_ayuy2_rgb32_i_ajust, 0, 16)));
    EXPECT_TRUE(same_bytes(field(mix_ayuy2_rgb32_i_ajust, 8, 8), field(mix_ayuy2_rgb32_i_ajust, 16, 0)));
    EXPECT_FALSE(same_bytes(field(mix_ayuy2_rgb32_i_ajust, 16, 16), field(mix_ayuy2_rgb32_i_ajust, 0, 16)));
}

// Half-width pixel pair k is full-size luma 4k+1 and 4k+3 with full-size chroma pair 2k+1; the
// records differ only in the output.
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
        info.image = full_info.image, info.image_stride = full_info.image_stride;
        EXPECT_TRUE(same_record(full_info, info));
    }
}

// Deliberately, the half mixer spaces the frame's second row and its chroma rows by sub_stride.
TEST(MixHalfYuy2, ReadsTheFrameAtTheSubPictureSpacing) {
    set_adjust();
    const int fs = 64, ss = 96;
    MixJob job(32, 4, 48, 6, fs, ss);
    fill_all(job.alpha, 0);
    Buffer expected = job.image;
    for (int r = 0; r < 4; ++r) {
        const size_t luma_row = size_t(r / 2) * 2 * fs + size_t(r % 2) * ss, chroma_row = size_t(r / 2) * (ss / 2);
        for (int i = 0; i < 32; ++i)
            expected[size_t(r) * 48 + i] = i % 2 == 0 ? job.frame_y[luma_row + i + 1]
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
    const struct {
        int height, pairs, height_after, height_after_second;
    } cases[] = {{6, 3, 0, -2}, {5, 3, -1, -3}, {0, 1, -2, -4}};
    set_adjust(64, 64, 10, -5, 5);
    for (const auto& c : cases) {
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

// Every RGB output row is the YUY2 mixer's row converted on its own, progressive and field
// (where both alphas of every pair agree, the field mixers' pair average is the right-hand
// alpha); the progressive walks leave the same record, the field RGB mixers none at all.
TEST(MixRgb, EqualsTheYuy2MixerFollowedByConversion) {
    set_adjust(72, 56, 6, 20, 12);
    for (const RgbFormat* f : rgb_formats)
        for (int layout = 0; layout < layouts(*f); layout += 3)
            for (const int height : {4, 5, 8, 10}) {
                const bool field = height % 4 == 0 && height > 4;
                const int pitch = 48 * f->bpp + 8;
                MixJob job(48, height, pitch, 12 + height, field ? 64 : 0);
                job.surface.rgb16_layout = layout;
                if (field)
                    for (size_t i = 0; i + 1 < job.alpha.size(); i += 2) job.alpha[i] = job.alpha[i + 1];
                MIX_INFO yuy2_info;
                const Buffer yuy2 = mix_to_yuy2(field ? mix_ayuy2_yuy2_i_ajust : mix_ayuy2_yuy2_p_ajust, job, &yuy2_info);
                const Buffer expected = convert_rows(f->from_yuy2, layout, yuy2, 48, height + (height & 1), f->bpp, job.image, pitch);
                const MIX_INFO before = job.record();
                MIX_INFO info = before;
                (field ? f->mix_field : f->mix)(&info);
                EXPECT_TRUE(same_bytes(expected, job.image)) << f->name << "/" << layout << "/" << height;
                if (!field) info.image = yuy2_info.image, info.image_stride = yuy2_info.image_stride;
                EXPECT_TRUE(same_record(field ? before : yuy2_info, info));
            }
}

// Field rows (luma and chroma) alternate 0 and 255; alpha 0 shows the interpolated frame, in
// groups of four rows: row k, avg(k, k + 1), row k + 1, avg(k + 1, k + 2); the last group repeats.
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

// A height off the group of four gives the output of `rows` (one group for RGB below 8, one
// strip only, as later strips step back by `height` rows); the YUY2 mixer leaves height 0 and
// the sub-picture pointers past the rows written, the frame chroma one row per group on.
TEST(MixInterlaced, HeightRulesAndRecord) {
    const struct {
        MixKernel kernel;
        int height, rows;
    } cases[] = {{mix_ayuy2_yuy2_i_ajust, 6, 4}, {mix_ayuy2_yuy2_i_ajust, 8, 8}, {mix_ayuy2_yuy2_i_ajust, 10, 12},
                 {mix_ayuy2_rgb32_i_ajust, 2, 4}, {mix_ayuy2_rgb32_i_ajust, 7, 4}};
    set_adjust(64, 64, 0, 12, -12);
    for (const auto& c : cases) {
        const bool yuy2 = c.kernel == mix_ayuy2_yuy2_i_ajust;
        MixJob job(yuy2 ? 32 : 16, 12, 128, 25, 48, 80);
        Buffer reference = job.image;
        MIX_INFO exact = job.record();
        exact.height = c.rows, exact.image = reference.data();
        c.kernel(&exact);
        job.height = c.height;
        MIX_INFO info = job.record(), expected = job.record();
        c.kernel(&info);
        EXPECT_TRUE(same_bytes(reference, job.image)) << c.height;
        if (yuy2) {
            expected.height = 0;
            for (uint8_t** p : {&expected.sub_opacity, &expected.sub_y}) *p += c.rows * 80;
            for (uint8_t** p : {&expected.sub_u, &expected.sub_v}) *p += c.rows * 40;
            for (uint8_t** p : {&expected.frame_u, &expected.frame_v}) *p += c.rows / 4 * 24;
        }
        EXPECT_TRUE(same_record(expected, info)) << c.height;
    }
}

// YV12: the planes are the YUY2 mixer's luma and the chroma of the upper row of each pair
// (frame chroma row r, sub-picture chroma row 2r, alphas of pixel row 2r); height is halved in
// the record.
TEST(MixYv12, PlanesMatchTheYuy2Mixer) {
    constexpr int w = 32, h = 8, pitch = 48;
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
    for (Buffer MixJob::*plane : {&MixJob::image, &MixJob::image_u, &MixJob::image_v})
        EXPECT_TRUE(same_bytes(expected.*plane, job.*plane));
    halved.height = h / 2;
    EXPECT_TRUE(same_record(halved, info));
}

// The field mixer equals the progressive one over a frame whose odd rows are the rounded
// averages of the field rows around them (the last one with the row after the field); it
// halves width as well as height in the record.
TEST(MixYv12, FieldMixerEqualsProgressiveOverTheInterpolatedFrame) {
    constexpr int w = 32, h = 8, pitch = 48;
    MixJob field(w, h, pitch, 35, 40), frame(w, h, pitch, 35, 40);
    const auto row = [](MixJob& j, uint8_t& (MixJob::*plane)(int, int), int r, int x) {
        return uint8_t(((j.*plane)(r / 2, x) + (j.*plane)(r / 2 + r % 2, x) + 1) / 2);
    };
    for (int r = 0; r < h; ++r)
        for (int x = 0; x < w; ++x) {
            frame.fy(r, x) = row(field, &MixJob::fy, r, x);
            if (r < h / 2 && x < w / 2) frame.fu(r, x) = row(field, &MixJob::fu, r, x), frame.fv(r, x) = row(field, &MixJob::fv, r, x);
        }
    MIX_INFO a = field.record(), b = frame.record(), expected = field.record();
    mix_ayv12_yv12_i(&a);
    mix_ayv12_yv12_p(&b);
    for (Buffer MixJob::*plane : {&MixJob::image, &MixJob::image_u, &MixJob::image_v})
        EXPECT_TRUE(same_bytes(frame.*plane, field.*plane));
    expected.height = h / 2, expected.width = w / 2;
    EXPECT_TRUE(same_record(expected, a));
}

}  // namespace
}  // namespace dispconv::test
