#include "checked/checked_support.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <utility>

namespace dispconv::test {

namespace {

// A record's buffers, in the order of dispconv_buffer from DISPCONV_BUFFER_FRAME_Y.
constexpr int record_buffers = 10;
uint8_t* MIX_INFO::*const raw_fields[record_buffers] = {
    &MIX_INFO::frame_y, &MIX_INFO::frame_v, &MIX_INFO::frame_u, &MIX_INFO::sub_opacity, &MIX_INFO::sub_y,
    &MIX_INFO::sub_v,   &MIX_INFO::sub_u,   &MIX_INFO::image,   &MIX_INFO::image_u,     &MIX_INFO::image_v};
Region MixInfo::*const checked_fields[record_buffers] = {
    &MixInfo::frame_y, &MixInfo::frame_v, &MixInfo::frame_u, &MixInfo::sub_opacity, &MixInfo::sub_y,
    &MixInfo::sub_v,   &MixInfo::sub_u,   &MixInfo::image,   &MixInfo::image_u,     &MixInfo::image_v};

// Records carrying the call's scalars and, once known, its pointers.
struct Records {
    MIX_INFO info;
    tagVideoFrame frame{};
    ajust_contrast_info settings;

    explicit Records(const CheckedCall& c) : info(c.info), settings(c.settings) {
        info.surface_format = c.no_settings ? nullptr : &settings;
        frame.frame_structure = c.frame_structure;
        frame.frame_width = c.frame_width;
    }
    dispconv_call call(const CheckedCall& c) {
        dispconv_call d{};
        d.kernel = c.kernel, d.width = c.width, d.height = c.height;
        d.src_stride = c.src_stride, d.dst_stride = c.dst_stride;
        d.plane = c.plane, d.start_line = c.start_line;
        d.adjust = c.no_settings ? nullptr : &settings, d.info = &info, d.frame = &frame;
        return d;
    }
};

// The checked functions, one adapter per shape of their parameters.
using R = Region*;
Result adapt(Result (*f)(const Frame&, const Surface&, const ajust_contrast_info*), const CheckedCall& c, R r,
             MixInfo*) {
    return f({r[DISPCONV_BUFFER_SRC_Y], r[DISPCONV_BUFFER_SRC_U], r[DISPCONV_BUFFER_SRC_V], c.width, c.height,
              c.src_stride},
             {r[DISPCONV_BUFFER_DST], c.dst_stride}, c.no_settings ? nullptr : &c.settings);
}
Result adapt(Result (*f)(Region, int32_t, int32_t, const Surface&), const CheckedCall& c, R r, MixInfo*) {
    return f(r[DISPCONV_BUFFER_SRC_Y], c.width, c.height, {r[DISPCONV_BUFFER_DST], c.dst_stride});
}
Result adapt(Result (*f)(const Plane&, const Surface&), const CheckedCall& c, R r, MixInfo*) {
    return f({r[DISPCONV_BUFFER_SRC_Y], c.width, c.height, c.src_stride}, {r[DISPCONV_BUFFER_DST], c.dst_stride});
}
Result adapt(Result (*f)(const Plane&, const Surface&, int32_t), const CheckedCall& c, R r, MixInfo*) {
    return f({r[DISPCONV_BUFFER_SRC_Y], c.width, c.height, c.src_stride}, {r[DISPCONV_BUFFER_DST], c.dst_stride},
             c.plane);
}
Result adapt(Result (*f)(const VideoFrame&, int32_t, int32_t, const Surface&), const CheckedCall& c, R r,
             MixInfo*) {
    return f({r[DISPCONV_BUFFER_SRC_Y], r[DISPCONV_BUFFER_SRC_U], r[DISPCONV_BUFFER_SRC_V], c.frame_structure,
              c.frame_width},
             c.start_line, c.height, {r[DISPCONV_BUFFER_DST], c.dst_stride});
}
Result adapt(Result (*f)(uint32_t, const Surface&, int32_t, int32_t), const CheckedCall& c, R r, MixInfo*) {
    return f(c.color_key, {r[DISPCONV_BUFFER_DST], c.dst_stride}, c.width, c.height);
}
Result adapt(Result (*f)(Region, Region, uint32_t, uint32_t, int32_t, int32_t, int32_t), const CheckedCall& c,
             R r, MixInfo*) {
    return f(r[DISPCONV_BUFFER_DST], r[DISPCONV_BUFFER_MASK], c.mask_value, c.key_value, c.width, c.dst_stride,
             c.height);
}
Result adapt(Result (*f)(MixInfo&), const CheckedCall& c, R r, MixInfo* after) {
    MixInfo m;
    m.frame_stride = c.info.frame_stride, m.sub_stride = c.info.sub_stride;
    m.image_stride = c.info.image_stride, m.width = c.info.width, m.height = c.info.height;
    for (int i = 0; i < record_buffers; ++i) m.*checked_fields[i] = r[DISPCONV_BUFFER_FRAME_Y + i];
    m.color_key = c.info.color_key;
    m.surface_format = c.no_settings ? nullptr : &c.settings;
    const Result result = f(m);
    if (after) *after = m;
    return result;
}

// Through the checked interface; regions indexed by dispconv_buffer. `after` receives the record
// as the call leaves it (record kernels).
Result run_checked(const CheckedCall& c, Region* regions, MixInfo* after = nullptr) {
    switch (c.kernel) {
#define DISPCONV_KERNEL(name, params, args) \
    case DISPCONV_KERNEL_##name:            \
        return adapt(&dispconv::name, c, regions, after);
#include "load/kernels.def"
#include "stretch/kernels.def"
#include "subpicture/kernels.def"
#include "mix/kernels.def"
#undef DISPCONV_KERNEL
        default:
            return {Status::bad_argument, DISPCONV_BUFFER_COUNT, 0, 0, "no checked function for this kernel"};
    }
}

}  // namespace

std::string describe(const CheckedCall& c) {
    std::ostringstream s;
    s << kernel_name(c.kernel);
    if (c.kernel < DISPCONV_KERNEL_COUNT && facts(c.kernel).shape == Shape::record)
        s << " width " << c.info.width << " height " << c.info.height << " frame_stride " << c.info.frame_stride
          << " sub_stride " << c.info.sub_stride << " image_stride " << c.info.image_stride;
    else
        s << " width " << c.width << " height " << c.height << " src_stride " << c.src_stride << " dst_stride "
          << c.dst_stride;
    if (c.kernel == DISPCONV_KERNEL_strech_opt_yuy2_ajust)
        s << " frame_width " << c.frame_width << " structure " << c.frame_structure << " start " << c.start_line;
    if (c.plane) s << " plane " << c.plane;
    s << (c.no_settings ? " without settings" : " layout " + std::to_string(c.settings.rgb16_layout));
    return s.str();
}

dispconv_status footprint_of(const CheckedCall& c, dispconv_footprint& fp) {
    Records rec(c);
    const dispconv_call call = rec.call(c);
    return dispconv_get_footprint(&call, &fp);
}

dispconv_range hull(const dispconv_footprint& fp, int b) {
    const dispconv_range r = fp.read[b], w = fp.write[b];
    if (r.begin == r.end) return w;
    if (w.begin == w.end) return r;
    return {std::min(r.begin, w.begin), std::max(r.end, w.end)};
}

void run_raw(const KernelTable& t, const CheckedCall& c, uint8_t* const* p, MIX_INFO* after) {
    Records rec(c);
    MIX_INFO* info = &rec.info;
    for (int i = 0; i < record_buffers; ++i) info->*raw_fields[i] = p[DISPCONV_BUFFER_FRAME_Y + i];
    tagVideoFrame* frame = &rec.frame;
    frame->plane_y = p[DISPCONV_BUFFER_SRC_Y], frame->plane_u = p[DISPCONV_BUFFER_SRC_U];
    frame->plane_v = p[DISPCONV_BUFFER_SRC_V];
    // Every argument name the kernel lists use, so that each list's arguments resolve here.
    void *src_y = p[DISPCONV_BUFFER_SRC_Y], *src_u = p[DISPCONV_BUFFER_SRC_U], *src_v = p[DISPCONV_BUFFER_SRC_V];
    uint8_t *src = p[DISPCONV_BUFFER_SRC_Y], *dst = p[DISPCONV_BUFFER_DST], *mask = p[DISPCONV_BUFFER_MASK];
    void* surface = dst;
    void *unused_u = nullptr, *unused_v = nullptr;
    const int32_t width = c.width, height = c.height, src_stride = c.src_stride, dst_stride = c.dst_stride;
    const int32_t stride = c.dst_stride, plane = c.plane, start_line = c.start_line, reserved = 0;
    const uint32_t color_key = c.color_key, mask_value = c.mask_value, key_value = c.key_value;
    ajust_contrast_info* adjust = c.no_settings ? nullptr : &rec.settings;
    switch (c.kernel) {
#define DISPCONV_KERNEL(name, params, args) \
    case DISPCONV_KERNEL_##name:            \
        t.family->name args;                \
        break;
#define family load
#include "load/kernels.def"
#undef family
#define family stretch
#include "stretch/kernels.def"
#undef family
#define family subpicture
#include "subpicture/kernels.def"
#undef family
#define family mix
#include "mix/kernels.def"
#undef family
#undef DISPCONV_KERNEL
        default:
            break;
    }
    if (after) *after = *info;
}

std::array<uint8_t*, DISPCONV_BUFFER_COUNT> Buffers::pointers() {
    std::array<uint8_t*, DISPCONV_BUFFER_COUNT> p{};
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b)
        if (!bytes[b].empty()) p[b] = bytes[b].data() + origin[b];
    return p;
}

