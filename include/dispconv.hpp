// dispconv: the checked C++20 interface.
//
// The C kernels of dispconv.h trust their callers: a wrong stride or a buffer one row short
// corrupts memory silently. The functions here take the same kernels' arguments, but every
// buffer as a span, and before running the kernel they compute its exact footprint (the bytes it
// will read and write through each pointer: block overruns beyond `width`, the extra row of an
// odd height, rows a stretcher writes below the picture, the byte after a row that an RGB24
// reader loads). A call whose footprint leaves one of its spans, or whose geometry is outside the
// kernel's contract, is refused: nothing is written and the Result says which buffer is short and
// by how many bytes, or what the contract requires. An accepted call writes exactly the bytes the
// C kernel writes.
//
//     std::vector<std::uint8_t> y(stride * h), u(stride / 2 * h / 2), v(u.size());
//     std::vector<std::uint8_t> rgb(4 * w * h);
//     dispconv::Result r = dispconv::loadimage_rgb32({y, u, v, w, h, stride}, {rgb, 4 * w});
//     if (!r) std::fprintf(stderr, "%s\n", dispconv::describe(r).c_str());
//
// A Region is a span plus the offset of the kernel's pointer in it (`origin`): a bottom-up
// surface is the span of the whole surface, a negative stride and the origin of its last row.
// Regions made from spans of const bytes can only be read; a kernel that would write to one is
// refused. Functions taking a MixInfo update it as the C kernels update their MIX_INFO record
// (advanced pointers move the origins; width and height as the kernel leaves them).
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <ranges>
#include <span>
#include <string>
#include <type_traits>

#include "dispconv.h"

namespace dispconv {

enum class Status : int {
    ok = DISPCONV_OK,
    bad_width = DISPCONV_BAD_WIDTH,
    bad_height = DISPCONV_BAD_HEIGHT,
    bad_stride = DISPCONV_BAD_STRIDE,
    bad_layout = DISPCONV_BAD_LAYOUT,
    bad_argument = DISPCONV_BAD_ARGUMENT,
    short_buffer,  // the footprint leaves the span: see missing_before / missing_after
    empty_span,    // the kernel needs a buffer that was given no bytes
    read_only,     // the kernel would write to a region made from const bytes
};

struct Result {
    Status status = Status::ok;
    dispconv_buffer buffer = DISPCONV_BUFFER_COUNT;  // the buffer at fault, if any
    std::int64_t missing_before = 0;                 // bytes the span lacks before its origin
    std::int64_t missing_after = 0;                  // bytes the span lacks at its end
    const char* problem = nullptr;                   // the contract, for the bad_* statuses

    explicit operator bool() const noexcept { return status == Status::ok; }
};

// Names of the instruction sets (the DISPCONV_ISA_ bits, 0 for the portable kernels), for a
// command line or a log.
struct IsaName {
    const char* name;
    std::uint32_t bit;
};
inline constexpr IsaName isa_names[] = {{"portable", 0},
                                        {"sse2", DISPCONV_ISA_SSE2},
                                        {"avx2", DISPCONV_ISA_AVX2},
                                        {"avx512", DISPCONV_ISA_AVX512},
                                        {"neon", DISPCONV_ISA_NEON}};

inline const char* isa_name(std::uint32_t bit) noexcept {
    for (const IsaName& n : isa_names)
        if (n.bit == bit) return n.name;
    return "unknown";
}

// The argument or record field a buffer was given as.
inline const char* buffer_name(dispconv_buffer b) noexcept {
    static const char* const names[] = {"src_y",  "src_u",       "src_v", "dst",   "mask",
                                        "frame_y", "frame_v",    "frame_u", "sub_opacity",
                                        "sub_y",  "sub_v",       "sub_u", "image", "image_u",
                                        "image_v"};
    static_assert(std::size(names) == DISPCONV_BUFFER_COUNT);
    return b >= 0 && b < DISPCONV_BUFFER_COUNT ? names[b] : "none";
}

// One line for a log: "dst is 12 bytes short at its end", "width must be ...".
inline std::string describe(const Result& r) {
    std::string s = buffer_name(r.buffer);
    switch (r.status) {
        case Status::ok:
            return "ok";
        case Status::short_buffer:
            s.append(" is");
            if (r.missing_before) s.append(" ").append(std::to_string(r.missing_before)).append(" bytes short before its origin");
            if (r.missing_before && r.missing_after) s.append(" and");
            if (r.missing_after) s.append(" ").append(std::to_string(r.missing_after)).append(" bytes short at its end");
            return s;
        case Status::empty_span:
            return s.append(" is empty");
        case Status::read_only:
            return s.append(" is written but was given as const bytes");
        default:
            return r.problem ? r.problem : "refused";
    }
}

// A buffer and where the kernel's pointer sits in it.
class Region {
public:
    constexpr Region() noexcept = default;

