// Portable vocabulary operations used only by the mix kernels.
#pragma once

#include "simd/portable/core.hpp"

namespace dispconv::simd {
namespace {

struct PortableMix {
    // The blend step over n samples: dst[i] = (frame[i] * (16 - w[i]) + sub[i] * w[i]) >> 4 in
    // 16-bit lanes, truncated. The odd-pixel and pair-average chroma weights come from
    // keep_odd and average_pairs.
    static void mix(const uint8_t* frame, const uint8_t* sub, const uint8_t* weight, uint8_t* dst,
                    int n) {
        for (int i = 0; i < n; ++i) dst[i] = mix_u8(frame[i], sub[i], weight[i]);
    }
};

}  // namespace
}  // namespace dispconv::simd
