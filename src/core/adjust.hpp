// The process-wide adjust constants, loaded by get_contrast_data() and read by every adjusting
// kernel once per call.
#pragma once

#include <cstdint>

namespace dispconv {

struct AdjustConstants {
    int16_t luma_gain;
    int16_t chroma_gain;
    int16_t luma_offset;
    int16_t u_offset;
    int16_t v_offset;
};

// Adjustment on or off, fixed per instantiation so that plain kernels carry no adjust code.
struct Plain {
    static constexpr bool enabled = false;
    static constexpr bool small_gains = false;
};
struct Adjusted {
    static constexpr bool enabled = true;
    static constexpr bool small_gains = false;
};
// Adjusted, with both gains known to be 0..257 (what callers use): a sample times the gain then
// fits in 16 bits, which lets a vector set take the shifted product from one multiply.
struct AdjustedSmallGains {
    static constexpr bool enabled = true;
    static constexpr bool small_gains = true;
};
inline bool small_gains(const AdjustConstants& a) {
    return uint16_t(a.luma_gain) <= 257 && uint16_t(a.chroma_gain) <= 257;
}

// A snapshot of the current constants (all zero before the first get_contrast_data()).
AdjustConstants load_adjust_constants();

namespace {

// Luma and its two half-width chroma runs adjusted on vocabulary V, each with its own channel's
// constants; the outputs may be the inputs.
template <class V>
void adjust_yuv(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* y_out, uint8_t* u_out,
                uint8_t* v_out, int pixels, const AdjustConstants& a) {
    V::adjust(y, y_out, pixels, a.luma_gain, a.luma_offset);
    V::adjust(u, u_out, pixels / 2, a.chroma_gain, a.u_offset);
    V::adjust(v, v_out, pixels / 2, a.chroma_gain, a.v_offset);
}

}  // namespace

}  // namespace dispconv
