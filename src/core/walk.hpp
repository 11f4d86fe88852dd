// Pieces shared by the walks of every family: adjust snapshots, the 16-bit layout of a
// destination, the row steps of pull-back and drifting kernels.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/adjust.hpp"
#include "core/geometry.hpp"
#include "core/formats.hpp"
#include "core/rgb16.hpp"
#include "dispconv.h"

namespace dispconv::kernels { namespace {

template <class Adjust>
AdjustConstants adjust_snapshot() {
    if constexpr (Adjust::enabled) return load_adjust_constants();
    return AdjustConstants{};
}

// The layout of a 16-bit destination, read from the record (false: refused); other formats
// never read the record.
template <class Format>
bool destination_layout(const ajust_contrast_info* adjust, Rgb16Layout& layout) {
    layout = rgb16_layouts[0];
    if constexpr (Format::bytes_per_pixel == 2) return select_rgb16_layout(adjust->rgb16_layout, layout);
    return true;
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

} }  // namespace dispconv::kernels
