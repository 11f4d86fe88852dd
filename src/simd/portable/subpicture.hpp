// Portable vocabulary operations used only by the sub-picture preparation and colour-key kernels.
#pragma once

#include <cstring>

#include "core/adjust.hpp"
#include "core/rgb16.hpp"
#include "simd/portable/core.hpp"

namespace dispconv::simd { namespace {

// One output of the RGB to sub-picture conversion: weights of blue, green and red in 1/1024,
// and the bias ORed into the fourth byte, which then weighs 1024.
struct SubpictureWeights {
    int16_t blue, green, red;
    uint8_t bias;
};
inline constexpr SubpictureWeights subpicture_y{100, 516, 263, 16};
inline constexpr SubpictureWeights subpicture_u{449, -297, -151, 128};
inline constexpr SubpictureWeights subpicture_v{-72, -376, 449, 128};

// Multiply-add of the lanes (b, g, r, x | bias) in 16-bit pairs into two 32-bit sums, their
// sum shifted right by 10, saturated to 16 bits signed and then to a byte.
constexpr uint8_t subpicture_sample(const uint8_t* bgrx, const SubpictureWeights& w) {
    const int32_t low = int32_t(bgrx[0]) * w.blue + int32_t(bgrx[1]) * w.green;
    const int32_t high = int32_t(bgrx[2]) * w.red + int32_t(bgrx[3] | w.bias) * 1024;
    return sat_u8(sat_s16((low + high) >> 10));
}

class PortableSubpicture {
    // Little-endian words at any alignment.
    static uint32_t load_u32(const uint8_t* p) {
        return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
    }
    static uint16_t load_u16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }

public:
    // Source pixels widened to (blue, green, red, x) words. RGB24 reads each pixel as the
    // 32-bit word at its start, masked to 24 bits (one byte past the last pixel is read);
    // 5-6-5 components keep zero low bits.
    template <class Format>
    static void expand_bgrx(const uint8_t* src, uint8_t* bgrx, int pixels) {
        for (int i = 0; i < pixels; ++i) {
            uint8_t* out = bgrx + 4 * i;
            if constexpr (Format::bytes_per_pixel == 4) {
                std::memcpy(out, src + 4 * i, 4);
            } else if constexpr (Format::bytes_per_pixel == 3) {
                const uint32_t w = load_u32(src + 3 * i) & 0x00FFFFFFu;
                out[0] = static_cast<uint8_t>(w), out[1] = static_cast<uint8_t>(w >> 8);
                out[2] = static_cast<uint8_t>(w >> 16), out[3] = 0;
            } else {
                const uint16_t p = load_u16(src + 2 * i);
                out[0] = static_cast<uint8_t>((p & 0x001F) << 3);
                out[1] = static_cast<uint8_t>((p & 0x07E0) >> 3);
                out[2] = static_cast<uint8_t>((p & 0xF800) >> 8);
                out[3] = 0;
            }
        }
    }

    // True when every pixel equals the key: RGB32 and RGB24 compare the (masked) 32-bit word
    // with all of `key`, 16-bit pixels the raw word with its low half.
    template <class Format>
    static bool all_key(const uint8_t* src, int pixels, uint32_t key) {
        for (int i = 0; i < pixels; ++i) {
            bool same;
            if constexpr (Format::bytes_per_pixel == 4) same = load_u32(src + 4 * i) == key;
            else if constexpr (Format::bytes_per_pixel == 3)
                same = (load_u32(src + 3 * i) & 0x00FFFFFFu) == key;
            else same = load_u16(src + 2 * i) == (key & 0xFFFFu);
            if (!same) return false;
        }
        return true;
    }

    // Expanded pixels to luma for every pixel and U, V from each even pixel only.
    static void bgrx_to_subpicture(const uint8_t* bgrx, int pixels, uint8_t* y, uint8_t* u,
                                   uint8_t* v) {
        for (int i = 0; i < pixels; ++i) y[i] = subpicture_sample(bgrx + 4 * i, subpicture_y);
        for (int j = 0; j < pixels / 2; ++j) {
            u[j] = subpicture_sample(bgrx + 8 * j, subpicture_u);
            v[j] = subpicture_sample(bgrx + 8 * j, subpicture_v);
        }
    }

