// Double-height stretch with edge-directed interpolation, from a tagVideoFrame.
#include "stretch/stretch_model.hpp"

namespace dispconv::test {
namespace {

constexpr int w = 64;  // blocks at 0 (plain), 16 and 32 (searched), 48 (plain)

struct VideoFrame {
    Buffer y{size_t(w) * 24}, u{size_t(w / 2) * 24}, v{size_t(w / 2) * 24};
    tagVideoFrame record{};
    explicit VideoFrame(int structure = 0) {
        std::fill(y.data(), y.data() + y.size(), 100);
        std::fill(u.data(), u.data() + u.size(), 110);
        std::fill(v.data(), v.data() + v.size(), 120);
        record.frame_structure = structure;
        record.plane_y = y.data(), record.plane_u = u.data(), record.plane_v = v.data();
        record.frame_width = w;
    }
};

// Luma of destination row 1, interpolated between source rows 0 (a) and 1 (b).
Row interpolated_luma(const Row& a, const Row& b) {
    VideoFrame f;
    std::copy(a.begin(), a.end(), f.y.data());
    std::copy(b.begin(), b.end(), f.y.data() + w);
    set_adjust();
    Buffer dst(size_t(2 * w) * 16);
    strech_opt_yuy2_ajust(&f.record, 0, 8, dst.data(), 2 * w, nullptr);
    Row out(w);
    for (int x = 0; x < w; ++x) out[x] = dst[2 * w + 2 * x];
    return out;
}

Row step(int at) {
    Row r(w);
    for (int x = 0; x < w; ++x) r[x] = x < at ? 0 : 200;
    return r;
}

// A straight edge at 24 above and at 24 + shift below is matched along its direction: the
// in-between row steps at 24 + shift / 2 inside the searched blocks, where the vertical
// average would leave a sample of 100.
TEST(EdgeDirected, FollowsStraightEdges) {
    for (int shift : {4, 2, -2, -4}) {
        const Row out = interpolated_luma(step(24), step(24 + shift));
        for (int x = 16; x < 48; ++x)
            EXPECT_EQ(out[x], x < 24 + shift / 2 ? 0 : 200) << "shift " << shift << " x " << x;
    }
}

// Where every direction costs the same the lowest index (two to the left above, two to the
// right below) wins; the first and last blocks are plain averages. With a rising row above a
// falling one every direction costs the same, but the pairs differ: direction 0 averages
// 126 + x with 98 - x (112), the vertical 128 + x with 100 - x (114), direction 4 gives 116.
TEST(EdgeDirected, TiesGoToTheFirstDirection) {
    Row rising(w), falling(w);
    for (int x = 0; x < w; ++x) rising[x] = uint8_t(128 + x), falling[x] = uint8_t(100 - x);
    const Row out = interpolated_luma(rising, falling);
    for (int x = 0; x < w; ++x) EXPECT_EQ(out[x], x >= 16 && x < 48 ? 112 : 114) << "x " << x;
}

// A group whose differences sum to 32 is averaged vertically; 33 starts the search.
TEST(EdgeDirected, ActivityThreshold) {
    Row zero(w, 0), lower(w, 0);
    lower[20] = 32;
    lower[36] = 33;
    const Row out = interpolated_luma(zero, lower);
    EXPECT_EQ(out[20], 16);
    EXPECT_EQ(out[36], 0);  // the first direction pairs zeros
}

// Chroma groups are searched the same way, in chroma samples (destination row 2 takes
// chroma between chroma rows 0 and 1).
TEST(EdgeDirected, ChromaFollowsEdges) {
    VideoFrame f;
    const Row above = [] { Row r(w / 2); for (int x = 0; x < w / 2; ++x) r[x] = x < 12 ? 0 : 200; return r; }();
    const Row below = [] { Row r(w / 2); for (int x = 0; x < w / 2; ++x) r[x] = x < 16 ? 0 : 200; return r; }();
    std::copy(above.begin(), above.end(), f.u.data());
    std::copy(below.begin(), below.end(), f.u.data() + w / 2);
    set_adjust();
    Buffer dst(size_t(2 * w) * 16);
    strech_opt_yuy2_ajust(&f.record, 0, 8, dst.data(), 2 * w, nullptr);
    for (int x = 0; x < w / 2; ++x) {
        const int want = x < 8 || x >= 24 ? avg(above[x], below[x]) : x < 14 ? 0 : 200;
        EXPECT_EQ(dst[2 * 2 * w + 4 * x + 1], want) << "chroma x " << x;
        EXPECT_EQ(dst[2 * 2 * w + 4 * x + 3], 120) << "chroma x " << x;
    }
}

// A flat picture gives flat adjusted rows: 4 * (height / 2) rows (an odd height drops a row), nothing beyond them or in
// the row padding, nothing at all below height 8.
TEST(EdgeDirected, FlatPictureRowsAndRefusal) {
    const int dst_stride = 2 * w + 8, max_rows = 22;
    const ajust_contrast_info s = settings(80, 70, 3, -4, 5);
    const Row flat_row = yuy2(Row(w, adj(100, 80, 3)), Row(w / 2, adj(110, 70, -4)), Row(w / 2, adj(120, 70, 5)));
    for (int height : {8, 9, 10, 7, 0, -3}) {
        VideoFrame f;
        ajust_contrast_info a = s;
        get_contrast_data(&a);
        Buffer got(size_t(dst_stride) * max_rows), want(size_t(dst_stride) * max_rows);
        strech_opt_yuy2_ajust(&f.record, 0, height, got.data(), dst_stride, nullptr);
        const int rows = height < 8 ? 0 : 4 * (height / 2);
        for (int r = 0; r < rows; ++r) put_row(want, ptrdiff_t(r) * dst_stride, flat_row);
        EXPECT_TRUE(same_bytes(want, got)) << "height " << height;
    }
}

// Field and frame start rules: row 0 copies the first luma row and the chroma a quarter of
// the luma offset in; row 4 is one pair further on.
TEST(EdgeDirected, StartRules) {
    struct Case {
        int structure, start_line;
        int luma_row0, luma_row4;      // source luma rows
        int chroma_at0, chroma_at4;    // byte offsets into the U plane
    } cases[] = {
        {1, 0, 0, 4, 0, w},
        {1, 1, 1, 5, w / 4, w / 4 + w},             // half a chroma row in
        {0, 2, 1, 3, w / 4, w / 4 + w / 2},         // progressive: half the luma offset
        {2, 0, 0, 2, 0, w / 2},
    };
    set_adjust();
    for (const Case& c : cases) {
        VideoFrame f(c.structure);
        for (int r = 0; r < 24; ++r) std::fill(f.y.data() + r * w, f.y.data() + (r + 1) * w, uint8_t(10 * r));
        for (size_t i = 0; i < f.u.size(); ++i) f.u[i] = uint8_t(i);
        Buffer dst(size_t(2 * w) * 16);
        strech_opt_yuy2_ajust(&f.record, c.start_line, 8, dst.data(), 2 * w, nullptr);
        EXPECT_EQ(dst[0], 10 * c.luma_row0) << c.structure << "/" << c.start_line;
        EXPECT_EQ(dst[4 * 2 * w], 10 * c.luma_row4) << c.structure << "/" << c.start_line;
        EXPECT_EQ(dst[1], uint8_t(c.chroma_at0)) << c.structure << "/" << c.start_line;
        EXPECT_EQ(dst[4 * 2 * w + 1], uint8_t(c.chroma_at4)) << c.structure << "/" << c.start_line;
    }
}

}  // namespace
}  // namespace dispconv::test
