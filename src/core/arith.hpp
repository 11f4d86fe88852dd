// Scalar, lane-exact definitions of the library's arithmetic. The portable vocabulary is built
// from these; every SIMD vocabulary must give the same bytes.
//
// Code in headers that are compiled once per instruction set lives in an anonymous namespace,
// so that copies compiled with different target flags are never merged by the linker.
#pragma once

#include <cstdint>

namespace dispconv { namespace {

constexpr uint8_t sat_u8(int32_t v) { return v < 0 ? 0 : v > 255 ? 255 : static_cast<uint8_t>(v); }
constexpr int16_t sat_s16(int32_t v) {
    return static_cast<int16_t>(v < -32768 ? -32768 : v > 32767 ? 32767 : v);
}
constexpr int16_t wrap_s16(int32_t v) { return static_cast<int16_t>(static_cast<uint16_t>(v)); }

// Low 16 bits of a 16x16-bit product.
constexpr int16_t mul_lo(int16_t a, int16_t b) { return wrap_s16(int32_t(a) * int32_t(b)); }
// High 16 bits of the signed 32-bit product: the product / 65536 rounded toward minus infinity.
constexpr int16_t mul_hi(int16_t a, int16_t b) {
    return static_cast<int16_t>((int32_t(a) * int32_t(b)) >> 16);
}

// Rounded byte average, (a + b + 1) >> 1.
constexpr uint8_t avg_u8(uint8_t a, uint8_t b) { return static_cast<uint8_t>((a + b + 1) >> 1); }

// Picture adjustment of one sample: product kept to 16 bits, logical shift by 6, offset added
// with signed saturation, narrowed with unsigned saturation.
constexpr uint8_t adjust_u8(uint8_t x, int16_t gain, int16_t offset) {
    const uint16_t scaled = static_cast<uint16_t>(static_cast<uint16_t>(mul_lo(x, gain)) >> 6);
    return sat_u8(sat_s16(int32_t(scaled) + offset));
}

// The four-row filter (-1, 5, 5, -1) / 8, truncated, for the output between b and c.
constexpr uint8_t filter4_u8(uint8_t a, uint8_t b, uint8_t c, uint8_t d) {
    const int16_t sum = sat_s16(sat_s16(5 * b) + sat_s16(5 * c));
    return sat_u8(sat_s16(int32_t(sum) - sat_s16(a + d)) >> 3);
}

// The blend step: (f * (16 - a) + s * a) >> 4 in 16-bit lanes, truncated.
constexpr uint8_t mix_u8(uint8_t f, uint8_t s, uint8_t a) {
    const int16_t w = sat_s16(16 - int32_t(a));
    const int16_t t = sat_s16(int32_t(mul_lo(f, w)) + mul_lo(s, a));
    return sat_u8(static_cast<uint16_t>(t) >> 4);
}

// BT.601 video-range YUV to RGB in 16-bit fixed point, truncating.
struct ChromaTerms {
    int16_t gu, bu, gv, rv;
};

constexpr ChromaTerms chroma_terms(uint8_t u, uint8_t v) {
    const int16_t cu = static_cast<int16_t>(u - 128);
    const int16_t cv = static_cast<int16_t>(v - 128);
    return {mul_hi(cu, 25625), mul_hi(static_cast<int16_t>(cu * 8), 16532),
            mul_hi(static_cast<int16_t>(cv * 2), 26641), mul_hi(static_cast<int16_t>(cv * 4), 26149)};
}

struct Rgb {
    uint8_t r, g, b;
};

constexpr Rgb yuv_to_rgb(uint8_t y, ChromaTerms c) {
    const int16_t yy = mul_hi(static_cast<int16_t>((y - 16) * 4), 19071);
    return {sat_u8(sat_s16(yy + c.rv)), sat_u8(sat_s16(sat_s16(yy - c.gu) - c.gv)),
            sat_u8(sat_s16(yy + c.bu))};
}

} }  // namespace dispconv
