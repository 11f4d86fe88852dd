// Double-height stretch of a planar frame to YUY2 and to RGB.
#include "stretch/stretch_model.hpp"

namespace dispconv::test {
namespace {

const std::vector<RowRecipe> filtered_h8 = {
    {{'c', 0}, {'c', 0}}, {{'a', 0}, {'c', 0}}, {{'c', 1}, {'a', 0}}, {{'a', 1}, {'a', 0}},
    {{'c', 2}, {'c', 1}}, {{'f', 1}, {'c', 1}}, {{'c', 3}, {'f', 0}}, {{'f', 2}, {'f', 0}},
    {{'c', 4}, {'c', 2}}, {{'f', 3}, {'c', 2}}, {{'c', 5}, {'a', 2}}, {{'f', 4}, {'a', 2}},
    {{'c', 6}, {'c', 3}}, {{'a', 6}, {'c', 3}}, {{'c', 7}, {'c', 3}}, {{'c', 7}, {'c', 3}},
};
const std::vector<RowRecipe> filtered_h10 = {
    {{'c', 0}, {'c', 0}}, {{'a', 0}, {'c', 0}}, {{'c', 1}, {'a', 0}}, {{'a', 1}, {'a', 0}},
    {{'c', 2}, {'c', 1}}, {{'f', 1}, {'c', 1}}, {{'c', 3}, {'f', 0}}, {{'f', 2}, {'f', 0}},
    {{'c', 4}, {'c', 2}}, {{'f', 3}, {'c', 2}}, {{'c', 5}, {'f', 1}}, {{'f', 4}, {'f', 1}},
    {{'c', 6}, {'c', 3}}, {{'f', 5}, {'c', 3}}, {{'c', 7}, {'a', 3}}, {{'f', 6}, {'a', 3}},
    {{'c', 8}, {'c', 4}}, {{'a', 8}, {'c', 4}}, {{'c', 9}, {'c', 4}}, {{'c', 9}, {'c', 4}},
};

Row tap_row(const Plane& p, Tap t) {
    const Row r0 = p.row(t.first);
    if (t.kind == 'c') return r0;
    const Row r1 = p.row(t.first + 1);
    if (t.kind == 'a') return avg_rows(r0, r1);
    const Row r2 = p.row(t.first + 2), r3 = p.row(t.first + 3);
    Row out(r0.size());
    for (size_t i = 0; i < out.size(); ++i) out[i] = filt(r0[i], r1[i], r2[i], r3[i]);
    return out;
}

// Expected YUY2 surface: one row per recipe, adjusted afterwards when settings `s` are given.
Buffer expected_yuy2(const Frame& f, const std::vector<RowRecipe>& recipes, int dst_stride,
                     const ajust_contrast_info* s) {
    Buffer b(size_t(dst_stride) * recipes.size());
    for (size_t r = 0; r < recipes.size(); ++r) {
        Row y = tap_row(f.y, recipes[r].luma), u = tap_row(f.u, recipes[r].chroma),
            v = tap_row(f.v, recipes[r].chroma);
        if (s) {
            y = adj_row(y, s->luma_gain, s->luma_offset);
            u = adj_row(u, s->chroma_gain, s->u_offset);
            v = adj_row(v, s->chroma_gain, s->v_offset);
        }
        put_row(b, ptrdiff_t(r) * dst_stride, yuy2(y, u, v));
    }
    return b;
}

TEST(DoubleHeightYuy2, MatchesRowTables) {
    ajust_contrast_info s = settings(80, 48, -20, 30, -10);
    struct Case {
        const char* name;
        const std::vector<RowRecipe>* recipes;
        bool adjusted;
        int w;
    } cases[] = {
        {"plain h8", &plain_h8, false, 32},
        {"plain h8 one block", &plain_h8, false, 16},
        {"filtered h8", &filtered_h8, true, 32},
        {"filtered h10", &filtered_h10, true, 48},
    };
    for (const Case& c : cases) {
        const int h = int(c.recipes->size()) / 2, dst_stride = 2 * c.w + 8;
        Frame f(c.w, h, 7u + h);
        Buffer dst(size_t(dst_stride) * 2 * h);
        get_contrast_data(&s);
        if (c.adjusted)
            strech_picture_1X2_yuy2_ajust(f.y.data(), f.u.data(), f.v.data(), dst.data(), c.w, h,
                                          f.y.pitch, dst_stride, nullptr);
        else
            strech_picture_1X2_yuy2(f.y.data(), f.u.data(), f.v.data(), dst.data(), c.w, h,
                                    f.y.pitch, dst_stride, nullptr);
        EXPECT_TRUE(same_bytes(expected_yuy2(f, *c.recipes, dst_stride, c.adjusted ? &s : nullptr), dst))
            << c.name;
    }
}

// The RGB stretchers equal the YUY2 loader's conversion of the plain YUY2 stretch of the same
// frame, whose samples were adjusted beforehand. They and the YUY2 double-size stretch walk
// 16-pixel strips, each top to bottom: where destination rows overlap, the surface is each
// strip's rows laid down in that order, the rows being those a call with rows apart writes.
TEST(Stretch, RgbRowsAreConvertedStretchesLaidDownStripByStrip) {
    using Kernel = void (*)(void*, void*, void*, void*, int32_t, int32_t, int32_t, int32_t, ajust_contrast_info*);
    struct Case {
        const char* name;
        Kernel stretch, load;
        int width, height, bpp, layout, strip_bytes;
    } const cases[] = {
        {"rgb32", strech_picture_1X2_yuy2_ajust_rgb32, LoadYUY2_RGB32, 48, 14, 4, 0, 64},
        {"rgb24", strech_picture_1X2_yuy2_ajust_rgb24, LoadYUY2_RGB24, 64, 12, 3, 0, 48},
        {"rgb16 layout 1", strech_picture_1X2_yuy2_ajust_rgb16, LoadYUY2_RGB16, 32, 12, 2, 1, 32},
        {"rgb16 layout 2", strech_picture_1X2_yuy2_ajust_rgb16, LoadYUY2_RGB16, 48, 16, 2, 2, 32},
        {"rgb16 layout 3", strech_picture_1X2_yuy2_ajust_rgb16, LoadYUY2_RGB16, 32, 14, 2, 3, 32},
        {"yuy2 2x2", nullptr, nullptr, 96, 17, 2, 0, 64},
    };
    for (const Case& c : cases) {
        ajust_contrast_info s = settings(80, 50, -6, 20, -20);
        s.rgb16_layout = c.layout;
        Frame f(c.width, c.height + 2, 7), pre = adjusted(f, s);
        const int row_bytes = c.width * c.bpp, rows = 2 * (c.height + 1), tight = row_bytes / 2 + 8;
        Buffer apart(size_t(row_bytes) * rows), overlapping(size_t(tight) * rows + row_bytes), want = overlapping;
        Buffer stretched(size_t(2 * c.width) * 2 * c.height), composed = apart;
        if (c.stretch) {  // the rows apart, composed
            set_adjust();
            strech_picture_1X2_yuy2(pre.y.data(), pre.u.data(), pre.v.data(), stretched.data(), c.width, c.height,
                                    pre.y.pitch, 2 * c.width, nullptr);
            c.load(stretched.data(), nullptr, nullptr, composed.data(), c.width, 2 * c.height, c.width, row_bytes, &s);
        }
        get_contrast_data(&s);
        const auto run = [&](Buffer& dst, int stride) {
            if (c.stretch) c.stretch(f.y.data(), f.u.data(), f.v.data(), dst.data(), c.width, c.height, f.y.pitch, stride, &s);
            else yuy2_strech_picture_2X2_yuy2(f.y.data(), nullptr, nullptr, dst.data(), c.width, c.height, stride);
        };
        run(apart, row_bytes);
        run(overlapping, tight);
        if (c.stretch) {
            EXPECT_TRUE(same_bytes(composed, apart)) << c.name;
        }
        for (int strip = 0; strip < row_bytes / c.strip_bytes; ++strip)
            for (int r = 0; r < rows && (!c.stretch || r < 2 * c.height); ++r)
                std::copy_n(apart.data() + size_t(r) * row_bytes + strip * c.strip_bytes, c.strip_bytes,
                            want.data() + size_t(r) * tight + strip * c.strip_bytes);
        EXPECT_TRUE(same_bytes(want, overlapping)) << c.name;
    }
}

}  // namespace
}  // namespace dispconv::test