namespace {

// The record's scalars and each pointer's move from where the call gave it, as a record kernel
// or its checked function left them.
std::vector<std::ptrdiff_t> record_moves(const MIX_INFO& after, uint8_t* const* given) {
    std::vector<std::ptrdiff_t> r{after.frame_stride, after.sub_stride, after.image_stride, after.width, after.height,
                                  std::ptrdiff_t(after.color_key)};
    for (int i = 0; i < record_buffers; ++i) r.push_back(after.*raw_fields[i] - given[DISPCONV_BUFFER_FRAME_Y + i]);
    return r;
}

std::vector<std::ptrdiff_t> record_moves(const MixInfo& after, const Region* given) {
    std::vector<std::ptrdiff_t> r{after.frame_stride, after.sub_stride, after.image_stride, after.width, after.height,
                                  std::ptrdiff_t(after.color_key)};
    for (int i = 0; i < record_buffers; ++i)
        r.push_back((after.*checked_fields[i]).origin() - given[DISPCONV_BUFFER_FRAME_Y + i].origin());
    return r;
}

// Where `got` differs from `want`, or (with a footprint) from `pristine` outside the writes.
std::string differences(const std::string& who, const Buffers& got, const Buffers& want, const Buffers& pristine,
                        const dispconv_footprint* fp) {
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b)
        for (size_t i = 0, n = fp || got.bytes[b] != want.bytes[b] ? got.bytes[b].size() : 0; i < n; ++i) {
            const int64_t offset = int64_t(i) - got.origin[b];
            const auto at = [&] {
                return std::string(buffer_name(dispconv_buffer(b))) + " byte " + std::to_string(offset) + " from the kernel's pointer";
            };
            if (got.bytes[b][i] != want.bytes[b][i]) {
                std::string around;  // portable's and this run's bytes from there on
                for (size_t j = i; j < i + 8 && j < got.bytes[b].size(); ++j) {
                    char text[16];
                    std::snprintf(text, sizeof text, " %02X/%02X", want.bytes[b][j], got.bytes[b][j]);
                    around += text;
                }
                return who + " differs from portable at " + at() + " (portable/this run:" + around + ")";
            }
            if (fp && (offset < fp->write[b].begin || offset >= fp->write[b].end) && got.bytes[b][i] != pristine.bytes[b][i])
                return who + " wrote outside the write footprint at " + at();
        }
    return "";
}

}  // namespace

