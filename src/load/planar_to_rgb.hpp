// Planar YV12 frame to RGB32, RGB24 or 16-bit RGB; one chroma row serves a row pair.
#pragma once

#include "core/walk.hpp"

namespace dispconv::kernels {
namespace {

template <class V, class Format, class Adjust>
void planar_to_rgb(const uint8_t* src_y, const uint8_t* src_u, const uint8_t* src_v, uint8_t* dst,
                   int32_t width, int32_t height, int32_t src_stride, int32_t dst_stride,
                   const ajust_contrast_info* adjust) {
    Rgb16Layout layout;
    if (!destination_layout<Format>(adjust, layout)) return;
    const AdjustConstants a = adjust_snapshot<Adjust>();
    constexpr int bpp = Format::bytes_per_pixel;
    constexpr int block = 16;  // pixels
    const uint32_t blocks = loop_count(width, block);
    const ptrdiff_t y_next = drift_step(blocks, block, width, 2 * ptrdiff_t(src_stride));
    const ptrdiff_t c_next = drift_step(blocks, block / 2, 0, (src_stride - width) >> 1);
    const ptrdiff_t d_next = drift_step(blocks, block * bpp, width * bpp, 2 * ptrdiff_t(dst_stride));

    for (uint32_t pair = loop_count(height, 2); pair--;
         src_y += y_next, src_u += c_next, src_v += c_next, dst += d_next) {
        const uint8_t* y1 = src_y + src_stride;
        uint8_t* d1 = dst + dst_stride;
        in_block_order(dst, d1, ptrdiff_t(blocks) * block * bpp, blocks, [&](uint32_t i, uint32_t n) {
            V::template planar_pair_to_rgb<Format, Adjust>(src_y + block * i, y1 + block * i, src_u + 8 * i, src_v + 8 * i,
                                                           dst + i * block * bpp, d1 + i * block * bpp, n, a, layout);
        });
    }
}

#define DISPCONV_PLANAR_TO_RGB(name, Format, Adjust)                                             \
    template <class V>                                                                           \
    void name(void* src_y, void* src_u, void* src_v, void* dst, int32_t width, int32_t height,   \
              int32_t src_stride, int32_t dst_stride, ajust_contrast_info* adjust) {             \
        planar_to_rgb<V, Format, Adjust>(                                                        \
            static_cast<const uint8_t*>(src_y), static_cast<const uint8_t*>(src_u),              \
            static_cast<const uint8_t*>(src_v), static_cast<uint8_t*>(dst), width, height,       \
            src_stride, dst_stride, adjust);                                                     \
    }
DISPCONV_PLANAR_TO_RGB(loadimage_rgb32, Rgb32, Plain)
DISPCONV_PLANAR_TO_RGB(loadimage_rgb32_ajust, Rgb32, Adjusted)
DISPCONV_PLANAR_TO_RGB(loadimage_rgb24, Rgb24, Plain)
DISPCONV_PLANAR_TO_RGB(loadimage_rgb24_ajust, Rgb24, Adjusted)
DISPCONV_PLANAR_TO_RGB(loadimage_rgb16, Rgb16, Plain)
DISPCONV_PLANAR_TO_RGB(loadimage_rgb16_ajust, Rgb16, Adjusted)
#undef DISPCONV_PLANAR_TO_RGB

}  // namespace
}  // namespace dispconv::kernels