    // A row of `blocks` blocks of 8 source pixels: blocks entirely of `key` are skipped, the
    // others converted; y, u and v advance by 8, 4, 4 per block either way.
    template <class Format>
    static void rgb_row_to_subpicture(const uint8_t* src, uint32_t blocks, uint32_t key, uint8_t* y,
                                      uint8_t* u, uint8_t* v) {
        constexpr int block = 8;
        for (; blocks != 0; --blocks) {
            if (!all_key<Format>(src, block, key)) {
                uint8_t bgrx[4 * block];
                expand_bgrx<Format>(src, bgrx, block);
                bgrx_to_subpicture(bgrx, block, y, u, v);
            }
            src += block * Format::bytes_per_pixel, y += block, u += block / 2, v += block / 2;
        }
    }

    // `blocks` blocks of 16 sub-picture pixels (16 lumas, 8 U, 8 V, 16 opacities each),
    // adjusted when Adjust says so, converted and selected by opacity against the key pixel.
    template <class Format, class Adjust>
    static void ayuy2_row_to_rgb(const uint8_t* sub_y, const uint8_t* sub_u, const uint8_t* sub_v,
                                 const uint8_t* opacity, uint32_t blocks, const uint8_t* key,
                                 const AdjustConstants& a, const Rgb16Layout& layout, uint8_t* image) {
        constexpr int block = 16, bpp = Format::bytes_per_pixel;
        for (uint32_t i = 0; i < blocks; ++i) {
            uint8_t y[block], u[block / 2], v[block / 2], converted[block * bpp];
            if constexpr (Adjust::enabled) {
                PortableCore::adjust(sub_y, y, block, a.luma_gain, a.luma_offset);
                PortableCore::adjust(sub_u, u, block / 2, a.chroma_gain, a.u_offset);
                PortableCore::adjust(sub_v, v, block / 2, a.chroma_gain, a.v_offset);
            } else {
                std::memcpy(y, sub_y, block), std::memcpy(u, sub_u, block / 2), std::memcpy(v, sub_v, block / 2);
            }
            PortableCore::yuv_to_rgb_store<Format>(y, u, v, block, converted, layout);
            opacity_select<Format>(opacity, converted, key, image, block);
            sub_y += block, opacity += block, sub_u += block / 2, sub_v += block / 2;
            image += block * bpp;
        }
    }

    // dst[i] = src[i * step + offset] & mask: one byte taken from each pixel.
    template <int step, int offset, uint8_t mask>
    static void pick_bytes(const uint8_t* src, uint8_t* dst, int n) {
        for (int i = 0; i < n; ++i) dst[i] = src[i * step + offset] & mask;
    }

    // Each byte becomes the first of `step` bytes, the others zero.
    template <int step>
    static void spread_bytes(const uint8_t* src, uint8_t* dst, int n) {
        for (int i = 0; i < n; ++i) {
            dst[i * step] = src[i];
            std::memset(dst + i * step + 1, 0, step - 1);
        }
    }

    // Per pixel by its opacity read as a signed byte: 0 takes the key pixel, 1..127 the
    // converted pixel, 128..255 all zero bytes.
    template <class Format>
    static void opacity_select(const uint8_t* opacity, const uint8_t* converted,
                               const uint8_t* key, uint8_t* dst, int pixels) {
        constexpr int bpp = Format::bytes_per_pixel;
        for (int i = 0; i < pixels; ++i) {
            const auto a = static_cast<int8_t>(opacity[i]);
            for (int c = 0; c < bpp; ++c)
                dst[i * bpp + c] = a == 0 ? key[c] : a > 0 ? converted[i * bpp + c] : 0;
        }
    }

    // `n` bytes of a repeated pattern (n a multiple of pattern_bytes).
    static void fill_pattern(uint8_t* dst, const uint8_t* pattern, int pattern_bytes, int n) {
        for (int i = 0; i < n; i += pattern_bytes) std::memcpy(dst + i, pattern, pattern_bytes);
    }

    // dst[i] becomes `key` where mask[i] equals `marker`, and stays as it is elsewhere.
    static void replace_marked(const uint8_t* mask, uint8_t marker, uint8_t key, uint8_t* dst,
                               int n) {
        for (int i = 0; i < n; ++i)
            if (mask[i] == marker) dst[i] = key;
    }
};

} }  // namespace dispconv::simd
