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
};
struct Adjusted {
    static constexpr bool enabled = true;
};

// A snapshot of the current constants (all zero before the first get_contrast_data()).
AdjustConstants load_adjust_constants();

}  // namespace dispconv
