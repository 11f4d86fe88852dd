// Colour-key fills of RGB surfaces and the replacement of marked bytes of a plane by a key byte.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/geometry.hpp"

namespace dispconv::kernels { namespace {

constexpr int key_block = 16;  // pixels (bytes for the mask replacement)

// 64-bit word stored in memory order, least significant byte first.
inline void put_u64(uint8_t* p, uint64_t w) {
    for (int i = 0; i < 8; ++i) p[i] = static_cast<uint8_t>(w >> (8 * i));
}

// Rows two at a time, 16-pixel blocks, steps from the nominal width (so a width off the
// block drifts right row pair by row pair).
template <class V, int bpp>
void fill_color_key(const uint8_t* pattern, int pattern_bytes, void* surface, int32_t width,
                    int32_t height, int32_t stride) {
    if (height == 0) return;
    constexpr int block_bytes = key_block * bpp;
    const uint32_t blocks = loop_count(width, key_block);
    const ptrdiff_t next = 2 * ptrdiff_t(stride) - ptrdiff_t(width) * bpp;
    auto* row = static_cast<uint8_t*>(surface);
    const ptrdiff_t row_bytes = ptrdiff_t(blocks) * block_bytes;
    // Rows that share bytes keep the block-by-block order, which decides the overlap's bytes.
    const bool apart = stride >= row_bytes || -ptrdiff_t(stride) >= row_bytes;
    // Rows back to back (whole blocks, pitch = row): the surface is one run.
    const ptrdiff_t surface_bytes = 2 * ptrdiff_t(loop_count(height, 2)) * row_bytes;
    if (stride == row_bytes && row_bytes == ptrdiff_t(width) * bpp && surface_bytes <= INT32_MAX)
        return V::fill_pattern(row, pattern, pattern_bytes, int(surface_bytes));
    for (uint32_t pair = loop_count(height, 2); pair--; row += row_bytes + next) {
        if (apart) {
            V::fill_pattern(row, pattern, pattern_bytes, row_bytes);
            V::fill_pattern(row + stride, pattern, pattern_bytes, row_bytes);
            continue;
        }
        for (uint32_t i = 0; i < blocks; ++i) {
            V::fill_pattern(row + i * block_bytes, pattern, pattern_bytes, block_bytes);
            V::fill_pattern(row + i * block_bytes + stride, pattern, pattern_bytes, block_bytes);
        }
    }
}

// The key repeated as the fill stores it: 8 bytes of two RGB32 or four 16-bit pixels (the
// low 16 bits of the key), or 24 bytes of eight RGB24 pixels. Returns the pattern's length.
// Deliberate, RGB24: the three words are stored A, B, C (a straight repetition would need C, B,
// A), so the pixels of each group of eight come out with their bytes rotated unless the key's
// three low bytes are equal; a non-zero top byte is ORed in where the low byte falls.
template <int bpp>
int key_pattern(uint32_t color_key, uint8_t (&pattern)[24]) {
    const uint64_t k = bpp == 2 ? color_key & 0xFFFFu : color_key;
    if constexpr (bpp != 3) {
        put_u64(pattern, bpp == 4 ? k << 32 | k : k << 48 | k << 32 | k << 16 | k);
        return 8;
    } else {
        put_u64(pattern, k << 40 | k << 16 | k >> 8);
        put_u64(pattern + 8, k << 56 | k << 32 | k << 8 | k >> 16);
        put_u64(pattern + 16, k << 48 | k | k << 24);
        return 24;
    }
}

template <class V, int bpp>
void load_color_key(uint32_t color_key, void* surface, int32_t width, int32_t height, int32_t, int32_t stride) {
    uint8_t pattern[24];
    const int pattern_bytes = key_pattern<bpp>(color_key, pattern);
    fill_color_key<V, bpp>(pattern, pattern_bytes, surface, width, height, stride);
}
template <class V> constexpr auto LoadColorKeyRgb32 = load_color_key<V, 4>;
template <class V> constexpr auto LoadColorKeyRgb16 = load_color_key<V, 2>;
template <class V> constexpr auto LoadColorKeyRgb24 = load_color_key<V, 3>;

template <class V>
void RelaceMaskWithColorKey(uint8_t* dst, uint8_t* mask, uint32_t mask_value, uint32_t key_value,
                            int32_t width, int32_t stride, int32_t height) {
    const auto marker = static_cast<uint8_t>(mask_value);
    const auto key = static_cast<uint8_t>(key_value);
    const uint32_t blocks = loop_count(width, key_block);
    const ptrdiff_t next = ptrdiff_t(stride) - width;
    // No check on entry: a height of 0 still processes one row.
    const ptrdiff_t row_bytes = ptrdiff_t(blocks) * key_block;
    for (uint32_t row = loop_count(height, 1); row--; dst += row_bytes + next, mask += row_bytes + next)
        V::replace_marked(mask, marker, key, dst, row_bytes);
}

} }  // namespace dispconv::kernels
