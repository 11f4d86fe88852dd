// The mix jobs: a sub-picture (alpha 0..16, Y, and 4:2:2 chroma) over a YV12 frame.
#include <libyuv.h>

#include <map>

#include "bench.hpp"

namespace bench {
namespace {

using MixKernel = void (*)(MIX_INFO*);

// The record for one full-frame job; the kernels count it down, so it is filled for every call.
MIX_INFO mix_record(Frame& f, int w, int h, int image_bytes_per_pixel_x2) {
    uint8_t* image = f.dst.data();
    const int image_stride = w * image_bytes_per_pixel_x2 / 2;
    return MIX_INFO{w,           w,           image_stride,  w,
                    h,           f.y.data(),  f.v.data(),    f.u.data(),
                    f.sub_a.data(), f.sub_y.data(), f.sub_v.data(), f.sub_u.data(),
                    image,       image + size_t(w) * h, image + size_t(w) * h * 5 / 4,
                    0,           0,           0,             &settings};
}

// The peer's inputs: the sub-picture as I420 (its even chroma rows) with an alpha plane on the
// 0..255 scale, prepared once, and a YV12 picture for the blend's result.
struct PeerFrames {
    Memory alpha, y, u, v;
    PeerFrames(Frame& f, int w, int h)
        : alpha(size_t(w) * h), y(size_t(w) * h), u(size_t(w) * h / 4), v(size_t(w) * h / 4) {
        for (size_t i = 0; i < alpha.size; ++i) alpha.data()[i] = uint8_t(f.sub_a.data()[i] * 255 / 16);
    }
};
PeerFrames& peer_frames(Frame& f, int w, int h) {
    static std::map<std::pair<int, int>, std::unique_ptr<PeerFrames>> all;
    auto& p = all[{w, h}];
    if (!p) p = std::make_unique<PeerFrames>(f, w, h);
    return *p;
}

// libyuv's blend into a YV12 picture, then its conversion to the surface: two passes.
void add_blend_peer(const std::string& group, int w, int h, double bytes, bool to_rgb32) {
    Frame& f = frame(w, h);
    PeerFrames& p = peer_frames(f, w, h);
    const char* label = to_rgb32 ? "libyuv I420Blend+I420ToARGB" : "libyuv I420Blend+I420ToYUY2";
    add({group, label, Kind::peer, w, h, bytes, [&f, &p, w, h, to_rgb32] {
             const int hw = w / 2;
             libyuv::I420Blend(f.y.data(), w, f.u.data(), hw, f.v.data(), hw, f.sub_y.data(), w, f.sub_u.data(), w,
                               f.sub_v.data(), w, p.alpha.data(), w, p.y.data(), w, p.u.data(), hw, p.v.data(), hw, w, h);
             if (to_rgb32)
                 libyuv::I420ToARGB(p.y.data(), w, p.u.data(), hw, p.v.data(), hw, f.dst.data(), 4 * w, w, h);
             else
                 libyuv::I420ToYUY2(p.y.data(), w, p.u.data(), hw, p.v.data(), hw, f.dst.data(), 2 * w, w, h);
         }});
}

}  // namespace

void register_mix(int w, int h) {
    const double px = double(w) * h, frame_in = 1.5 * px, sub_in = 3 * px;
    struct Job {
        const char* group;
        const char* name;
        MixKernel dispconv::MixKernels::*member;
        int out_x2;          // output bytes per pixel, times two (YV12: 3)
        bool field;          // the frame is one field, half the rows
        int peer;            // 0 none, 1 blend + RGB32, 2 blend + YUY2
    };
    using M = dispconv::MixKernels;
    const Job jobs[] = {
        {"Mix to RGB32", "mix_ayuy2_rgb32_p_ajust", &M::mix_ayuy2_rgb32_p_ajust, 8, false, 1},
        {"Mix to YUY2", "mix_ayuy2_yuy2_p_ajust", &M::mix_ayuy2_yuy2_p_ajust, 4, false, 2},
        {"Mix to half YUY2", "mix_ayuy2_half_yuy2_p_ajust", &M::mix_ayuy2_half_yuy2_p_ajust, 2, false, 0},
        {"Mix to RGB24", "mix_ayuy2_rgb24_p_ajust", &M::mix_ayuy2_rgb24_p_ajust, 6, false, 0},
        {"Mix to RGB565", "mix_ayuy2_rgb16_p_ajust", &M::mix_ayuy2_rgb16_p_ajust, 4, false, 0},
        {"Mix field to YUY2", "mix_ayuy2_yuy2_i_ajust", &M::mix_ayuy2_yuy2_i_ajust, 4, true, 0},
        {"Mix field to RGB32", "mix_ayuy2_rgb32_i_ajust", &M::mix_ayuy2_rgb32_i_ajust, 8, true, 0},
        {"Mix field to RGB24", "mix_ayuy2_rgb24_i_ajust", &M::mix_ayuy2_rgb24_i_ajust, 6, true, 0},
        {"Mix field to RGB565", "mix_ayuy2_rgb16_i_ajust", &M::mix_ayuy2_rgb16_i_ajust, 4, true, 0},
        {"Mix to YV12", "mix_ayv12_yv12_p", &M::mix_ayv12_yv12_p, 3, false, 0},
        {"Mix to YV12", "mix_ayv12_yv12_p_ajust", &M::mix_ayv12_yv12_p_ajust, 3, false, 0},
        {"Mix field to YV12", "mix_ayv12_yv12_i", &M::mix_ayv12_yv12_i, 3, true, 0},
    };
    std::string last;
    for (const Job& j : jobs) {
        const double out = px * j.out_x2 / 2, in = (j.field ? frame_in / 2 : frame_in) + sub_in, bytes = in + out;
        if (j.group != last) {
            if (j.peer) add_blend_peer(j.group, w, h, bytes, j.peer == 1);
            add_copy(j.group, w, h, out);
            add_traffic(j.group, w, h, in, out);
            last = j.group;
        }
        Frame& f = frame(w, h);
        // The YV12 kernels take the Y plane's row distance; the others the surface's.
        const int stride_x2 = j.out_x2 == 3 ? 2 : j.out_x2;
        const auto member = j.member;
        add_ours(j.group, j.name, w, h, bytes, [=, &f](const dispconv::KernelTable& t) -> std::function<void()> {
            const MixKernel k = t.mix->*member;
            return [=, &f] {
                MIX_INFO info = mix_record(f, w, h, stride_x2);
                k(&info);
            };
        });
    }
}

}  // namespace bench
