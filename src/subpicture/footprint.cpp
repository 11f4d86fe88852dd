// Footprints of the sub-picture preparation and colour-key kernels.
#include "core/footprint.hpp"
#include "subpicture/color_key.hpp"

namespace dispconv {
namespace {

using kernels::key_block;

dispconv_status width_in_blocks(const dispconv_call& c, FootprintBuilder& f) {
    if (c.width <= 0 || c.width % key_block != 0)
        return f.refuse(DISPCONV_BAD_WIDTH, "width must be a positive multiple of 16");
    if (c.height <= 0) return f.refuse(DISPCONV_BAD_HEIGHT, "height must be positive");
    return DISPCONV_OK;
}

// Rows in pairs (an odd height fills one more), width * bpp bytes each.
dispconv_status color_key_fill(const dispconv_call& c, FootprintBuilder& f, int bpp) {
    if (dispconv_status s = width_in_blocks(c, f)) return s;
    const int64_t row_bytes = int64_t(c.width) * bpp;
    if (!rows_apart(c.dst_stride, row_bytes))
        return f.refuse(DISPCONV_BAD_STRIDE, "stride must be at least width * bytes per pixel");
    const int64_t rows = (int64_t(c.height) + 1) / 2 * 2;
    f.write_rows(DISPCONV_BUFFER_DST, 0, rows, c.dst_stride, 0, row_bytes);
    return DISPCONV_OK;
}

// Both planes share the stride; dst is read where the mask does not match.
dispconv_status relace_mask(const dispconv_call& c, FootprintBuilder& f) {
    if (dispconv_status s = width_in_blocks(c, f)) return s;
    if (!rows_apart(c.dst_stride, c.width)) return f.refuse(DISPCONV_BAD_STRIDE, "stride must be at least width");
    f.read_rows(DISPCONV_BUFFER_MASK, 0, c.height, c.dst_stride, 0, c.width);
    f.read_rows(DISPCONV_BUFFER_DST, 0, c.height, c.dst_stride, 0, c.width);
    f.write_rows(DISPCONV_BUFFER_DST, 0, c.height, c.dst_stride, 0, c.width);
    return DISPCONV_OK;
}

}  // namespace

dispconv_status subpicture_footprint(const dispconv_call& c, FootprintBuilder& f) {
    switch (c.kernel) {
        case DISPCONV_KERNEL_LoadColorKeyRgb32:
            return color_key_fill(c, f, 4);
        case DISPCONV_KERNEL_LoadColorKeyRgb24:
            return color_key_fill(c, f, 3);
        case DISPCONV_KERNEL_LoadColorKeyRgb16:
            return color_key_fill(c, f, 2);
        case DISPCONV_KERNEL_RelaceMaskWithColorKey:
            return relace_mask(c, f);
        default:
            return f.refuse(DISPCONV_BAD_ARGUMENT, "footprint not known for this kernel");
    }
}

}  // namespace dispconv
