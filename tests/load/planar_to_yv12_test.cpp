// Planar YV12 frames to one YV12 surface.
#include <algorithm>
#include <cstring>

#include "load/frames.hpp"

namespace dispconv::test {
namespace {

TEST(LoadimageYv12Ajust, PlacesPlanesAndCrossesTheChromaOffsets) {
    // The V plane (from src_v) takes the U offset and the U plane the V offset. Sources are
    // read back to back; the chroma planes go where the two row counts of the record say.
    const int width = 16, height = 4, dst_stride = 24;
    set_adjust(64, 64, 3, 10, 0);
    ajust_contrast_info placement{};
    placement.dst_plane_height = 6;
    placement.dst_luma_height = 4;
    Buffer y = random_buffer(width * height, 20), u = random_buffer(8 * 2, 21), v = random_buffer(8 * 2, 22);
    Buffer want(size_t(dst_stride) * 10), got = want;
    const size_t v_at = 4 * dst_stride + (2 * dst_stride) / 4, u_at = v_at + (6 * dst_stride) / 4;
    for (int r = 0; r < height; ++r)
        for (int x = 0; x < width; ++x) want[size_t(r) * dst_stride + x] = adj(y[r * width + x], 64, 3);
    for (int r = 0; r < 2; ++r)
        for (int x = 0; x < 8; ++x) {
            want[v_at + size_t(r) * dst_stride / 2 + x] = adj(v[r * 8 + x], 64, 10);
            want[u_at + size_t(r) * dst_stride / 2 + x] = u[r * 8 + x];
        }
    loadimage_yv12_ajust(y.data(), u.data(), v.data(), got.data(), width, height, 99, dst_stride, &placement);
    EXPECT_TRUE(same_bytes(want, got));
}

// The copy as described, one 16-byte (luma) or 8-byte (chroma) block at a time, rows in
// turn: the kernel may copy whole rows or skip bytes a later pair rewrites, never differ.
void yv12_copy_by_blocks(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* dst, int width,
                         int height, int src_stride, int dst_stride) {
    const int pairs = std::max(1, (height + 1) / 2), luma_blocks = std::max(1, (width + 15) / 16);
    const uint8_t* s = y;
    for (int p = 0; p < pairs; ++p, s += luma_blocks * 16 + 2 * (src_stride - width) + 2 * dst_stride) {
        uint8_t* d = dst + p * luma_blocks * 16;
        for (int i = 0; i < luma_blocks * 16; i += 16) {
            std::memcpy(d + i, s + i, 16);
            std::memcpy(d + src_stride + i, s + width + i, 16);
        }
    }
    const int cw = width / 2, blocks = std::max(1, (cw + 7) / 8);
    uint8_t* v_dst = dst + height * dst_stride - 1;
    uint8_t* u_dst = v_dst + height * dst_stride / 4;
    for (int p = 0; p < pairs; ++p) {
        const int so = p * (blocks * 8 + src_stride - cw), dof = p * (blocks * 8 + dst_stride - cw);
        for (int i = 0; i < blocks * 8; i += 8) {
            std::memcpy(u_dst + dof + i, u + so + i, 8);
            std::memcpy(u_dst + dof + dst_stride / 2 + i, u + so + src_stride / 2 + i, 8);
            std::memcpy(v_dst + dof + i, v + so + i, 8);
            std::memcpy(v_dst + dof + dst_stride / 2 + i, v + so + src_stride / 2 + i, 8);
        }
    }
}

TEST(LoadimageYv12, EqualsTheBlockByBlockCopy) {
    struct Geometry {
        int width, height, src_stride, dst_stride;
    } const cases[] = {
        {32, 6, 32, 32},   // source pitch = width: overlapping pairs, one run each
        {40, 5, 40, 48},   // the same with the last block past the width, odd height
        {32, 4, 48, 64},   // rows apart: two runs per pair
        {40, 4, 44, 44},   // rows overlap (44 < 48): block by block
        {24, 2, 24, 24},   // one pair: U rows land on V rows, chroma block by block
        {40, 6, 40, 44},   // chroma rows of 24 bytes overlap (pitch 22)
        {48, 10, 48, 48},  // chroma rows back to back: each plane one run, V reaching into U
        {1920, 8, 1920, 1920},
    };
    for (const Geometry& g : cases) {
        SCOPED_TRACE(::testing::Message() << g.width << "x" << g.height << " pitches " << g.src_stride << "/" << g.dst_stride);
        const size_t n = size_t(g.width + 64) * (4 * g.height + 8) * 4;
        Buffer y = random_buffer(n, 30), u = random_buffer(n, 31), v = random_buffer(n, 32);
        Buffer want(n), got(n);
        yv12_copy_by_blocks(y.data(), u.data(), v.data(), want.data(), g.width, g.height, g.src_stride, g.dst_stride);
        loadimage_yv12(y.data(), u.data(), v.data(), got.data(), g.width, g.height, g.src_stride, g.dst_stride, nullptr);
        EXPECT_TRUE(same_bytes(want, got));
    }
}

TEST(LoadimageHalfYv12Ajust, KeepsOddSamplesAndOverlapsTheLastChromaBlock) {
    // Width 48: luma keeps samples 1, 3, 5 ...; chroma rows are 24 wide, done as blocks 0-15
    // and 8-23, so exactly 12 samples are written per chroma row.
    const int width = 48, height = 4, stride = 64, dst_stride = 40;
    set_adjust(64, 64, 0, 5, -5);
    PlanarFrame f(width, height, stride, 27);
    f.y[0] = 1, f.y[1] = 2, f.y[2] = 3, f.y[3] = 4;
    Buffer want(size_t(dst_stride) * 8), got = want;
    const size_t v_at = size_t(height) * dst_stride, u_at = v_at + size_t(height / 2) * (dst_stride / 2);
    for (int r = 0; r < height; ++r)
        for (int x = 0; x < width / 2; ++x) want[size_t(r) * dst_stride + x] = f.Y(r, 2 * x + 1);
    for (int r = 0; r < height / 2; ++r)
        for (int x = 0; x < width / 4; ++x) {
            want[v_at + size_t(r) * dst_stride / 2 + x] = adj(f.V(r, 2 * x + 1), 64, -5);
            want[u_at + size_t(r) * dst_stride / 2 + x] = adj(f.U(r, 2 * x + 1), 64, 5);
        }
    loadimage_half_yv12_ajust(f.y.data(), f.u.data(), f.v.data(), got.data(), width, height, stride, dst_stride, nullptr);
    EXPECT_EQ(got[0], 2);
    EXPECT_EQ(got[1], 4);
    EXPECT_TRUE(same_bytes(want, got));
}

}  // namespace
}  // namespace dispconv::test
