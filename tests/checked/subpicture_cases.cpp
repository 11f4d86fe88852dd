// Calls inside and outside the contract of the sub-picture and colour-key kernels.
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
    return bad;
}

}  // namespace dispconv::test
