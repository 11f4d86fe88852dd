// Single-plane stretchers and the YV12 wrappers built on them.
#include "stretch/stretch_model.hpp"

namespace dispconv::test {
namespace {

// strech_pic_2X2: every strip but the last writes its bottom copy one row below the picture
// and leaves row 2h - 1 as it was; the last strip writes rows 0 .. 2h - 1.
Buffer expected_2x2(const Plane& src, int dst_stride) {
    const int w = src.w, h = src.h;
    Buffer want(size_t(dst_stride) * (2 * h + 1));
    std::vector<Row> d;
    for (int r = 0; r < h; ++r) d.push_back(doubled(src.row(r)));
    for (int r = 0; r < h; ++r) {
        put_row(want, ptrdiff_t(2 * r) * dst_stride, d[r]);
        if (r + 1 < h) put_row(want, ptrdiff_t(2 * r + 1) * dst_stride, avg_rows(d[r], d[r + 1]));
    }
    const Row& last = d[h - 1];
    const int split = 2 * w - 16;  // first byte of the last strip
    std::copy(last.begin() + split, last.end(), want.data() + ptrdiff_t(2 * h - 1) * dst_stride + split);
    std::copy(last.begin(), last.begin() + split, want.data() + ptrdiff_t(2 * h) * dst_stride);
    return want;
}

TEST(PlaneStretch, DoubleSizeStrips) {
    struct Case {
        int w, h, src_pitch, dst_stride;
    } cases[] = {{16, 2, 16, 32}, {24, 5, 32, 56}, {40, 3, 40, 80}, {528, 4, 544, 1060}, {1040, 3, 1040, 2080}};
    for (const Case& c : cases) {
        Plane src(c.w, c.h, c.src_pitch, 61u + c.w);
        src.data()[c.w - 2] = 10, src.data()[c.w - 1] = 20;
        Buffer got(size_t(c.dst_stride) * (2 * c.h + 1));
        strech_pic_2X2(src.data(), got.data(), c.w, c.h, c.src_pitch, c.dst_stride);
        const Buffer want = expected_2x2(src, c.dst_stride);
        EXPECT_TRUE(same_bytes(want, got)) << c.w << "x" << c.h;
        // The right edge repeats: 10, 20 doubles to 10, 15, 20, 20.
        EXPECT_EQ(Row(got.data() + 2 * c.w - 4, got.data() + 2 * c.w), (Row{10, 15, 20, 20}));
        Buffer up(got.size());
        strech_pic_2X2(src.data(), up.data() + size_t(c.dst_stride) * 2 * c.h, c.w, c.h, c.src_pitch, -c.dst_stride);
        EXPECT_TRUE(rows_reversed(want, up, c.dst_stride, 2 * c.h + 1)) << c.w << "x" << c.h;
    }
}

// The adjusting plane stretchers: row 0 repeated, then copies and averages; the bottom row
// repeats row h - 2 and is written again one source row (doubled: 2w bytes) further on. The
// 2X2 kind reads rows `w` apart and averages each row's last sample with the byte after it.
Buffer expected_adjust(const Plane& src, bool two_by_two, int dst_stride, int gain, int offset, size_t size) {
    const int w = src.w, h = src.h;
    auto row = [&](int r) { return two_by_two ? doubled(src.row(r), src.data()[size_t(r + 1) * w]) : src.row(r); };
    Buffer want(size);
    auto put_adj = [&](ptrdiff_t at, const Row& r) { put_row(want, at, adj_row(r, gain, offset)); };
    put_adj(0, row(0));
    for (int k = 0; k + 1 < h; ++k) {
        put_adj(ptrdiff_t(2 * k + 1) * dst_stride, row(k));
        put_adj(ptrdiff_t(2 * k + 2) * dst_stride, avg_rows(row(k), row(k + 1)));
    }
    put_adj(ptrdiff_t(2 * h - 2) * dst_stride, row(h - 2));
    put_adj(ptrdiff_t(2 * h - 2) * dst_stride + (two_by_two ? 2 : 1) * w, row(h - 2));
    return want;
}

// Every plane takes the luma gain (the chroma gain is deliberately far off) and the offset
// that `plane` picks.
TEST(PlaneStretch, AdjustingKernelsMatchModel) {
    struct Case {
        bool two_by_two;
        int w, h, src_pitch, dst_stride, plane;
    } cases[] = {
        {true, 32, 4, 32, 64, 1},  {true, 32, 5, 32, 80, 2},  {true, 48, 3, 48, 96, 3},
        {false, 32, 5, 40, 40, 1}, {false, 24, 4, 24, 32, 2}, {false, 48, 3, 64, 48, 3},
    };
    const int gain = 80, offsets[] = {0, 5, 9, -7};
    set_adjust(gain, 200, offsets[1], offsets[2], offsets[3]);
    for (const Case& c : cases) {
        Plane src(c.w, c.h, c.src_pitch, 71u + c.w + c.h);
        const size_t size = size_t(c.dst_stride) * 2 * c.h + 4 * c.w;
        Buffer got(size);
        const Buffer want = expected_adjust(src, c.two_by_two, c.dst_stride, gain, offsets[c.plane], size);
        auto kernel = c.two_by_two ? strech_pic_2X2_adjust : strech_pic_1X2_adjust;
        kernel(src.data(), got.data(), c.w, c.h, c.src_pitch, c.dst_stride, nullptr, c.plane);
        EXPECT_TRUE(same_bytes(want, got)) << (c.two_by_two ? "2X2 " : "1X2 ") << c.w << "x" << c.h
                                           << " plane " << c.plane;
    }
}

// The YV12 wrappers equal three plane calls: Y, then the plane from src_v with the U
// offset, then the plane from src_u with the V offset.
TEST(PlaneStretch, Yv12WrappersEqualThreePlaneCalls) {
    using Wrapper = void (*)(void*, void*, void*, void*, int32_t, int32_t, int32_t, int32_t, ajust_contrast_info*);
    using PlaneKernel = void (*)(uint8_t*, uint8_t*, int32_t, int32_t, int32_t, int32_t, ajust_contrast_info*, int32_t);
    struct Case {
        const char* name;
        Wrapper wrapper;
        PlaneKernel plane;
        int dst_stride;
    } cases[] = {
        {"2X2", strech_picture_2X2_yv12_ajust, strech_pic_2X2_adjust, 128},
        {"1X2", strech_picture_1X2_yv12_ajust, strech_pic_1X2_adjust, 64},
    };
    set_adjust(70, 10, 3, 40, -40);
    const int w = 64, h = 6;
    for (const Case& c : cases) {
        Plane y(w, h, w, 91), u(w / 2, h / 2, w / 2, 92), v(w / 2, h / 2, w / 2, 93);
        const ptrdiff_t p = 2 * ptrdiff_t(h) * c.dst_stride;
        const size_t size = size_t(p + p / 2 + 2 * w);
        Buffer want(size), got(size);
        c.plane(y.data(), want.data(), w, h, w, c.dst_stride, nullptr, 1);
        c.plane(v.data(), want.data() + p, w / 2, h / 2, w / 2, c.dst_stride / 2, nullptr, 2);
        c.plane(u.data(), want.data() + p + p / 4, w / 2, h / 2, w / 2, c.dst_stride / 2, nullptr, 3);
        c.wrapper(y.data(), u.data(), v.data(), got.data(), w, h, w, c.dst_stride, nullptr);
        EXPECT_TRUE(same_bytes(want, got)) << c.name;
        // The U offset (+40) shows in the plane taken from src_v.
        EXPECT_EQ(got[p], adj(v.data()[0], 70, 40)) << c.name;
    }
}

}  // namespace
}  // namespace dispconv::test