std::string same_on_every_isa(const CheckedCall& c, const Buffers& in, const dispconv_footprint* fp, Buffers* portable,
                              std::vector<std::ptrdiff_t>* record) {
    Buffers reference;
    std::vector<std::ptrdiff_t> reference_record;
    for (int i = 0; i < isa_count; ++i) {
        const KernelTable* table = kernel_table(Isa(i));
        if (!table) continue;
        Buffers run = in;
        std::array<uint8_t*, DISPCONV_BUFFER_COUNT> pointers = run.pointers();
        MIX_INFO after{};
        run_raw(*table, c, pointers.data(), &after);
        std::vector<std::ptrdiff_t> moves = record_moves(after, pointers.data());
        moves.insert(moves.end(), {after.reserved1, after.reserved2});
        if (i == 0) reference = run, reference_record = moves;
        if (std::string problem = differences(isa_name(Isa(i)), run, reference, in, fp); !problem.empty()) return problem;
        if (moves != reference_record) return std::string(isa_name(Isa(i))) + " left the record unlike portable";
    }
    if (portable) *portable = std::move(reference);
    if (record) *record = std::move(reference_record);
    return "";
}

Buffers footprint_buffers(const dispconv_footprint& fp, const Placements& place, const Fill& fill) {
    Buffers buffers;
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) {
        const dispconv_range h = hull(fp, b);
        const Placement& p = place[b];
        if (h.begin == h.end) continue;
        buffers.bytes[b].resize(p.empty ? 0 : size_t(h.end - h.begin + p.front + p.back));
        buffers.origin[b] = p.front - h.begin;
        fill(b, buffers.bytes[b]);
    }
    return buffers;
}

