// Packed YUY2 frame to RGB32, RGB24 or 16-bit RGB; odd rows use the chroma of the row above.
#pragma once

#include "core/walk.hpp"

namespace dispconv::kernels {
namespace {

template <class V, class Format, class Adjust>
void yuy2_to_rgb(const uint8_t* src, uint8_t* dst, int32_t width, int32_t height,
                 int32_t src_stride, int32_t dst_stride, const ajust_contrast_info* adjust) {
    Rgb16Layout layout;
    if (!destination_layout<Format>(adjust, layout)) return;
    const AdjustConstants a = adjust_snapshot<Adjust>();
    constexpr int bpp = Format::bytes_per_pixel;
    constexpr int block = 16;  // pixels
    const ptrdiff_t src_pitch = 2 * ptrdiff_t(src_stride);
    const uint32_t blocks = loop_count(2 * width, 2 * block);
    const ptrdiff_t src_next = pull_back_step(blocks, block, width, 2, 2 * src_pitch);
    const ptrdiff_t dst_next =
        pull_back_step(blocks, block, width, bpp, 2 * ptrdiff_t(dst_stride));

    for (uint32_t pair = loop_count(height, 2); pair--; src += src_next, dst += dst_next) {
        const uint8_t* s1 = src + src_pitch;
        uint8_t* d1 = dst + dst_stride;
        in_block_order(dst, d1, ptrdiff_t(blocks) * block * bpp, blocks, [&](uint32_t i, uint32_t n) {
            V::template yuy2_pair_to_rgb<Format, Adjust>(src + 2 * block * i, s1 + 2 * block * i, dst + i * block * bpp,
                                                         d1 + i * block * bpp, n, a, layout);
        });
    }
}

#define DISPCONV_YUY2_TO_RGB(name, Format, Adjust)                                               \
    template <class V>                                                                           \
    void name(void* src_y, void*, void*, void* dst, int32_t width, int32_t height,               \
              int32_t src_stride, int32_t dst_stride, ajust_contrast_info* adjust) {             \
        yuy2_to_rgb<V, Format, Adjust>(static_cast<const uint8_t*>(src_y),                       \
                                       static_cast<uint8_t*>(dst), width, height, src_stride,    \
                                       dst_stride, adjust);                                      \
    }
DISPCONV_YUY2_TO_RGB(LoadYUY2_RGB32, Rgb32, Plain)
DISPCONV_YUY2_TO_RGB(LoadYUY2_RGB32_adjust, Rgb32, Adjusted)
DISPCONV_YUY2_TO_RGB(LoadYUY2_RGB24, Rgb24, Plain)
DISPCONV_YUY2_TO_RGB(LoadYUY2_RGB24_adjust, Rgb24, Adjusted)
DISPCONV_YUY2_TO_RGB(LoadYUY2_RGB16, Rgb16, Plain)
DISPCONV_YUY2_TO_RGB(LoadYUY2_RGB16_adjust, Rgb16, Adjusted)
#undef DISPCONV_YUY2_TO_RGB

}  // namespace
}  // namespace dispconv::kernels
