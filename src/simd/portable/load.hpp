// Portable vocabulary operations used only by the frame-loading kernels.
#pragma once

#include "simd/portable/core.hpp"

namespace dispconv::simd {
namespace {

struct PortableLoad {
    // Rounded averages of neighbouring pairs: dst[i] = avg(src[2i], src[2i + 1]).
    static void average_pairs(const uint8_t* src, uint8_t* dst, int out_count) {
        for (int i = 0; i < out_count; ++i) dst[i] = avg_u8(src[2 * i], src[2 * i + 1]);
    }

    // The odd samples of a run: dst[i] = src[2i + 1].
    static void keep_odd(const uint8_t* src, uint8_t* dst, int out_count) {
        for (int i = 0; i < out_count; ++i) dst[i] = src[2 * i + 1];
    }
};

}  // namespace
}  // namespace dispconv::simd
