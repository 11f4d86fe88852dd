// Colour-key fills and the mask replacement, compared as whole canary-filled buffers.
#include <cstring>

#include "support/test_support.hpp"

namespace dispconv::test {
namespace {

using Fill = void (*)(uint32_t, void*, int32_t, int32_t, int32_t, int32_t);

// Pixels written per row: whole blocks of 16, at least one.
int rounded_up(int width) { return width <= 16 ? 16 : (width + 15) / 16 * 16; }

TEST(ColorKey, Fills) {
    struct Case {
        const char* name;
        Fill fill;
        int bpp;
        uint32_t key;
        int width, height, stride;
        std::vector<uint8_t> group;  // the bytes repeated along every row
    };
    const std::vector<uint8_t> rgb24_group = {
        0xBB, 0xCC, 0xAA, 0xBB, 0xCC, 0xAA, 0xBB, 0xCC, 0xCC, 0xAA, 0xBB, 0xCC,
        0xAA, 0xBB, 0xCC, 0xAA, 0xAA, 0xBB, 0xCC, 0xAA, 0xBB, 0xCC, 0xAA, 0xBB};
    const std::vector<uint8_t> top_byte_group = {  // key 0x40030201: 0x40 joins the 0x01s
        0x02, 0x03, 0x41, 0x02, 0x03, 0x41, 0x02, 0x03, 0x03, 0x41, 0x02, 0x03,
        0x41, 0x02, 0x03, 0x41, 0x01, 0x02, 0x03, 0x41, 0x02, 0x03, 0x41, 0x02};
    const std::vector<uint8_t> rgb32_group = {0x44, 0x33, 0x22, 0x11};
    const Case cases[] = {
        {"rgb32", LoadColorKeyRgb32, 4, 0x11223344, 16, 2, 80, rgb32_group},
        {"rgb32 height 0", LoadColorKeyRgb32, 4, 0x11223344, 16, 0, 80, rgb32_group},
        {"rgb32 height 1", LoadColorKeyRgb32, 4, 0x11223344, 16, 1, 80, rgb32_group},
        {"rgb32 height 3", LoadColorKeyRgb32, 4, 0x11223344, 32, 3, 136, rgb32_group},
        {"rgb32 width 20", LoadColorKeyRgb32, 4, 0x11223344, 20, 4, 160, rgb32_group},
        {"rgb32 width 0", LoadColorKeyRgb32, 4, 0x11223344, 0, 2, 64, rgb32_group},
        {"rgb32 rows back to back", LoadColorKeyRgb32, 4, 0x11223344, 32, 5, 128, rgb32_group},
        {"rgb24 rows back to back", LoadColorKeyRgb24, 3, 0x00CCBBAA, 32, 3, 96, rgb24_group},
        {"rgb16", LoadColorKeyRgb16, 2, 0x12345678, 16, 2, 40, {0x78, 0x56}},
        {"rgb16 width 40", LoadColorKeyRgb16, 2, 0x0000F81F, 40, 6, 100, {0x1F, 0xF8}},
        {"rgb24", LoadColorKeyRgb24, 3, 0x00CCBBAA, 32, 2, 100, rgb24_group},
        {"rgb24 grey", LoadColorKeyRgb24, 3, 0x00808080, 16, 2, 50, {0x80}},
        {"rgb24 top byte", LoadColorKeyRgb24, 3, 0x40030201, 16, 1, 48, top_byte_group},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const int row_bytes = rounded_up(c.width) * c.bpp;
        const int drift = (rounded_up(c.width) - c.width) * c.bpp;
        const int pairs = (c.height + 1) / 2;
        const size_t size = size_t(pairs) * (2 * c.stride + drift) + row_bytes;
        Buffer surface(size), want(size);
        for (int p = 0; p < pairs; ++p) {
            for (int r = 0; r < 2; ++r) {
                const size_t start = size_t(p) * (2 * c.stride + drift) + size_t(r) * c.stride;
                for (int i = 0; i < row_bytes; ++i) want[start + i] = c.group[i % c.group.size()];
            }
        }
        c.fill(c.key, surface.data(), c.width, c.height, 12345, c.stride);
        EXPECT_TRUE(same_bytes(want, surface));
    }
}

TEST(ColorKey, MaskReplacement) {
    struct Case {
        int width, stride, height;
        uint32_t mask_value, key_value;
    };
    const Case cases[] = {
        {16, 24, 3, 0x1234, 0xFFFFFF07},  // only the low bytes, 0x34 and 0x07, count
        {32, 32, 2, 0x00, 0xFF},
        {20, 40, 3, 0x80, 0x11},          // 32 bytes per row, each row 12 bytes further on
        {16, 16, 0, 0x55, 0xAA},          // height 0 still does one row
        {0, 20, 2, 0x01, 0x02},           // width 0 does one block
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << "width " << c.width << " height " << c.height);
        const int row_bytes = rounded_up(c.width), rows = c.height ? c.height : 1;
        const int step = c.stride + row_bytes - c.width;
        const size_t size = size_t(step) * (rows - 1) + row_bytes + 16;
        Buffer dst = random_buffer(size, 31), mask = random_buffer(size, 32);
        const auto marker = static_cast<uint8_t>(c.mask_value);
        for (size_t i = 0; i < size; i += 3) mask[i] = marker;  // plenty of marked bytes
        Buffer want = dst;
        const Buffer mask_before = mask;
        for (int r = 0; r < rows; ++r)
            for (int i = 0; i < row_bytes; ++i) {
                const size_t at = size_t(r) * step + i;
                if (mask[at] == marker) want[at] = static_cast<uint8_t>(c.key_value);
            }
        RelaceMaskWithColorKey(dst.data(), mask.data(), c.mask_value, c.key_value, c.width,
                               c.stride, c.height);
        EXPECT_TRUE(same_bytes(want, dst));
        EXPECT_TRUE(same_bytes(mask_before, mask));
    }
}

}  // namespace
}  // namespace dispconv::test
