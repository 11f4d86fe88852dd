// Footprints of the sub-picture preparation and colour-key kernels.
#include "core/footprint.hpp"
#include "core/formats.hpp"
#include "subpicture/color_key.hpp"

namespace dispconv { namespace {

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


// Block sizes of the record walks, in pixels.
constexpr int convert_block = 8;
constexpr int restore_block = 8;  // Restore_RGB32_To_Alpha and Restore_RGB24_To_Alpha
constexpr int alpha_block = 16;   // the other four alpha kernels
constexpr int sub_to_rgb_block = 16;

dispconv_status record_width(const MIX_INFO& m, FootprintBuilder& f, int block, const char* problem) {
    if (m.width <= 0 || m.width % block != 0) return f.refuse(DISPCONV_BAD_WIDTH, problem);
    if (m.height <= 0) return f.refuse(DISPCONV_BAD_HEIGHT, "height must be positive");
    return DISPCONV_OK;
}

// RGB bitmap at image to the Y, U, V planes: rows image_stride apart (a bottom-up bitmap
// works), planes top-down. `extra` bytes are read past each row (the RGB24 word reader).
dispconv_status rgb_to_ayuy2(const MIX_INFO& m, FootprintBuilder& f, int bpp, int extra) {
    if (dispconv_status s = record_width(m, f, convert_block, "width must be a positive multiple of 8"))
        return s;
    const int64_t row_bytes = int64_t(m.width) * bpp;
    // The chroma step halves sub_stride - width as unsigned: below width it runs off.
    if (m.sub_stride < m.width) return f.refuse(DISPCONV_BAD_STRIDE, "sub_stride must be at least width");
    if (!rows_apart(m.image_stride, row_bytes))
        return f.refuse(DISPCONV_BAD_STRIDE, "image_stride must be at least width * bytes per pixel");
    f.read_rows(DISPCONV_BUFFER_IMAGE, 0, m.height, m.image_stride, 0, row_bytes + extra);
    f.write_rows(DISPCONV_BUFFER_SUB_Y, 0, m.height, m.sub_stride, 0, m.width);
    // width is even, so width / 2 + (sub_stride - width) / 2 is sub_stride / 2.
    const int64_t chroma_stride = int64_t(m.sub_stride) / 2;
    f.write_rows(DISPCONV_BUFFER_SUB_U, 0, m.height, chroma_stride, 0, m.width / 2);
    f.write_rows(DISPCONV_BUFFER_SUB_V, 0, m.height, chroma_stride, 0, m.width / 2);
    return DISPCONV_OK;
}

// Opacity plane and bitmap, both top-down. `restore`: bitmap read, opacity written; otherwise
// the reverse. `extra` bytes are read past each bitmap row (Restore_RGB24_To_Alpha).
dispconv_status alpha(const MIX_INFO& m, FootprintBuilder& f, int block, int bpp, bool restore, int extra) {
    if (dispconv_status s = record_width(m, f, block,
                                         block == 8 ? "width must be a positive multiple of 8"
                                                    : "width must be a positive multiple of 16"))
        return s;
    if (m.frame_stride < m.width)
        return f.refuse(DISPCONV_BAD_STRIDE, "frame_stride must be at least width (it sets the opacity row step)");
    // A shorter or negative bitmap stride ends the walk after its first row.
    const int64_t row_bytes = int64_t(m.width) * bpp;
    if (m.image_stride < row_bytes)
        return f.refuse(DISPCONV_BAD_STRIDE, "image_stride must be at least width * bytes per pixel");
    // Deliberate: opacity rows are width + (frame_stride - width) / 2 bytes apart.
    const int64_t opacity_stride = m.width + ((int64_t(m.frame_stride) - m.width) >> 1);
    if (restore) {
        f.read_rows(DISPCONV_BUFFER_IMAGE, 0, m.height, m.image_stride, 0, row_bytes + extra);
        f.write_rows(DISPCONV_BUFFER_SUB_OPACITY, 0, m.height, opacity_stride, 0, m.width);
    } else {
        f.read_rows(DISPCONV_BUFFER_SUB_OPACITY, 0, m.height, opacity_stride, 0, m.width);
        f.write_rows(DISPCONV_BUFFER_IMAGE, 0, m.height, m.image_stride, 0, row_bytes);
    }
    return DISPCONV_OK;
}

// Sub-picture planes read back to back, frame_stride pixels a row; the bitmap's rows
// image_stride apart (a bottom-up bitmap works). width is not read.
dispconv_status ayuy2_to_rgb(const MIX_INFO& m, FootprintBuilder& f, int bpp) {
    if (m.frame_stride <= 0 || m.frame_stride % sub_to_rgb_block != 0)
        return f.refuse(DISPCONV_BAD_STRIDE, "frame_stride (the pixels per row) must be a positive multiple of 16");
    if (m.height <= 0) return f.refuse(DISPCONV_BAD_HEIGHT, "height must be positive");
    const int64_t row_bytes = int64_t(m.frame_stride) * bpp;
    if (!rows_apart(m.image_stride, row_bytes))
        return f.refuse(DISPCONV_BAD_STRIDE, "image_stride must be at least frame_stride * bytes per pixel");
    if (bpp == Rgb16::bytes_per_pixel)
        if (dispconv_status s = check_rgb16_layout(f, m.surface_format, "surface_format is needed for rgb16_layout"))
            return s;
    const int64_t plane = int64_t(m.height) * m.frame_stride;
    f.read(DISPCONV_BUFFER_SUB_Y, 0, plane);
    f.read(DISPCONV_BUFFER_SUB_OPACITY, 0, plane);
    f.read(DISPCONV_BUFFER_SUB_U, 0, plane / 2);
    f.read(DISPCONV_BUFFER_SUB_V, 0, plane / 2);
    f.write_rows(DISPCONV_BUFFER_IMAGE, 0, m.height, m.image_stride, 0, row_bytes);
    return DISPCONV_OK;
}

dispconv_status record_kernel(const dispconv_call& c, FootprintBuilder& f) {
    if (!c.info) return f.refuse(DISPCONV_BAD_ARGUMENT, "the record is missing");
    const MIX_INFO& m = *c.info;
    constexpr int rgb32 = Rgb32::bytes_per_pixel, rgb24 = Rgb24::bytes_per_pixel, rgb16 = Rgb16::bytes_per_pixel;
    switch (c.kernel) {
        case DISPCONV_KERNEL_Convert_RGB32_To_AYUY2:
            return rgb_to_ayuy2(m, f, rgb32, 0);
        case DISPCONV_KERNEL_Convert_RGB24_To_AYUY2:
            return rgb_to_ayuy2(m, f, rgb24, 1);  // each pixel is read as a 32-bit word
        case DISPCONV_KERNEL_Convert_RGB16_565_To_AYUY2:
            return rgb_to_ayuy2(m, f, rgb16, 0);
        case DISPCONV_KERNEL_Restore_RGB32_To_Alpha:
            return alpha(m, f, restore_block, rgb32, true, 0);
        case DISPCONV_KERNEL_Restore_RGB24_To_Alpha:
            return alpha(m, f, restore_block, rgb24, true, 1);  // each pixel is read as a 32-bit word
        case DISPCONV_KERNEL_Restore_RGB16_565_To_Alpha:
            return alpha(m, f, alpha_block, rgb16, true, 0);
        case DISPCONV_KERNEL_load_subpicture_alpha_rgb32:
            return alpha(m, f, alpha_block, rgb32, false, 0);
        case DISPCONV_KERNEL_load_subpicture_alpha_rgb24:
            return alpha(m, f, alpha_block, rgb24, false, 0);
        case DISPCONV_KERNEL_load_subpicture_alpha_rgb16_565:
            return alpha(m, f, alpha_block, rgb16, false, 0);
        case DISPCONV_KERNEL_load_subpicture_yuy2_rgb32:
        case DISPCONV_KERNEL_load_subpicture_yuy2_rgb32_ajust:
            return ayuy2_to_rgb(m, f, rgb32);
        case DISPCONV_KERNEL_load_subpicture_yuy2_rgb24:
        case DISPCONV_KERNEL_load_subpicture_yuy2_rgb24_ajust:
            return ayuy2_to_rgb(m, f, rgb24);
        case DISPCONV_KERNEL_load_subpicture_yuy2_rgb16:
        case DISPCONV_KERNEL_load_subpicture_yuy2_rgb16_ajust:
            return ayuy2_to_rgb(m, f, rgb16);
        default:
            return f.refuse(DISPCONV_BAD_ARGUMENT, "footprint not known for this kernel");
    }
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
            return record_kernel(c, f);
    }
}

}  // namespace dispconv
