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
            Frame f(w, h, 31u + w), pre = adjusted(f, a);
            Buffer want(size_t(dst_stride) * 2 * h), adjusted(want.size());
            for (size_t r = 0; r < plain_h8.size(); ++r)
                put_row(want, ptrdiff_t(r) * dst_stride,
                        yuy2(doubled_tap(pre.y, plain_h8[r].luma), doubled_tap(pre.u, plain_h8[r].chroma),
                             doubled_tap(pre.v, plain_h8[r].chroma)));
            ajust_contrast_info s = a;
            get_contrast_data(&s);
            strech_picture_2X2_yuy2_ajust(f.y.data(), f.u.data(), f.v.data(), adjusted.data(), w, h,
                                          f.y.pitch, dst_stride, nullptr);
            EXPECT_TRUE(same_bytes(want, adjusted)) << "width " << w << " luma gain " << a.luma_gain;
        }
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
        {1088, 16, settings(), false},                      // walked row by row
        {2112, 18, settings(70, 90, 12, -30, 40), true},
    };
    for (const Case& c : cases) {
        const int dst_stride = 2 * c.bytes + 16;
        const Buffer src = random_buffer(size_t(c.bytes) * c.h, 51u + c.bytes);
        Buffer got(size_t(dst_stride) * 2 * c.h);
        ajust_contrast_info s = c.a;
        get_contrast_data(&s);
        Buffer in = src;
        auto run = [&](uint8_t* dst, int stride) {
            if (c.adjusted) yuy2_strech_picture_2X2_yuy2_ajust(in.data(), nullptr, nullptr, dst, c.bytes, c.h, stride, nullptr);
            else yuy2_strech_picture_2X2_yuy2(in.data(), nullptr, nullptr, dst, c.bytes, c.h, stride);
        };
        run(got.data(), dst_stride);
        const Buffer want = expected_yuy2_2x2(src, c.bytes, c.h, dst_stride, c.a);
        EXPECT_TRUE(same_bytes(want, got)) << c.bytes << " bytes x " << c.h << (c.adjusted ? " adjusted" : " plain");
        Buffer up(got.size());
        run(up.data() + size_t(dst_stride) * (2 * c.h - 1), -dst_stride);
        EXPECT_TRUE(rows_reversed(want, up, dst_stride, 2 * c.h)) << c.bytes << " bytes x " << c.h;
    }
}

}  // namespace
}  // namespace dispconv::test
