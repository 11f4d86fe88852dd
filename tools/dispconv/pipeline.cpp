#include "pipeline.hpp"

#include "dispconv.h"

namespace dispconv::tool {
namespace {

using FrameKernel = void(*) DISPCONV_FRAME_SIGNATURE;

bool is_rgb16(SurfaceFormat f) { return format_info(f).rgb16_layout >= 0; }

PlanarView field_of(PlanarView view, int parity) {
    if (parity < 0) return view;
    view.y += parity * view.stride;
    view.u += parity * (view.stride / 2);
    view.v += parity * (view.stride / 2);
    view.stride *= 2;
    view.height /= 2;
    return view;
}

struct RgbKernels {
    FrameKernel rgb32, rgb24, rgb16;
    FrameKernel pick(SurfaceFormat f) const {
        return f == SurfaceFormat::rgb32 ? rgb32 : f == SurfaceFormat::rgb24 ? rgb24 : rgb16;
    }
};

const char* rgb_name(SurfaceFormat f, const char* rgb32, const char* rgb24, const char* rgb16) {
    return f == SurfaceFormat::rgb32 ? rgb32 : f == SurfaceFormat::rgb24 ? rgb24 : rgb16;
}

}  // namespace

Pipeline::Pipeline(const Job& job, const Geometry& geometry, Chroma source_chroma)
    : job_(job), geometry_(geometry), chroma_(source_chroma) {
    const bool doubles_height = job.stretch == Stretch::double_height ||
                                job.stretch == Stretch::double_height_filter || job.stretch == Stretch::edge;
    if (job.field >= 0 && !(doubles_height || (job.stretch == Stretch::none && job.subpicture)))
        throw UsageError("--interlaced needs a sub-picture or the 1x2, 1x2-filter or edge stretch "
                         "(those are the kernels that double a field)");
    if (source_chroma == Chroma::c422) {
        if (job.subpicture)
            throw UsageError("a sub-picture needs a 4:2:0 input (the mixers read YV12 frames); try --no-subpicture");
        if (doubles_height)
            throw UsageError(std::string("-s ") + stretch_name(job.stretch) + " needs a 4:2:0 input");
        if (job.format == SurfaceFormat::yv12)
            throw UsageError("-f yv12 needs a 4:2:0 input (no kernel turns 4:2:2 into YV12)");
    }
    if (job.format == SurfaceFormat::yv12 &&
        (job.stretch == Stretch::double_height_filter || job.stretch == Stretch::edge))
        throw UsageError(std::string("-s ") + stretch_name(job.stretch) +
                         " cannot write a yv12 surface (it writes yuy2 and RGB surfaces)");

    scale_x_ = job.stretch == Stretch::double_size ? 2 : 1;
    scale_y_ = job.stretch == Stretch::double_size || (doubles_height && job.field < 0) ? 2 : 1;
    // The YV12 plane stretchers scale chroma with the luma gain; its offsets must match it.
    chroma_follows_luma_ = job.format == SurfaceFormat::yv12 &&
                           (job.stretch == Stretch::double_height || job.stretch == Stretch::double_size);
    settings_ = adjust_settings(job.contrast, job.brightness, job.saturation, chroma_follows_luma_);
    settings_.rgb16_layout = is_rgb16(job.format) ? format_info(job.format).rgb16_layout : 0;
    const int out_w = geometry.padded_width * scale_x_, out_h = geometry.padded_height * scale_y_;
    settings_.dst_plane_height = settings_.dst_luma_height = out_h;
    surface_ = Surface(job.format, out_w, out_h);
    plan();
}

std::string Pipeline::kernels() const {
    std::string text;
    for (const std::string& n : names_) text += (text.empty() ? "" : " + ") + n;
    return text;
}

void Pipeline::add(const char* kernel, Step step) {
    names_.push_back(kernel);
    steps_.push_back(std::move(step));
}

const Surface& Pipeline::run(const SourceFrame& frame, const SubPicture* sub) {
    get_contrast_data(&settings_);
    for (const Step& step : steps_) step(frame, sub);
    return surface_;
}

PlanarView Pipeline::mixed_view() {
    PlanarView view;
    view.y = mixed_.data();
    view.u = mixed_.plane_u();
    view.v = mixed_.plane_v();
    view.width = mixed_.width();
    view.height = mixed_.height();
    view.stride = mixed_.stride();
    return view;
}

void Pipeline::plan() {
    if (job_.subpicture && job_.stretch == Stretch::none) return plan_mix(job_);
    if (job_.subpicture) {
        // Mix at the frame's size first, then stretch the mixed frame.
        mixed_ = Surface(SurfaceFormat::yv12, geometry_.padded_width, geometry_.padded_height);
        add("mix_ayv12_yv12_p", [this](const SourceFrame& frame, const SubPicture* sub) {
            const PlanarView f = frame.planar();
            MIX_INFO m{};
            m.frame_stride = f.stride;
            m.sub_stride = sub->stride;
            m.image_stride = mixed_.stride();
            m.width = f.width;
            m.height = f.height;
            m.frame_y = f.y;
            m.frame_u = f.u;
            m.frame_v = f.v;
            m.sub_y = const_cast<uint8_t*>(sub->y.data());
            m.sub_u = const_cast<uint8_t*>(sub->u.data());
            m.sub_v = const_cast<uint8_t*>(sub->v.data());
            m.sub_opacity = const_cast<uint8_t*>(sub->opacity.data());
            m.image = mixed_.data();
            m.image_u = mixed_.plane_u();
            m.image_v = mixed_.plane_v();
            mix_ayv12_yv12_p(&m);
        });
    }
    if (job_.stretch != Stretch::none) return plan_stretch(job_);
    plan_load(job_);
}

void Pipeline::plan_mix(const Job& job) {
    const SurfaceFormat f = job.format;
    const bool field = job.field >= 0;
    using MixKernel = void (*)(MIX_INFO*);
    // Fills the job record afresh for every call: the mixers advance its pointers and count
    // its height down.
    auto fill = [this, field](const SourceFrame& frame, const SubPicture* sub, uint8_t* image, int image_stride) {
        const PlanarView v = frame.planar();
        const int parity = field ? job_.field : 0;
        MIX_INFO m{};
        m.frame_stride = field ? 2 * v.stride : v.stride;
        m.sub_stride = sub->stride;
        m.image_stride = image_stride;
        m.width = v.width;
        m.height = v.height;
        m.frame_y = v.y + parity * v.stride;
        m.frame_u = v.u + parity * (v.stride / 2);
        m.frame_v = v.v + parity * (v.stride / 2);
        m.sub_opacity = const_cast<uint8_t*>(sub->opacity.data());
        m.sub_y = const_cast<uint8_t*>(sub->y.data());
        m.sub_u = const_cast<uint8_t*>(sub->u.data());
        m.sub_v = const_cast<uint8_t*>(sub->v.data());
        m.image = image;
        m.surface_format = &settings_;
        return m;
    };
    if (f == SurfaceFormat::yv12) {
        const bool via_intermediate = field && !is_neutral(settings_);
        if (via_intermediate) mixed_ = Surface(SurfaceFormat::yv12, geometry_.padded_width, geometry_.padded_height);
        Surface* target = via_intermediate ? &mixed_ : &surface_;
        const MixKernel kernel = field ? mix_ayv12_yv12_i : mix_ayv12_yv12_p_ajust;
        add(field ? "mix_ayv12_yv12_i" : "mix_ayv12_yv12_p_ajust",
            [fill, target, kernel](const SourceFrame& frame, const SubPicture* sub) {
                MIX_INFO m = fill(frame, sub, target->data(), target->stride());
                m.image_u = target->plane_u();
                m.image_v = target->plane_v();
                kernel(&m);
            });
        // The interlaced YV12 mixer does not adjust; the adjusting copy does it afterwards.
        if (via_intermediate)
            add("loadimage_yv12_ajust", [this](const SourceFrame&, const SubPicture*) {
                loadimage_yv12_ajust(mixed_.data(), mixed_.plane_u(), mixed_.plane_v(), surface_.data(),
                                     mixed_.width(), mixed_.height(), mixed_.stride(), surface_.stride(), &settings_);
            });
        return;
    }
    MixKernel kernel = nullptr;
    const char* name = nullptr;
    if (f == SurfaceFormat::yuy2) {
        kernel = field ? mix_ayuy2_yuy2_i_ajust : mix_ayuy2_yuy2_p_ajust;
        name = field ? "mix_ayuy2_yuy2_i_ajust" : "mix_ayuy2_yuy2_p_ajust";
    } else if (field) {
        kernel = f == SurfaceFormat::rgb32 ? mix_ayuy2_rgb32_i_ajust
                 : f == SurfaceFormat::rgb24 ? mix_ayuy2_rgb24_i_ajust : mix_ayuy2_rgb16_i_ajust;
        name = rgb_name(f, "mix_ayuy2_rgb32_i_ajust", "mix_ayuy2_rgb24_i_ajust", "mix_ayuy2_rgb16_i_ajust");
    } else {
        kernel = f == SurfaceFormat::rgb32 ? mix_ayuy2_rgb32_p_ajust
                 : f == SurfaceFormat::rgb24 ? mix_ayuy2_rgb24_p_ajust : mix_ayuy2_rgb16_p_ajust;
        name = rgb_name(f, "mix_ayuy2_rgb32_p_ajust", "mix_ayuy2_rgb24_p_ajust", "mix_ayuy2_rgb16_p_ajust");
    }
    add(name, [this, fill, kernel](const SourceFrame& frame, const SubPicture* sub) {
        MIX_INFO m = fill(frame, sub, surface_.data(), surface_.stride());
        kernel(&m);
    });
}

void Pipeline::finish_from_yuy2(bool adjusted) {
    const SurfaceFormat f = surface_.format();
    FrameKernel kernel = nullptr;
    const char* name = nullptr;
    if (f == SurfaceFormat::yuy2) {
        kernel = LoadYUY2_YUY2_adjust;
        name = "LoadYUY2_YUY2_adjust";
    } else if (adjusted) {
        kernel = RgbKernels{LoadYUY2_RGB32_adjust, LoadYUY2_RGB24_adjust, LoadYUY2_RGB16_adjust}.pick(f);
        name = rgb_name(f, "LoadYUY2_RGB32_adjust", "LoadYUY2_RGB24_adjust", "LoadYUY2_RGB16_adjust");
    } else {
        kernel = RgbKernels{LoadYUY2_RGB32, LoadYUY2_RGB24, LoadYUY2_RGB16}.pick(f);
        name = rgb_name(f, "LoadYUY2_RGB32", "LoadYUY2_RGB24", "LoadYUY2_RGB16");
    }
    add(name, [this, kernel](const SourceFrame&, const SubPicture*) {
        kernel(yuy2_.data(), nullptr, nullptr, surface_.data(), yuy2_.width(), yuy2_.height(), yuy2_.width(),
               surface_.stride(), &settings_);
    });
}

void Pipeline::plan_stretch(const Job& job) {
    const SurfaceFormat f = job.format;
    const bool rgb = !format_info(f).yuv;
    const bool mixed = job.subpicture;
    // The planar source of the stretch: the mixed frame or the decoded one, maybe one field.
    auto source = [this, mixed](const SourceFrame& frame) {
        return field_of(mixed ? mixed_view() : frame.planar(), job_.field);
    };
    // Stretches that write YUY2 go through an intermediate when the surface is RGB.
    auto target = [this, rgb]() -> Surface& { return rgb ? yuy2_ : surface_; };
    if (rgb || (job.stretch == Stretch::double_height && f == SurfaceFormat::yuy2 && !is_neutral(settings_)))
        yuy2_ = Surface(SurfaceFormat::yuy2, surface_.width(), surface_.height());

    switch (job.stretch) {
        case Stretch::double_height:
            if (f == SurfaceFormat::yv12) {
                add("strech_picture_1X2_yv12_ajust", [this, source](const SourceFrame& frame, const SubPicture*) {
                    const PlanarView v = source(frame);
                    strech_picture_1X2_yv12_ajust(v.y, v.u, v.v, surface_.data(), v.width, v.height, v.stride,
                                                  surface_.stride(), &settings_);
                });
            } else if (rgb) {
                const FrameKernel kernel = RgbKernels{strech_picture_1X2_yuy2_ajust_rgb32, strech_picture_1X2_yuy2_ajust_rgb24,
                                                      strech_picture_1X2_yuy2_ajust_rgb16}.pick(f);
                add(rgb_name(f, "strech_picture_1X2_yuy2_ajust_rgb32", "strech_picture_1X2_yuy2_ajust_rgb24",
                             "strech_picture_1X2_yuy2_ajust_rgb16"),
                    [this, source, kernel](const SourceFrame& frame, const SubPicture*) {
                        const PlanarView v = source(frame);
                        kernel(v.y, v.u, v.v, surface_.data(), v.width, v.height, v.stride, surface_.stride(), &settings_);
                    });
            } else {
                // The plain double-height kernel does not adjust: adjust in a second pass if asked.
                const bool adjust = !is_neutral(settings_);
                add("strech_picture_1X2_yuy2", [this, source, adjust](const SourceFrame& frame, const SubPicture*) {
                    const PlanarView v = source(frame);
                    Surface& out = adjust ? yuy2_ : surface_;
                    strech_picture_1X2_yuy2(v.y, v.u, v.v, out.data(), v.width, v.height, v.stride, out.stride(), nullptr);
                });
                if (adjust) finish_from_yuy2(true);
            }
            return;
        case Stretch::double_height_filter:
            add("strech_picture_1X2_yuy2_ajust", [source, target](const SourceFrame& frame, const SubPicture*) {
                const PlanarView v = source(frame);
                Surface& out = target();
                strech_picture_1X2_yuy2_ajust(v.y, v.u, v.v, out.data(), v.width, v.height, v.stride, out.stride(), nullptr);
            });
            if (rgb) finish_from_yuy2(false);
            return;
        case Stretch::double_size:
            if (chroma_ == Chroma::c422) {
                add("yuy2_strech_picture_2X2_yuy2_ajust", [this, target](const SourceFrame& frame, const SubPicture*) {
                    Surface& out = target();
                    // The source rows are packed without gaps; the width counts bytes.
                    yuy2_strech_picture_2X2_yuy2_ajust(frame.packed(), nullptr, nullptr, out.data(), 2 * frame.width(),
                                                       frame.height(), out.stride(), &settings_);
                });
            } else if (f == SurfaceFormat::yv12) {
                add("strech_picture_2X2_yv12_ajust", [this, source](const SourceFrame& frame, const SubPicture*) {
                    const PlanarView v = source(frame);
                    strech_picture_2X2_yv12_ajust(v.y, v.u, v.v, surface_.data(), v.width, v.height, v.stride,
                                                  surface_.stride(), &settings_);
                });
                return;
            } else {
                add("strech_picture_2X2_yuy2_ajust", [source, target](const SourceFrame& frame, const SubPicture*) {
                    const PlanarView v = source(frame);
                    Surface& out = target();
                    strech_picture_2X2_yuy2_ajust(v.y, v.u, v.v, out.data(), v.width, v.height, v.stride, out.stride(), nullptr);
                });
            }
            if (rgb) finish_from_yuy2(false);
            return;
        case Stretch::edge:
            add("strech_opt_yuy2_ajust", [this, mixed, target](const SourceFrame& frame, const SubPicture*) {
                const PlanarView v = mixed ? mixed_view() : frame.planar();
                const int parity = job_.field > 0 ? 1 : 0;
                tagVideoFrame descriptor{};
                descriptor.frame_structure = job_.field >= 0 ? 1 : 0;
                // The field's first row is chosen by the plane pointers, so that its chroma
                // starts on a chroma row.
                descriptor.plane_y = v.y + parity * v.stride;
                descriptor.plane_u = v.u + parity * (v.stride / 2);
                descriptor.plane_v = v.v + parity * (v.stride / 2);
                descriptor.frame_width = v.width;
                Surface& out = target();
                const int rows = job_.field >= 0 ? v.height / 2 : v.height;
                strech_opt_yuy2_ajust(&descriptor, 0, rows, out.data(), out.stride(), nullptr);
            });
            if (rgb) finish_from_yuy2(false);
            return;
        case Stretch::none: return;
    }
}

void Pipeline::plan_load(const Job& job) {
    const SurfaceFormat f = job.format;
    if (chroma_ == Chroma::c422) {
        FrameKernel kernel = f == SurfaceFormat::yuy2
                                 ? LoadYUY2_YUY2_adjust
                                 : RgbKernels{LoadYUY2_RGB32_adjust, LoadYUY2_RGB24_adjust, LoadYUY2_RGB16_adjust}.pick(f);
        add(f == SurfaceFormat::yuy2 ? "LoadYUY2_YUY2_adjust"
                                     : rgb_name(f, "LoadYUY2_RGB32_adjust", "LoadYUY2_RGB24_adjust", "LoadYUY2_RGB16_adjust"),
            [this, kernel](const SourceFrame& frame, const SubPicture*) {
                kernel(frame.packed(), nullptr, nullptr, surface_.data(), frame.width(), frame.height(), frame.width(),
                       surface_.stride(), &settings_);
            });
        return;
    }
    FrameKernel kernel = nullptr;
    const char* name = nullptr;
    if (f == SurfaceFormat::yuy2) {
        // The adjusting kernel, even for neutral settings: the plain one leaves gaps on odd rows.
        kernel = loadimage_yuy2_ajust;
        name = "loadimage_yuy2_ajust";
    } else if (f == SurfaceFormat::yv12) {
        kernel = loadimage_yv12_ajust;
        name = "loadimage_yv12_ajust";
    } else {
        kernel = RgbKernels{loadimage_rgb32_ajust, loadimage_rgb24_ajust, loadimage_rgb16_ajust}.pick(f);
        name = rgb_name(f, "loadimage_rgb32_ajust", "loadimage_rgb24_ajust", "loadimage_rgb16_ajust");
    }
    add(name, [this, kernel](const SourceFrame& frame, const SubPicture*) {
        const PlanarView v = frame.planar();
        kernel(v.y, v.u, v.v, surface_.data(), v.width, v.height, v.stride, surface_.stride(), &settings_);
    });
}

}  // namespace dispconv::tool
