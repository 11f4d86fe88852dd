// Footprints of the mixing kernels. Every plane of the record is its own buffer; the frame and
// sub-picture planes are read, `image` (and the YV12 output chroma planes) written.
#include <type_traits>

#include "core/footprint.hpp"
#include "mix/walks.hpp"

namespace dispconv { namespace {

using kernels::HalfYuy2Output;
using kernels::mix_block;
using kernels::passes_while_positive;
using kernels::RgbOutput;
using kernels::Yuy2Output;
using kernels::yv12_block;

// The strides and size of a record, widened for the footprint arithmetic.
struct Geometry {
    int64_t width, height, frame, sub, image;

    explicit Geometry(const MIX_INFO& m)
        : width(m.width), height(m.height), frame(m.frame_stride), sub(m.sub_stride), image(m.image_stride) {}
};

dispconv_status block_width(const MIX_INFO& m, int32_t block, FootprintBuilder& f) {
    if (m.width <= 0 || m.width % block != 0)
        return f.refuse(DISPCONV_BAD_WIDTH, "width must be a positive multiple of 16");
    return DISPCONV_OK;
}

// Rows of the frame, of the sub-picture and of the output must not overlap; rows_apart on the
// full strides covers the halved chroma strides too, width being even.
dispconv_status strides_apart(const Geometry& g, int64_t image_row_bytes, FootprintBuilder& f) {
    if (!rows_apart(g.frame, g.width)) return f.refuse(DISPCONV_BAD_STRIDE, "frame_stride must be at least width");
    if (!rows_apart(g.sub, g.width)) return f.refuse(DISPCONV_BAD_STRIDE, "sub_stride must be at least width");
    if (!rows_apart(g.image, image_row_bytes))
        return f.refuse(DISPCONV_BAD_STRIDE, "image_stride must be at least the bytes of an output row");
    return DISPCONV_OK;
}

// Only the 16-bit outputs read the settings record.
template <class Out>
constexpr bool reads_layout = false;
template <bool PairAverage>
constexpr bool reads_layout<RgbOutput<Rgb16, PairAverage>> = true;

template <class Out>
dispconv_status output_layout(const MIX_INFO& m, FootprintBuilder& f) {
    if constexpr (reads_layout<Out>)
        return check_rgb16_layout(f, m.surface_format, "surface_format is needed for rgb16_layout");
    return DISPCONV_OK;
}

// Two rows per pass sharing the frame's chroma row; an odd height mixes one row more.
template <class Out>
dispconv_status progressive(const MIX_INFO& m, FootprintBuilder& f) {
    if (dispconv_status s = block_width(m, mix_block, f)) return s;
    if (m.height <= 0) return f.refuse(DISPCONV_BAD_HEIGHT, "height must be positive");
    const Geometry g(m);
    // The second row of a pair is read at the halved stride doubled.
    if (g.sub % 2 != 0) return f.refuse(DISPCONV_BAD_STRIDE, "sub_stride must be even");
    if (!Out::frame_at_sub_spacing && g.frame % 2 != 0)
        return f.refuse(DISPCONV_BAD_STRIDE, "frame_stride must be even");
    if (dispconv_status s = strides_apart(g, Out::row_bytes(m.width), f)) return s;
    if (dispconv_status s = output_layout<Out>(m, f)) return s;

    const int64_t pairs = passes_while_positive(m.height, 2), rows = 2 * pairs;
    // Deliberate in the half mixer: the frame's second row and chroma rows at sub_stride.
    const int64_t frame_second_row = Out::frame_at_sub_spacing ? g.sub : g.frame;
    // The half mixer reads only the odd chroma sample of each pair: never the row's first byte.
    const int64_t chroma_begin = std::is_same_v<Out, HalfYuy2Output> ? 1 : 0;
    const int64_t w = g.width;
    f.read_rows(DISPCONV_BUFFER_FRAME_Y, 0, pairs, 2 * g.frame, 0, w);
    f.read_rows(DISPCONV_BUFFER_FRAME_Y, frame_second_row, pairs, 2 * g.frame, 0, w);
    for (dispconv_buffer b : {DISPCONV_BUFFER_FRAME_U, DISPCONV_BUFFER_FRAME_V})
        f.read_rows(b, 0, pairs, frame_second_row / 2, chroma_begin, w / 2);
    for (dispconv_buffer b : {DISPCONV_BUFFER_SUB_OPACITY, DISPCONV_BUFFER_SUB_Y}) f.read_rows(b, 0, rows, g.sub, 0, w);
    for (dispconv_buffer b : {DISPCONV_BUFFER_SUB_U, DISPCONV_BUFFER_SUB_V})
        f.read_rows(b, 0, rows, g.sub / 2, chroma_begin, w / 2);
    f.write_rows(DISPCONV_BUFFER_IMAGE, 0, rows, g.image, 0, Out::row_bytes(m.width));
    return DISPCONV_OK;
}

// One field doubled: height output and sub-picture rows, height / 2 field rows and height / 4
// field chroma rows (the last group of four reads nothing below the field).
template <class Out>
dispconv_status interlaced(const MIX_INFO& m, FootprintBuilder& f) {
    if (dispconv_status s = block_width(m, mix_block, f)) return s;
    // Below 4 the YUY2 mixer writes nothing; other heights off the group of four are rounded
    // (up or down), and in the RGB mixers they misplace every strip after the first.
    if (m.height < 4 || m.height % 4 != 0)
        return f.refuse(DISPCONV_BAD_HEIGHT, "height must be a positive multiple of 4");
    const Geometry g(m);
    // The RGB strips step back up by height * (frame_stride >> 3) for the field chroma.
    if (!std::is_same_v<Out, Yuy2Output> && g.frame % 8 != 0)
        return f.refuse(DISPCONV_BAD_STRIDE, "frame_stride must be a multiple of 8");
    if (dispconv_status s = strides_apart(g, Out::row_bytes(m.width), f)) return s;
    if (dispconv_status s = output_layout<Out>(m, f)) return s;

    const int64_t w = g.width, rows = g.height;
    f.read_rows(DISPCONV_BUFFER_FRAME_Y, 0, rows / 2, g.frame, 0, w);
    for (dispconv_buffer b : {DISPCONV_BUFFER_FRAME_U, DISPCONV_BUFFER_FRAME_V})
        f.read_rows(b, 0, rows / 4, g.frame >> 1, 0, w / 2);
    for (dispconv_buffer b : {DISPCONV_BUFFER_SUB_OPACITY, DISPCONV_BUFFER_SUB_Y}) f.read_rows(b, 0, rows, g.sub, 0, w);
    for (dispconv_buffer b : {DISPCONV_BUFFER_SUB_U, DISPCONV_BUFFER_SUB_V}) f.read_rows(b, 0, rows, g.sub >> 1, 0, w / 2);
    f.write_rows(DISPCONV_BUFFER_IMAGE, 0, rows, g.image, 0, Out::row_bytes(m.width));
    return DISPCONV_OK;
}

// Plane by plane into YV12: height rows of luma, height / 2 rows of each chroma plane (row r
// reading the sub-picture's chroma row 2r). A field has height / 2 luma and height / 4 chroma
// rows, and its last interpolated row of each plane reads the row after it.
template <bool Field>
dispconv_status yv12(const MIX_INFO& m, FootprintBuilder& f) {
    // Chroma rows of width / 2 samples must be whole blocks.
    if (dispconv_status s = block_width(m, 2 * yv12_block, f)) return s;
    if (Field && (m.height <= 0 || m.height % 4 != 0))
        return f.refuse(DISPCONV_BAD_HEIGHT, "height must be a positive multiple of 4");
    if (!Field && (m.height <= 0 || m.height % 2 != 0))
        return f.refuse(DISPCONV_BAD_HEIGHT, "height must be positive and even");
    const Geometry g(m);
    // Two sub-picture chroma rows are stepped as one sub_stride.
    if (g.sub % 2 != 0) return f.refuse(DISPCONV_BAD_STRIDE, "sub_stride must be even");
    if (dispconv_status s = strides_apart(g, g.width, f)) return s;

    const int64_t w = g.width, rows = g.height, chroma_rows = rows / 2;
    f.read_rows(DISPCONV_BUFFER_FRAME_Y, 0, Field ? rows / 2 + 1 : rows, g.frame, 0, w);
    for (dispconv_buffer b : {DISPCONV_BUFFER_FRAME_U, DISPCONV_BUFFER_FRAME_V})
        f.read_rows(b, 0, Field ? rows / 4 + 1 : chroma_rows, g.frame >> 1, 0, w / 2);
    for (dispconv_buffer b : {DISPCONV_BUFFER_SUB_OPACITY, DISPCONV_BUFFER_SUB_Y}) f.read_rows(b, 0, rows, g.sub, 0, w);
    for (dispconv_buffer b : {DISPCONV_BUFFER_SUB_U, DISPCONV_BUFFER_SUB_V}) f.read_rows(b, 0, chroma_rows, g.sub, 0, w / 2);
    f.write_rows(DISPCONV_BUFFER_IMAGE, 0, rows, g.image, 0, w);
    for (dispconv_buffer b : {DISPCONV_BUFFER_IMAGE_U, DISPCONV_BUFFER_IMAGE_V})
        f.write_rows(b, 0, chroma_rows, g.image >> 1, 0, w / 2);
    return DISPCONV_OK;
}

}  // namespace

dispconv_status mix_footprint(const dispconv_call& c, FootprintBuilder& f) {
    if (!c.info) return f.refuse(DISPCONV_BAD_ARGUMENT, "a MIX_INFO record is needed");
    const MIX_INFO& m = *c.info;
    switch (c.kernel) {
        case DISPCONV_KERNEL_mix_ayuy2_yuy2_p_ajust:
            return progressive<Yuy2Output>(m, f);
        case DISPCONV_KERNEL_mix_ayuy2_half_yuy2_p_ajust:
            return progressive<HalfYuy2Output>(m, f);
        case DISPCONV_KERNEL_mix_ayuy2_rgb32_p_ajust:
            return progressive<RgbOutput<Rgb32>>(m, f);
        case DISPCONV_KERNEL_mix_ayuy2_rgb24_p_ajust:
            return progressive<RgbOutput<Rgb24>>(m, f);
        case DISPCONV_KERNEL_mix_ayuy2_rgb16_p_ajust:
            return progressive<RgbOutput<Rgb16>>(m, f);
        case DISPCONV_KERNEL_mix_ayuy2_yuy2_i_ajust:
            return interlaced<Yuy2Output>(m, f);
        case DISPCONV_KERNEL_mix_ayuy2_rgb32_i_ajust:
            return interlaced<RgbOutput<Rgb32, true>>(m, f);
        case DISPCONV_KERNEL_mix_ayuy2_rgb24_i_ajust:
            return interlaced<RgbOutput<Rgb24, true>>(m, f);
        case DISPCONV_KERNEL_mix_ayuy2_rgb16_i_ajust:
            return interlaced<RgbOutput<Rgb16, true>>(m, f);
        case DISPCONV_KERNEL_mix_ayv12_yv12_p:
        case DISPCONV_KERNEL_mix_ayv12_yv12_p_ajust:
            return yv12<false>(m, f);
        case DISPCONV_KERNEL_mix_ayv12_yv12_i:
            return yv12<true>(m, f);
        default:
            return f.refuse(DISPCONV_BAD_ARGUMENT, "footprint not known for this kernel");
    }
}

}  // namespace dispconv
