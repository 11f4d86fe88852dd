// The peer libraries' versions of each job, on the same frames.
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

struct SwsJob {
    AVPixelFormat from, to;
    int from_width, from_height;  // the source size when swscale also scales
};

SwsContext* context(const SwsJob& j, int width, int height) {
    const int flags = j.from_width == width && j.from_height == height ? SWS_POINT : SWS_BILINEAR;
    return sws_context(j.from_width, j.from_height, j.from, width, height, j.to, flags);
}

void sws_run(const SwsJob& j, Frame& f, int width, int height) {
    const int w = j.from_width;
    const uint8_t* planes[4] = {f.y.data(), f.u.data(), f.v.data(), nullptr};
    int strides[4] = {w, w / 2, w / 2, 0};
    if (j.from == AV_PIX_FMT_YUYV422) planes[0] = f.yuy2.data(), strides[0] = 2 * w, strides[1] = strides[2] = 0;
    uint8_t* out[4] = {f.dst.data(), nullptr, nullptr, nullptr};
    int out_strides[4] = {0, 0, 0, 0};
    switch (j.to) {
        case AV_PIX_FMT_BGRA: out_strides[0] = 4 * width; break;
        case AV_PIX_FMT_BGR24: out_strides[0] = 3 * width; break;
        case AV_PIX_FMT_RGB565LE:
        case AV_PIX_FMT_YUYV422: out_strides[0] = 2 * width; break;
        default: break;
    }
    sws_scale(context(j, width, height), planes, strides, 0, j.from_height, out, out_strides);
}

}  // namespace

SwsContext* sws_context(int from_width, int from_height, AVPixelFormat from, int width, int height, AVPixelFormat to,
                        int flags) {
    // Freed at exit: the leak checker reports them otherwise.
    static struct Cache : std::map<std::tuple<int, int, int, int, int, int, int>, SwsContext*> {
        ~Cache() {
            for (auto& entry : *this) sws_freeContext(entry.second);
        }
    } cache;
    SwsContext*& ctx = cache[{from_width, from_height, int(from), width, height, int(to), flags}];
    if (!ctx) ctx = sws_getContext(from_width, from_height, from, width, height, to, flags, nullptr, nullptr, nullptr);
    return ctx;
}

void add_peers(const std::string& group, int w, int h, double bytes) {
    Frame& f = frame(w, h);
    auto lib = [&](const char* name, std::function<void()> run) { add({group, std::string("libyuv ") + name, Kind::peer, w, h, bytes, std::move(run)}); };
    auto sws = [&](SwsJob j) { add({group, "swscale", Kind::peer, w, h, bytes, [j, &f, w, h] { sws_run(j, f, w, h); }}); };
    const int hw = w / 2;
    if (group == "YV12 to RGB32") {
        lib("I420ToARGB", [&f, w, h, hw] { libyuv::I420ToARGB(f.y.data(), w, f.u.data(), hw, f.v.data(), hw, f.dst.data(), 4 * w, w, h); });
        sws({AV_PIX_FMT_YUV420P, AV_PIX_FMT_BGRA, w, h});
    } else if (group == "YV12 to RGB24") {
        lib("I420ToRGB24", [&f, w, h, hw] { libyuv::I420ToRGB24(f.y.data(), w, f.u.data(), hw, f.v.data(), hw, f.dst.data(), 3 * w, w, h); });
        sws({AV_PIX_FMT_YUV420P, AV_PIX_FMT_BGR24, w, h});
    } else if (group == "YV12 to RGB565") {
        lib("I420ToRGB565", [&f, w, h, hw] { libyuv::I420ToRGB565(f.y.data(), w, f.u.data(), hw, f.v.data(), hw, f.dst.data(), 2 * w, w, h); });
        sws({AV_PIX_FMT_YUV420P, AV_PIX_FMT_RGB565LE, w, h});
    } else if (group == "YV12 to YUY2") {
        lib("I420ToYUY2", [&f, w, h, hw] { libyuv::I420ToYUY2(f.y.data(), w, f.u.data(), hw, f.v.data(), hw, f.dst.data(), 2 * w, w, h); });
        sws({AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUYV422, w, h});
    } else if (group == "YUY2 to RGB32") {
        lib("YUY2ToARGB", [&f, w, h] { libyuv::YUY2ToARGB(f.yuy2.data(), 2 * w, f.dst.data(), 4 * w, w, h); });
        sws({AV_PIX_FMT_YUYV422, AV_PIX_FMT_BGRA, w, h});
    }
}

}  // namespace bench