    template <std::ranges::contiguous_range R>
        requires std::ranges::sized_range<R> &&
                 std::is_same_v<std::remove_cv_t<std::ranges::range_value_t<R>>, std::uint8_t>
    constexpr Region(R&& bytes, std::ptrdiff_t origin = 0) noexcept
        : data_(std::ranges::data(bytes)),
          size_(std::ranges::size(bytes)),
          origin_(origin),
          writable_(!std::is_const_v<std::remove_reference_t<std::ranges::range_reference_t<R>>>) {}

    constexpr const std::uint8_t* data() const noexcept { return data_; }
    constexpr std::size_t size() const noexcept { return size_; }
    constexpr std::ptrdiff_t origin() const noexcept { return origin_; }
    constexpr bool writable() const noexcept { return writable_; }
    constexpr Region& move_origin(std::ptrdiff_t by) noexcept { return origin_ += by, *this; }

    // The kernel's pointer; only formed once the footprint is known to lie inside the span.
    std::uint8_t* pointer() const noexcept { return const_cast<std::uint8_t*>(data_) + origin_; }

private:
    const std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
    std::ptrdiff_t origin_ = 0;
    bool writable_ = false;
};

// A decoded frame in the common signature: planar Y, U, V (or packed YUY2 in `y` alone),
// `stride` counting pixels (luma samples; planar chroma rows are stride / 2 bytes apart).
struct Frame {
    Region y, u, v;
    std::int32_t width = 0, height = 0, stride = 0;
};

// A destination; `stride` counts bytes.
struct Surface {
    Region bytes;
    std::int32_t stride = 0;
};

// One 8-bit plane for the plane stretchers; `stride` counts bytes.
struct Plane {
    Region bytes;
    std::int32_t width = 0, height = 0, stride = 0;
};

// The decoder's frame descriptor as strech_opt_yuy2_ajust reads it.
struct VideoFrame {
    Region y, u, v;
    std::int32_t frame_structure = 0;  // 1: two interlaced fields
    std::int32_t frame_width = 0;      // pixels, and the luma row distance in bytes
};

// The MIX_INFO record with its pointers as regions.
struct MixInfo {
    std::int32_t frame_stride = 0, sub_stride = 0, image_stride = 0, width = 0, height = 0;
    Region frame_y, frame_v, frame_u;
    Region sub_opacity, sub_y, sub_v, sub_u;
    Region image, image_u, image_v;
    std::uint32_t color_key = 0;
    const ajust_contrast_info* surface_format = nullptr;
};

namespace detail {

struct Bound {
    dispconv_buffer role;
    const Region* region;
};

// Checks the call's footprint against its regions; ok when the kernel may run.
inline Result check(const dispconv_call& call, std::initializer_list<Bound> bound) {
    dispconv_footprint fp;
    if (dispconv_status s = dispconv_get_footprint(&call, &fp)) return {static_cast<Status>(s), DISPCONV_BUFFER_COUNT, 0, 0, fp.problem};
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
        const dispconv_range rd = fp.read[b], wr = fp.write[b];
        const bool reads = rd.begin != rd.end, writes = wr.begin != wr.end;
        if (!reads && !writes) continue;
        const auto role = static_cast<dispconv_buffer>(b);
        const Region* region = nullptr;
        for (const Bound& x : bound)
            if (x.role == role) region = x.region;
        if (!region || region->size() == 0) return {Status::empty_span, role};
        const std::int64_t begin = !reads ? wr.begin : !writes ? rd.begin : std::min(rd.begin, wr.begin);
        const std::int64_t end = !reads ? wr.end : !writes ? rd.end : std::max(rd.end, wr.end);
        const std::int64_t origin = region->origin(), size = static_cast<std::int64_t>(region->size());
        Result r{Status::short_buffer, role};
        if (origin + begin < 0) r.missing_before = -(origin + begin);
        if (origin + end > size) r.missing_after = origin + end - size;
        if (r.missing_before || r.missing_after) return r;
        if (writes && !region->writable()) return {Status::read_only, role};
    }
    return {};
}

inline ajust_contrast_info* mutable_settings(const ajust_contrast_info* a) {
    return const_cast<ajust_contrast_info*>(a);  // the kernels only read it
}

using FrameKernel = void (*)(void*, void*, void*, void*, std::int32_t, std::int32_t, std::int32_t,
                             std::int32_t, ajust_contrast_info*);

inline Result frame_call(dispconv_kernel k, FrameKernel kernel, const Frame& src, const Surface& dst,
                         const ajust_contrast_info* adjust) {
    dispconv_call c{};
    c.kernel = k, c.width = src.width, c.height = src.height, c.src_stride = src.stride;
    c.dst_stride = dst.stride, c.adjust = adjust;
    const Result r = check(c, {{DISPCONV_BUFFER_SRC_Y, &src.y}, {DISPCONV_BUFFER_SRC_U, &src.u},
                               {DISPCONV_BUFFER_SRC_V, &src.v}, {DISPCONV_BUFFER_DST, &dst.bytes}});
    if (r)
        kernel(src.y.pointer(), src.u.pointer(), src.v.pointer(), dst.bytes.pointer(), src.width,
               src.height, src.stride, dst.stride, mutable_settings(adjust));
    return r;
}

// Record kernels: the record is built from the MixInfo, and its changes carried back.
inline Result record_call(dispconv_kernel k, void (*kernel)(MIX_INFO*), MixInfo& m) {
    Region* const regions[] = {&m.frame_y, &m.frame_v, &m.frame_u, &m.sub_opacity, &m.sub_y,
                               &m.sub_v,   &m.sub_u,   &m.image,   &m.image_u,     &m.image_v};
    MIX_INFO info{};
    info.frame_stride = m.frame_stride, info.sub_stride = m.sub_stride;
    info.image_stride = m.image_stride, info.width = m.width, info.height = m.height;
    info.color_key = m.color_key;
    info.surface_format = const_cast<ajust_contrast_info*>(m.surface_format);
    dispconv_call c{};
    c.kernel = k, c.info = &info;
    const Result r = check(c, {{DISPCONV_BUFFER_FRAME_Y, regions[0]}, {DISPCONV_BUFFER_FRAME_V, regions[1]},
                               {DISPCONV_BUFFER_FRAME_U, regions[2]}, {DISPCONV_BUFFER_SUB_OPACITY, regions[3]},
                               {DISPCONV_BUFFER_SUB_Y, regions[4]}, {DISPCONV_BUFFER_SUB_V, regions[5]},
                               {DISPCONV_BUFFER_SUB_U, regions[6]}, {DISPCONV_BUFFER_IMAGE, regions[7]},
                               {DISPCONV_BUFFER_IMAGE_U, regions[8]}, {DISPCONV_BUFFER_IMAGE_V, regions[9]}});
    if (!r) return r;
    std::uint8_t* MIX_INFO::*const fields[] = {&MIX_INFO::frame_y,     &MIX_INFO::frame_v, &MIX_INFO::frame_u,
                                               &MIX_INFO::sub_opacity, &MIX_INFO::sub_y,   &MIX_INFO::sub_v,
                                               &MIX_INFO::sub_u,       &MIX_INFO::image,   &MIX_INFO::image_u,
                                               &MIX_INFO::image_v};
    for (int i = 0; i < 10; ++i) info.*fields[i] = regions[i]->pointer();
    kernel(&info);
    // Moved as addresses: a kernel may move a pointer it never dereferences, even a null one.
    for (int i = 0; i < 10; ++i)
        regions[i]->move_origin(static_cast<std::ptrdiff_t>(reinterpret_cast<std::uintptr_t>(info.*fields[i]) -
                                                            reinterpret_cast<std::uintptr_t>(regions[i]->pointer())));
    m.width = info.width, m.height = info.height;
    return r;
}

}  // namespace detail