std::string check_accepted(const CheckedCall& c, const dispconv_footprint& fp, const Placements& place,
                           const Fill& fill) {
    const Buffers pristine = footprint_buffers(fp, place, fill);
    uint32_t bad = 0;  // buffers the checked interface must refuse
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b)
        if (const Placement& p = place[b]; hull(fp, b).begin != hull(fp, b).end &&
            (p.empty || p.front < 0 || p.back < 0 || (p.read_only && fp.write[b].begin != fp.write[b].end)))
            bad |= 1u << b;
    Buffers checked = pristine;
    std::array<Region, DISPCONV_BUFFER_COUNT> regions;
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b)
        if (hull(fp, b).begin != hull(fp, b).end)
            regions[b] = place[b].read_only ? Region(std::as_const(checked.bytes[b]), checked.origin[b])
                                            : Region(checked.bytes[b], checked.origin[b]);
    MixInfo checked_after;
    const Result r = run_checked(c, regions.data(), &checked_after);
    if (bad) {
        if (r) return "the checked interface accepted a buffer short of its footprint, empty, or const but written";
        const int b = r.buffer;
        if (b < 0 || b >= DISPCONV_BUFFER_COUNT || !(bad >> b & 1)) return "refused with " + describe(r) + ", no bad buffer";
        const Placement& p = place[b];
        const bool short_by = p.front < 0 || p.back < 0;
        const Status want = pristine.bytes[b].empty() ? Status::empty_span : short_by ? Status::short_buffer : Status::read_only;
        if (r.status != want || (want == Status::short_buffer && (r.missing_before != std::max<int64_t>(0, -p.front) ||
                                                                  r.missing_after != std::max<int64_t>(0, -p.back))))
            return "a bad buffer refused as: " + describe(r);
        return checked.bytes == pristine.bytes ? "" : "a refused call wrote";
    }
    if (!r) return "the checked interface refused buffers that cover the footprint: " + describe(r);
    Buffers reference;
    std::vector<std::ptrdiff_t> reference_record;
    if (std::string problem = same_on_every_isa(c, pristine, &fp, &reference, &reference_record); !problem.empty())
        return problem;
    if (std::string problem = differences("the checked interface", checked, reference, pristine, &fp); !problem.empty())
        return problem;
    reference_record.resize(reference_record.size() - 2);  // the checked record has no reserved words
    if (facts(c.kernel).shape == Shape::record && record_moves(checked_after, regions.data()) != reference_record)
        return "the checked interface left the record unlike portable";
    return "";
}

std::string check_refused(const CheckedCall& c, Status expected) {
    dispconv_footprint fp;
    if (int(footprint_of(c, fp)) != int(expected) || !fp.problem)
        return "the footprint refused otherwise: " + std::string(fp.problem ? fp.problem : "no reason");
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b)
        if (hull(fp, b).begin != hull(fp, b).end) return "the refused footprint left ranges";
    // Generous buffers: only the geometry can make the call fail.
    constexpr size_t room = size_t(1) << 16;
    std::array<std::vector<uint8_t>, DISPCONV_BUFFER_COUNT> pristine, bytes;
    std::array<Region, DISPCONV_BUFFER_COUNT> regions;
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) pristine[b].assign(room, uint8_t(0xA5 + b));
    bytes = pristine;
    for (int b = 0; b < DISPCONV_BUFFER_COUNT; ++b) regions[b] = Region(bytes[b], room / 2);
    const Result r = run_checked(c, regions.data());
    if (r.status != expected || !r.problem) return "the checked interface said " + describe(r);
    return bytes == pristine ? "" : "the refused call wrote";
}

}  // namespace dispconv::test
