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

// The RGB stretchers equal the YUY2 loader's conversion of the plain YUY2 stretch of the
// same frame, whose samples were adjusted beforehand.
TEST(DoubleHeightRgb, EqualsConversionOfPlainStretch) {
    using Kernel = void (*)(void*, void*, void*, void*, int32_t, int32_t, int32_t, int32_t, ajust_contrast_info*);
    struct Case {
        const char* name;
        Kernel stretch, load;
        int bpp, layout;
    } cases[] = {
        {"rgb32", strech_picture_1X2_yuy2_ajust_rgb32, LoadYUY2_RGB32, 4, 0},
        {"rgb24", strech_picture_1X2_yuy2_ajust_rgb24, LoadYUY2_RGB24, 3, 0},
        {"rgb16 layout 0", strech_picture_1X2_yuy2_ajust_rgb16, LoadYUY2_RGB16, 2, 0},
        {"rgb16 layout 1", strech_picture_1X2_yuy2_ajust_rgb16, LoadYUY2_RGB16, 2, 1},
        {"rgb16 layout 3", strech_picture_1X2_yuy2_ajust_rgb16, LoadYUY2_RGB16, 2, 3},
    };
    const ajust_contrast_info adjustments[] = {settings(), settings(90, 40, -16, 50, 70)};
    const int w = 48, h = 14;
    for (const ajust_contrast_info& a : adjustments) {
        Frame f(w, h, 11), pre = adjusted(f, a);
        set_adjust();
        Buffer stretched(size_t(2 * w) * 2 * h);
        strech_picture_1X2_yuy2(pre.y.data(), pre.u.data(), pre.v.data(), stretched.data(), w, h,
                                pre.y.pitch, 2 * w, nullptr);
        for (const Case& c : cases) {
            ajust_contrast_info s = a;
            s.rgb16_layout = c.layout;
            const int dst_stride = w * c.bpp + 12;
            Buffer want(size_t(dst_stride) * 2 * h), got(size_t(dst_stride) * 2 * h);
            c.load(stretched.data(), nullptr, nullptr, want.data(), w, 2 * h, w, dst_stride, &s);
            get_contrast_data(&s);
            c.stretch(f.y.data(), f.u.data(), f.v.data(), got.data(), w, h, f.y.pitch, dst_stride, &s);
            EXPECT_TRUE(same_bytes(want, got)) << c.name << " luma gain " << a.luma_gain;
        }
    }
}

// The RGB double-height and the YUY2 double-size stretches walk 16-pixel strips, each top to
// bottom: where destination rows overlap, the surface is each strip's rows laid down in that
// order, the rows being those a call with rows apart writes.
TEST(Stretch, OverlappingRowsAreWrittenStripByStrip) {
    using Frame = void (*)(void*, void*, void*, void*, int32_t, int32_t, int32_t, int32_t, ajust_contrast_info*);
    struct Case {
        const char* name;
        Frame frame;
        void (*packed)(void*, void*, void*, void*, int32_t, int32_t, int32_t);
        int width, height, row_bytes, strip_bytes;
    } const cases[] = {
        {"rgb32", strech_picture_1X2_yuy2_ajust_rgb32, nullptr, 48, 13, 48 * 4, 64},
        {"rgb24", strech_picture_1X2_yuy2_ajust_rgb24, nullptr, 64, 12, 64 * 3, 48},
        {"rgb16", strech_picture_1X2_yuy2_ajust_rgb16, nullptr, 32, 12, 32 * 2, 32},
        {"yuy2 2x2", nullptr, yuy2_strech_picture_2X2_yuy2, 96, 17, 2 * 96, 64},
    };
    set_adjust(80, 50, -6, 20, -20);
    ajust_contrast_info layout = settings();
    layout.rgb16_layout = 2;
    for (const Case& c : cases) {
        const Buffer y = random_buffer(size_t(c.width + 32) * (c.height + 4), 7), u = random_buffer(y.size(), 8),
                     v = random_buffer(y.size(), 9);
        auto run = [&](Buffer& dst, int stride) {
            uint8_t* in = const_cast<uint8_t*>(y.data());
            if (c.frame) c.frame(in, const_cast<uint8_t*>(u.data()), const_cast<uint8_t*>(v.data()), dst.data(), c.width, c.height, c.width + 32, stride, &layout);
            else c.packed(in, nullptr, nullptr, dst.data(), c.width, c.height, stride);
        };
        const int rows = 2 * (c.height + 1), tight = c.row_bytes / 2 + 8;
        Buffer apart(size_t(c.row_bytes) * rows), overlapping(size_t(tight) * rows + c.row_bytes), want = overlapping;
        run(apart, c.row_bytes);
        run(overlapping, tight);
        for (int s = 0; s < c.row_bytes / c.strip_bytes; ++s)
            for (int r = 0; r < rows && (c.packed || r < 2 * (c.height + (c.height & 1))); ++r)
                std::copy_n(apart.data() + size_t(r) * c.row_bytes + s * c.strip_bytes, c.strip_bytes,
                            want.data() + size_t(r) * tight + s * c.strip_bytes);
        EXPECT_TRUE(same_bytes(want, overlapping)) << c.name;
    }
}

}  // namespace
}  // namespace dispconv::test
