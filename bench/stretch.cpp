// The stretch jobs. The double-height YUY2 and RGB32 jobs and the plane doubling are compared
// with libyuv (bilinear scale, then the conversion) and swscale's bilinear scaler; the rest
// with memcpy of their output.
extern "C" {
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}
#include <libyuv.h>

#include <map>
#include <tuple>

#include "bench.hpp"

namespace bench {
namespace {

using FrameKernel = void (*)(void*, void*, void*, void*, int32_t, int32_t, int32_t, int32_t, ajust_contrast_info*);
using S = dispconv::StretchKernels;

// An I420 picture of twice the height, the intermediate of the libyuv peers.
struct Tall {
    Memory y, u, v;
    explicit Tall(int w, int h) : y(size_t(w) * 2 * h), u(size_t(w / 2) * h), v(size_t(w / 2) * h) {}
};
Tall& tall(int w, int h) {
    static std::map<std::pair<int, int>, std::unique_ptr<Tall>> all;
    auto& t = all[{w, h}];
    if (!t) t = std::make_unique<Tall>(w, h);
    return *t;
}

void scale_to_tall(Frame& f, Tall& t, int w, int h) {
    const int hw = w / 2;
    libyuv::I420Scale(f.y.data(), w, f.u.data(), hw, f.v.data(), hw, w, h, t.y.data(), w, t.u.data(), hw, t.v.data(),
                      hw, w, 2 * h, libyuv::kFilterBilinear);
}

// swscale's bilinear scaler from YV12 to `to` at (w, 2h); the context is made once per job.
void sws_tall(Frame& f, AVPixelFormat to, int bytes_per_pixel, int w, int h) {
    SwsContext* ctx = sws_context(w, h, AV_PIX_FMT_YUV420P, w, 2 * h, to, SWS_BILINEAR);
    const uint8_t* planes[4] = {f.y.data(), f.u.data(), f.v.data(), nullptr};
    const int strides[4] = {w, w / 2, w / 2, 0};
    uint8_t* out[4] = {f.dst.data(), nullptr, nullptr, nullptr};
    const int out_strides[4] = {bytes_per_pixel * w, 0, 0, 0};
    sws_scale(ctx, planes, strides, 0, h, out, out_strides);
}

void add_peer(const std::string& group, const std::string& label, int w, int h, double bytes, std::function<void()> run) {
    add({group, label, Kind::peer, w, h, bytes, std::move(run)});
}

// A planar frame-signature stretcher; `dst_stride` in bytes.
void add_planar(const std::string& group, const char* name, dispconv_kernel id, FrameKernel S::*member, int w, int h,
                int dst_stride, double bytes) {
    Frame& f = frame(w, h);
    check_fits(id, name, f, false, w, h, dst_stride, &settings);
    add_ours(group, name, w, h, bytes, [=, &f](const dispconv::KernelTable& t) -> std::function<void()> {
        FrameKernel k = t.stretch->*member;
        return [=, &f] { k(f.y.data(), f.u.data(), f.v.data(), f.dst.data(), w, h, w, dst_stride, &settings); };
    });
}

}  // namespace

void register_stretch(int w, int h) {
    Frame& f = frame(w, h);
    const double px = double(w) * h, yv12 = 1.5 * px;
    const int hw = w / 2;

    {
        const std::string g = "YV12 to YUY2 x1x2";
        const double out = 4 * px;
        add_peer(g, "libyuv I420Scale+I420ToYUY2", w, h, yv12 + out, [&f, w, h, hw] {
            Tall& t = tall(w, h);
            scale_to_tall(f, t, w, h);
            libyuv::I420ToYUY2(t.y.data(), w, t.u.data(), hw, t.v.data(), hw, f.dst.data(), 2 * w, w, 2 * h);
        });
        add_peer(g, "swscale bilinear", w, h, yv12 + out, [&f, w, h] { sws_tall(f, AV_PIX_FMT_YUYV422, 2, w, h); });
        add_copy(g, w, h, out);
        add_planar(g, "strech_picture_1X2_yuy2", DISPCONV_KERNEL_strech_picture_1X2_yuy2, &S::strech_picture_1X2_yuy2, w, h,
                   2 * w, yv12 + out);
    }
    {
        const std::string g = "YV12 to RGB32 x1x2";
        const double out = 8 * px;
        add_peer(g, "libyuv I420Scale+I420ToARGB", w, h, yv12 + out, [&f, w, h, hw] {
            Tall& t = tall(w, h);
            scale_to_tall(f, t, w, h);
            libyuv::I420ToARGB(t.y.data(), w, t.u.data(), hw, t.v.data(), hw, f.dst.data(), 4 * w, w, 2 * h);
        });
        add_peer(g, "swscale bilinear", w, h, yv12 + out, [&f, w, h] { sws_tall(f, AV_PIX_FMT_BGRA, 4, w, h); });
        add_copy(g, w, h, out);
        add_planar(g, "strech_picture_1X2_yuy2_ajust_rgb32", DISPCONV_KERNEL_strech_picture_1X2_yuy2_ajust_rgb32,
                   &S::strech_picture_1X2_yuy2_ajust_rgb32, w, h, 4 * w, yv12 + out);
    }
    {
        const std::string g = "Plane x2x2";
        const double bytes = px + 4 * px;
        add_peer(g, "libyuv ScalePlane bilinear", w, h, bytes, [&f, w, h] {
            libyuv::ScalePlane(f.y.data(), w, w, h, f.dst.data(), 2 * w, 2 * w, 2 * h, libyuv::kFilterBilinear);
        });
        add_copy(g, w, h, 4 * px);
        add_ours(g, "strech_pic_2X2", w, h, bytes, [=, &f](const dispconv::KernelTable& t) -> std::function<void()> {
            auto k = t.stretch->strech_pic_2X2;
            return [=, &f] { k(f.y.data(), f.dst.data(), w, h, w, 2 * w); };
        });
    }

    // The rest against memcpy of their output.
    struct Job {
        const char* group;
        const char* name;
        FrameKernel S::*member;
        dispconv_kernel id;
        int dst_stride_x2;  // destination row bytes per source pixel, times two
        double out_px;      // destination bytes per source pixel
    };
    // One row of the table: the kernel named once.
#define STRETCH_JOB(group, kernel, ...) {group, #kernel, &S::kernel, DISPCONV_KERNEL_##kernel, __VA_ARGS__}
    const Job jobs[] = {
        STRETCH_JOB("YV12 to YUY2 x1x2 filter", strech_picture_1X2_yuy2_ajust, 4, 4),
        STRETCH_JOB("YV12 to RGB24 x1x2", strech_picture_1X2_yuy2_ajust_rgb24, 6, 6),
        STRETCH_JOB("YV12 to RGB565 x1x2", strech_picture_1X2_yuy2_ajust_rgb16, 4, 4),
        STRETCH_JOB("YV12 to YUY2 x2x2", strech_picture_2X2_yuy2, 8, 16),
        STRETCH_JOB("YV12 to YUY2 x2x2", strech_picture_2X2_yuy2_ajust, 8, 16),
        STRETCH_JOB("YV12 to YV12 x2x2", strech_picture_2X2_yv12_ajust, 4, 6),
        STRETCH_JOB("YV12 to YV12 x1x2", strech_picture_1X2_yv12_ajust, 2, 3),
    };
#undef STRETCH_JOB
    std::string last;
    for (const Job& j : jobs) {
        if (j.group != last) add_copy(j.group, w, h, j.out_px * px), last = j.group;
        add_planar(j.group, j.name, j.id, j.member, w, h, w * j.dst_stride_x2 / 2, yv12 + j.out_px * px);
    }

    {
        const std::string g = "YUY2 to YUY2 x2x2";
        const double bytes = 2 * px + 8 * px;
        add_copy(g, w, h, 8 * px);
        add_ours(g, "yuy2_strech_picture_2X2_yuy2", w, h, bytes, [=, &f](const dispconv::KernelTable& t) -> std::function<void()> {
            auto k = t.stretch->yuy2_strech_picture_2X2_yuy2;
            return [=, &f] { k(f.yuy2.data(), nullptr, nullptr, f.dst.data(), 2 * w, h, 4 * w); };
        });
        add_ours(g, "yuy2_strech_picture_2X2_yuy2_ajust", w, h, bytes, [=, &f](const dispconv::KernelTable& t) -> std::function<void()> {
            auto k = t.stretch->yuy2_strech_picture_2X2_yuy2_ajust;
            return [=, &f] { k(f.yuy2.data(), nullptr, nullptr, f.dst.data(), 2 * w, h, 4 * w, &settings); };
        });
    }
    {
        const std::string g = "Plane x2x2 adjust";
        add_copy(g, w, h, 4 * px);
        add_ours(g, "strech_pic_2X2_adjust", w, h, 5 * px, [=, &f](const dispconv::KernelTable& t) -> std::function<void()> {
            auto k = t.stretch->strech_pic_2X2_adjust;
            return [=, &f] { k(f.y.data(), f.dst.data(), w, h, w, 2 * w, &settings, 1); };
        });
    }
    {
        const std::string g = "Plane x1x2 adjust";
        add_copy(g, w, h, 2 * px);
        add_ours(g, "strech_pic_1X2_adjust", w, h, 3 * px, [=, &f](const dispconv::KernelTable& t) -> std::function<void()> {
            auto k = t.stretch->strech_pic_1X2_adjust;
            return [=, &f] { k(f.y.data(), f.dst.data(), w, h, w, w, &settings, 1); };
        });
    }
    {
        const std::string g = "YV12 to YUY2 x1x2 edge";
        add_copy(g, w, h, 4 * px);
        add_ours(g, "strech_opt_yuy2_ajust", w, h, yv12 + 4 * px, [=, &f](const dispconv::KernelTable& t) -> std::function<void()> {
            auto k = t.stretch->strech_opt_yuy2_ajust;
            return [=, &f] {
                tagVideoFrame record{};
                record.plane_y = f.y.data(), record.plane_u = f.u.data(), record.plane_v = f.v.data();
                record.frame_width = w;
                k(&record, 0, h, f.dst.data(), 2 * w, &settings);
            };
        });
    }
}

}  // namespace bench
