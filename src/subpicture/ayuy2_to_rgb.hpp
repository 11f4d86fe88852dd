// An AYUY2 sub-picture back to a colour-keyed RGB bitmap: opacity 0 becomes the key colour.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/formats.hpp"
#include "core/rgb16.hpp"
#include "core/walk.hpp"

namespace dispconv::kernels { namespace {

// The key as one output pixel.
template <class Format>
void key_pixel(uint32_t color_key, uint8_t (&key)[4]) {
    const auto k0 = static_cast<uint8_t>(color_key), k1 = static_cast<uint8_t>(color_key >> 8),
               k2 = static_cast<uint8_t>(color_key >> 16);
    if constexpr (Format::bytes_per_pixel == 2) {
        key[0] = k0, key[1] = k1;  // a raw 16-bit pixel
    } else {
        // Deliberate: the key's low byte lands in the red position and its third byte in blue.
        key[0] = k2, key[1] = k1, key[2] = k0, key[3] = 0;
    }
}

template <class V, class Format, class Adjust>
void ayuy2_to_rgb(MIX_INFO* info) {
    constexpr int block = 16;  // pixels
    constexpr int bpp = Format::bytes_per_pixel;
    // Deliberate: every accepted selector writes 5-6-5; only the range is checked.
    if constexpr (bpp == 2)
        if (static_cast<uint32_t>(info->surface_format->rgb16_layout) > 3u) return;
    const Rgb16Layout& layout = rgb16_layouts[0];
    const AdjustConstants a = adjust_snapshot<Adjust>();
    uint8_t key[4];
    key_pixel<Format>(info->color_key, key);

    // frame_stride gives the pixels per row; the planes are read back to back.
    const int32_t row_pixels = info->frame_stride;
    const uint32_t blocks = loop_count(row_pixels, block);
    const ptrdiff_t image_next = ptrdiff_t(info->image_stride) - ptrdiff_t(row_pixels) * bpp;
    const uint8_t* sub_y = info->sub_y;
    const uint8_t* sub_u = info->sub_u;
    const uint8_t* sub_v = info->sub_v;
    const uint8_t* opacity = info->sub_opacity;
    uint8_t* image = info->image;

    for (uint32_t row = loop_count(info->height, 1); row--; image += image_next) {
        V::template ayuy2_row_to_rgb<Format, Adjust>(sub_y, sub_u, sub_v, opacity, blocks, key, a, layout, image);
        sub_y += blocks * block, opacity += blocks * block, sub_u += blocks * (block / 2), sub_v += blocks * (block / 2);
        image += ptrdiff_t(blocks) * block * bpp;
    }
}

#define DISPCONV_AYUY2_TO_RGB(name, Format, Adjust) \
    template <class V>                              \
    void name(MIX_INFO* info) { ayuy2_to_rgb<V, Format, Adjust>(info); }
DISPCONV_AYUY2_TO_RGB(load_subpicture_yuy2_rgb32, Rgb32, Plain)
DISPCONV_AYUY2_TO_RGB(load_subpicture_yuy2_rgb32_ajust, Rgb32, Adjusted)
DISPCONV_AYUY2_TO_RGB(load_subpicture_yuy2_rgb24, Rgb24, Plain)
DISPCONV_AYUY2_TO_RGB(load_subpicture_yuy2_rgb24_ajust, Rgb24, Adjusted)
DISPCONV_AYUY2_TO_RGB(load_subpicture_yuy2_rgb16, Rgb16, Plain)
DISPCONV_AYUY2_TO_RGB(load_subpicture_yuy2_rgb16_ajust, Rgb16, Adjusted)
#undef DISPCONV_AYUY2_TO_RGB

} }  // namespace dispconv::kernels
