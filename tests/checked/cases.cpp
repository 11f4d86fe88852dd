// Calls inside each kernel's contract and outside it, made from the catalogue: a spread of
// geometries per kernel, the contract's edges crossed one at a time, and a short list of what
// is particular to a kernel.
#include "checked/checked_support.hpp"

namespace dispconv::test {

CheckedCall make_call(dispconv_kernel k, int32_t width, int32_t height, int pad, int sign, int32_t layout) {
    const KernelFacts& f = facts(k);
    auto stride = [&](int64_t row, bool positive, bool even_pad) {
        return int32_t((positive ? 1 : sign) * (row + (even_pad ? pad & ~1 : pad)));
    };
    CheckedCall c;
    c.kernel = k;
    c.settings = settings();
    c.settings.rgb16_layout = layout;
    c.settings.dst_luma_height = c.settings.dst_plane_height = height;
    c.color_key = 0x00123456, c.mask_value = 7, c.key_value = 0xEE;
    if (f.shape == Shape::record) {
        MIX_INFO& m = c.info;
        m.width = width, m.height = height, m.color_key = 0x00123456;
        m.frame_stride = f.src_x2 ? stride(width, f.has(positive_src), true) : 0;
        if (f.has(field_groups)) m.frame_stride = sign * (width + (pad ? 8 : 0));
        if (f.has(stride_is_width)) m.frame_stride = width, m.width = 7;
        m.sub_stride = f.dst_x2 ? stride(width, f.has(positive_dst), true) : 0;
        m.image_stride = stride(f.image_row(width), f.has(positive_image), false);
        return c;
    }
    c.width = width, c.height = height, c.plane = f.has(plane_choice) ? 1 : 0;
    if (f.src_x2) c.src_stride = f.has(src_is_width) ? width : stride(width, f.has(positive_src), f.has(even_src));
    c.dst_stride = stride(f.dst_row(width), f.has(positive_dst), f.has(even_dst));
    if (f.shape == Shape::edge_directed) c.frame_width = width;
    return c;
}

namespace {

// Heights: the least, and a larger one of the right parity (odd where any parity goes).
int32_t taller(const KernelFacts& f) { return f.parity == 1 ? (f.min_height | 1) + 2 : f.min_height + 2 * f.parity; }
int32_t realistic_width(const KernelFacts& f) {
    const int32_t w = f.shape == Shape::packed_2x2 ? 1440 : 720;
    return (w + f.block - 1) / f.block * f.block;
}

CheckedCall with(CheckedCall c, int32_t CheckedCall::*field, int32_t value) { return c.*field = value, c; }
CheckedCall with(CheckedCall c, int32_t MIX_INFO::*field, int32_t value) { return c.info.*field = value, c; }

}  // namespace

std::vector<CheckedCall> contract_calls() {
    std::vector<CheckedCall> all;
    for (int i = 0; i < DISPCONV_KERNEL_COUNT; ++i) {
        const auto k = dispconv_kernel(i);
        const KernelFacts& f = facts(k);
        const int32_t wide = f.least_width + std::max(f.block, 16);
        // Tight at the least geometry; padded; bottom-up where allowed; realistic; each layout.
        all.push_back(make_call(k, f.least_width, f.min_height, 0, 1, 0));
        all.push_back(make_call(k, wide, taller(f), 10, 1, 1));
        all.push_back(make_call(k, wide, taller(f), 6, -1, 2));
        all.push_back(make_call(k, realistic_width(f), f.min_height, 0, 1, 3));
        if (f.has(plane_choice))
            for (int32_t plane : {2, 3}) all.push_back(with(make_call(k, wide, taller(f), 8, 1, 0), &CheckedCall::plane, plane));
    }
    // What is particular to one kernel.
    using K = dispconv_kernel;
    const auto call = [](K k, int32_t w, int32_t h, int pad = 0, int sign = 1) { return make_call(k, w, h, pad, sign, 0); };
    all.push_back(with(call(DISPCONV_KERNEL_loadimage_yuy2_mono_ajust, 32, 3), &CheckedCall::src_stride, 33));  // no chroma rows
    for (auto [luma, plane] : {std::pair{5, 7}, std::pair{6, 8}}) {  // chroma planes placed below more rows
        CheckedCall c = call(DISPCONV_KERNEL_loadimage_yv12_ajust, 32, 4, 8);
        c.settings.dst_luma_height = luma, c.settings.dst_plane_height = plane;
        all.push_back(c);
    }
    all.push_back(with(call(DISPCONV_KERNEL_strech_pic_1X2_adjust, 360, 2), &CheckedCall::src_stride, 368));  // off the block
    for (auto [structure, start, height] : {std::tuple{1, 0, 8}, std::tuple{1, 1, 9}, std::tuple{0, 3, 8}, std::tuple{2, 5, 11}}) {
        CheckedCall c = call(DISPCONV_KERNEL_strech_opt_yuy2_ajust, 64, height, 4, structure == 1 ? -1 : 1);
        c.frame_structure = structure, c.start_line = start;
        all.push_back(c);
    }
    all.push_back(call(DISPCONV_KERNEL_strech_opt_yuy2_ajust, 512, 8));  // a last run of 30 edge-directed blocks
    for (K k : {DISPCONV_KERNEL_Restore_RGB24_To_Alpha, DISPCONV_KERNEL_load_subpicture_alpha_rgb16_565})
        all.push_back(with(call(k, 32, 4), &MIX_INFO::frame_stride, 45));  // odd: the opacity step rounds down
    all.push_back(with(call(DISPCONV_KERNEL_Convert_RGB24_To_AYUY2, 16, 4, 12), &MIX_INFO::sub_stride, 37));
    // The half mixer steps the frame's second row and chroma rows by sub_stride.
    all.push_back(with(with(call(DISPCONV_KERNEL_mix_ayuy2_half_yuy2_p_ajust, 32, 4), &MIX_INFO::frame_stride, 96),
                       &MIX_INFO::sub_stride, 34));
    all.push_back(with(call(DISPCONV_KERNEL_mix_ayuy2_half_yuy2_p_ajust, 32, 3, 2), &MIX_INFO::frame_stride, 33));
    for (K k : {DISPCONV_KERNEL_mix_ayuy2_yuy2_i_ajust, DISPCONV_KERNEL_mix_ayv12_yv12_i, DISPCONV_KERNEL_mix_ayv12_yv12_p})
        all.push_back(with(with(call(k, 32, 8, 6, -1), &MIX_INFO::frame_stride, -35), &MIX_INFO::image_stride, -(int32_t(facts(k).image_row(32)) + 3)));
    return all;
}

std::vector<BadCall> bad_calls() {
    std::vector<BadCall> bad;
    for (int i = 0; i < DISPCONV_KERNEL_COUNT; ++i) {
        const auto k = dispconv_kernel(i);
        const KernelFacts& f = facts(k);
        const bool record = f.shape == Shape::record;
        const int32_t w = f.least_width + std::max(f.block, 16), h = taller(f);
        const CheckedCall good = make_call(k, w, h, 8, 1, 0);
        auto add = [&](CheckedCall c, Status s) { bad.push_back({c, s}); };

        // Width off the block by one either way, zero, negative, below the least.
        std::vector<int32_t> widths = {0, -w};
        if (f.block > 1) widths.insert(widths.end(), {w + 1, w - 1});
        if (f.least_width > f.block) widths.push_back(f.least_width - f.block);
        for (int32_t width : widths) {
            if (f.has(stride_is_width)) add(with(good, &MIX_INFO::frame_stride, width), Status::bad_stride);
            else if (record) add(with(good, &MIX_INFO::width, width), Status::bad_width);
            else if (f.shape == Shape::edge_directed) add(with(good, &CheckedCall::frame_width, width), Status::bad_width);
            else {
                CheckedCall c = with(good, &CheckedCall::width, width);
                if (f.has(src_is_width)) c.src_stride = width;
                add(c, Status::bad_width);
            }
        }
        // Height below the least, of the wrong parity, zero, negative.
        std::vector<int32_t> heights = {0, -f.parity};
        if (f.min_height > 1) heights.push_back(f.min_height - 1);
        for (int32_t p = 1; p < f.parity; ++p) heights.push_back(f.min_height + p);
        for (int32_t height : heights) {
            CheckedCall c = record ? with(good, &MIX_INFO::height, height) : with(good, &CheckedCall::height, height);
            c.settings.dst_luma_height = c.settings.dst_plane_height = height;
            add(c, Status::bad_height);
        }
        // Each stride a byte short of its row, negated (or negative where it must be positive),
        // odd where it is halved, off the width where it must equal it.
        auto strides = [&](auto field, int64_t row, bool positive, bool even, bool equal) {
            std::vector<int64_t> values = {row - 1, positive ? -row : -(row - 1)};
            if (even) values.push_back(row + 1);
            if (equal) values = {row + 16};
            for (int64_t v : values) add(with(good, field, int32_t(v)), Status::bad_stride);
        };
        if (record) {
            if (f.src_x2 && !f.has(stride_is_width))
                strides(&MIX_INFO::frame_stride, w, f.has(positive_src), f.has(even_frame), false);
            if (f.has(field_groups)) add(with(good, &MIX_INFO::frame_stride, w + 4), Status::bad_stride);
            if (f.dst_x2) strides(&MIX_INFO::sub_stride, w, f.has(positive_dst), f.has(even_sub), false);
            strides(&MIX_INFO::image_stride, f.image_row(w), f.has(positive_image), false, false);
        } else {
            if (f.src_x2) strides(&CheckedCall::src_stride, w, f.has(positive_src), f.has(even_src), f.has(src_is_width));
            strides(&CheckedCall::dst_stride, f.dst_row(w), f.has(positive_dst), f.has(even_dst), false);
        }
        // A 16-bit layout outside 0..3; a missing settings record; a plane outside 1..3.
        if (f.has(layout)) {
            for (int32_t l : {4, -1}) {
                CheckedCall c = good;
                c.settings.rgb16_layout = l;
                add(c, Status::bad_layout);
            }
        }
        if (f.has(layout) || f.has(placement)) {
            CheckedCall c = good;
            c.no_settings = true;
            add(c, Status::bad_argument);
        }
        if (f.has(plane_choice))
            for (int32_t plane : {0, 4}) add(with(good, &CheckedCall::plane, plane), Status::bad_argument);
    }
    // What is particular to one kernel.
    CheckedCall over = make_call(DISPCONV_KERNEL_loadimage_yv12_ajust, 32, 4, 0, 1, 0);
    over.settings.dst_luma_height = 3;  // the chroma planes would overlap the luma plane
    bad.push_back({over, Status::bad_argument});
    bad.push_back({with(make_call(DISPCONV_KERNEL_strech_opt_yuy2_ajust, 64, 8, 0, 1, 0), &CheckedCall::start_line, -1),
                   Status::bad_argument});
    CheckedCall unknown = make_call(DISPCONV_KERNEL_LoadYUY2_YUY2, 16, 2, 0, 1, 0);
    unknown.kernel = DISPCONV_KERNEL_COUNT;
    bad.push_back({unknown, Status::bad_argument});
    return bad;
}

}  // namespace dispconv::test
