// Footprints of the stretch kernels: each kernel's caller contract, and the bytes an accepted
// call reads and writes, from the walks' block sizes and row schedules.
#include "core/footprint.hpp"
#include "stretch/walks.hpp"

namespace dispconv { namespace {

using kernels::edge_block;
using kernels::plane_strip;
using kernels::rgb_strip;
using kernels::stretch_block;
using kernels::yuy2_strip;

constexpr dispconv_buffer src_y = DISPCONV_BUFFER_SRC_Y, src_u = DISPCONV_BUFFER_SRC_U,
                          src_v = DISPCONV_BUFFER_SRC_V, dst = DISPCONV_BUFFER_DST;

// The pair-counted walks process an odd height as one row more.
int64_t rows_in_pairs(int32_t height) { return (int64_t(height) + 1) / 2 * 2; }

dispconv_status check_height(const dispconv_call& c, FootprintBuilder& f, int32_t least, const char* problem) {
    return c.height < least ? f.refuse(DISPCONV_BAD_HEIGHT, problem) : DISPCONV_OK;
}

// ---------------------------------------------------------------------------------------------
// Planar YV12 frame to a surface of twice the height (and width): luma rows src_stride apart,
// chroma rows src_stride / 2 apart (halved as an unsigned number, so the stride must be
// positive and even), every row read over the whole width.

dispconv_status planar_source(const dispconv_call& c, FootprintBuilder& f) {
    if (c.src_stride < c.width || c.src_stride % 2 != 0)
        return f.refuse(DISPCONV_BAD_STRIDE, "src_stride must be even and at least width");
    return DISPCONV_OK;
}

void read_planar_source(const dispconv_call& c, FootprintBuilder& f, int64_t rows) {
    const int64_t chroma_stride = kernels::chroma_pitch(c.src_stride);
    f.read_rows(src_y, 0, rows, c.src_stride, 0, c.width);
    f.read_rows(src_u, 0, rows / 2, chroma_stride, 0, c.width / 2);
    f.read_rows(src_v, 0, rows / 2, chroma_stride, 0, c.width / 2);
}

// Destination rows of width * dst_bytes_per_px bytes, two per source row.
dispconv_status planar_frame(const dispconv_call& c, FootprintBuilder& f, int64_t dst_bytes_per_px) {
    if (dispconv_status s = planar_source(c, f)) return s;
    const int64_t row_bytes = c.width * dst_bytes_per_px;
    if (!rows_apart(c.dst_stride, row_bytes))
        return f.refuse(DISPCONV_BAD_STRIDE, "dst_stride must be at least the destination row bytes");
    const int64_t rows = rows_in_pairs(c.height);
    read_planar_source(c, f, rows);
    f.write_rows(dst, 0, 2 * rows, c.dst_stride, 0, row_bytes);
    return DISPCONV_OK;
}

dispconv_status stretch_1x2_yuy2(const dispconv_call& c, FootprintBuilder& f) {
    if (c.width <= 0 || c.width % stretch_block != 0)
        return f.refuse(DISPCONV_BAD_WIDTH, "width must be a positive multiple of 16");
    if (dispconv_status s = check_height(c, f, 8, "height must be at least 8")) return s;
    return planar_frame(c, f, 2);
}

dispconv_status stretch_1x2_rgb(const dispconv_call& c, FootprintBuilder& f, int bpp) {
    if (c.width <= 0 || c.width % rgb_strip != 0)
        return f.refuse(DISPCONV_BAD_WIDTH, "width must be a positive multiple of 16");
    if (dispconv_status s = check_height(c, f, 12, "height must be at least 12")) return s;
    if (bpp == 2)
        if (dispconv_status s = check_rgb16_layout(f, c.adjust, "adjust must give rgb16_layout")) return s;
    return planar_frame(c, f, bpp);
}

dispconv_status stretch_2x2_yuy2(const dispconv_call& c, FootprintBuilder& f) {
    if (c.width < 2 * stretch_block || c.width % stretch_block != 0)
        return f.refuse(DISPCONV_BAD_WIDTH, "width must be a multiple of 16, at least 32");
    if (dispconv_status s = check_height(c, f, 8, "height must be at least 8")) return s;
    return planar_frame(c, f, 4);
}

// ---------------------------------------------------------------------------------------------
// Packed YUY2 to twice the size: `width` bytes per source row and also the row distance; the
// strips go down the first and last pair and whole middle pairs, so an odd height reads and
// doubles one more row.

dispconv_status stretch_2x2_packed(const dispconv_call& c, FootprintBuilder& f) {
    if (c.width < 4 * yuy2_strip || c.width % (2 * yuy2_strip) != 0)
        return f.refuse(DISPCONV_BAD_WIDTH, "width (bytes) must be a multiple of 32, at least 64");
    if (dispconv_status s = check_height(c, f, 16, "height must be at least 16")) return s;
    const int64_t row_bytes = 2 * int64_t(c.width);
    if (!rows_apart(c.dst_stride, row_bytes))
        return f.refuse(DISPCONV_BAD_STRIDE, "dst_stride must be at least 2 * width");
    const int64_t rows = 2 * (int64_t(loop_count(c.height - 4, 2)) + 2);
    f.read(src_y, 0, rows * c.width);
    f.write_rows(dst, 0, 2 * rows, c.dst_stride, 0, row_bytes);
    return DISPCONV_OK;
}

// ---------------------------------------------------------------------------------------------
// Plane stretchers. The adjusting ones end by writing their last row once more right after
// itself in memory, so a bottom-up destination would get that copy over a row of the picture:
// their dst_stride must be positive.

struct PlaneGeometry {
    int64_t width, height, src_stride, dst_stride;
};

// strech_pic_2X2_adjust: row k starts k * width bytes in and is read with the byte after it.
void bytes_2x2_adjust(FootprintBuilder& f, dispconv_buffer src, int64_t at, const PlaneGeometry& g) {
    const int64_t w = g.width, h = g.height, d = g.dst_stride;
    f.read_rows(src, 0, h, w, 0, w + 1);
    f.write_rows(dst, at, 2 * h - 1, d, 0, 2 * w);
    f.write(dst, at + (2 * h - 2) * d + 2 * w, at + (2 * h - 2) * d + 4 * w);
}

// strech_pic_1X2_adjust: rows 0 .. 2h - 2 of width bytes, and width more after the last.
void bytes_1x2_adjust(FootprintBuilder& f, dispconv_buffer src, int64_t at, const PlaneGeometry& g) {
    const int64_t w = g.width, h = g.height, d = g.dst_stride;
    f.read_rows(src, 0, h, g.src_stride, 0, w);
    f.write_rows(dst, at, 2 * h - 1, d, 0, w);
    f.write(dst, at + (2 * h - 2) * d + w, at + (2 * h - 2) * d + 2 * w);
}

dispconv_status pic_2x2(const dispconv_call& c, FootprintBuilder& f) {
    if (c.width < 2 * plane_strip || c.width % plane_strip != 0)
        return f.refuse(DISPCONV_BAD_WIDTH, "width must be a multiple of 8, at least 16");
    if (dispconv_status s = check_height(c, f, 1, "height must be positive")) return s;
    const int64_t w = c.width, h = c.height, row_bytes = 2 * w;
    if (!rows_apart(c.src_stride, w)) return f.refuse(DISPCONV_BAD_STRIDE, "src_stride must be at least width");
    if (!rows_apart(c.dst_stride, row_bytes))
        return f.refuse(DISPCONV_BAD_STRIDE, "dst_stride must be at least 2 * width");
    f.read_rows(src_y, 0, h, c.src_stride, 0, w);
    f.write_rows(dst, 0, 2 * h, c.dst_stride, 0, row_bytes);
    // Deliberate: the strips before the last copy their bottom row to row 2 * height.
    f.write(dst, 2 * h * c.dst_stride, 2 * h * c.dst_stride + row_bytes - 2 * plane_strip);
    return DISPCONV_OK;
}

dispconv_status plane_number(const dispconv_call& c, FootprintBuilder& f) {
    if (c.plane < 1 || c.plane > 3) return f.refuse(DISPCONV_BAD_ARGUMENT, "plane must be 1, 2 or 3");
    return DISPCONV_OK;
}

dispconv_status pic_2x2_adjust(const dispconv_call& c, FootprintBuilder& f) {
    if (c.width <= 0 || c.width % (2 * plane_strip) != 0)
        return f.refuse(DISPCONV_BAD_WIDTH, "width must be a positive multiple of 16");
    if (dispconv_status s = check_height(c, f, 2, "height must be at least 2")) return s;
    if (c.src_stride != c.width) return f.refuse(DISPCONV_BAD_STRIDE, "src_stride must equal width");
    if (c.dst_stride < 2 * int64_t(c.width))
        return f.refuse(DISPCONV_BAD_STRIDE, "dst_stride must be positive and at least 2 * width");
    if (dispconv_status s = plane_number(c, f)) return s;
    bytes_2x2_adjust(f, src_y, 0, {c.width, c.height, c.src_stride, c.dst_stride});
    return DISPCONV_OK;
}

// A width off the block is whole: the last block is moved back to end at the row's end.
dispconv_status pic_1x2_adjust(const dispconv_call& c, FootprintBuilder& f) {
    if (c.width < 2 * plane_strip) return f.refuse(DISPCONV_BAD_WIDTH, "width must be at least 16");
    if (dispconv_status s = check_height(c, f, 2, "height must be at least 2")) return s;
    if (!rows_apart(c.src_stride, c.width)) return f.refuse(DISPCONV_BAD_STRIDE, "src_stride must be at least width");
    if (c.dst_stride < c.width) return f.refuse(DISPCONV_BAD_STRIDE, "dst_stride must be positive and at least width");
    if (dispconv_status s = plane_number(c, f)) return s;
    bytes_1x2_adjust(f, src_y, 0, {c.width, c.height, c.src_stride, c.dst_stride});
    return DISPCONV_OK;
}

// The YV12 wrappers: the plane contract for the luma plane and for the halved chroma planes,
// which land at dst + P (from src_v) and dst + P + P / 4 (from src_u), P = 2 * height * dst_stride.
using PlaneFootprint = void (*)(FootprintBuilder&, dispconv_buffer, int64_t, const PlaneGeometry&);

void yv12_planes(const dispconv_call& c, FootprintBuilder& f, PlaneFootprint plane) {
    const int64_t luma_area = 2 * int64_t(c.height) * c.dst_stride;
    const PlaneGeometry chroma{c.width >> 1, c.height >> 1, c.src_stride >> 1, c.dst_stride >> 1};
    plane(f, src_y, 0, {c.width, c.height, c.src_stride, c.dst_stride});
    plane(f, src_v, luma_area, chroma);
    plane(f, src_u, luma_area + (luma_area >> 2), chroma);
}

dispconv_status yv12_height(const dispconv_call& c, FootprintBuilder& f) {
    if (c.height < 4 || c.height % 2 != 0) return f.refuse(DISPCONV_BAD_HEIGHT, "height must be even and at least 4");
    return DISPCONV_OK;
}

dispconv_status yv12_2x2_adjust(const dispconv_call& c, FootprintBuilder& f) {
    if (c.width <= 0 || c.width % (4 * plane_strip) != 0)
        return f.refuse(DISPCONV_BAD_WIDTH, "width must be a positive multiple of 32");
    if (dispconv_status s = yv12_height(c, f)) return s;
    if (c.src_stride != c.width) return f.refuse(DISPCONV_BAD_STRIDE, "src_stride must equal width");
    if (c.dst_stride < 2 * int64_t(c.width) || c.dst_stride % 2 != 0)
        return f.refuse(DISPCONV_BAD_STRIDE, "dst_stride must be even and at least 2 * width");
    yv12_planes(c, f, bytes_2x2_adjust);
    return DISPCONV_OK;
}

dispconv_status yv12_1x2_adjust(const dispconv_call& c, FootprintBuilder& f) {
    if (c.width < 4 * plane_strip || c.width % 2 != 0)
        return f.refuse(DISPCONV_BAD_WIDTH, "width must be even and at least 32");
    if (dispconv_status s = yv12_height(c, f)) return s;
    if (!rows_apart(c.src_stride, c.width) || c.src_stride % 2 != 0)
        return f.refuse(DISPCONV_BAD_STRIDE, "src_stride must be even and at least width");
    if (c.dst_stride < c.width || c.dst_stride % 2 != 0)
        return f.refuse(DISPCONV_BAD_STRIDE, "dst_stride must be even and at least width");
    yv12_planes(c, f, bytes_1x2_adjust);
    return DISPCONV_OK;
}

// ---------------------------------------------------------------------------------------------
// Edge-directed stretch of a frame descriptor: rows frame_width bytes long (the interpolating
// row routines need a first, a middle and a last block), the pairs of height / 2 rounded down.

dispconv_status edge_directed(const dispconv_call& c, FootprintBuilder& f) {
    if (!c.frame) return f.refuse(DISPCONV_BAD_ARGUMENT, "frame is required");
    const int64_t w = c.frame->frame_width;
    if (w < 3 * edge_block || w % edge_block != 0)
        return f.refuse(DISPCONV_BAD_WIDTH, "frame_width must be a multiple of 16, at least 48");
    if (dispconv_status s = check_height(c, f, 8, "height must be at least 8")) return s;
    if (c.start_line < 0) return f.refuse(DISPCONV_BAD_ARGUMENT, "start_line must not be negative");
    if (!rows_apart(c.dst_stride, 2 * w)) return f.refuse(DISPCONV_BAD_STRIDE, "dst_stride must be at least 2 * frame_width");
    const bool field = c.frame->frame_structure == 1;
    const int64_t row_step = field ? 2 * w : w;
    const int64_t start = w * c.start_line;
    const int64_t luma_offset = field ? start : start >> 1;
    // Deliberate: the chroma starts are a quarter of the luma offset, even inside a chroma row.
    const int64_t chroma_offset = luma_offset >> 2;
    const int64_t rows = 2 * (int64_t(c.height) / 2);
    f.read_rows(src_y, luma_offset, rows, row_step, 0, w);
    f.read_rows(src_u, chroma_offset, rows / 2, row_step / 2, 0, w / 2);
    f.read_rows(src_v, chroma_offset, rows / 2, row_step / 2, 0, w / 2);
    f.write_rows(dst, 0, 2 * rows, c.dst_stride, 0, 2 * w);
    return DISPCONV_OK;
}

}  // namespace

dispconv_status stretch_footprint(const dispconv_call& c, FootprintBuilder& f) {
    switch (c.kernel) {
        case DISPCONV_KERNEL_strech_picture_1X2_yuy2:
        case DISPCONV_KERNEL_strech_picture_1X2_yuy2_ajust:
            return stretch_1x2_yuy2(c, f);
        case DISPCONV_KERNEL_strech_picture_1X2_yuy2_ajust_rgb32:
            return stretch_1x2_rgb(c, f, 4);
        case DISPCONV_KERNEL_strech_picture_1X2_yuy2_ajust_rgb24:
            return stretch_1x2_rgb(c, f, 3);
        case DISPCONV_KERNEL_strech_picture_1X2_yuy2_ajust_rgb16:
            return stretch_1x2_rgb(c, f, 2);
        case DISPCONV_KERNEL_strech_picture_2X2_yuy2:
        case DISPCONV_KERNEL_strech_picture_2X2_yuy2_ajust:
            return stretch_2x2_yuy2(c, f);
        case DISPCONV_KERNEL_yuy2_strech_picture_2X2_yuy2:
        case DISPCONV_KERNEL_yuy2_strech_picture_2X2_yuy2_ajust:
            return stretch_2x2_packed(c, f);
        case DISPCONV_KERNEL_strech_pic_2X2:
            return pic_2x2(c, f);
        case DISPCONV_KERNEL_strech_pic_2X2_adjust:
            return pic_2x2_adjust(c, f);
        case DISPCONV_KERNEL_strech_pic_1X2_adjust:
            return pic_1x2_adjust(c, f);
        case DISPCONV_KERNEL_strech_picture_2X2_yv12_ajust:
            return yv12_2x2_adjust(c, f);
        case DISPCONV_KERNEL_strech_picture_1X2_yv12_ajust:
            return yv12_1x2_adjust(c, f);
        case DISPCONV_KERNEL_strech_opt_yuy2_ajust:
            return edge_directed(c, f);
        default:
            return f.refuse(DISPCONV_BAD_ARGUMENT, "footprint not known for this kernel");
    }
}

}  // namespace dispconv
