// Helpers shared by the test suites: canary-filled buffers, random frames, adjust settings.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "dispconv.h"
#include "support/catalogue.hpp"

namespace dispconv::test {

inline constexpr uint8_t canary = 0xAA;

// The instruction-set mask the suite runs under (main's --isa); tests that change it restore it.
inline uint32_t suite_isa_mask = ~0u;
// The cross check's base seed (main's --seed=N); a soak runs the suite with fresh ones.
inline uint32_t cross_seed = 1;

using FrameKernel = void(*) DISPCONV_FRAME_SIGNATURE;
using MixKernel = void (*)(MIX_INFO*);

// A byte buffer with `margin` canary bytes on each side of its `size` usable bytes, so that a
// comparison of the whole vector catches writes outside the area as well as inside it.
struct Buffer {
    std::vector<uint8_t> bytes;
    size_t margin;

    explicit Buffer(size_t size, size_t margin_bytes = 64, uint8_t fill = canary)
        : bytes(size + 2 * margin_bytes, fill), margin(margin_bytes) {}
    uint8_t* data() { return bytes.data() + margin; }
    const uint8_t* data() const { return bytes.data() + margin; }
    uint8_t& operator[](size_t i) { return bytes[margin + i]; }
    uint8_t operator[](size_t i) const { return bytes[margin + i]; }
    size_t size() const { return bytes.size() - 2 * margin; }
};

// The samples' arithmetic as defined, written without the library's code.
inline uint8_t clamp255(int v) { return static_cast<uint8_t>(std::clamp(v, 0, 255)); }
inline uint8_t avg(int a, int b) { return static_cast<uint8_t>((a + b + 1) >> 1); }
// Adjusted: the product kept to 16 bits, shifted right by 6, offset, clamped.
inline uint8_t adj(int x, int gain, int offset) { return clamp255((((x * gain) & 0xFFFF) >> 6) + offset); }

inline Buffer random_buffer(size_t size, uint32_t seed, size_t margin = 64) {
    Buffer b(size, margin);
    fill_random(b.data(), size, seed);
    return b;
}

// The kernels of one RGB surface format, family by family.
struct RgbFormat {
    const char* name;
    int bpp;
    FrameKernel from_yuy2, from_yuy2_adjust, from_yv12, from_yv12_adjust;
    MixKernel convert, restore_alpha, load_alpha, from_sub, from_sub_adjust, mix, mix_field;
};
inline const RgbFormat rgb32{"RGB32", 4, ::LoadYUY2_RGB32, ::LoadYUY2_RGB32_adjust, ::loadimage_rgb32,
                             ::loadimage_rgb32_ajust, ::Convert_RGB32_To_AYUY2, ::Restore_RGB32_To_Alpha,
                             ::load_subpicture_alpha_rgb32, ::load_subpicture_yuy2_rgb32,
                             ::load_subpicture_yuy2_rgb32_ajust, ::mix_ayuy2_rgb32_p_ajust, ::mix_ayuy2_rgb32_i_ajust};
inline const RgbFormat rgb24{"RGB24", 3, ::LoadYUY2_RGB24, ::LoadYUY2_RGB24_adjust, ::loadimage_rgb24,
                             ::loadimage_rgb24_ajust, ::Convert_RGB24_To_AYUY2, ::Restore_RGB24_To_Alpha,
                             ::load_subpicture_alpha_rgb24, ::load_subpicture_yuy2_rgb24,
                             ::load_subpicture_yuy2_rgb24_ajust, ::mix_ayuy2_rgb24_p_ajust, ::mix_ayuy2_rgb24_i_ajust};
inline const RgbFormat rgb16{"RGB16", 2, ::LoadYUY2_RGB16, ::LoadYUY2_RGB16_adjust, ::loadimage_rgb16,
                             ::loadimage_rgb16_ajust, ::Convert_RGB16_565_To_AYUY2, ::Restore_RGB16_565_To_Alpha,
                             ::load_subpicture_alpha_rgb16_565, ::load_subpicture_yuy2_rgb16,
                             ::load_subpicture_yuy2_rgb16_ajust, ::mix_ayuy2_rgb16_p_ajust, ::mix_ayuy2_rgb16_i_ajust};
inline const RgbFormat* const rgb_formats[] = {&rgb32, &rgb24, &rgb16};
// The 16-bit layouts a format takes: 0..3 for RGB16, only 0 for the others.
inline int layouts(const RgbFormat& f) { return f.bpp == 2 ? 4 : 1; }

// One luma, U and V sample through the adjusting YUY2 copy (a 16-pixel, two-row frame), as the
// adjust constants loaded last make them.
struct Adjusted {
    uint8_t y, u, v;
    bool operator==(const Adjusted&) const = default;
    friend std::ostream& operator<<(std::ostream& o, const Adjusted& a) { return o << +a.y << "/" << +a.u << "/" << +a.v; }
};
inline Adjusted adjust_through_kernel(uint8_t y, uint8_t u, uint8_t v) {
    uint8_t src[64], dst[64];
    for (int i = 0; i < 64; i += 4) src[i] = y, src[i + 1] = u, src[i + 2] = y, src[i + 3] = v;
    ::LoadYUY2_YUY2_adjust(src, nullptr, nullptr, dst, 16, 2, 16, 32, nullptr);
    return {dst[0], dst[1], dst[3]};
}

// Compares two whole buffers; on a mismatch reports the first differing offset (relative to
// the usable area) and a few bytes around it.
inline ::testing::AssertionResult same_bytes(const Buffer& expected, const Buffer& actual) {
    if (expected.bytes.size() != actual.bytes.size())
        return ::testing::AssertionFailure() << "buffer sizes differ";
    for (size_t i = 0; i < expected.bytes.size(); ++i) {
        if (expected.bytes[i] == actual.bytes[i]) continue;
        auto f = ::testing::AssertionFailure();
        f << "first difference at offset " << (static_cast<long>(i) - static_cast<long>(expected.margin))
          << " (expected, actual):";
        for (size_t j = i; j < expected.bytes.size() && j < i + 8; ++j) {
            char text[32];
            std::snprintf(text, sizeof text, " %02X/%02X", expected.bytes[j], actual.bytes[j]);
            f << text;
        }
        return f;
    }
    return ::testing::AssertionSuccess();
}

}  // namespace dispconv::test
