// Calls inside and outside the contract of the stretch kernels.
#include "checked/checked_support.hpp"

namespace dispconv::test {

namespace {

using K = dispconv_kernel;

CheckedCall call(K k, int32_t width, int32_t height, int32_t src_stride, int32_t dst_stride, int32_t plane = 0,
                 int32_t layout = 0) {
    CheckedCall c;
    c.kernel = k, c.width = width, c.height = height, c.src_stride = src_stride, c.dst_stride = dst_stride;
    c.plane = plane;
    c.settings.luma_gain = 64, c.settings.chroma_gain = 64, c.settings.rgb16_layout = layout;
    return c;
}

CheckedCall edge_call(int32_t frame_width, int32_t structure, int32_t start_line, int32_t height, int32_t dst_stride) {
    CheckedCall c = call(DISPCONV_KERNEL_strech_opt_yuy2_ajust, 0, height, 0, dst_stride);
    c.frame_width = frame_width, c.frame_structure = structure, c.start_line = start_line;
    return c;
}

// The planar frame stretchers: destination bytes per source pixel, least width and height.
struct FrameKernel {
    K kernel;
    int32_t dst_bytes, least_width, least_height;
};
const FrameKernel frame_kernels[] = {
    {DISPCONV_KERNEL_strech_picture_1X2_yuy2, 2, 16, 8},
    {DISPCONV_KERNEL_strech_picture_1X2_yuy2_ajust, 2, 16, 8},
    {DISPCONV_KERNEL_strech_picture_1X2_yuy2_ajust_rgb32, 4, 16, 12},
    {DISPCONV_KERNEL_strech_picture_1X2_yuy2_ajust_rgb24, 3, 16, 12},
    {DISPCONV_KERNEL_strech_picture_1X2_yuy2_ajust_rgb16, 2, 16, 12},
    {DISPCONV_KERNEL_strech_picture_2X2_yuy2, 4, 32, 8},
    {DISPCONV_KERNEL_strech_picture_2X2_yuy2_ajust, 4, 32, 8},
};
const K packed_kernels[] = {DISPCONV_KERNEL_yuy2_strech_picture_2X2_yuy2,
                            DISPCONV_KERNEL_yuy2_strech_picture_2X2_yuy2_ajust};
const K yv12_kernels[] = {DISPCONV_KERNEL_strech_picture_2X2_yv12_ajust,
                          DISPCONV_KERNEL_strech_picture_1X2_yv12_ajust};

bool is_rgb16(K k) { return k == DISPCONV_KERNEL_strech_picture_1X2_yuy2_ajust_rgb16; }
// Destination bytes per source sample of the plane kernels and their YV12 wrappers.
int32_t plane_scale(K k) {
    return k == DISPCONV_KERNEL_strech_pic_1X2_adjust || k == DISPCONV_KERNEL_strech_picture_1X2_yv12_ajust ? 1 : 2;
}

}  // namespace

std::vector<CheckedCall> stretch_contract_calls() {
    std::vector<CheckedCall> calls;
    for (const FrameKernel& f : frame_kernels) {
        const int32_t w = f.least_width, h = f.least_height, b = f.dst_bytes;
        for (int32_t layout = 0; layout < (is_rgb16(f.kernel) ? 4 : 1); ++layout) {
            // Smallest geometry; an odd height (one more source row) with padded strides, bottom-up.
            calls.push_back(call(f.kernel, w, h, w, w * b, 0, layout));
            calls.push_back(call(f.kernel, w + 16, h + 1, w + 32, -((w + 16) * b + 8), 0, layout));
        }
        calls.push_back(call(f.kernel, 720, h, 720, 720 * b));
        calls.push_back(call(f.kernel, 48, h + 2, 50, 48 * b + 4));
    }
    // Source width in bytes, rows back to back.
    for (K k : packed_kernels) {
        calls.push_back(call(k, 64, 16, 0, 128));
        calls.push_back(call(k, 96, 17, 0, -(192 + 8)));
        calls.push_back(call(k, 1440, 16, 0, 2880));
    }
    // One row below the picture is written by every strip but the last.
    calls.push_back(call(DISPCONV_KERNEL_strech_pic_2X2, 16, 1, 16, 32));
    calls.push_back(call(DISPCONV_KERNEL_strech_pic_2X2, 24, 5, -(32 + 3), -(48 + 3)));
    calls.push_back(call(DISPCONV_KERNEL_strech_pic_2X2, 720, 3, 720, 1440));
    for (int32_t plane = 1; plane <= 3; ++plane) {
        // Source rows width apart, each read with the byte after it.
        calls.push_back(call(DISPCONV_KERNEL_strech_pic_2X2_adjust, 16, 2, 16, 32, plane));
        calls.push_back(call(DISPCONV_KERNEL_strech_pic_2X2_adjust, 48, 5, 48, 96 + 8, plane));
        calls.push_back(call(DISPCONV_KERNEL_strech_pic_2X2_adjust, 720, 3, 720, 1440, plane));
        calls.push_back(call(DISPCONV_KERNEL_strech_pic_1X2_adjust, 16, 2, 16, 16, plane));
        calls.push_back(call(DISPCONV_KERNEL_strech_pic_1X2_adjust, 48, 5, -(48 + 5), 48 + 24, plane));
        calls.push_back(call(DISPCONV_KERNEL_strech_pic_1X2_adjust, 720, 3, 720, 720, plane));
        // Off the block: the last block moves back to end at the row's end.
        calls.push_back(call(DISPCONV_KERNEL_strech_pic_1X2_adjust, 360, 2, 368, 360, plane));
    }
    for (K k : yv12_kernels) {
        const int32_t s = plane_scale(k);
        const bool one_by_two = s == 1;
        calls.push_back(call(k, 32, 4, 32, 32 * s));
        calls.push_back(call(k, 64, 6, one_by_two ? -80 : 64, 64 * s + 6));
        // The double-height wrapper takes 720 (chroma planes of 360); the other needs 32s.
        calls.push_back(one_by_two ? call(k, 720, 4, 720, 720) : call(k, 1280, 4, 1280, 2560));
    }
    // Progressive and field starts, including the chroma start inside a chroma row.
    calls.push_back(edge_call(48, 0, 0, 8, 96));
    calls.push_back(edge_call(48, 1, 0, 8, 96 + 16));
    calls.push_back(edge_call(64, 1, 1, 9, -(128 + 4)));
    calls.push_back(edge_call(720, 0, 3, 8, 1440));
    calls.push_back(edge_call(96, 2, 5, 11, 192));
    return calls;
}

std::vector<BadCall> stretch_bad_calls() {
    std::vector<BadCall> bad;
    for (const FrameKernel& f : frame_kernels) {
        const K k = f.kernel;
        const int32_t w = 2 * f.least_width, h = f.least_height, row = w * f.dst_bytes;
        for (int32_t width : {f.least_width - 16, w + 8, 0, -w})
            bad.push_back({call(k, width, h, 2 * w, 4 * row), Status::bad_width});
        for (int32_t height : {h - 1, 0, -h})
            bad.push_back({call(k, w, height, w, row), Status::bad_height});
        for (int32_t src_stride : {w - 2, w + 1, -w, 0})
            bad.push_back({call(k, w, h, src_stride, row), Status::bad_stride});
        for (int32_t dst_stride : {row - 1, 0, -(row - 1)})
            bad.push_back({call(k, w, h, w, dst_stride), Status::bad_stride});
        if (is_rgb16(k)) {
            for (int32_t layout : {4, -1})
                bad.push_back({call(k, w, h, w, row, 0, layout), Status::bad_layout});
            bad.push_back(without_settings(call(k, w, h, w, row)));
        }
    }
    for (K k : packed_kernels) {
        for (int32_t width : {48, 32, 80, 0, -64}) bad.push_back({call(k, width, 16, 0, 256), Status::bad_width});
        for (int32_t height : {15, 0, -16}) bad.push_back({call(k, 64, height, 0, 128), Status::bad_height});
        for (int32_t dst_stride : {127, 0, -127}) bad.push_back({call(k, 64, 16, 0, dst_stride), Status::bad_stride});
    }
    const K pic = DISPCONV_KERNEL_strech_pic_2X2;
    for (int32_t width : {8, 12, 20, 0, -16}) bad.push_back({call(pic, width, 2, 32, 64), Status::bad_width});
    for (int32_t height : {0, -1}) bad.push_back({call(pic, 16, height, 16, 32), Status::bad_height});
    bad.push_back({call(pic, 16, 2, 15, 32), Status::bad_stride});
    bad.push_back({call(pic, 16, 2, -15, 32), Status::bad_stride});
    bad.push_back({call(pic, 16, 2, 16, 31), Status::bad_stride});
    bad.push_back({call(pic, 16, 2, 16, -31), Status::bad_stride});
    for (K k : {DISPCONV_KERNEL_strech_pic_2X2_adjust, DISPCONV_KERNEL_strech_pic_1X2_adjust}) {
        const int32_t s = plane_scale(k), row = 32 * s;
        for (int32_t width : {s == 2 ? 24 : 15, 8, 0, -16})
            bad.push_back({call(k, width, 2, 32, 64 * s, 1), Status::bad_width});
        for (int32_t height : {1, 0, -2}) bad.push_back({call(k, 32, height, 32, row, 1), Status::bad_height});
        // The stretcher that doubles the width takes its source rows width bytes apart.
        for (int32_t src_stride : {31, s == 2 ? 48 : -31})
            bad.push_back({call(k, 32, 2, src_stride, row, 1), Status::bad_stride});
        // The last row's extra copy goes forward in memory: no bottom-up destination.
        for (int32_t dst_stride : {row - 1, 0, -row})
            bad.push_back({call(k, 32, 2, 32, dst_stride, 1), Status::bad_stride});
        for (int32_t plane : {0, 4, -1}) bad.push_back({call(k, 32, 2, 32, row, plane), Status::bad_argument});
    }
    for (K k : yv12_kernels) {
        const int32_t s = plane_scale(k), row = 64 * s;
        // Chroma planes of half the width: whole blocks of 16 where the walk drifts, 16 at least.
        for (int32_t width : {s == 2 ? 48 : 33, 16, 0, -64})
            bad.push_back({call(k, width, 4, 64, 128 * s), Status::bad_width});
        for (int32_t height : {2, 5, 0, -4}) bad.push_back({call(k, 64, height, 64, row), Status::bad_height});
        for (int32_t src_stride : {62, 65, s == 2 ? 128 : 0})
            bad.push_back({call(k, 64, 4, src_stride, row), Status::bad_stride});
        for (int32_t dst_stride : {row - 2, row + 1, -row, 0})
            bad.push_back({call(k, 64, 4, 64, dst_stride), Status::bad_stride});
    }
    for (int32_t frame_width : {32, 40, 16, 0, -48})
        bad.push_back({edge_call(frame_width, 0, 0, 8, 256), Status::bad_width});
    for (int32_t height : {7, 0, -8}) bad.push_back({edge_call(48, 0, 0, height, 96), Status::bad_height});
    bad.push_back({edge_call(48, 1, -1, 8, 96), Status::bad_argument});
    for (int32_t dst_stride : {95, 0, -95}) bad.push_back({edge_call(48, 1, 0, 8, dst_stride), Status::bad_stride});
    return bad;
}

}  // namespace dispconv::test