// ---------------------------------------------------------------------------------------------
// Frame loading and the frame-signature stretchers. `adjust` may be null except for the RGB16
// kernels (rgb16_layout) and loadimage_yv12_ajust (the destination plane heights).
// ---------------------------------------------------------------------------------------------

#define DISPCONV_CHECKED_FRAME(name)                                                              \
    inline Result name(const Frame& src, const Surface& dst,                                       \
                       const ajust_contrast_info* adjust = nullptr) {                              \
        return detail::frame_call(DISPCONV_KERNEL_##name, &::name, src, dst, adjust);              \
    }
DISPCONV_CHECKED_FRAME(LoadYUY2_YUY2)
DISPCONV_CHECKED_FRAME(LoadYUY2_YUY2_adjust)
DISPCONV_CHECKED_FRAME(LoadYUY2_RGB32)
DISPCONV_CHECKED_FRAME(LoadYUY2_RGB32_adjust)
DISPCONV_CHECKED_FRAME(LoadYUY2_RGB24)
DISPCONV_CHECKED_FRAME(LoadYUY2_RGB24_adjust)
DISPCONV_CHECKED_FRAME(LoadYUY2_RGB16)
DISPCONV_CHECKED_FRAME(LoadYUY2_RGB16_adjust)
DISPCONV_CHECKED_FRAME(loadimage_yuy2)
DISPCONV_CHECKED_FRAME(loadimage_yuy2_ajust)
DISPCONV_CHECKED_FRAME(loadimage_yuy2_mono_ajust)
DISPCONV_CHECKED_FRAME(loadimage_half_yuy2_ajust)
DISPCONV_CHECKED_FRAME(loadimage_yv12)
DISPCONV_CHECKED_FRAME(loadimage_yv12_ajust)
DISPCONV_CHECKED_FRAME(loadimage_half_yv12_ajust)
DISPCONV_CHECKED_FRAME(loadimage_rgb32)
DISPCONV_CHECKED_FRAME(loadimage_rgb32_ajust)
DISPCONV_CHECKED_FRAME(loadimage_rgb24)
DISPCONV_CHECKED_FRAME(loadimage_rgb24_ajust)
DISPCONV_CHECKED_FRAME(loadimage_rgb16)
DISPCONV_CHECKED_FRAME(loadimage_rgb16_ajust)
DISPCONV_CHECKED_FRAME(strech_picture_1X2_yuy2)
DISPCONV_CHECKED_FRAME(strech_picture_1X2_yuy2_ajust)
DISPCONV_CHECKED_FRAME(strech_picture_1X2_yuy2_ajust_rgb32)
DISPCONV_CHECKED_FRAME(strech_picture_1X2_yuy2_ajust_rgb24)
DISPCONV_CHECKED_FRAME(strech_picture_1X2_yuy2_ajust_rgb16)
DISPCONV_CHECKED_FRAME(strech_picture_2X2_yuy2)
DISPCONV_CHECKED_FRAME(strech_picture_2X2_yuy2_ajust)
DISPCONV_CHECKED_FRAME(strech_picture_2X2_yv12_ajust)
DISPCONV_CHECKED_FRAME(strech_picture_1X2_yv12_ajust)
#undef DISPCONV_CHECKED_FRAME

// ---------------------------------------------------------------------------------------------
// The other stretchers
// ---------------------------------------------------------------------------------------------

namespace detail {
inline Result yuy2_2x2_check(dispconv_kernel k, const Region& src, std::int32_t width_bytes, std::int32_t height,
                             const Surface& dst) {
    dispconv_call c{};
    c.kernel = k, c.width = width_bytes, c.height = height, c.dst_stride = dst.stride;
    return check(c, {{DISPCONV_BUFFER_SRC_Y, &src}, {DISPCONV_BUFFER_DST, &dst.bytes}});
}
}  // namespace detail

// A packed YUY2 frame of `width_bytes` bytes per row, rows back to back.
inline Result yuy2_strech_picture_2X2_yuy2(Region src, std::int32_t width_bytes, std::int32_t height,
                                           const Surface& dst) {
    const Result r = detail::yuy2_2x2_check(DISPCONV_KERNEL_yuy2_strech_picture_2X2_yuy2, src, width_bytes, height, dst);
    if (r) ::yuy2_strech_picture_2X2_yuy2(src.pointer(), nullptr, nullptr, dst.bytes.pointer(), width_bytes, height, dst.stride);
    return r;
}
inline Result yuy2_strech_picture_2X2_yuy2_ajust(Region src, std::int32_t width_bytes, std::int32_t height,
                                                 const Surface& dst) {
    const Result r =
        detail::yuy2_2x2_check(DISPCONV_KERNEL_yuy2_strech_picture_2X2_yuy2_ajust, src, width_bytes, height, dst);
    if (r)
        ::yuy2_strech_picture_2X2_yuy2_ajust(src.pointer(), nullptr, nullptr, dst.bytes.pointer(), width_bytes,
                                             height, dst.stride, nullptr);
    return r;
}

namespace detail {
inline Result plane_call(dispconv_kernel k, const Plane& src, const Surface& dst, std::int32_t plane) {
    dispconv_call c{};
    c.kernel = k, c.width = src.width, c.height = src.height, c.src_stride = src.stride;
    c.dst_stride = dst.stride, c.plane = plane;
    return check(c, {{DISPCONV_BUFFER_SRC_Y, &src.bytes}, {DISPCONV_BUFFER_DST, &dst.bytes}});
}
}  // namespace detail

inline Result strech_pic_2X2(const Plane& src, const Surface& dst) {
    const Result r = detail::plane_call(DISPCONV_KERNEL_strech_pic_2X2, src, dst, 0);
    if (r) ::strech_pic_2X2(src.bytes.pointer(), dst.bytes.pointer(), src.width, src.height, src.stride, dst.stride);
    return r;
}
// `plane`: 1 luma, 2 U, 3 V (chooses the adjust offset).
#define DISPCONV_CHECKED_PLANE_ADJUST(name)                                                           \
    inline Result name(const Plane& src, const Surface& dst, std::int32_t plane) {                    \
        const Result r = detail::plane_call(DISPCONV_KERNEL_##name, src, dst, plane);                 \
        if (r)                                                                                        \
            ::name(src.bytes.pointer(), dst.bytes.pointer(), src.width, src.height, src.stride,       \
                   dst.stride, nullptr, plane);                                                       \
        return r;                                                                                     \
    }
DISPCONV_CHECKED_PLANE_ADJUST(strech_pic_2X2_adjust)
DISPCONV_CHECKED_PLANE_ADJUST(strech_pic_1X2_adjust)
#undef DISPCONV_CHECKED_PLANE_ADJUST

inline Result strech_opt_yuy2_ajust(const VideoFrame& frame, std::int32_t start_line, std::int32_t height,
                                    const Surface& dst) {
    tagVideoFrame f{};
    f.frame_structure = frame.frame_structure, f.frame_width = frame.frame_width;
    dispconv_call c{};
    c.kernel = DISPCONV_KERNEL_strech_opt_yuy2_ajust;
    c.frame = &f, c.start_line = start_line, c.height = height, c.dst_stride = dst.stride;
    const Result r = detail::check(c, {{DISPCONV_BUFFER_SRC_Y, &frame.y}, {DISPCONV_BUFFER_SRC_U, &frame.u},
                                       {DISPCONV_BUFFER_SRC_V, &frame.v}, {DISPCONV_BUFFER_DST, &dst.bytes}});
    if (!r) return r;
    f.plane_y = frame.y.pointer(), f.plane_u = frame.u.pointer(), f.plane_v = frame.v.pointer();
    ::strech_opt_yuy2_ajust(&f, start_line, height, dst.bytes.pointer(), dst.stride, nullptr);
    return r;
}

// ---------------------------------------------------------------------------------------------
// Record kernels: sub-picture preparation and mixing
// ---------------------------------------------------------------------------------------------

#define DISPCONV_CHECKED_RECORD(name) \
    inline Result name(MixInfo& info) { return detail::record_call(DISPCONV_KERNEL_##name, &::name, info); }
DISPCONV_CHECKED_RECORD(Convert_RGB32_To_AYUY2)
DISPCONV_CHECKED_RECORD(Convert_RGB24_To_AYUY2)
DISPCONV_CHECKED_RECORD(Convert_RGB16_565_To_AYUY2)
DISPCONV_CHECKED_RECORD(Restore_RGB32_To_Alpha)
DISPCONV_CHECKED_RECORD(Restore_RGB24_To_Alpha)
DISPCONV_CHECKED_RECORD(Restore_RGB16_565_To_Alpha)
DISPCONV_CHECKED_RECORD(load_subpicture_alpha_rgb32)
DISPCONV_CHECKED_RECORD(load_subpicture_alpha_rgb24)
DISPCONV_CHECKED_RECORD(load_subpicture_alpha_rgb16_565)
DISPCONV_CHECKED_RECORD(load_subpicture_yuy2_rgb32)
DISPCONV_CHECKED_RECORD(load_subpicture_yuy2_rgb32_ajust)
DISPCONV_CHECKED_RECORD(load_subpicture_yuy2_rgb24)
DISPCONV_CHECKED_RECORD(load_subpicture_yuy2_rgb24_ajust)
DISPCONV_CHECKED_RECORD(load_subpicture_yuy2_rgb16)
DISPCONV_CHECKED_RECORD(load_subpicture_yuy2_rgb16_ajust)
DISPCONV_CHECKED_RECORD(mix_ayuy2_yuy2_p_ajust)
DISPCONV_CHECKED_RECORD(mix_ayuy2_half_yuy2_p_ajust)
DISPCONV_CHECKED_RECORD(mix_ayuy2_rgb32_p_ajust)
DISPCONV_CHECKED_RECORD(mix_ayuy2_rgb24_p_ajust)
DISPCONV_CHECKED_RECORD(mix_ayuy2_rgb16_p_ajust)
DISPCONV_CHECKED_RECORD(mix_ayuy2_yuy2_i_ajust)
DISPCONV_CHECKED_RECORD(mix_ayuy2_rgb32_i_ajust)
DISPCONV_CHECKED_RECORD(mix_ayuy2_rgb24_i_ajust)
DISPCONV_CHECKED_RECORD(mix_ayuy2_rgb16_i_ajust)
DISPCONV_CHECKED_RECORD(mix_ayv12_yv12_p)
DISPCONV_CHECKED_RECORD(mix_ayv12_yv12_p_ajust)
DISPCONV_CHECKED_RECORD(mix_ayv12_yv12_i)
#undef DISPCONV_CHECKED_RECORD

// ---------------------------------------------------------------------------------------------
// Colour key
// ---------------------------------------------------------------------------------------------

#define DISPCONV_CHECKED_FILL(name)                                                                  \
    inline Result name(std::uint32_t color_key, const Surface& surface, std::int32_t width,          \
                       std::int32_t height) {                                                        \
        dispconv_call c{};                                                                           \
        c.kernel = DISPCONV_KERNEL_##name, c.width = width, c.height = height;                       \
        c.dst_stride = surface.stride;                                                               \
        const Result r = detail::check(c, {{DISPCONV_BUFFER_DST, &surface.bytes}});                  \
        if (r) ::name(color_key, surface.bytes.pointer(), width, height, 0, surface.stride);         \
        return r;                                                                                    \
    }
DISPCONV_CHECKED_FILL(LoadColorKeyRgb32)
DISPCONV_CHECKED_FILL(LoadColorKeyRgb24)
DISPCONV_CHECKED_FILL(LoadColorKeyRgb16)
#undef DISPCONV_CHECKED_FILL

// `dst` and `mask` share `stride`.
inline Result RelaceMaskWithColorKey(Region dst, Region mask, std::uint32_t mask_value, std::uint32_t key_value,
                                     std::int32_t width, std::int32_t stride, std::int32_t height) {
    dispconv_call c{};
    c.kernel = DISPCONV_KERNEL_RelaceMaskWithColorKey, c.width = width, c.height = height, c.dst_stride = stride;
    const Result r = detail::check(c, {{DISPCONV_BUFFER_DST, &dst}, {DISPCONV_BUFFER_MASK, &mask}});
    if (r) ::RelaceMaskWithColorKey(dst.pointer(), mask.pointer(), mask_value, key_value, width, stride, height);
    return r;
}

}  // namespace dispconv
