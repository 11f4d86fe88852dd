// RGB sub-picture bitmaps to the Y, U and V planes of an AYUY2 sub-picture, skipping blocks
// that are entirely colour key.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/formats.hpp"
#include "dispconv.h"

namespace dispconv::kernels { namespace {

template <class V, class Format>
void rgb_to_ayuy2(MIX_INFO* info) {
    constexpr int block = 8;  // pixels
    constexpr int bpp = Format::bytes_per_pixel;
    const int32_t width = info->width;
    const int32_t sub_skip = info->sub_stride - width;
    const ptrdiff_t image_skip = ptrdiff_t(info->image_stride) - ptrdiff_t(width) * bpp;
    // Unsigned halving: a negative row remainder becomes a huge step, as the record defines.
    const uint32_t chroma_skip = static_cast<uint32_t>(sub_skip) >> 1;
    const uint32_t blocks = static_cast<uint32_t>(width) / block;
    const uint8_t* src = info->image;
    uint8_t* y = info->sub_y;
    uint8_t* u = info->sub_u;
    uint8_t* v = info->sub_v;
    // Only moved, never dereferenced (callers may leave it null): moved as an address.
    uintptr_t opacity = reinterpret_cast<uintptr_t>(info->sub_opacity);

    const uint32_t key = info->color_key;
    // Both counters are tested after counting down: width < 8 or height 0 run on (caller error;
    // 0 blocks are 2^32, handed over as two halves). One call site, so that the row operation
    // is inlined and its constants stay out of the row loop.
    const auto row = [&](const uint8_t* s, uint8_t* ry, uint8_t* ru, uint8_t* rv) {
        uint32_t n = blocks, parts = 1;
        if (n == 0) {
            // Unsigned offsets: on 32-bit targets the second half starts where the address
            // space wraps. The count is kept from the optimiser, which would otherwise reason
            // about a loop of 2^31 steps from a constant.
            n = 1u << 31, parts = 2;
            asm("" : "+r"(n));
        }
        for (uint32_t part = 0; part < parts; ++part) {
            const size_t first = size_t(part) * n;
            V::template rgb_row_to_subpicture<Format>(s + first * block * bpp, n, key, ry + first * block,
                                                      ru + first * (block / 2), rv + first * (block / 2));
        }
    };
    uint32_t rows = static_cast<uint32_t>(info->height);
    do {
        row(src, y, u, v);
        src += ptrdiff_t(blocks) * block * bpp, y += blocks * block, u += blocks * (block / 2), v += blocks * (block / 2);
        // The steps use the nominal width: a width off the block starts each row earlier.
        src += image_skip, y += sub_skip, u += chroma_skip, v += chroma_skip;
        // Deliberate: the opacity pointer moves by the row remainder alone, nothing is written.
        opacity += static_cast<uintptr_t>(sub_skip);
    } while (--rows != 0);

    info->sub_y = y, info->sub_u = u, info->sub_v = v, info->sub_opacity = reinterpret_cast<uint8_t*>(opacity);
}

template <class V>
void Convert_RGB32_To_AYUY2(MIX_INFO* info) { rgb_to_ayuy2<V, Rgb32>(info); }
template <class V>
void Convert_RGB24_To_AYUY2(MIX_INFO* info) { rgb_to_ayuy2<V, Rgb24>(info); }
template <class V>
void Convert_RGB16_565_To_AYUY2(MIX_INFO* info) { rgb_to_ayuy2<V, Rgb16>(info); }

} }  // namespace dispconv::kernels
