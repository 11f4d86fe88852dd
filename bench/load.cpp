// The frame-loading jobs.
#include <memory>

#include "bench.hpp"

namespace bench {
namespace {

using FrameKernel = void (*)(void*, void*, void*, void*, int32_t, int32_t, int32_t, int32_t, ajust_contrast_info*);

// One frame-signature loader on every instruction set.
void add_frame_kernel(const std::string& group, const char* name, dispconv_kernel id,
                      FrameKernel dispconv::LoadKernels::*member, bool packed_source, int out_bytes_per_pixel_x2,
                      int w, int h, double bytes) {
    Frame& f = frame(w, h);
    // A YV12 surface's pitch is its luma plane's (the YV12 copy also steps its source by it).
    const int dst_stride = out_bytes_per_pixel_x2 == 3 ? w : w * out_bytes_per_pixel_x2 / 2;
    // The settings, with the destination's plane heights that the YV12 adjuster places its
    // chroma planes by (a whole surface of the frame's height).
    auto adjust = std::make_shared<ajust_contrast_info>(settings);
    adjust->dst_plane_height = adjust->dst_luma_height = h;
    check_fits(id, name, f, packed_source, w, h, dst_stride, adjust.get());
    add_ours(group, name, w, h, bytes, [=, &f](const dispconv::KernelTable& t) -> std::function<void()> {
        FrameKernel k = t.load->*member;
        return [=, &f] {
            k(packed_source ? f.yuy2.data() : f.y.data(), f.u.data(), f.v.data(), f.dst.data(), w, h, w, dst_stride,
              adjust.get());
        };
    });
}

}  // namespace

void register_loads(int w, int h) {
    const double px = double(w) * h, yv12 = 1.5 * px, yuy2 = 2 * px;
    struct Job {
        const char* group;
        const char* name;
        FrameKernel dispconv::LoadKernels::*member;
        dispconv_kernel id;
        bool packed;
        int out_x2;  // output bytes per pixel, times two
        double in;
    };
    using L = dispconv::LoadKernels;
    // One row of the table: the kernel named once.
#define LOAD_JOB(group, kernel, ...) {group, #kernel, &L::kernel, DISPCONV_KERNEL_##kernel, __VA_ARGS__}
    const Job jobs[] = {
        LOAD_JOB("YV12 to RGB32", loadimage_rgb32, false, 8, yv12),
        LOAD_JOB("YV12 to RGB32", loadimage_rgb32_ajust, false, 8, yv12),
        LOAD_JOB("YV12 to RGB24", loadimage_rgb24, false, 6, yv12),
        LOAD_JOB("YV12 to RGB24", loadimage_rgb24_ajust, false, 6, yv12),
        LOAD_JOB("YV12 to RGB565", loadimage_rgb16, false, 4, yv12),
        LOAD_JOB("YV12 to RGB565", loadimage_rgb16_ajust, false, 4, yv12),
        LOAD_JOB("YV12 to YUY2", loadimage_yuy2, false, 4, yv12),
        LOAD_JOB("YV12 to YUY2", loadimage_yuy2_ajust, false, 4, yv12),
        LOAD_JOB("YV12 to YUY2 grey", loadimage_yuy2_mono_ajust, false, 4, px),
        LOAD_JOB("YV12 to half YUY2", loadimage_half_yuy2_ajust, false, 2, yv12),
        LOAD_JOB("YV12 to YV12", loadimage_yv12, false, 3, yv12),
        LOAD_JOB("YV12 to YV12", loadimage_yv12_ajust, false, 3, yv12),
        LOAD_JOB("YV12 to half YV12", loadimage_half_yv12_ajust, false, 2, yv12),
        LOAD_JOB("YUY2 to RGB32", LoadYUY2_RGB32, true, 8, yuy2),
        LOAD_JOB("YUY2 to RGB32", LoadYUY2_RGB32_adjust, true, 8, yuy2),
        LOAD_JOB("YUY2 to RGB24", LoadYUY2_RGB24, true, 6, yuy2),
        LOAD_JOB("YUY2 to RGB24", LoadYUY2_RGB24_adjust, true, 6, yuy2),
        LOAD_JOB("YUY2 to RGB565", LoadYUY2_RGB16, true, 4, yuy2),
        LOAD_JOB("YUY2 to RGB565", LoadYUY2_RGB16_adjust, true, 4, yuy2),
        LOAD_JOB("YUY2 to YUY2", LoadYUY2_YUY2, true, 4, yuy2),
        LOAD_JOB("YUY2 to YUY2", LoadYUY2_YUY2_adjust, true, 4, yuy2),
    };
#undef LOAD_JOB
    std::string last;
    for (const Job& j : jobs) {
        const double out = px * j.out_x2 / 2;
        if (j.group != last) {
            add_peers(j.group, w, h, j.in + out);
            add_copy(j.group, w, h, out);
            add_traffic(j.group, w, h, j.in, out);
            last = j.group;
        }
        add_frame_kernel(j.group, j.name, j.id, j.member, j.packed, j.out_x2, w, h, j.in + out);
    }
}

}  // namespace bench
