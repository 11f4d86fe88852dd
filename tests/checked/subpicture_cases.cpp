// Calls inside and outside the contract of the sub-picture and colour-key kernels.
#include <algorithm>
#include <span>
#include <vector>

#include "checked/checked_support.hpp"

namespace dispconv::test {

namespace {

CheckedCall fill_call(dispconv_kernel k, int32_t width, int32_t height, int32_t stride) {
    CheckedCall c;
    c.kernel = k, c.width = width, c.height = height, c.dst_stride = stride;
    c.color_key = 0x00123456, c.mask_value = 7, c.key_value = 0xEE;
    return c;
}

const dispconv_kernel color_key_kernels[] = {DISPCONV_KERNEL_LoadColorKeyRgb32, DISPCONV_KERNEL_LoadColorKeyRgb24,
                                             DISPCONV_KERNEL_LoadColorKeyRgb16, DISPCONV_KERNEL_RelaceMaskWithColorKey};
int bytes_per_pixel(dispconv_kernel k) {
    return k == DISPCONV_KERNEL_LoadColorKeyRgb32 ? 4 : k == DISPCONV_KERNEL_LoadColorKeyRgb24 ? 3
         : k == DISPCONV_KERNEL_LoadColorKeyRgb16 ? 2 : 1;
}

// Record kernels: the geometry fields of MIX_INFO; settings carry rgb16_layout.
CheckedCall record_call(dispconv_kernel k, int32_t width, int32_t height, int32_t frame_stride,
                        int32_t sub_stride, int32_t image_stride, int32_t layout = 0) {
    CheckedCall c;
    c.kernel = k;
    c.info.width = width, c.info.height = height, c.info.frame_stride = frame_stride;
    c.info.sub_stride = sub_stride, c.info.image_stride = image_stride;
    c.info.color_key = 0x00123456;
    c.settings.rgb16_layout = layout;
    return c;
}

struct RecordKernel {
    dispconv_kernel kernel;
    int block, bpp;
};

const RecordKernel convert_kernels[] = {{DISPCONV_KERNEL_Convert_RGB32_To_AYUY2, 8, 4},
                                        {DISPCONV_KERNEL_Convert_RGB24_To_AYUY2, 8, 3},
                                        {DISPCONV_KERNEL_Convert_RGB16_565_To_AYUY2, 8, 2}};
const RecordKernel alpha_kernels[] = {{DISPCONV_KERNEL_Restore_RGB32_To_Alpha, 8, 4},
                                      {DISPCONV_KERNEL_Restore_RGB24_To_Alpha, 8, 3},
                                      {DISPCONV_KERNEL_Restore_RGB16_565_To_Alpha, 16, 2},
                                      {DISPCONV_KERNEL_load_subpicture_alpha_rgb32, 16, 4},
                                      {DISPCONV_KERNEL_load_subpicture_alpha_rgb24, 16, 3},
                                      {DISPCONV_KERNEL_load_subpicture_alpha_rgb16_565, 16, 2}};
const RecordKernel to_rgb_kernels[] = {{DISPCONV_KERNEL_load_subpicture_yuy2_rgb32, 16, 4},
                                       {DISPCONV_KERNEL_load_subpicture_yuy2_rgb32_ajust, 16, 4},
                                       {DISPCONV_KERNEL_load_subpicture_yuy2_rgb24, 16, 3},
                                       {DISPCONV_KERNEL_load_subpicture_yuy2_rgb24_ajust, 16, 3},
                                       {DISPCONV_KERNEL_load_subpicture_yuy2_rgb16, 16, 2},
                                       {DISPCONV_KERNEL_load_subpicture_yuy2_rgb16_ajust, 16, 2}};

}  // namespace

std::vector<CheckedCall> subpicture_contract_calls() {
    std::vector<CheckedCall> calls;
    for (dispconv_kernel k : color_key_kernels) {
        const int bpp = bytes_per_pixel(k);
        // One block, odd heights (one extra row for the fills), padded and bottom-up surfaces.
        calls.push_back(fill_call(k, 16, 1, 16 * bpp));
        calls.push_back(fill_call(k, 48, 7, 48 * bpp + 5));
        calls.push_back(fill_call(k, 32, 6, -(32 * bpp + 16)));
        calls.push_back(fill_call(k, 720, 3, 720 * bpp));
    }
    // Convert: one block and one row; padded planes (odd sub_stride: chroma rows sub_stride / 2
    // apart) with a bottom-up bitmap; a 720-wide strip.
    for (const RecordKernel& r : convert_kernels) {
        const dispconv_kernel k = r.kernel;
        calls.push_back(record_call(k, 8, 1, 0, 8, 8 * r.bpp));
        calls.push_back(record_call(k, 24, 5, 0, 24, 24 * r.bpp));
        calls.push_back(record_call(k, 16, 4, 0, 37, -(16 * r.bpp + 12)));
        calls.push_back(record_call(k, 720, 3, 0, 736, 720 * r.bpp + 7));
    }
    // Alpha: one block and one row; frame_stride padding (odd, the opacity step rounds down)
    // with a padded bitmap; a 720-wide strip.
    for (const RecordKernel& r : alpha_kernels) {
        const dispconv_kernel k = r.kernel;
        const int b = r.block;
        calls.push_back(record_call(k, b, 1, b, 0, b * r.bpp));
        calls.push_back(record_call(k, 2 * b, 5, 2 * b, 0, 2 * b * r.bpp));
        calls.push_back(record_call(k, 2 * b, 4, 2 * b + 13, 0, 2 * b * r.bpp + 9));
        calls.push_back(record_call(k, 720, 3, 736, 0, 720 * r.bpp));
    }
    // Sub-picture to RGB: frame_stride is the row length (width not read); padded and bottom-up
    // bitmaps; every accepted 16-bit layout.
    for (const RecordKernel& r : to_rgb_kernels) {
        const dispconv_kernel k = r.kernel;
        const int layouts = r.bpp == 2 ? 4 : 1;
        for (int layout = 0; layout < layouts; ++layout) {
            calls.push_back(record_call(k, 0, 1, 16, 0, 16 * r.bpp, layout));
            calls.push_back(record_call(k, 7, 3, 48, 0, 48 * r.bpp + 5, layout));
        }
        calls.push_back(record_call(k, 32, 4, 32, 0, -(32 * r.bpp + 16)));
        // Layout 9 is only read, and refused, by the 16-bit kernels.
        calls.push_back(record_call(k, 720, 3, 720, 0, 720 * r.bpp, r.bpp == 2 ? 0 : 9));
    }
    return calls;
}

std::vector<BadCall> subpicture_bad_calls() {
    std::vector<BadCall> bad;
    for (dispconv_kernel k : color_key_kernels) {
        const int bpp = bytes_per_pixel(k);
        bad.push_back({fill_call(k, 17, 4, 64 * bpp), Status::bad_width});
        bad.push_back({fill_call(k, 0, 4, 64 * bpp), Status::bad_width});
        bad.push_back({fill_call(k, -16, 4, 64 * bpp), Status::bad_width});
        bad.push_back({fill_call(k, 16, 0, 64 * bpp), Status::bad_height});
        bad.push_back({fill_call(k, 16, -2, 64 * bpp), Status::bad_height});
        bad.push_back({fill_call(k, 32, 4, 32 * bpp - 1), Status::bad_stride});
        bad.push_back({fill_call(k, 32, 4, 0), Status::bad_stride});
        bad.push_back({fill_call(k, 32, 4, -(32 * bpp - 1)), Status::bad_stride});
    }
    for (const RecordKernel& r : convert_kernels) {
        const dispconv_kernel k = r.kernel;
        const int row = 16 * r.bpp;
        bad.push_back({record_call(k, 12, 2, 0, 16, row), Status::bad_width});
        bad.push_back({record_call(k, 4, 2, 0, 16, row), Status::bad_width});
        bad.push_back({record_call(k, 0, 2, 0, 16, row), Status::bad_width});
        bad.push_back({record_call(k, -8, 2, 0, 16, row), Status::bad_width});
        bad.push_back({record_call(k, 16, 0, 0, 16, row), Status::bad_height});
        bad.push_back({record_call(k, 16, -1, 0, 16, row), Status::bad_height});
        bad.push_back({record_call(k, 16, 2, 0, 15, row), Status::bad_stride});
        bad.push_back({record_call(k, 16, 2, 0, -32, row), Status::bad_stride});
        bad.push_back({record_call(k, 16, 2, 0, 16, row - 1), Status::bad_stride});
        bad.push_back({record_call(k, 16, 2, 0, 16, -(row - 1)), Status::bad_stride});
        bad.push_back({record_call(k, 16, 2, 0, 16, 0), Status::bad_stride});
    }
    for (const RecordKernel& r : alpha_kernels) {
        const dispconv_kernel k = r.kernel;
        const int b = r.block;
        const int row = 2 * b * r.bpp;
        bad.push_back({record_call(k, b + 4, 2, 4 * b, 0, 4 * row), Status::bad_width});
        bad.push_back({record_call(k, 0, 2, 4 * b, 0, row), Status::bad_width});
        bad.push_back({record_call(k, -b, 2, 4 * b, 0, row), Status::bad_width});
        bad.push_back({record_call(k, 2 * b, 0, 2 * b, 0, row), Status::bad_height});
        bad.push_back({record_call(k, 2 * b, -3, 2 * b, 0, row), Status::bad_height});
        bad.push_back({record_call(k, 2 * b, 2, 2 * b - 1, 0, row), Status::bad_stride});
        bad.push_back({record_call(k, 2 * b, 2, -2 * b, 0, row), Status::bad_stride});
        bad.push_back({record_call(k, 2 * b, 2, 2 * b, 0, row - 1), Status::bad_stride});
        bad.push_back({record_call(k, 2 * b, 2, 2 * b, 0, -row), Status::bad_stride});
    }
    for (const RecordKernel& r : to_rgb_kernels) {
        const dispconv_kernel k = r.kernel;
        const int row = 32 * r.bpp;
        bad.push_back({record_call(k, 32, 2, 24, 0, row), Status::bad_stride});
        bad.push_back({record_call(k, 32, 2, 0, 0, row), Status::bad_stride});
        bad.push_back({record_call(k, 32, 2, -32, 0, row), Status::bad_stride});
        bad.push_back({record_call(k, 32, 0, 32, 0, row), Status::bad_height});
        bad.push_back({record_call(k, 32, -2, 32, 0, row), Status::bad_height});
        bad.push_back({record_call(k, 32, 2, 32, 0, row - 1), Status::bad_stride});
        bad.push_back({record_call(k, 32, 2, 32, 0, -(row - 1)), Status::bad_stride});
        if (r.bpp == 2) {
            bad.push_back({record_call(k, 32, 2, 32, 0, row, 4), Status::bad_layout});
            bad.push_back({record_call(k, 32, 2, 32, 0, row, -1), Status::bad_layout});
            bad.push_back(without_settings(record_call(k, 32, 2, 32, 0, row)));
        }
    }
    return bad;
}

}  // namespace dispconv::test
