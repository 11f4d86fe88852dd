// Helpers shared by the test suites: canary-filled buffers, random frames, adjust settings.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
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
    std::mt19937 rng(seed);
    for (size_t i = 0; i < size; ++i) b[i] = static_cast<uint8_t>(rng());
    return b;
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
