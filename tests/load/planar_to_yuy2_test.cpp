// Planar YV12 frames to YUY2 surfaces.
#include <tuple>

#include "load/frames.hpp"

namespace dispconv::test {
namespace {

// The packed YUY2 bytes of frame row r from its own luma and chroma row r / 2, starting at
// luma sample x0 and chroma sample c0.
uint8_t yuy2_byte(const PlanarFrame& f, int r, int x0, int c0, int i) {
    const int pair = i / 4;
    switch (i % 4) {
        case 0: return f.Y(r, x0 + 2 * pair);
        case 1: return f.U(r / 2, c0 + pair);
        case 2: return f.Y(r, x0 + 2 * pair + 1);
        default: return f.V(r / 2, c0 + pair);
    }
}

// Odd rows leave the first eight bytes of every block as they were. A width off the block
// (24) runs two blocks per row, and the next pair starts 8 pixels further right.
TEST(LoadimageYuy2, OddRowsSkipBlockHeadsAndWidthsOffTheBlockDrift) {
    for (const auto& [width, height, stride, dst_stride, drift] :
         {std::tuple{32, 5, 40, 80, 0}, std::tuple{24, 6, 64, 160, 8}}) {
        PlanarFrame f(width, height, stride, 10 + width);
        Buffer want(size_t(dst_stride) * (height + 2)), got = want;
        for (int r = 0; r < height + (height & 1); ++r) {
            const int k = r / 2;
            for (int i = 0; i < 64; ++i)
                if (!(r & 1) || i % 32 >= 8)
                    want[size_t(r) * dst_stride + 2 * drift * k + i] = yuy2_byte(f, r, drift * k, drift / 2 * k, i);
        }
        loadimage_yuy2(f.y.data(), f.u.data(), f.v.data(), got.data(), width, height, stride, dst_stride, nullptr);
        EXPECT_TRUE(same_bytes(want, got)) << "width " << width;
    }
}

// Every row written whole with its pair's chroma, adjusted, rows in turn: where rows share bytes
// (80 bytes apart, 96 long) the later row's bytes stand.
TEST(LoadimageYuy2Ajust, AdjustedRowsAreWrittenInRowOrder) {
    set_adjust(100, 50, -10, 25, 40);
    const int width = 48, height = 10;
    PlanarFrame f(width, height, width, 21);
    for (const int dst_stride : {96, 80}) {
        Buffer want(size_t(dst_stride) * height + 2 * width), got = want;
        for (int r = 0; r < height; ++r)
            for (int i = 0; i < 2 * width; ++i) {
                const uint8_t x = yuy2_byte(f, r, 0, 0, i);
                want[size_t(r) * dst_stride + i] = i % 2 == 0 ? adj(x, 100, -10) : adj(x, 50, i % 4 == 1 ? 25 : 40);
            }
        loadimage_yuy2_ajust(f.y.data(), f.u.data(), f.v.data(), got.data(), width, height, width, dst_stride, nullptr);
        EXPECT_TRUE(same_bytes(want, got)) << "dst_stride " << dst_stride;
    }
}

TEST(LoadimageYuy2MonoAjust, GreyChromaWithoutChromaPlanes) {
    set_adjust(80, 10, 5, 70, -70);
    PlanarFrame f(32, 3, 32, 14);
    Buffer got(64 * 5), want = got;
    loadimage_yuy2_mono_ajust(f.y.data(), nullptr, nullptr, got.data(), 32, 3, 32, 64, nullptr);
    for (int r = 0; r < 4; ++r)
        for (int x = 0; x < 32; ++x) {
            want[size_t(r) * 64 + 2 * x] = adj(f.Y(r, x), 80, 5);
            want[size_t(r) * 64 + 2 * x + 1] = 128;
        }
    EXPECT_TRUE(same_bytes(want, got));
}

TEST(LoadimageHalfYuy2Ajust, AveragesNeighbouringPairs) {
    set_adjust();
    const int width = 32, height = 3, stride = 32, dst_stride = 40;
    PlanarFrame f(width, height, stride, 15);
    f.y[0] = 10, f.y[1] = 11, f.y[2] = 10, f.y[3] = 12;  // both average to 11
    Buffer want(size_t(dst_stride) * 5), got = want;
    for (int r = 0; r <= height; ++r)
        for (int j = 0; j < width / 2; j += 2) {
            uint8_t* p = &want[size_t(r) * dst_stride + 2 * j];
            p[0] = avg(f.Y(r, 2 * j), f.Y(r, 2 * j + 1));
            p[1] = avg(f.U(r / 2, j), f.U(r / 2, j + 1));
            p[2] = avg(f.Y(r, 2 * j + 2), f.Y(r, 2 * j + 3));
            p[3] = avg(f.V(r / 2, j), f.V(r / 2, j + 1));
        }
    loadimage_half_yuy2_ajust(f.y.data(), f.u.data(), f.v.data(), got.data(), width, height, stride, dst_stride, nullptr);
    EXPECT_EQ(got[0], 11);
    EXPECT_EQ(got[2], 11);
    EXPECT_TRUE(same_bytes(want, got));
}

}  // namespace
}  // namespace dispconv::test
