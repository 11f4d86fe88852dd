// Pieces shared by the frame-loading walks.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/adjust.hpp"
#include "core/geometry.hpp"

namespace dispconv::kernels {
namespace {

// Adjustment on or off, fixed per instantiation so plain kernels carry no adjust code.
struct Plain {
    static constexpr bool enabled = false;
};
struct Adjusted {
    static constexpr bool enabled = true;
};

template <class Adjust>
AdjustConstants adjust_snapshot() {
    if constexpr (Adjust::enabled) return load_adjust_constants();
    return AdjustConstants{};
}

// Offset from a row's start to where a pull-back kernel continues: the blocks overshoot is
// taken back when `width` is off the block, so the next row pair starts exactly `pitch_step`
// on (a zero width, a whole block count, is not pulled back).
constexpr ptrdiff_t pull_back_step(uint32_t blocks, int32_t block_px, int32_t width_px,
                                   int bytes_per_px, ptrdiff_t pitch_step) {
    const int32_t rem = width_px % block_px;
    const int32_t pull_px = rem ? block_px - rem : 0;
    return (ptrdiff_t(blocks) * block_px - pull_px - width_px) * bytes_per_px + pitch_step;
}

// Offset for a drifting kernel: the step is computed for an exact width, so any overshoot of
// the last block carries into every following row.
constexpr ptrdiff_t drift_step(uint32_t blocks, int32_t block_bytes, int32_t width_bytes,
                               ptrdiff_t pitch_step) {
    return ptrdiff_t(blocks) * block_bytes + (pitch_step - width_bytes);
}

}  // namespace
}  // namespace dispconv::kernels
