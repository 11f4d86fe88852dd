// Packed YUY2 frame to a YUY2 surface of twice the width and height, walked in vertical
// strips 16 source pixels wide (row by row where the order does not show). The source has chroma on every row, so each destination row
// pair is one doubled source row and its average with the next doubled row.
#pragma once

#include <utility>

#include "stretch/common.hpp"

namespace dispconv::kernels { namespace {

constexpr int yuy2_strip = 16;  // source pixels (32 bytes) per strip

template <class V, class Adjust>
void yuy2_strip_rows(const uint8_t* src, uint8_t* dst, int n, int32_t rows, int32_t src_pitch,
                     ptrdiff_t dst_pitch, bool right_edge, const AdjustConstants& a) {
    const int bytes = 4 * n;
    uint8_t buf[2][4 * yuy2_strip];
    uint8_t *above = buf[0], *row = buf[1];
    for (int32_t r = 0; r < rows; ++r) {
        // One source row of the strip doubled in width (its last samples' neighbours are the
        // next strip's first ones, or its own at the right edge).
        V::template doubled_yuy2<Adjust::enabled>(src + ptrdiff_t(r) * src_pitch, n, right_edge, a, row);
        if (r > 0) V::average(above, row, dst + (2 * r - 1) * dst_pitch, bytes);
        V::copy(row, dst + 2 * r * dst_pitch, bytes);
        std::swap(above, row);
    }
    // Deliberate: the bottom row repeats the one above it.
    V::copy(above, dst + (2 * rows - 1) * dst_pitch, bytes);
}

template <class V, class Adjust>
void stretch_2x2_yuy2(void* src_, void* dst_, int32_t width, int32_t height, int32_t dst_stride) {
    if (height < 16) return;
    const AdjustConstants a = adjust_snapshot<Adjust>();
    auto* src = static_cast<const uint8_t*>(src_);
    auto* dst = static_cast<uint8_t*>(dst_);
    // Source rows go in pairs: the first and last pair, then at least one middle pair.
    const int32_t rows = 2 * (int32_t(loop_count(height - 4, 2)) + 2);
    // Deliberate: the strip counter must reach zero exactly; other widths run past the picture.
    // Where it does and destination rows do not overlap, the strips' order does not show: the
    // picture then goes row by row over all strips at once, the same bytes.
    const ptrdiff_t row_bytes = 2 * ptrdiff_t(width);
    if (width >= 4 * yuy2_strip && width % (2 * yuy2_strip) == 0 &&
        (dst_stride >= row_bytes || -ptrdiff_t(dst_stride) >= row_bytes)) {
        const ptrdiff_t dp = dst_stride;
        // Source rows two at a time (rows is even), with the row below; the last pair takes
        // its own bottom row again, which repeats the bottom row as it must.
        for (int32_t r = 0; r < rows; r += 2) {
            const uint8_t* const s[3] = {src + ptrdiff_t(r) * width, src + ptrdiff_t(r + 1) * width,
                                         src + ptrdiff_t(r + 2 < rows ? r + 2 : r + 1) * width};
            uint8_t* const d[4] = {dst + 2 * r * dp, dst + (2 * r + 1) * dp, dst + (2 * r + 2) * dp, dst + (2 * r + 3) * dp};
            V::template double_yuy2_rows<Adjust::enabled>(s, d, width / 2, a);
        }
        return;
    }
    uint32_t counter = static_cast<uint32_t>(width) - 2 * yuy2_strip;
    do {
        yuy2_strip_rows<V, Adjust>(src, dst, yuy2_strip, rows, width, dst_stride, false, a);
        src += 2 * yuy2_strip, dst += 4 * yuy2_strip;
        counter -= 2 * yuy2_strip;
    } while (counter != 0);
    yuy2_strip_rows<V, Adjust>(src, dst, yuy2_strip, rows, width, dst_stride, true, a);
}

template <class V>
void yuy2_strech_picture_2X2_yuy2(void* src, void*, void*, void* dst, int32_t width,
                                  int32_t height, int32_t dst_stride) {
    stretch_2x2_yuy2<V, Plain>(src, dst, width, height, dst_stride);
}

template <class V>
void yuy2_strech_picture_2X2_yuy2_ajust(void* src, void*, void*, void* dst, int32_t width,
                                        int32_t height, int32_t dst_stride, ajust_contrast_info*) {
    stretch_2x2_yuy2<V, Adjusted>(src, dst, width, height, dst_stride);
}

} }  // namespace dispconv::kernels
