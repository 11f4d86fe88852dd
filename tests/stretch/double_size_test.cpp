// Double-size stretch of a planar frame and of a packed YUY2 frame.
#include "stretch/stretch_model.hpp"

namespace dispconv::test {
namespace {

Row doubled_tap(const Plane& p, Tap t) {
    const Row r0 = doubled(p.row(t.first));
    return t.kind == 'c' ? r0 : avg_rows(r0, doubled(p.row(t.first + 1)));
}

// Each source row is doubled (right edge repeated), then doubled rows are averaged.
TEST(DoubleSizePlanar, MatchesDoubledRowTable) {
    const ajust_contrast_info adjustments[] = {settings(), settings(100, 30, -40, 60, 90)};
    for (int w : {32, 48}) {
        for (const ajust_contrast_info& a : adjustments) {
            const int h = 8, dst_stride = 4 * w + 8;
            Frame f(w, h, 31u + w), pre(w, h, 31u + w);
            for (int r = 0; r < h; ++r) pre.y.set_row(r, adj_row(f.y.row(r), a.luma_gain, a.luma_offset));
            for (int r = 0; r < h / 2; ++r) {
                pre.u.set_row(r, adj_row(f.u.row(r), a.chroma_gain, a.u_offset));
                pre.v.set_row(r, adj_row(f.v.row(r), a.chroma_gain, a.v_offset));
            }
            Buffer want(size_t(dst_stride) * 2 * h), plain(want.size()), adjusted(want.size());
            for (size_t r = 0; r < plain_h8.size(); ++r)
                put_row(want, ptrdiff_t(r) * dst_stride,
                        yuy2(doubled_tap(pre.y, plain_h8[r].luma), doubled_tap(pre.u, plain_h8[r].chroma),
                             doubled_tap(pre.v, plain_h8[r].chroma)));
            ajust_contrast_info s = a;
            get_contrast_data(&s);
            strech_picture_2X2_yuy2_ajust(f.y.data(), f.u.data(), f.v.data(), adjusted.data(), w, h,
                                          f.y.pitch, dst_stride, nullptr);
            EXPECT_TRUE(same_bytes(want, adjusted)) << "ajust, width " << w << " luma gain " << a.luma_gain;
            if (a.luma_gain != 64) continue;
            strech_picture_2X2_yuy2(f.y.data(), f.u.data(), f.v.data(), plain.data(), w, h, f.y.pitch,
                                    dst_stride, nullptr);
            EXPECT_TRUE(same_bytes(want, plain)) << "plain, width " << w;
        }
    }
}

// Hand values: 10, 11 doubles to 10, 11, 11; rows 0, 1 over 2, 1 give 2 between all four
// (averaging before doubling would give 1); the last pixel repeats the last sample.
TEST(DoubleSizePlanar, HandValues) {
    const int w = 32, h = 8, pitch = 4 * w;
    Frame f(w, h, 41);
    uint8_t* y = f.y.data();
    y[0] = 0, y[1] = 1, y[f.y.pitch] = 2, y[f.y.pitch + 1] = 1;
    y[4] = 10, y[5] = 11;
    Buffer dst(size_t(pitch) * 2 * h);
    strech_picture_2X2_yuy2(f.y.data(), f.u.data(), f.v.data(), dst.data(), w, h, f.y.pitch, pitch, nullptr);
    EXPECT_EQ(dst[pitch + 2], 2);  // row 1, luma sample 1
    EXPECT_EQ(dst[16], 10);
    EXPECT_EQ(dst[18], 11);
    EXPECT_EQ(dst[20], 11);
    for (int r = 0; r < 2 * h; r += 3) {
        EXPECT_EQ(dst[r * pitch + 4 * w - 2], dst[r * pitch + 4 * w - 4]) << "row " << r;  // luma
        EXPECT_EQ(dst[r * pitch + 4 * w - 3], dst[r * pitch + 4 * w - 7]) << "row " << r;  // U
        EXPECT_EQ(dst[r * pitch + 4 * w - 1], dst[r * pitch + 4 * w - 5]) << "row " << r;  // V
    }
}

// Packed source of `bytes` per row (no padding) and its expected double-size surface:
// row 2r = D(r), row 2r + 1 = avg(D(r), D(r + 1)), the last row repeats D(h - 1).
Buffer expected_yuy2_2x2(const Buffer& src, int bytes, int h, int dst_stride, const ajust_contrast_info& a) {
    std::vector<Row> d(h);
    for (int r = 0; r < h; ++r) {
        Row y, u, v;
        for (int i = 0; i < bytes; i += 4) {
            const uint8_t* p = src.data() + size_t(r) * bytes + i;
            y.push_back(p[0]), u.push_back(p[1]), y.push_back(p[2]), v.push_back(p[3]);
        }
        d[r] = yuy2(doubled(adj_row(y, a.luma_gain, a.luma_offset)),
                    doubled(adj_row(u, a.chroma_gain, a.u_offset)),
                    doubled(adj_row(v, a.chroma_gain, a.v_offset)));
    }
    Buffer want(size_t(dst_stride) * 2 * h);
    for (int r = 0; r < h; ++r) {
        put_row(want, ptrdiff_t(2 * r) * dst_stride, d[r]);
        put_row(want, ptrdiff_t(2 * r + 1) * dst_stride, r + 1 < h ? avg_rows(d[r], d[r + 1]) : d[r]);
    }
    return want;
}

TEST(DoubleSizeYuy2, MatchesDoubledRows) {
    struct Case {
        int bytes, h;
        ajust_contrast_info a;
        bool adjusted;
    } cases[] = {
        {64, 16, settings(), false},
        {96, 18, settings(), false},
        {64, 16, settings(), true},
        {128, 20, settings(70, 90, 12, -30, 40), true},
    };
    for (const Case& c : cases) {
        const int dst_stride = 2 * c.bytes + 16;
        const Buffer src = random_buffer(size_t(c.bytes) * c.h, 51u + c.bytes);
        Buffer got(size_t(dst_stride) * 2 * c.h);
        ajust_contrast_info s = c.a;
        get_contrast_data(&s);
        Buffer in = src;
        if (c.adjusted)
            yuy2_strech_picture_2X2_yuy2_ajust(in.data(), nullptr, nullptr, got.data(), c.bytes, c.h, dst_stride, nullptr);
        else
            yuy2_strech_picture_2X2_yuy2(in.data(), nullptr, nullptr, got.data(), c.bytes, c.h, dst_stride);
        EXPECT_TRUE(same_bytes(expected_yuy2_2x2(src, c.bytes, c.h, dst_stride, c.a), got))
            << c.bytes << " bytes x " << c.h << (c.adjusted ? " adjusted" : " plain");
    }
}

TEST(DoubleSizeYuy2, HandValuesAndRefusal) {
    const int bytes = 64, h = 16, pitch = 2 * bytes;
    Buffer src(size_t(bytes) * h);
    for (int r = 0; r < h; ++r)
        for (int i = 0; i < bytes; ++i) src[size_t(r) * bytes + i] = r % 2 ? 255 : 0;
    Buffer dst(size_t(pitch) * 2 * h);
    yuy2_strech_picture_2X2_yuy2(src.data(), nullptr, nullptr, dst.data(), bytes, h, pitch);
    EXPECT_EQ(dst[pitch], 128);          // between rows of 0 and 255
    EXPECT_EQ(dst[3 * pitch + 5], 128);  // between rows of 255 and 0, a U byte
    EXPECT_EQ(dst[(2 * h - 1) * pitch], 255);

    Buffer refused(size_t(pitch) * 2 * h), untouched(size_t(pitch) * 2 * h);
    set_adjust();
    yuy2_strech_picture_2X2_yuy2(src.data(), nullptr, nullptr, refused.data(), bytes, 15, pitch);
    yuy2_strech_picture_2X2_yuy2_ajust(src.data(), nullptr, nullptr, refused.data(), bytes, 15, pitch, nullptr);
    yuy2_strech_picture_2X2_yuy2_ajust(src.data(), nullptr, nullptr, refused.data(), bytes, -2, pitch, nullptr);
    EXPECT_TRUE(same_bytes(untouched, refused));
}

}  // namespace
}  // namespace dispconv::test
