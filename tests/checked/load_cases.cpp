// Calls inside and outside the contract of the frame-loading kernels.
#include <algorithm>

#include "checked/checked_support.hpp"

namespace dispconv::test {

namespace {

CheckedCall frame_call(dispconv_kernel k, int32_t width, int32_t height, int32_t src_stride, int32_t dst_stride,
                       int32_t layout = 0) {
    CheckedCall c;
    c.kernel = k, c.width = width, c.height = height, c.src_stride = src_stride, c.dst_stride = dst_stride;
    c.settings.rgb16_layout = layout;
    c.settings.dst_luma_height = c.settings.dst_plane_height = height;
    return c;
}

// The kernels that walk row pairs with src_stride and dst_stride as plain row distances.
struct RowPairKernel {
    dispconv_kernel kernel;
    int32_t block;      // pixels per step: width must be a multiple
    int32_t dst_bytes;  // destination bytes per source pixel
    bool halved_chroma; // chroma rows src_stride / 2 apart: src_stride must be even
    bool layout;        // reads rgb16_layout
};
const RowPairKernel row_pair_kernels[] = {
    {DISPCONV_KERNEL_LoadYUY2_YUY2, 8, 2, false, false},
    {DISPCONV_KERNEL_LoadYUY2_YUY2_adjust, 8, 2, false, false},
    {DISPCONV_KERNEL_LoadYUY2_RGB32, 16, 4, false, false},
    {DISPCONV_KERNEL_LoadYUY2_RGB32_adjust, 16, 4, false, false},
    {DISPCONV_KERNEL_LoadYUY2_RGB24, 16, 3, false, false},
    {DISPCONV_KERNEL_LoadYUY2_RGB24_adjust, 16, 3, false, false},
    {DISPCONV_KERNEL_LoadYUY2_RGB16, 16, 2, false, true},
    {DISPCONV_KERNEL_LoadYUY2_RGB16_adjust, 16, 2, false, true},
    {DISPCONV_KERNEL_loadimage_yuy2, 16, 2, true, false},
    {DISPCONV_KERNEL_loadimage_yuy2_mono_ajust, 16, 2, false, false},
    {DISPCONV_KERNEL_loadimage_half_yuy2_ajust, 16, 1, true, false},
    {DISPCONV_KERNEL_loadimage_rgb32, 16, 4, true, false},
    {DISPCONV_KERNEL_loadimage_rgb32_ajust, 16, 4, true, false},
    {DISPCONV_KERNEL_loadimage_rgb24, 16, 3, true, false},
    {DISPCONV_KERNEL_loadimage_rgb24_ajust, 16, 3, true, false},
    {DISPCONV_KERNEL_loadimage_rgb16, 16, 2, true, true},
    {DISPCONV_KERNEL_loadimage_rgb16_ajust, 16, 2, true, true},
};

// A geometry in blocks (or pixels for `width_px`), row padding and direction of each buffer.
struct Shape {
    int32_t blocks, width_px, height;
    int32_t src_pad, dst_pad;  // src_pad even: the planar sources need an even stride
    int src_sign, dst_sign;
};
const Shape row_pair_shapes[] = {
    {1, 0, 1, 0, 0, 1, 1},     // one block, one row (a pair is written)
    {3, 0, 5, 8, 6, 1, 1},     // odd height, padded rows
    {2, 0, 4, 0, 8, 1, -1},    // bottom-up surface
    {1, 0, 2, 2, 0, -1, 1},    // bottom-up source
    {0, 720, 3, 0, 0, 1, 1},   // realistic width, odd height
};
// loadimage_yuy2_ajust: even heights above 8 only.
const Shape adjusted_yuy2_shapes[] = {
    {1, 0, 10, 0, 0, 1, 1},
    {3, 0, 12, 8, 6, 1, 1},
    {2, 0, 10, 4, 8, -1, -1},
    {0, 720, 10, 0, 0, 1, 1},
};

CheckedCall shaped(const RowPairKernel& k, const Shape& s, int32_t layout) {
    const int32_t w = s.width_px ? s.width_px : s.blocks * k.block;
    return frame_call(k.kernel, w, s.height, s.src_sign * (w + s.src_pad), s.dst_sign * (w * k.dst_bytes + s.dst_pad),
                      layout);
}

// The YV12 destinations: width, height, strides, and for loadimage_yv12_ajust the destination
// luma and plane heights.
struct Yv12Shape {
    int32_t width, height, src_stride, dst_stride, luma_rows, plane_rows;
};
CheckedCall yv12_call(dispconv_kernel k, const Yv12Shape& s) {
    CheckedCall c = frame_call(k, s.width, s.height, s.src_stride, s.dst_stride);
    c.settings.dst_luma_height = s.luma_rows, c.settings.dst_plane_height = s.plane_rows;
    return c;
}
struct Yv12Kernel {
    dispconv_kernel kernel;
    std::vector<Yv12Shape> shapes;
};
const Yv12Kernel yv12_contract[] = {
    {DISPCONV_KERNEL_loadimage_yv12, {{16, 2, 16, 16, 2, 2}, {48, 4, 48, 64, 4, 4}, {32, 6, 32, 34, 6, 6},
                                      {720, 4, 720, 720, 4, 4}}},
    {DISPCONV_KERNEL_loadimage_yv12_ajust, {{16, 2, 16, 16, 2, 2}, {48, 6, 48, 64, 6, 8}, {32, 4, 32, 40, 5, 7},
                                            {720, 4, 720, 720, 4, 4}}},
    {DISPCONV_KERNEL_loadimage_half_yv12_ajust, {{32, 2, 32, 16, 2, 2}, {48, 6, 64, 30, 6, 6},
                                                 {32, 4, -32, 16, 4, 4}, {720, 4, 720, 360, 4, 4}}},
};

}  // namespace

std::vector<CheckedCall> load_contract_calls() {
    std::vector<CheckedCall> calls;
    for (const RowPairKernel& k : row_pair_kernels) {
        int layout = 0;  // cycles through every 16-bit layout
        for (const Shape& s : row_pair_shapes) calls.push_back(shaped(k, s, layout++ % 4));
    }
    // The luma-only member never reads chroma, so an odd source stride is fine.
    calls.push_back(frame_call(DISPCONV_KERNEL_loadimage_yuy2_mono_ajust, 32, 3, 33, 64));
    const RowPairKernel adjusted_yuy2{DISPCONV_KERNEL_loadimage_yuy2_ajust, 16, 2, true, false};
    for (const Shape& s : adjusted_yuy2_shapes) calls.push_back(shaped(adjusted_yuy2, s, 0));
    for (const Yv12Kernel& k : yv12_contract)
        for (const Yv12Shape& s : k.shapes) calls.push_back(yv12_call(k.kernel, s));
    return calls;
}

std::vector<BadCall> load_bad_calls() {
    std::vector<BadCall> bad;
    auto add_row_pair_bad = [&](const RowPairKernel& k, int32_t good_height) {
        const int32_t w = 2 * k.block, b = k.block, src = w, dst = w * k.dst_bytes;
        auto call = [&](int32_t width, int32_t height, int32_t s, int32_t d, int32_t layout = 0) {
            return frame_call(k.kernel, width, height, s, d, layout);
        };
        bad.push_back({call(b + b / 2, good_height, 4 * b, 4 * b * k.dst_bytes), Status::bad_width});
        bad.push_back({call(0, good_height, src, dst), Status::bad_width});
        bad.push_back({call(-b, good_height, src, dst), Status::bad_width});
        bad.push_back({call(w, 0, src, dst), Status::bad_height});
        bad.push_back({call(w, -2, src, dst), Status::bad_height});
        bad.push_back({call(w, good_height, w - 2, dst), Status::bad_stride});
        bad.push_back({call(w, good_height, -(w - 2), dst), Status::bad_stride});
        bad.push_back({call(w, good_height, 0, dst), Status::bad_stride});
        bad.push_back({call(w, good_height, src, dst - 1), Status::bad_stride});
        bad.push_back({call(w, good_height, src, -(dst - 1)), Status::bad_stride});
        if (k.halved_chroma) bad.push_back({call(w, good_height, w + 1, dst), Status::bad_stride});
        if (k.layout) {
            bad.push_back({call(w, good_height, src, dst, 4), Status::bad_layout});
            bad.push_back({call(w, good_height, src, dst, -1), Status::bad_layout});
            bad.push_back(without_settings(call(w, good_height, src, dst)));
        }
    };
    for (const RowPairKernel& k : row_pair_kernels) add_row_pair_bad(k, 2);

    const RowPairKernel adjusted_yuy2{DISPCONV_KERNEL_loadimage_yuy2_ajust, 16, 2, true, false};
    add_row_pair_bad(adjusted_yuy2, 10);
    for (int32_t h : {8, 11, 7, 2})
        bad.push_back({frame_call(adjusted_yuy2.kernel, 16, h, 16, 32), Status::bad_height});

    for (dispconv_kernel k : {DISPCONV_KERNEL_loadimage_yv12, DISPCONV_KERNEL_loadimage_yv12_ajust}) {
        auto call = [&](Yv12Shape s) { return yv12_call(k, s); };
        bad.push_back({call({24, 2, 24, 32, 2, 2}), Status::bad_width});
        bad.push_back({call({0, 2, 0, 32, 2, 2}), Status::bad_width});
        bad.push_back({call({16, 3, 16, 16, 4, 4}), Status::bad_height});
        bad.push_back({call({16, 0, 16, 16, 2, 2}), Status::bad_height});
        bad.push_back({call({32, 2, 48, 32, 2, 2}), Status::bad_stride});  // padded source rows
        bad.push_back({call({32, 2, -32, 32, 2, 2}), Status::bad_stride});
        bad.push_back({call({32, 2, 32, 30, 2, 2}), Status::bad_stride});
        bad.push_back({call({32, 2, 32, 33, 2, 2}), Status::bad_stride});  // halved for chroma
        bad.push_back({call({32, 2, 32, -32, 2, 2}), Status::bad_stride});
    }
    auto yv12_adjusted = [](Yv12Shape s) { return yv12_call(DISPCONV_KERNEL_loadimage_yv12_ajust, s); };
    bad.push_back({yv12_adjusted({32, 4, 32, 32, 3, 4}), Status::bad_argument});  // chroma over the luma
    bad.push_back({yv12_adjusted({32, 4, 32, 32, 6, 5}), Status::bad_argument});
    bad.push_back(without_settings(yv12_adjusted({32, 4, 32, 32, 4, 6})));

    auto half = [](Yv12Shape s) { return yv12_call(DISPCONV_KERNEL_loadimage_half_yv12_ajust, s); };
    for (int32_t w : {16, 40, 0, -32}) bad.push_back({half({w, 2, 64, 32, 2, 2}), Status::bad_width});
    for (int32_t h : {3, 0, -2}) bad.push_back({half({32, h, 32, 16, 2, 2}), Status::bad_height});
    const int32_t half_strides[][2] = {{33, 16}, {30, 16}, {-30, 16}, {32, 14}, {32, 17}, {32, -16}};
    for (const auto& [s, d] : half_strides) bad.push_back({half({32, 2, s, d, 2, 2}), Status::bad_stride});
    return bad;
}

}  // namespace dispconv::test
