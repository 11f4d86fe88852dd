// Footprints of the frame-loading kernels.
#include "core/footprint.hpp"
#include "core/geometry.hpp"
#include "load/planar_to_yuy2.hpp"

namespace dispconv { namespace {

using kernels::yuy2_block;

constexpr int packed_yuy2_block = 8;  // LoadYUY2_YUY2: pixels per step
constexpr int pixel_block = 16;       // every other loader: pixels per step
constexpr int32_t min_adjusted_yuy2_height = 10;  // loadimage_yuy2_ajust writes nothing below

// Rows of a walk that goes in row pairs: an odd height takes one more row.
int64_t paired_rows(int32_t height) { return 2 * int64_t(loop_count(height, 2)); }

dispconv_status check_width(const dispconv_call& c, FootprintBuilder& f, int block) {
    if (c.width > 0 && c.width % block == 0) return DISPCONV_OK;
    return f.refuse(DISPCONV_BAD_WIDTH, block == packed_yuy2_block ? "width must be a positive multiple of 8"
                                                                   : "width must be a positive multiple of 16");
}

dispconv_status check_height(const dispconv_call& c, FootprintBuilder& f) {
    return c.height > 0 ? DISPCONV_OK : f.refuse(DISPCONV_BAD_HEIGHT, "height must be positive");
}

// The YV12 destinations place their chroma planes by row pairs.
dispconv_status check_even_height(const dispconv_call& c, FootprintBuilder& f) {
    if (c.height > 0 && c.height % 2 == 0) return DISPCONV_OK;
    return f.refuse(DISPCONV_BAD_HEIGHT, "height must be a positive even number");
}

dispconv_status check_dst_rows(const dispconv_call& c, FootprintBuilder& f, int64_t row_bytes, const char* problem) {
    return rows_apart(c.dst_stride, row_bytes) ? DISPCONV_OK : f.refuse(DISPCONV_BAD_STRIDE, problem);
}

// Packed YUY2 sources: rows 2 * src_stride bytes apart, 2 * width bytes each.
dispconv_status packed_source(const dispconv_call& c, FootprintBuilder& f) {
    if (!rows_apart(c.src_stride, c.width))
        return f.refuse(DISPCONV_BAD_STRIDE, "src_stride must be at least width");
    f.read_rows(DISPCONV_BUFFER_SRC_Y, 0, paired_rows(c.height), 2 * int64_t(c.src_stride), 0, 2 * int64_t(c.width));
    return DISPCONV_OK;
}

// Planar sources: luma rows src_stride apart, one chroma row (src_stride / 2 apart) per row
// pair; `rows` luma rows are read.
dispconv_status planar_source(const dispconv_call& c, FootprintBuilder& f, int64_t rows, bool chroma) {
    if (chroma && c.src_stride % 2 != 0)
        return f.refuse(DISPCONV_BAD_STRIDE, "src_stride must be even: chroma rows are src_stride / 2 apart");
    if (!rows_apart(c.src_stride, c.width))
        return f.refuse(DISPCONV_BAD_STRIDE, "src_stride must be at least width");
    f.read_rows(DISPCONV_BUFFER_SRC_Y, 0, rows, c.src_stride, 0, c.width);
    if (chroma)
        for (dispconv_buffer b : {DISPCONV_BUFFER_SRC_U, DISPCONV_BUFFER_SRC_V})
            f.read_rows(b, 0, rows / 2, c.src_stride / 2, 0, c.width / 2);
    return DISPCONV_OK;
}

dispconv_status yuy2_to_yuy2(const dispconv_call& c, FootprintBuilder& f) {
    if (dispconv_status s = check_width(c, f, packed_yuy2_block)) return s;
    if (dispconv_status s = check_height(c, f)) return s;
    const int64_t row_bytes = 2 * int64_t(c.width);
    if (dispconv_status s = check_dst_rows(c, f, row_bytes, "dst_stride must be at least 2 * width")) return s;
    if (dispconv_status s = packed_source(c, f)) return s;
    f.write_rows(DISPCONV_BUFFER_DST, 0, paired_rows(c.height), c.dst_stride, 0, row_bytes);
    return DISPCONV_OK;
}

// Row pairs of width * bpp bytes from a packed YUY2 or a planar source.
dispconv_status to_rgb(const dispconv_call& c, FootprintBuilder& f, int bpp, bool packed) {
    if (dispconv_status s = check_width(c, f, pixel_block)) return s;
    if (dispconv_status s = check_height(c, f)) return s;
    if (bpp == 2)
        if (dispconv_status s = check_rgb16_layout(f, c.adjust, "adjust must not be null: it holds rgb16_layout"))
            return s;
    const int64_t row_bytes = int64_t(c.width) * bpp;
    if (dispconv_status s = check_dst_rows(c, f, row_bytes, "dst_stride must be at least width * bytes per pixel"))
        return s;
    if (dispconv_status s = packed ? packed_source(c, f) : planar_source(c, f, paired_rows(c.height), true))
        return s;
    f.write_rows(DISPCONV_BUFFER_DST, 0, paired_rows(c.height), c.dst_stride, 0, row_bytes);
    return DISPCONV_OK;
}

// Planar to YUY2: `gapped` is loadimage_yuy2, whose odd rows skip the first 8 bytes of each
// 32-byte block; `chroma` false for the luma-only member, `half` for the half-width one.
dispconv_status planar_to_yuy2(const dispconv_call& c, FootprintBuilder& f, bool gapped, bool chroma, bool half) {
    if (dispconv_status s = check_width(c, f, yuy2_block)) return s;
    if (dispconv_status s = check_height(c, f)) return s;
    const int64_t row_bytes = half ? int64_t(c.width) : 2 * int64_t(c.width);
    if (dispconv_status s = check_dst_rows(c, f, row_bytes, half ? "dst_stride must be at least width"
                                                                 : "dst_stride must be at least 2 * width"))
        return s;
    const int64_t rows = paired_rows(c.height);
    if (dispconv_status s = planar_source(c, f, rows, chroma)) return s;
    if (gapped) {
        const int64_t pair_step = 2 * int64_t(c.dst_stride);
        f.write_rows(DISPCONV_BUFFER_DST, 0, rows / 2, pair_step, 0, row_bytes);
        f.write_rows(DISPCONV_BUFFER_DST, c.dst_stride, rows / 2, pair_step, 8, row_bytes);
    } else {
        f.write_rows(DISPCONV_BUFFER_DST, 0, rows, c.dst_stride, 0, row_bytes);
    }
    return DISPCONV_OK;
}

dispconv_status adjusted_yuy2(const dispconv_call& c, FootprintBuilder& f) {
    if (c.height < min_adjusted_yuy2_height || c.height % 2 != 0) {
        if (dispconv_status s = check_width(c, f, yuy2_block)) return s;
        return f.refuse(DISPCONV_BAD_HEIGHT, "height must be even and at least 10");
    }
    return planar_to_yuy2(c, f, false, true, false);
}

// A whole YV12 surface at dst: the chroma planes follow the luma plane, rows dst_stride / 2
// apart.
dispconv_status yv12_destination(const dispconv_call& c, FootprintBuilder& f, int64_t luma_row_bytes,
                                 const char* problem) {
    if (c.dst_stride <= 0 || c.dst_stride % 2 != 0 || c.dst_stride < luma_row_bytes)
        return f.refuse(DISPCONV_BAD_STRIDE, problem);
    return DISPCONV_OK;
}
constexpr const char* yv12_dst_stride = "dst_stride must be even and at least width";

// The source luma rows are taken `width` apart whatever src_stride says.
dispconv_status source_pitch_is_width(const dispconv_call& c, FootprintBuilder& f) {
    if (c.src_stride != c.width)
        return f.refuse(DISPCONV_BAD_STRIDE, "src_stride must equal width: the source rows are read width apart");
    return DISPCONV_OK;
}

dispconv_status yv12_copy(const dispconv_call& c, FootprintBuilder& f) {
    if (dispconv_status s = check_width(c, f, pixel_block)) return s;
    if (dispconv_status s = check_even_height(c, f)) return s;
    if (dispconv_status s = source_pitch_is_width(c, f)) return s;
    if (dispconv_status s = yv12_destination(c, f, c.width, yv12_dst_stride)) return s;
    const int64_t w = c.width, h = c.height, d = c.dst_stride, pairs = h / 2;
    // Luma: each pair reads two rows back to back, then skips both pitches' remainders; it
    // writes at dst and src_stride below, and the destination moves on by one row's width.
    f.read_rows(DISPCONV_BUFFER_SRC_Y, 0, pairs, w + 2 * d, 0, 2 * w);
    f.write_rows(DISPCONV_BUFFER_DST, 0, pairs, w, 0, w);
    f.write_rows(DISPCONV_BUFFER_DST, c.src_stride, pairs, w, 0, w);
    // Chroma: `height` rows per plane (twice the plane), the planes one byte early.
    for (dispconv_buffer b : {DISPCONV_BUFFER_SRC_U, DISPCONV_BUFFER_SRC_V})
        f.read_rows(b, 0, h, c.src_stride / 2, 0, w / 2);
    const int64_t v_plane = h * d - 1, u_plane = v_plane + ((h * d) >> 2);
    for (int64_t plane : {v_plane, u_plane}) f.write_rows(DISPCONV_BUFFER_DST, plane, h, d / 2, 0, w / 2);
    return DISPCONV_OK;
}

dispconv_status yv12_adjusted(const dispconv_call& c, FootprintBuilder& f) {
    if (dispconv_status s = check_width(c, f, pixel_block)) return s;
    if (dispconv_status s = check_even_height(c, f)) return s;
    if (!c.adjust)
        return f.refuse(DISPCONV_BAD_ARGUMENT, "adjust must not be null: it places the chroma planes");
    const int64_t luma_rows = c.adjust->dst_luma_height, plane_rows = c.adjust->dst_plane_height;
    if (luma_rows < c.height || plane_rows < luma_rows)
        return f.refuse(DISPCONV_BAD_ARGUMENT,
                        "adjust->dst_luma_height must be at least height, dst_plane_height at least that");
    if (dispconv_status s = source_pitch_is_width(c, f)) return s;
    if (dispconv_status s = yv12_destination(c, f, c.width, yv12_dst_stride)) return s;
    const int64_t w = c.width, h = c.height, d = c.dst_stride;
    // Every source plane is read back to back.
    f.read(DISPCONV_BUFFER_SRC_Y, 0, h * w);
    f.read(DISPCONV_BUFFER_SRC_V, 0, h / 2 * (w / 2));
    f.read(DISPCONV_BUFFER_SRC_U, 0, h / 2 * (w / 2));
    f.write_rows(DISPCONV_BUFFER_DST, 0, h, d, 0, w);
    const int64_t v_plane = luma_rows * d + (((plane_rows - luma_rows) * d) >> 2);
    const int64_t u_plane = v_plane + ((plane_rows * d) >> 2);
    for (int64_t plane : {v_plane, u_plane}) f.write_rows(DISPCONV_BUFFER_DST, plane, h / 2, d / 2, 0, w / 2);
    return DISPCONV_OK;
}

dispconv_status yv12_half(const dispconv_call& c, FootprintBuilder& f) {
    // A chroma row shorter than one 16-byte block would be read and written from before its start.
    if (c.width < 2 * pixel_block || c.width % pixel_block != 0)
        return f.refuse(DISPCONV_BAD_WIDTH, "width must be a multiple of 16, at least 32");
    if (dispconv_status s = check_even_height(c, f)) return s;
    if (dispconv_status s = yv12_destination(c, f, c.width / 2, "dst_stride must be even and at least width / 2"))
        return s;
    const int64_t w = c.width, h = c.height, d = c.dst_stride;
    if (dispconv_status s = planar_source(c, f, h, true)) return s;
    f.write_rows(DISPCONV_BUFFER_DST, 0, h, d, 0, w / 2);
    const int64_t v_plane = h * d, u_plane = v_plane + h / 2 * (d / 2);
    for (int64_t plane : {v_plane, u_plane}) f.write_rows(DISPCONV_BUFFER_DST, plane, h / 2, d / 2, 0, w / 4);
    return DISPCONV_OK;
}

}  // namespace

dispconv_status load_footprint(const dispconv_call& c, FootprintBuilder& f) {
    switch (c.kernel) {
        case DISPCONV_KERNEL_LoadYUY2_YUY2:
        case DISPCONV_KERNEL_LoadYUY2_YUY2_adjust:
            return yuy2_to_yuy2(c, f);
        case DISPCONV_KERNEL_LoadYUY2_RGB32:
        case DISPCONV_KERNEL_LoadYUY2_RGB32_adjust:
            return to_rgb(c, f, 4, true);
        case DISPCONV_KERNEL_LoadYUY2_RGB24:
        case DISPCONV_KERNEL_LoadYUY2_RGB24_adjust:
            return to_rgb(c, f, 3, true);
        case DISPCONV_KERNEL_LoadYUY2_RGB16:
        case DISPCONV_KERNEL_LoadYUY2_RGB16_adjust:
            return to_rgb(c, f, 2, true);
        case DISPCONV_KERNEL_loadimage_yuy2:
            return planar_to_yuy2(c, f, true, true, false);
        case DISPCONV_KERNEL_loadimage_yuy2_ajust:
            return adjusted_yuy2(c, f);
        case DISPCONV_KERNEL_loadimage_yuy2_mono_ajust:
            return planar_to_yuy2(c, f, false, false, false);
        case DISPCONV_KERNEL_loadimage_half_yuy2_ajust:
            return planar_to_yuy2(c, f, false, true, true);
        case DISPCONV_KERNEL_loadimage_yv12:
            return yv12_copy(c, f);
        case DISPCONV_KERNEL_loadimage_yv12_ajust:
            return yv12_adjusted(c, f);
        case DISPCONV_KERNEL_loadimage_half_yv12_ajust:
            return yv12_half(c, f);
        case DISPCONV_KERNEL_loadimage_rgb32:
        case DISPCONV_KERNEL_loadimage_rgb32_ajust:
            return to_rgb(c, f, 4, false);
        case DISPCONV_KERNEL_loadimage_rgb24:
        case DISPCONV_KERNEL_loadimage_rgb24_ajust:
            return to_rgb(c, f, 3, false);
        case DISPCONV_KERNEL_loadimage_rgb16:
        case DISPCONV_KERNEL_loadimage_rgb16_ajust:
            return to_rgb(c, f, 2, false);
        default:
            return f.refuse(DISPCONV_BAD_ARGUMENT, "footprint not known for this kernel");
    }
}

}  // namespace dispconv
