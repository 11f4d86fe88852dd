// One job of the aarch64 instruction-count comparison (scripts/arm-icount): one of our kernels or
// libyuv's closest call on a 320x240 frame, run a given number of times. Counted under qemu with
// FRAMES and 3 * FRAMES, half the difference is what FRAMES frames execute, start-up and set-up
// left out. Instructions, not time: a fair proxy between two SIMD implementations only.
//   dispconv_arm_icount --list                  each job: its name, our kernel, libyuv's call
//   dispconv_arm_icount NAME FRAMES [--isa=SET] run our kernel or libyuv's call NAME
#include <libyuv.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "dispconv.hpp"

namespace {

constexpr int width = 320, height = 240, half = width / 2;

// Every plane the jobs read or write, with room for the kernels' whole blocks beyond the picture
// and strech_pic_2X2's row below it.
struct Frame {
    std::vector<uint8_t> y, u, v, yuy2, dst, sub_opacity, sub_y, sub_u, sub_v, alpha, mixed_y, mixed_u, mixed_v;
    Frame() {
        const size_t plane = size_t(width + 64) * (height + 8), chroma = plane / 2;
        y.resize(plane), u.resize(chroma), v.resize(chroma), yuy2.resize(2 * plane);
        dst.resize(size_t(8 * width + 256) * (2 * height + 8));
        sub_opacity.resize(plane), sub_y.resize(plane), sub_u.resize(plane), sub_v.resize(plane);
        alpha.resize(plane), mixed_y.resize(plane), mixed_u.resize(chroma), mixed_v.resize(chroma);
        // A gradient with some texture, and a sub-picture whose opacity takes every level.
        for (size_t i = 0; i < plane; ++i) {
            const size_t x = i % width, r = i / width;
            y[i] = uint8_t(16 + (x * 3 + r * 5 + ((x ^ r) & 15)) % 220);
            sub_opacity[i] = uint8_t((i / 7) % 17);
            alpha[i] = uint8_t(sub_opacity[i] * 255 / 16);  // libyuv's blend takes 0..255
            sub_y[i] = uint8_t(235 - i % 200), sub_u[i] = 128, sub_v[i] = uint8_t(100 + i % 50);
        }
        for (size_t i = 0; i < chroma; ++i) u[i] = uint8_t(64 + i % 128), v[i] = uint8_t(200 - i % 128);
        for (size_t i = 0; i < yuy2.size(); ++i) yuy2[i] = uint8_t(i & 1 ? 100 + i % 60 : 16 + i % 220);
    }
};

ajust_contrast_info settings{70, 60, -4, 3, -3, 0, 0, 0, 0, 0, 0, 0};  // not neutral

using FrameKernel = void (*)(void*, void*, void*, void*, int32_t, int32_t, int32_t, int32_t, ajust_contrast_info*);

void load(FrameKernel kernel, Frame& f, bool packed, int dst_stride) {
    kernel(packed ? f.yuy2.data() : f.y.data(), f.u.data(), f.v.data(), f.dst.data(), width, height, width, dst_stride,
           &settings);
}

struct Way {
    const char* name;
    void (*run)(Frame&);
};

const Way ways[] = {
    {"loadimage_rgb32", [](Frame& f) { load(loadimage_rgb32, f, false, 4 * width); }},
    {"loadimage_rgb32_ajust", [](Frame& f) { load(loadimage_rgb32_ajust, f, false, 4 * width); }},
    {"loadimage_rgb24", [](Frame& f) { load(loadimage_rgb24, f, false, 3 * width); }},
    {"loadimage_rgb16", [](Frame& f) { load(loadimage_rgb16, f, false, 2 * width); }},
    {"loadimage_yuy2", [](Frame& f) { load(loadimage_yuy2, f, false, 2 * width); }},
    {"LoadYUY2_RGB32", [](Frame& f) { load(LoadYUY2_RGB32, f, true, 4 * width); }},
    {"strech_pic_2X2", [](Frame& f) { strech_pic_2X2(f.y.data(), f.dst.data(), width, height, width, 2 * width); }},
    {"mix_ayuy2_rgb32_p_ajust",
     [](Frame& f) {
         MIX_INFO info{width,          width,          4 * width,          width,           height,
                       f.y.data(),     f.v.data(),     f.u.data(),         f.sub_opacity.data(),
                       f.sub_y.data(), f.sub_v.data(), f.sub_u.data(),     f.dst.data(),    nullptr,
                       nullptr,        0,              0,                  0,               &settings};
         mix_ayuy2_rgb32_p_ajust(&info);
     }},
    {"I420ToARGB",
     [](Frame& f) {
         libyuv::I420ToARGB(f.y.data(), width, f.u.data(), half, f.v.data(), half, f.dst.data(), 4 * width, width, height);
     }},
    {"I420ToRGB24",
     [](Frame& f) {
         libyuv::I420ToRGB24(f.y.data(), width, f.u.data(), half, f.v.data(), half, f.dst.data(), 3 * width, width,
                             height);
     }},
    {"I420ToRGB565",
     [](Frame& f) {
         libyuv::I420ToRGB565(f.y.data(), width, f.u.data(), half, f.v.data(), half, f.dst.data(), 2 * width, width,
                              height);
     }},
    {"I420ToYUY2",
     [](Frame& f) {
         libyuv::I420ToYUY2(f.y.data(), width, f.u.data(), half, f.v.data(), half, f.dst.data(), 2 * width, width, height);
     }},
    {"YUY2ToARGB",
     [](Frame& f) { libyuv::YUY2ToARGB(f.yuy2.data(), 2 * width, f.dst.data(), 4 * width, width, height); }},
    {"ScalePlane(kFilterBilinear)",
     [](Frame& f) {
         libyuv::ScalePlane(f.y.data(), width, width, height, f.dst.data(), 2 * width, 2 * width, 2 * height,
                            libyuv::kFilterBilinear);
     }},
    // The blend into an I420 picture (the sub-picture's even chroma rows), then the conversion.
    {"I420Blend+I420ToARGB",
     [](Frame& f) {
         libyuv::I420Blend(f.y.data(), width, f.u.data(), half, f.v.data(), half, f.sub_y.data(), width, f.sub_u.data(),
                           width, f.sub_v.data(), width, f.alpha.data(), width, f.mixed_y.data(), width,
                           f.mixed_u.data(), half, f.mixed_v.data(), half, width, height);
         libyuv::I420ToARGB(f.mixed_y.data(), width, f.mixed_u.data(), half, f.mixed_v.data(), half, f.dst.data(),
                            4 * width, width, height);
     }},
};

// The comparisons: a job, our kernel for it, libyuv's closest call.
const char* const jobs[][3] = {
    {"I420 to ARGB", "loadimage_rgb32", "I420ToARGB"},
    {"I420 to ARGB, adjusted (libyuv: plain)", "loadimage_rgb32_ajust", "I420ToARGB"},
    {"I420 to RGB24", "loadimage_rgb24", "I420ToRGB24"},
    {"I420 to RGB565", "loadimage_rgb16", "I420ToRGB565"},
    {"I420 to YUY2", "loadimage_yuy2", "I420ToYUY2"},
    {"YUY2 to ARGB", "LoadYUY2_RGB32", "YUY2ToARGB"},
    {"plane 2x2 stretch", "strech_pic_2X2", "ScalePlane(kFilterBilinear)"},
    {"sub-picture blend + ARGB", "mix_ayuy2_rgb32_p_ajust", "I420Blend+I420ToARGB"},
};

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--list") == 0) {
        for (const auto& j : jobs) std::printf("%s\t%s\t%s\n", j[0], j[1], j[2]);
        return 0;
    }
    if (argc == 2 && std::strcmp(argv[1], "--isas") == 0) {
        // The sets a column can be counted for, and whether libyuv runs its NEON code here.
        for (const dispconv::IsaName& n : dispconv::isa_names)
            if (n.bit == 0 || (dispconv_isa_available() & n.bit)) std::printf("%s\n", n.name);
        return libyuv::TestCpuFlag(libyuv::kCpuHasNEON) ? 0 : 3;
    }
    if (argc < 3 || argc > 4) {
        std::fprintf(stderr, "usage: %s --list | --isas | NAME FRAMES [--isa=SET]\n", argv[0]);
        return 2;
    }
    const Way* way = nullptr;
    for (const Way& w : ways)
        if (std::strcmp(w.name, argv[1]) == 0) way = &w;
    const int frames = std::atoi(argv[2]);
    if (!way || frames < 1) {
        std::fprintf(stderr, "unknown job %s or frame count %s\n", argv[1], argv[2]);
        return 2;
    }
    if (argc == 4) {
        const char* wanted = std::strncmp(argv[3], "--isa=", 6) == 0 ? argv[3] + 6 : "";
        const dispconv::IsaName* found = nullptr;
        for (const dispconv::IsaName& n : dispconv::isa_names)
            if (std::strcmp(n.name, wanted) == 0) found = &n;
        if (!found || dispconv_set_isa_mask(found->bit) != found->bit) {
            std::fprintf(stderr, "%s: no such instruction set in this build\n", argv[3]);
            return 2;
        }
    }
    Frame f;
    get_contrast_data(&settings);
    for (int i = 0; i < frames; ++i) way->run(f);
    // Something of the output leaves the program, so that no call can be optimised away.
    unsigned sum = 0;
    for (size_t i = 0; i < f.dst.size(); i += 61) sum += f.dst[i];
    std::fprintf(stderr, "%s x%d: %u\n", way->name, frames, sum);
    return 0;
}
