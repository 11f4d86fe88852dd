// The subpicture jobs: sub-picture preparation, alpha planes and colour keys.
#include <libyuv.h>

#include <cstring>
#include <map>

#include "bench.hpp"

namespace bench {
namespace {

using MixKernel = void (*)(MIX_INFO*);
using FillKernel = void (*)(uint32_t, void*, int32_t, int32_t, int32_t, int32_t);
using Sub = dispconv::SubpictureKernels;

constexpr uint32_t key32 = 0x00102030;

// Inputs of the family at one size: RGB bitmaps whose 8-pixel blocks are key, partly key or
// drawn (in about equal numbers, as a subtitle's bounding box is), and a mask plane.
struct Inputs {
    Memory rgb32, rgb24, rgb16, mask;
    Inputs(int w, int h)
        : rgb32(size_t(w) * h * 4 + 64), rgb24(size_t(w) * h * 3 + 64), rgb16(size_t(w) * h * 2 + 64), mask(size_t(w) * h + 64) {
        uint32_t x = 12345;
        auto next = [&x] { return x = x * 1664525u + 1013904223u; };
        for (size_t px = 0; px < size_t(w) * h; ++px) {
            const unsigned mode = (px / 8 * 2654435761u) >> 30;  // 0, 1: key, 2: drawn, 3: one pixel drawn
            const bool key = mode < 2 || (mode == 3 && px % 8 != 3);
            const uint32_t c = key ? key32 : next() & 0x00FFFFFF;
            std::memcpy(rgb32.data() + 4 * px, &c, 4);
            std::memcpy(rgb24.data() + 3 * px, &c, 3);
            const uint16_t c16 = static_cast<uint16_t>(c);
            std::memcpy(rgb16.data() + 2 * px, &c16, 2);
            mask.data()[px] = (next() >> 24) < 100 ? 0xAA : uint8_t(next() >> 24);
        }
    }
};
Inputs& inputs(int w, int h) {
    static std::map<std::pair<int, int>, std::unique_ptr<Inputs>> all;
    auto& in = all[{w, h}];
    if (!in) in = std::make_unique<Inputs>(w, h);
    return *in;
}

ajust_contrast_info layout_565{};

void add_mix_kernel(const std::string& group, const char* name, MixKernel Sub::*member, int w, int h, double bytes,
                    const std::function<void(MIX_INFO&)>& setup) {
    add_ours(group, name, w, h, bytes, [=](const dispconv::KernelTable& t) -> std::function<void()> {
        MixKernel k = t.subpicture->*member;
        return [k, setup] {
            MIX_INFO info{};
            setup(info);
            k(&info);
        };
    });
}

}  // namespace

void register_subpicture(int w, int h) {
    Frame& f = frame(w, h);
    Inputs& in = inputs(w, h);
    const double px = double(w) * h;

    // RGB bitmaps to the Y, U and V planes.
    struct Convert {
        const char* group;
        const char* name;
        MixKernel Sub::*member;
        int bpp;
        uint8_t* src;
    };
    const Convert converts[] = {
        {"RGB32 to AYUY2", "Convert_RGB32_To_AYUY2", &Sub::Convert_RGB32_To_AYUY2, 4, in.rgb32.data()},
        {"RGB24 to AYUY2", "Convert_RGB24_To_AYUY2", &Sub::Convert_RGB24_To_AYUY2, 3, in.rgb24.data()},
        {"RGB565 to AYUY2", "Convert_RGB16_565_To_AYUY2", &Sub::Convert_RGB16_565_To_AYUY2, 2, in.rgb16.data()},
    };
    for (const Convert& c : converts) {
        add_copy(c.group, w, h, 2 * px);
        uint8_t* src = c.src;
        const int bpp = c.bpp;
        add_mix_kernel(c.group, c.name, c.member, w, h, px * bpp + 2 * px, [&f, src, bpp, w, h](MIX_INFO& i) {
            i.sub_stride = w, i.image_stride = w * bpp, i.width = w, i.height = h, i.color_key = key32;
            i.image = src, i.sub_y = f.dst.data(), i.sub_u = f.dst.data() + size_t(w) * h;
            i.sub_v = i.sub_u + size_t(w) * h / 2, i.sub_opacity = f.sub_a.data();
        });
    }

    // Opacity planes to and from bitmaps.
    struct Alpha {
        const char* group;
        const char* name;
        MixKernel Sub::*member;
        int bpp;
        bool restore;
    };
    const Alpha alphas[] = {
        {"alpha to RGB32", "load_subpicture_alpha_rgb32", &Sub::load_subpicture_alpha_rgb32, 4, false},
        {"alpha to RGB24", "load_subpicture_alpha_rgb24", &Sub::load_subpicture_alpha_rgb24, 3, false},
        {"alpha to RGB565", "load_subpicture_alpha_rgb16_565", &Sub::load_subpicture_alpha_rgb16_565, 2, false},
        {"RGB32 to alpha", "Restore_RGB32_To_Alpha", &Sub::Restore_RGB32_To_Alpha, 4, true},
        {"RGB24 to alpha", "Restore_RGB24_To_Alpha", &Sub::Restore_RGB24_To_Alpha, 3, true},
        {"RGB565 to alpha", "Restore_RGB16_565_To_Alpha", &Sub::Restore_RGB16_565_To_Alpha, 2, true},
    };
    for (const Alpha& a : alphas) {
        add_copy(a.group, w, h, a.restore ? px : px * a.bpp);
        const int bpp = a.bpp;
        const bool restore = a.restore;
        add_mix_kernel(a.group, a.name, a.member, w, h, px * (1 + bpp), [&f, bpp, restore, w, h](MIX_INFO& i) {
            i.frame_stride = w, i.sub_stride = w, i.image_stride = w * bpp, i.width = w, i.height = h;
            i.image = restore ? f.dst2.data() : f.dst.data();
            i.sub_opacity = restore ? f.dst.data() : f.sub_a.data();
        });
    }

    // Sub-picture planes to colour-keyed bitmaps.
    layout_565.rgb16_layout = 0;
    struct ToRgb {
        const char* group;
        const char* name;
        MixKernel Sub::*member;
        int bpp;
    };
    const ToRgb to_rgbs[] = {
        {"AYUY2 to RGB32", "load_subpicture_yuy2_rgb32", &Sub::load_subpicture_yuy2_rgb32, 4},
        {"AYUY2 to RGB32", "load_subpicture_yuy2_rgb32_ajust", &Sub::load_subpicture_yuy2_rgb32_ajust, 4},
        {"AYUY2 to RGB24", "load_subpicture_yuy2_rgb24", &Sub::load_subpicture_yuy2_rgb24, 3},
        {"AYUY2 to RGB24", "load_subpicture_yuy2_rgb24_ajust", &Sub::load_subpicture_yuy2_rgb24_ajust, 3},
        {"AYUY2 to RGB565", "load_subpicture_yuy2_rgb16", &Sub::load_subpicture_yuy2_rgb16, 2},
        {"AYUY2 to RGB565", "load_subpicture_yuy2_rgb16_ajust", &Sub::load_subpicture_yuy2_rgb16_ajust, 2},
    };
    std::string last;
    for (const ToRgb& r : to_rgbs) {
        if (r.group != last) add_copy(r.group, w, h, px * r.bpp), last = r.group;
        const int bpp = r.bpp;
        add_mix_kernel(r.group, r.name, r.member, w, h, px * (3 + bpp), [&f, bpp, w, h](MIX_INFO& i) {
            i.frame_stride = w, i.image_stride = w * bpp, i.height = h, i.color_key = key32;
            i.sub_y = f.sub_y.data(), i.sub_u = f.sub_u.data(), i.sub_v = f.sub_v.data(), i.sub_opacity = f.sub_a.data();
            i.image = f.dst.data(), i.surface_format = &layout_565;
        });
    }

    // Colour-key fills of a whole surface, and the mask replacement over a plane.
    struct Fill {
        const char* group;
        const char* name;
        FillKernel Sub::*member;
        int bpp;
    };
    const Fill fills[] = {
        {"key fill RGB32", "LoadColorKeyRgb32", &Sub::LoadColorKeyRgb32, 4},
        {"key fill RGB24", "LoadColorKeyRgb24", &Sub::LoadColorKeyRgb24, 3},
        {"key fill RGB565", "LoadColorKeyRgb16", &Sub::LoadColorKeyRgb16, 2},
    };
    for (const Fill& k : fills) {
        add_copy(k.group, w, h, px * k.bpp);
        add_traffic(k.group, w, h, 0, px * k.bpp);
        const int bpp = k.bpp;
        add_ours(k.group, k.name, w, h, px * bpp, [&f, member = k.member, bpp, w, h](const dispconv::KernelTable& t) -> std::function<void()> {
            FillKernel fill = t.subpicture->*member;
            return [fill, &f, bpp, w, h] { fill(key32, f.dst.data(), w, h, 0, w * bpp); };
        });
    }
    add({"key fill RGB32", "libyuv ARGBRect", Kind::peer, w, h, px * 4,
         [&f, w, h] { libyuv::ARGBRect(f.dst.data(), 4 * w, 0, 0, w, h, key32); }});

    add_copy("mask to key", w, h, px);
    add_ours("mask to key", "RelaceMaskWithColorKey", w, h, 3 * px, [&f, &in, w, h](const dispconv::KernelTable& t) -> std::function<void()> {
        auto replace = t.subpicture->RelaceMaskWithColorKey;
        return [replace, &f, &in, w, h] { replace(f.dst.data(), in.mask.data(), 0xAA, 0x10, w, w, h); };
    });
}

}  // namespace bench
