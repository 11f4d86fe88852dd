// The block step shared by the RGB-writing frame loaders: 16 pixels of two rows that share
// one run of chroma, adjusted (or not), converted and stored.
#pragma once

#include "core/formats.hpp"
#include "core/rgb16.hpp"
#include "load/common.hpp"

namespace dispconv::kernels {
namespace {

constexpr int rgb_block = 16;  // pixels

template <class V, class Format, class Adjust>
void rgb_pair_block(uint8_t* y_top, uint8_t* y_bottom, uint8_t* u, uint8_t* v, uint8_t* dst_top,
                    uint8_t* dst_bottom, const AdjustConstants& a, const Rgb16Layout& layout) {
    if constexpr (Adjust::enabled) {
        // Chroma is adjusted once and serves both rows.
        V::adjust(u, u, rgb_block / 2, a.chroma_gain, a.u_offset);
        V::adjust(v, v, rgb_block / 2, a.chroma_gain, a.v_offset);
        V::adjust(y_top, y_top, rgb_block, a.luma_gain, a.luma_offset);
        V::adjust(y_bottom, y_bottom, rgb_block, a.luma_gain, a.luma_offset);
    }
    V::template yuv_to_rgb_store<Format>(y_top, u, v, rgb_block, dst_top, layout);
    V::template yuv_to_rgb_store<Format>(y_bottom, u, v, rgb_block, dst_bottom, layout);
}

// The layout of a 16-bit destination, read from the record; other formats ignore it.
template <class Format>
bool destination_layout(const ajust_contrast_info* adjust, Rgb16Layout& layout) {
    if constexpr (Format::bytes_per_pixel == 2) return select_rgb16_layout(adjust->rgb16_layout, layout);
    layout = rgb16_layouts[0];
    return true;
}

}  // namespace
}  // namespace dispconv::kernels
