// Calls inside and outside the contract of the mix kernels.
#include <algorithm>

#include "checked/checked_support.hpp"

namespace dispconv::test {

namespace {

CheckedCall mix_call(dispconv_kernel k, int32_t width, int32_t height, int32_t frame_stride,
                     int32_t sub_stride, int32_t image_stride, int32_t layout = 0) {
    CheckedCall c;
    c.kernel = k;
    c.info.width = width, c.info.height = height;
    c.info.frame_stride = frame_stride, c.info.sub_stride = sub_stride, c.info.image_stride = image_stride;
    c.settings.rgb16_layout = layout;
    return c;
}

enum class Kind { progressive, half, interlaced_yuy2, interlaced_rgb, yv12, yv12_field };

struct MixKernel {
    dispconv_kernel kernel;
    Kind kind;
    int out_bpp;  // output bytes per pixel (YV12: of the Y plane)
    bool rgb16;
};

const MixKernel mix_kernels[] = {
    {DISPCONV_KERNEL_mix_ayuy2_yuy2_p_ajust, Kind::progressive, 2, false},
    {DISPCONV_KERNEL_mix_ayuy2_half_yuy2_p_ajust, Kind::half, 1, false},
    {DISPCONV_KERNEL_mix_ayuy2_rgb32_p_ajust, Kind::progressive, 4, false},
    {DISPCONV_KERNEL_mix_ayuy2_rgb24_p_ajust, Kind::progressive, 3, false},
    {DISPCONV_KERNEL_mix_ayuy2_rgb16_p_ajust, Kind::progressive, 2, true},
    {DISPCONV_KERNEL_mix_ayuy2_yuy2_i_ajust, Kind::interlaced_yuy2, 2, false},
    {DISPCONV_KERNEL_mix_ayuy2_rgb32_i_ajust, Kind::interlaced_rgb, 4, false},
    {DISPCONV_KERNEL_mix_ayuy2_rgb24_i_ajust, Kind::interlaced_rgb, 3, false},
    {DISPCONV_KERNEL_mix_ayuy2_rgb16_i_ajust, Kind::interlaced_rgb, 2, true},
    {DISPCONV_KERNEL_mix_ayv12_yv12_p, Kind::yv12, 1, false},
    {DISPCONV_KERNEL_mix_ayv12_yv12_p_ajust, Kind::yv12, 1, false},
    {DISPCONV_KERNEL_mix_ayv12_yv12_i, Kind::yv12_field, 1, false},
};

bool interlaced(Kind k) { return k == Kind::interlaced_yuy2 || k == Kind::interlaced_rgb || k == Kind::yv12_field; }

// Heights of the contract: fields in groups of four rows, YV12 even, the others any (odd ones
// mix one row more).
int32_t smallest_height(Kind k) { return interlaced(k) ? 4 : k == Kind::yv12 ? 2 : 1; }
int32_t some_height(Kind k) { return interlaced(k) ? 12 : k == Kind::yv12 ? 6 : 5; }

}  // namespace

std::vector<CheckedCall> mix_contract_calls() {
    std::vector<CheckedCall> calls;
    for (const MixKernel& m : mix_kernels) {
        const dispconv_kernel k = m.kernel;
        const int bpp = m.out_bpp;
        const int32_t low = smallest_height(m.kind), mid = some_height(m.kind);
        // Tight strides at the smallest geometry; padded strides; a bottom-up record; 720 wide.
        calls.push_back(mix_call(k, 16, low, 16, 16, 16 * bpp));
        calls.push_back(mix_call(k, 32, mid, 48, 40, 32 * bpp + 6));
        calls.push_back(mix_call(k, 48, 2 * low, -64, -48, -(48 * bpp + 4)));
        calls.push_back(mix_call(k, 720, low, 736, 720, 720 * bpp));
        switch (m.kind) {
            case Kind::half:
                // Frame and sub-picture strides apart: the frame's second row and chroma rows
                // follow sub_stride, its pairs of rows frame_stride (odd is fine here).
                calls.push_back(mix_call(k, 32, 4, 96, 34, 32));
                calls.push_back(mix_call(k, 32, 3, 33, 64, 40));
                calls.push_back(mix_call(k, 16, 6, -40, 16, -16));
                break;
            case Kind::interlaced_yuy2:
                // Odd strides: the field steps by frame_stride, its chroma by half of it.
                calls.push_back(mix_call(k, 32, 8, 33, 35, 67));
                calls.push_back(mix_call(k, 16, 16, -17, -19, -33));
                break;
            case Kind::interlaced_rgb:
                calls.push_back(mix_call(k, 32, 8, 40, 35, 32 * bpp + 1, m.rgb16 ? 2 : 0));
                calls.push_back(mix_call(k, 64, 16, -72, -64, -(64 * bpp), m.rgb16 ? 3 : 0));
                break;
            case Kind::yv12:
            case Kind::yv12_field:
                // Odd frame and image strides halve to the chroma strides.
                calls.push_back(mix_call(k, 32, 2 * low, 33, 34, 35));
                calls.push_back(mix_call(k, 16, 4 * low, -17, -18, -19));
                break;
            default:
                break;
        }
        if (m.rgb16)
            for (int32_t layout = 0; layout <= 3; ++layout) calls.push_back(mix_call(k, 32, mid, 32, 32, 64, layout));
    }
    return calls;
}

std::vector<BadCall> mix_bad_calls() {
    std::vector<BadCall> bad;
    for (const MixKernel& m : mix_kernels) {
        const dispconv_kernel k = m.kernel;
        const int bpp = m.out_bpp;
        const int32_t h = some_height(m.kind);
        const auto call = [&](int32_t width, int32_t height, int32_t fs, int32_t ss, int32_t is, int32_t layout = 0) {
            return mix_call(k, width, height, fs, ss, is, layout);
        };
        bad.push_back({call(24, h, 64, 64, 64 * bpp), Status::bad_width});
        bad.push_back({call(8, h, 64, 64, 64 * bpp), Status::bad_width});
        bad.push_back({call(0, h, 64, 64, 64 * bpp), Status::bad_width});
        bad.push_back({call(-16, h, 64, 64, 64 * bpp), Status::bad_width});
        bad.push_back({call(32, 0, 64, 64, 64 * bpp), Status::bad_height});
        bad.push_back({call(32, -4, 64, 64, 64 * bpp), Status::bad_height});
        if (interlaced(m.kind))
            for (int32_t height : {2, 3, 6, 10}) bad.push_back({call(32, height, 64, 64, 64 * bpp), Status::bad_height});
        if (m.kind == Kind::yv12) bad.push_back({call(32, 5, 64, 64, 64 * bpp), Status::bad_height});
        // Rows that overlap, in each plane and in either direction.
        bad.push_back({call(32, h, 30, 64, 64 * bpp), Status::bad_stride});
        bad.push_back({call(32, h, -24, 64, 64 * bpp), Status::bad_stride});
        bad.push_back({call(32, h, 64, 30, 64 * bpp), Status::bad_stride});
        bad.push_back({call(32, h, 64, -16, 64 * bpp), Status::bad_stride});
        bad.push_back({call(32, h, 64, 64, 32 * bpp - 1), Status::bad_stride});
        bad.push_back({call(32, h, 64, 64, 0), Status::bad_stride});
        bad.push_back({call(32, h, 64, 64, -(32 * bpp - 1)), Status::bad_stride});
        // Strides the kernel misplaces rows with.
        if (m.kind == Kind::progressive) bad.push_back({call(32, h, 65, 64, 64 * bpp), Status::bad_stride});
        if (m.kind == Kind::progressive || m.kind == Kind::half || m.kind == Kind::yv12 || m.kind == Kind::yv12_field)
            bad.push_back({call(32, h, 64, 65, 64 * bpp), Status::bad_stride});
        if (m.kind == Kind::interlaced_rgb) {
            bad.push_back({call(32, h, 36, 64, 64 * bpp), Status::bad_stride});
            bad.push_back({call(32, h, 65, 64, 64 * bpp), Status::bad_stride});
        }
        if (m.rgb16) {
            bad.push_back({call(32, h, 64, 64, 64, 4), Status::bad_layout});
            bad.push_back({call(32, h, 64, 64, 64, -1), Status::bad_layout});
            bad.push_back(without_settings(call(32, h, 64, 64, 64 * bpp)));
        }
    }
    return bad;
}

}  // namespace dispconv::test
